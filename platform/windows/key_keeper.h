// Lets keys go that a killed program has left down.
#pragma once

#include "platform/files/owners.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace drevix {

// An X server keeps a key down when the program that pressed it is killed, and the person can no longer type; a Wayland
// compositor may leave modifiers. A process of its own knows which keys are down and lets them go when this program is gone. Else it sleeps. It keeps
// none of this program's descriptors: devices and bus names are free as soon as the program is gone.
class KeyKeeper {
  public:
    // Called in that process, with the keys (Linux scan codes) that were down last, at least one.
    using LetGo = std::function<void(const std::vector<std::uint16_t> &keys)>;

    // The program must have one thread only.
    explicit KeyKeeper(LetGo letGo);

    // Says which keys are about to be down; to be called before they are pressed and after they are released. Starts
    // the process anew when it has been killed. False when none can be had: the keys may be pressed all the same.
    [[nodiscard]] bool Know(const std::vector<std::uint16_t> &keys);

  private:
    bool Start();
    [[nodiscard]] bool Send(const std::vector<std::uint16_t> &keys) const;

    LetGo fLetGo;
    SystemDescriptor fEnd; // closed by the kernel when this program is killed
};

} // namespace drevix
