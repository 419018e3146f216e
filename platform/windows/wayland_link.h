// What the Wayland clients of this folder share. For its other files.
#pragma once

#include "platform/files/owners.h"

#include <cstdint>
#include <memory>
#include <string>
#include <wayland-client.h>

namespace drevix {

// What the compositor gave is given back with the call of its kind.
template <auto Destroy>
struct WaylandDestroyer {
    template <class Object>
    void operator()(Object *object) const {
        Destroy(object);
    }
};
template <class Object, auto Destroy>
using WaylandOwner = std::unique_ptr<Object, WaylandDestroyer<Destroy>>;

// The versions that let go of a seat and of its keyboard; what is only destroyed here goes on to be told of in the
// compositor.
inline constexpr std::uint32_t kWaylandSeatVersion = 5;
void LetGoOfSeat(wl_seat *seat);
void LetGoOfKeyboard(wl_keyboard *keyboard);
using WaylandDisplay = WaylandOwner<wl_display, wl_display_disconnect>;
using WaylandSeat = WaylandOwner<wl_seat, LetGoOfSeat>;
using WaylandKeyboard = WaylandOwner<wl_keyboard, LetGoOfKeyboard>;

// A socket that is connected to the compositor of $WAYLAND_DISPLAY, if there is one. It does not block.
[[nodiscard]] SystemDescriptor ConnectedToWayland();
// A connection to the compositor of $WAYLAND_DISPLAY, without waiting for it; null where there is none.
[[nodiscard]] WaylandDisplay ConnectToWayland();

// The text of a keymap that a compositor has handed over; empty for a file that does not hold as much, which reading
// shows where mapping would end the program. May throw std::bad_alloc.
[[nodiscard]] std::string ReadWaylandKeymapFile(int file, std::uint32_t size);

} // namespace drevix
