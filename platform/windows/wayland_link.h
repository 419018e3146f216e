// What the Wayland clients of this folder share. Internal to this folder.
#pragma once

#include "platform/files/owners.h"

#include <cstdint>
#include <memory>
#include <string>
#include <wayland-client.h>

namespace drevix {

// Owns a compositor object and destroys it with the function for its kind.
template <auto Destroy>
struct WaylandDestroyer {
    template <class Object>
    void operator()(Object *object) const {
        Destroy(object);
    }
};
template <class Object, auto Destroy>
using WaylandOwner = std::unique_ptr<Object, WaylandDestroyer<Destroy>>;

// The versions that can release a seat and its keyboard; objects that are only destroyed here would keep
// getting events from the compositor.
inline constexpr std::uint32_t kWaylandSeatVersion = 5;
void LetGoOfSeat(wl_seat *seat);
void LetGoOfKeyboard(wl_keyboard *keyboard);
using WaylandDisplay = WaylandOwner<wl_display, wl_display_disconnect>;
using WaylandSeat = WaylandOwner<wl_seat, LetGoOfSeat>;
using WaylandKeyboard = WaylandOwner<wl_keyboard, LetGoOfKeyboard>;

// A nonblocking socket connected to the compositor of $WAYLAND_DISPLAY, if there is one.
[[nodiscard]] SystemDescriptor ConnectedToWayland();
// A connection to the compositor of $WAYLAND_DISPLAY, made without waiting; null if there is none.
[[nodiscard]] WaylandDisplay ConnectToWayland();

// The text of a keymap from a compositor; empty if the file is shorter than announced. Reads it, because
// mapping a short file would crash the program. May throw std::bad_alloc.
[[nodiscard]] std::string ReadWaylandKeymapFile(int file, std::uint32_t size);

} // namespace drevix
