#include "platform/windows/wayland_keyboard.h"

#include "platform/files/owners.h"
#include "platform/windows/sway_layout.h"
#include "platform/windows/wayland_link.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <poll.h>
#include <string_view>
#include <tuple>
#include <utility>
#include <wayland-client.h>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;

// Queries over one connection, with its own queue, so that no other code's events are handled here.
class Asker {
  public:
    Asker(wl_display *display, Clock::time_point end)
        : fDisplay(display), fEnd(end), fQueue(wl_display_create_queue(display)) {}

    // Each answer leads to the next query: which seats there are, which has a keyboard, its keymap.
    bool Ask(WaylandKeymap *keymap) {
        return fQueue != nullptr && AskForSeat() && WaitForAnswers() && fSeat != nullptr &&
               WaitForAnswers() && AskForKeymap() && WaitForAnswers() && TakeOver(keymap);
    }

  private:
    bool AskForSeat();
    bool AskForKeymap();
    bool WaitForAnswers();
    bool TakeInEvents();
    void TakeKeymap(std::uint32_t format, SystemDescriptor file, std::uint32_t size);

    bool TakeOver(WaylandKeymap *keymap) {
        if (fKeymap.text.empty()) {
            return false;
        }
        *keymap = std::move(fKeymap);
        return true;
    }

    wl_display *fDisplay;
    Clock::time_point fEnd;
    WaylandOwner<wl_event_queue, wl_event_queue_destroy> fQueue; // goes after all that is on it
    WaylandOwner<wl_display, wl_proxy_wrapper_destroy> fOnQueue;
    WaylandOwner<wl_registry, wl_registry_destroy> fRegistry;
    WaylandSeat fSeat;
    WaylandKeyboard fKeyboard;
    bool fHasKeyboard = false;
    WaylandKeymap fKeymap;
};

bool Asker::AskForSeat() {
    static constexpr wl_seat_listener kSeatListener = {
        .capabilities =
            [](void *asker, wl_seat *, std::uint32_t capabilities) {
                static_cast<Asker *>(asker)->fHasKeyboard = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
            },
        .name = [](void *, wl_seat *, const char *) {},
    };
    static constexpr wl_registry_listener kListener = {
        .global =
            [](void *data, wl_registry *registry, std::uint32_t name, const char *interface,
               std::uint32_t version) {
                auto *const asker = static_cast<Asker *>(data);
                if (std::string_view(interface) != wl_seat_interface.name || asker->fSeat != nullptr) {
                    return;
                }
                asker->fSeat.reset(static_cast<wl_seat *>(wl_registry_bind(
                    registry, name, &wl_seat_interface, std::min(version, kWaylandSeatVersion))));
                if (asker->fSeat != nullptr) {
                    wl_seat_add_listener(asker->fSeat.get(), &kSeatListener, asker);
                }
            },
        .global_remove = [](void *, wl_registry *, std::uint32_t) {},
    };
    fOnQueue.reset(static_cast<wl_display *>(wl_proxy_create_wrapper(fDisplay)));
    if (fOnQueue == nullptr) {
        return false;
    }
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(fOnQueue.get()), fQueue.get());
    fRegistry.reset(wl_display_get_registry(fOnQueue.get()));
    return fRegistry != nullptr && wl_registry_add_listener(fRegistry.get(), &kListener, this) == 0;
}

bool Asker::AskForKeymap() {
    static constexpr wl_keyboard_listener kListener = {
        .keymap =
            [](void *asker, wl_keyboard *, std::uint32_t format, std::int32_t file, std::uint32_t size) {
                static_cast<Asker *>(asker)->TakeKeymap(format, SystemDescriptor(file), size);
            },
        .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {},
        .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) {},
        .key = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
        .modifiers = [](void *asker, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint32_t,
                        std::uint32_t group) { static_cast<Asker *>(asker)->fKeymap.group = group; },
        .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {},
    };
    if (!fHasKeyboard) {
        return false;
    }
    fKeyboard.reset(wl_seat_get_keyboard(fSeat.get()));
    return fKeyboard != nullptr && wl_keyboard_add_listener(fKeyboard.get(), &kListener, this) == 0;
}

// Called from C, which exceptions must not cross.
void Asker::TakeKeymap(std::uint32_t format, SystemDescriptor file, std::uint32_t size) try {
    if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        fKeymap.text = ReadWaylandKeymapFile(file.Get(), size);
    }
} catch (const std::bad_alloc &) {
    fKeymap.text.clear();
}

// The answer to a sync follows the answers to all earlier requests.
bool Asker::WaitForAnswers() {
    static constexpr wl_callback_listener kListener = {
        .done = [](void *isDone, wl_callback *, std::uint32_t) { *static_cast<bool *>(isDone) = true; }};
    bool isDone = false;
    const WaylandOwner<wl_callback, wl_callback_destroy> sync(wl_display_sync(fOnQueue.get()));
    if (sync == nullptr || wl_callback_add_listener(sync.get(), &kListener, &isDone) != 0) {
        return false;
    }
    while (!isDone) {
        if (!TakeInEvents()) {
            return false;
        }
    }
    return true;
}

// Reads the events that are there or arrive before the timeout.
bool Asker::TakeInEvents() {
    if (wl_display_prepare_read_queue(fDisplay, fQueue.get()) != 0) { // some are there already
        return wl_display_dispatch_queue_pending(fDisplay, fQueue.get()) >= 0;
    }
    // What a slow compositor does not accept now is sent with the next request.
    std::ignore = wl_display_flush(fDisplay);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(fEnd - Clock::now()).count();
    pollfd look = {.fd = wl_display_get_fd(fDisplay), .events = POLLIN, .revents = 0};
    const int ready = left > 0 ? poll(&look, 1, static_cast<int>(left)) : 0;
    if (ready <= 0) {
        wl_display_cancel_read(fDisplay);
        return ready < 0 && errno == EINTR;
    }
    return wl_display_read_events(fDisplay) == 0 &&
           wl_display_dispatch_queue_pending(fDisplay, fQueue.get()) >= 0;
}

} // namespace

bool ReadWaylandKeymap(std::chrono::milliseconds limit, WaylandKeymap *keymap) {
    const Clock::time_point end = Clock::now() + limit;
    const WaylandDisplay display = ConnectToWayland();
    if (display == nullptr || !Asker(display.get(), end).Ask(keymap)) {
        return false;
    }
    if (const auto sway = keymap->group ? nullptr : SwayLayout::Open()) {
        keymap->group = sway->Group();
    }
    return true;
}

bool ReadWaylandKeymapOver(void *connection, std::chrono::milliseconds limit, WaylandKeymap *keymap) {
    return Asker(static_cast<wl_display *>(connection), Clock::now() + limit).Ask(keymap);
}

} // namespace drevix
