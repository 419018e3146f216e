// The user's desktop: which window is in front, and keys, wheel and requests sent to it.
#pragma once

#include "platform/windows/desktop_requests.h"
#include "platform/windows/front_window.h"

#include <cstdint>
#include <memory>
#include <string>

namespace drevix {

// A connection to a desktop. What it does not support returns false and sends nothing. Main thread only.
class Desktop {
  public:
    Desktop() = default;
    Desktop(const Desktop &) = delete;
    Desktop &operator=(const Desktop &) = delete;
    // Releases every key that Key has pressed.
    virtual ~Desktop() = default;

    // Readable when Take has something to process; -1 for a desktop that reports nothing.
    [[nodiscard]] virtual int Descriptor() const = 0;
    // Processes what the desktop has sent, without waiting. Call it before each wait too, because its library
    // may have read ahead. False if the connection is lost: the object is then useless.
    [[nodiscard]] virtual bool Take() = 0;
    // Whether this desktop reports which window is in front. A compositor may report it only to its own
    // extensions.
    [[nodiscard]] virtual bool TellsFront() const { return true; }
    // The window in front, as of the last Take.
    [[nodiscard]] virtual const FrontWindow &Front() const = 0;

    // Increases when the keyboard layout may have changed, as far as the desktop reports it.
    [[nodiscard]] virtual unsigned LayoutChanges() const { return 0; }

    // Presses or releases a key by its position (Linux scan code, at most kMostScanCode).
    [[nodiscard]] virtual bool Key(std::uint16_t scanCode, bool down) = 0;
    // Turns the wheel by that many notches, 1 or more.
    [[nodiscard]] virtual bool Scroll(ScrollDirection direction, int steps) = 0;
    [[nodiscard]] virtual bool Ask(WindowRequest request) = 0;
    // Sends everything requested so far. False if the connection is lost.
    [[nodiscard]] virtual bool Flush() = 0;
};

// Connects to the session's desktop: to the Wayland compositor if $WAYLAND_DISPLAY is set, sending through a
// kernel keyboard if it takes no keys from programs; else to the X server of $DISPLAY. Null, with the reason
// for people in *problem, if there is none or it cannot be used. With a desktop, *problem is why keys or
// wheel cannot be sent there, or empty; it must be empty before.
[[nodiscard]] std::unique_ptr<Desktop> OpenDesktop(std::string *problem);

} // namespace drevix
