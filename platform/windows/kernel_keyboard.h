// A virtual keyboard with a wheel, made by the kernel, for compositors that take no keys from programs.
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
    // An existing one, or a pipe that stands in for it: writes struct input_event.
    explicit KernelKeyboard(SystemDescriptor made) : fMade(std::move(made)) {}
    KernelKeyboard(const KernelKeyboard &) = delete;
    KernelKeyboard &operator=(const KernelKeyboard &) = delete;
    // Releases every key. The kernel releases those of a killed program.
    ~KernelKeyboard();

    // Makes one, named kOwnInputDeviceName, through /dev/uinput, which the user needs permission to write.
    // Null, with the reason for people in *problem, on failure.
    [[nodiscard]] static std::unique_ptr<KernelKeyboard> Make(std::string *problem);

    // As in Desktop. Sending more at once than fits a compositor's queue takes some milliseconds.
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
