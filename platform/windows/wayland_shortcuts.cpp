#include "platform/windows/wayland_shortcuts.h"

#include "platform/windows/wayland_link.h"

#include <keyboard-shortcuts-inhibit-client.h>
#include <wayland-client.h>

#include <cstdint>
#include <string_view>
#include <utility>

namespace drevix {
struct WaylandShortcuts::State {
    State(wl_display *itsDisplay, Answer itsAnswer);

    void Ask();
    // The answer to a sync follows the answers to all earlier requests.
    void AwaitSync();
    void TakeSync();
    void Tell(bool isNowGiven);

    wl_display *display;
    Answer answer;
    WaylandOwner<wl_registry, wl_registry_destroy> registry;
    WaylandOwner<zwp_keyboard_shortcuts_inhibit_manager_v1, zwp_keyboard_shortcuts_inhibit_manager_v1_destroy>
        manager;
    WaylandOwner<zwp_keyboard_shortcuts_inhibitor_v1, zwp_keyboard_shortcuts_inhibitor_v1_destroy> inhibitor;
    WaylandOwner<wl_callback, wl_callback_destroy> sync;
    wl_surface *surface = nullptr; // of the window that asks, null when none does
    wl_seat *seat = nullptr;
    bool isListed = false; // whether the compositor has named all that it can do
    bool isGiven = false;
};

WaylandShortcuts::State::State(wl_display *itsDisplay, Answer itsAnswer)
    : display(itsDisplay), answer(std::move(itsAnswer)), registry(wl_display_get_registry(itsDisplay)) {
    static constexpr wl_registry_listener kListener = {
        .global =
            [](void *state, wl_registry *from, std::uint32_t name, const char *interface, std::uint32_t) {
                const wl_interface &wanted = zwp_keyboard_shortcuts_inhibit_manager_v1_interface;
                if (std::string_view(interface) == wanted.name) {
                    static_cast<State *>(state)->manager.reset(
                        static_cast<zwp_keyboard_shortcuts_inhibit_manager_v1 *>(
                            wl_registry_bind(from, name, &wanted, 1)));
                }
            },
        .global_remove = [](void *, wl_registry *, std::uint32_t) {},
    };
    if (registry != nullptr) {
        wl_registry_add_listener(registry.get(), &kListener, this);
    }
    AwaitSync();
}

void WaylandShortcuts::State::AwaitSync() {
    static constexpr wl_callback_listener kListener = {
        .done = [](void *state, wl_callback *, std::uint32_t) { static_cast<State *>(state)->TakeSync(); }};
    sync.reset(wl_display_sync(display));
    if (sync != nullptr) {
        wl_callback_add_listener(sync.get(), &kListener, this);
    }
}

void WaylandShortcuts::State::TakeSync() {
    sync.reset();
    if (!isListed) {
        isListed = true;
        Ask();
    } else if (!isGiven) {
        Tell(false);
    }
}

void WaylandShortcuts::State::Ask() {
    static constexpr zwp_keyboard_shortcuts_inhibitor_v1_listener kListener = {
        .active = [](void *state,
                     zwp_keyboard_shortcuts_inhibitor_v1 *) { static_cast<State *>(state)->Tell(true); },
        .inactive = [](void *state,
                       zwp_keyboard_shortcuts_inhibitor_v1 *) { static_cast<State *>(state)->Tell(false); },
    };
    if (!isListed || surface == nullptr) {
        return; // the list is on its way, or nobody asks for it now
    }
    if (manager != nullptr) {
        inhibitor.reset(
            zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(manager.get(), surface, seat));
    }
    if (inhibitor == nullptr) {
        Tell(false);
        return;
    }
    zwp_keyboard_shortcuts_inhibitor_v1_add_listener(inhibitor.get(), &kListener, this);
    AwaitSync();
}

void WaylandShortcuts::State::Tell(bool isNowGiven) {
    isGiven = isNowGiven;
    answer(isNowGiven);
}

WaylandShortcuts::WaylandShortcuts(void *display, Answer answer)
    : fState(std::make_unique<State>(static_cast<wl_display *>(display), std::move(answer))) {}

WaylandShortcuts::~WaylandShortcuts() = default;

void WaylandShortcuts::Ask(void *surface, void *seat) {
    Release();
    fState->surface = static_cast<wl_surface *>(surface);
    fState->seat = static_cast<wl_seat *>(seat);
    fState->Ask();
}

void WaylandShortcuts::Release() {
    fState->inhibitor.reset();
    fState->surface = nullptr;
    fState->isGiven = false;
    if (fState->isListed) {
        fState->sync.reset(); // the one for what was asked
    }
}

} // namespace drevix
