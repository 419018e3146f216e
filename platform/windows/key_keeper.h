// Releases keys that a killed program has left down.
#pragma once

#include "platform/files/owners.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace drevix {

// An X server keeps a key down when the program that pressed it is killed, and then the user can no longer
// type; a Wayland compositor may keep modifiers. A separate process knows which keys are down and releases
// them when this program is gone; otherwise it sleeps. It holds none of this program's descriptors, so
// devices and bus names are free as soon as the program is gone.
class KeyKeeper {
  public:
    // Called in that process with the keys (Linux scan codes) that were down last, at least one.
    using LetGo = std::function<void(const std::vector<std::uint16_t> &keys)>;

    // The program must have only one thread.
    explicit KeyKeeper(LetGo letGo);

    // Tells the process which keys are about to be down. Call before pressing and after releasing them.
    // Restarts the process if it was killed. False if it cannot be started; the keys may be pressed anyway.
    [[nodiscard]] bool Know(const std::vector<std::uint16_t> &keys);

  private:
    bool Start();
    [[nodiscard]] bool Send(const std::vector<std::uint16_t> &keys) const;

    LetGo fLetGo;
    SystemDescriptor fEnd; // closed by the kernel when this program is killed
};

} // namespace drevix
