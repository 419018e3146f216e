// The desktop that the person works on: which window is in front, and keys, wheel and requests sent to it.
#pragma once

#include "platform/windows/desktop_requests.h"
#include "platform/windows/front_window.h"

#include <cstdint>
#include <memory>
#include <string>

namespace drevix {

// A connection to a desktop. What cannot be done there gives false, and nothing is sent. Main thread only.
class Desktop {
  public:
    Desktop() = default;
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;
    // Lets every key go that Key has pressed.
    virtual ~Desktop() = default;

    // Can be read when Take has something to take; -1 for a desktop that tells nothing.
    [[nodiscard]] virtual int Descriptor() const = 0;
    // Takes what the desktop has told, without waiting; to be called before each wait too, since its library may have
    // read ahead. False when the connection is lost: the object is of no more use.
    [[nodiscard]] virtual bool Take() = 0;
    // Whether this desktop tells which window is in front. A compositor may tell only its own extensions.
    [[nodiscard]] virtual bool TellsFront() const { return true; }
    // The window in front, as of the last Take.
    [[nodiscard]] virtual const FrontWindow &Front() const = 0;

    // Grows when another keyboard layout may be in force, as far as the desktop tells.
    [[nodiscard]] virtual unsigned LayoutChanges() const { return 0; }

    // Presses or releases a key by its place (Linux scan code, at most kMostScanCode).
    [[nodiscard]] virtual bool Key(std::uint16_t scanCode, bool down) = 0;
    // Turns the wheel by so many notches, 1 or more.
    [[nodiscard]] virtual bool Scroll(ScrollDirection direction, int steps) = 0;
    [[nodiscard]] virtual bool Ask(WindowRequest request) = 0;
    // Sends what has been asked for so far. False when the connection is lost.
    [[nodiscard]] virtual bool Flush() = 0;
};

// Connects to the session's desktop: to the Wayland compositor where $WAYLAND_DISPLAY is set, sending through a keyboard of
// the kernel's where it takes no keys from programs, else to the X server of $DISPLAY. Null, with the reason for people in
// *problem, where there is none or it cannot be used. With a desktop, *problem is why keys or wheel cannot be sent there, or
// empty; it must be empty before.
[[nodiscard]] std::unique_ptr<Desktop> OpenDesktop(std::string *problem);

} // namespace drevix
