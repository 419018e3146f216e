// The keymap that a Wayland compositor gives its clients.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace drevix {

struct WaylandKeymap {
    std::string text; // in XKB's text format, version 1
    std::optional<std::uint32_t>
        group; // in force; told to the client with the keyboard focus, and by sway to all
};

// The keymap of the first seat's keyboard, from the compositor of $WAYLAND_DISPLAY, over a temporary
// connection. Such a client has no focus. False, with *keymap unchanged, if there is no compositor or
// keyboard, or no answer before the timeout.
[[nodiscard]] bool ReadWaylandKeymap(std::chrono::milliseconds limit, WaylandKeymap *keymap);

// The same over a connection that the program has through another library, a wl_display. Events for that
// library stay queued for it.
[[nodiscard]] bool ReadWaylandKeymapOver(void *connection, std::chrono::milliseconds limit,
                                         WaylandKeymap *keymap);

} // namespace drevix
