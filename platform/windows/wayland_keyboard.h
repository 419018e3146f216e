// The keymap that a Wayland compositor hands to its clients.
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

// The keymap of the first seat's keyboard, from the compositor of $WAYLAND_DISPLAY, over a connection
// that is closed again. Such a client has no focus. False, with *keymap unchanged, where there is no
// compositor or no keyboard, and where the compositor has not answered when the time is up.
[[nodiscard]] bool ReadWaylandKeymap(std::chrono::milliseconds limit, WaylandKeymap *keymap);

// The same over a connection that the program has by another library, a wl_display. What arrives meanwhile
// for the other library waits for it.
[[nodiscard]] bool ReadWaylandKeymapOver(void *connection, std::chrono::milliseconds limit,
                                         WaylandKeymap *keymap);

} // namespace drevix
