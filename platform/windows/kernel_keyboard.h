// A keyboard with a wheel that the kernel makes for us, for compositors that take no keys from programs.
#pragma once

#include "platform/files/owners.h"
#include "platform/windows/desktop_requests.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <linux/input.h>
#include <memory>
#include <string>
#include <vector>

namespace drevix {

class KernelKeyboard {
  public:
    // One that is made already, or a pipe that stands in for it: struct input_event is written.
    explicit KernelKeyboard(SystemDescriptor made) : fMade(std::move(made)) {}
    KernelKeyboard(const KernelKeyboard &) = delete;
    KernelKeyboard &operator=(const KernelKeyboard &) = delete;
    // Lets every key go. Those of a killed program are let go by the kernel.
    ~KernelKeyboard();

    // Makes one, named kOwnInputDeviceName, by /dev/uinput, which the user must be let write to. Null, with the reason
    // for people in *problem, where that cannot be.
    [[nodiscard]] static std::unique_ptr<KernelKeyboard> Make(std::string *problem);

    // As those of Desktop. What is sent at once and is longer than a compositor's queue takes some milliseconds.
    [[nodiscard]] bool Key(std::uint16_t scanCode, bool down);
    void Scroll(ScrollDirection direction, int steps);
    [[nodiscard]] bool Flush();

  private:
    static constexpr std::size_t kKeys = 248; // as on X11

    void Add(std::uint16_t type, std::uint16_t code, int value);

    SystemDescriptor fMade;
    std::bitset<kKeys> fDown;
    std::vector<input_event> fUnsent;
};

} // namespace drevix
