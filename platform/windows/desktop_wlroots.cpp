#include "platform/windows/desktop_wlroots.h"

#include "platform/base/translation.h"
#include "platform/files/owners.h"
#include "platform/windows/kernel_keyboard.h"
#include "platform/windows/key_keeper.h"
#include "platform/windows/sway_layout.h"
#include "platform/windows/wayland_link.h"

#include <virtual-keyboard-client.h>
#include <wlr-foreign-toplevel-management-client.h>
#include <wlr-virtual-pointer-client.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <cerrno>
#include <chrono>
#include <linux/input-event-codes.h>
#include <optional>
#include <poll.h>
#include <span>
#include <string_view>
#include <sys/epoll.h>
#include <tuple>
#include <utility>
#include <vector>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kTimeToStart{3000};
constexpr std::chrono::milliseconds kTimeToRead{200}; // for a compositor that is slow to take what we send
constexpr std::uint32_t kToplevelVersion = 3;         // since when dialogs name their owners
constexpr std::size_t kVirtualKeys = 248;             // as on X11
constexpr int kNotch = 15;                            // what a notch of a wheel moves, as libinput has it
constexpr std::size_t kDeepestDialog = 8;             // of dialogs of dialogs

// The modifiers' bits, the same in every keymap. The compositor gets them along with the keys.
struct ModifierKey {
    std::uint16_t scanCode;
    std::uint32_t bit;
};
constexpr auto kModifierKeys = std::to_array<ModifierKey>({
    {KEY_LEFTSHIFT, 1},
    {KEY_RIGHTSHIFT, 1},
    {KEY_LEFTCTRL, 4},
    {KEY_RIGHTCTRL, 4},
    {KEY_LEFTALT, 8},
    {KEY_LEFTMETA, 64},
    {KEY_RIGHTMETA, 64},
});

std::uint32_t Now() {
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch()).count());
}

bool WaitFor(wl_display *display, short what, Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd look = {.fd = wl_display_get_fd(display), .events = what, .revents = 0};
    const int ready = poll(&look, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
    return ready > 0 || (ready < 0 && errno == EINTR);
}

using Handle = WaylandOwner<zwlr_foreign_toplevel_handle_v1, zwlr_foreign_toplevel_handle_v1_destroy>;

// A window. Changes to it apply once all of them have been sent.
struct Toplevel {
    struct State {
        std::string id;
        bool isActive = false;
        bool isFullScreen = false;
        zwlr_foreign_toplevel_handle_v1 *owner = nullptr;
    };
    Handle handle;
    State told;
    State state;
    bool isClosed = false;
};

class WlrootsDesktop final : public Desktop {
  public:
    explicit WlrootsDesktop(WaylandDisplay display) : fDisplay(std::move(display)) {}
    ~WlrootsDesktop() override;
    // Queries what the compositor offers; false if that is not enough. *problem may be set in any case.
    bool Start(std::string *problem);
    // From now on, this program's modifiers are released even if it is killed.
    void KeepModifiers();

    [[nodiscard]] int Descriptor() const override {
        return fBoth ? fBoth.Get() : wl_display_get_fd(fDisplay.get());
    }
    [[nodiscard]] bool Take() override;
    [[nodiscard]] bool TellsFront() const override { return fWindows != nullptr; }
    [[nodiscard]] const FrontWindow &Front() const override { return fFront; }
    [[nodiscard]] unsigned LayoutChanges() const override { return fLayoutChanges; }
    [[nodiscard]] bool Key(std::uint16_t scanCode, bool down) override;
    [[nodiscard]] bool Scroll(ScrollDirection direction, int steps) override;
    [[nodiscard]] bool Ask(WindowRequest request) override;
    [[nodiscard]] bool Flush() override;

  private:
    bool Settle(Clock::time_point end);
    void TakeGlobal(wl_registry *registry, std::uint32_t name, std::string_view interface,
                    std::uint32_t version);
    bool MakeKeyboard(Clock::time_point end);
    void SendKeymap();
    void TakeKeymap(std::uint32_t format, SystemDescriptor file, std::uint32_t size);
    void TakeToplevel(zwlr_foreign_toplevel_handle_v1 *handle);
    void ListenToKeyboard();
    void SendModifiers();
    void SendModifiers(std::uint32_t held);
    void TellKeeper(const std::bitset<kVirtualKeys> &keys);
    void ListenToSway();
    void TakeGroup();
    void FindFront();
    Toplevel *Find(zwlr_foreign_toplevel_handle_v1 *handle);

    template <class Object>
    static Object *Bind(wl_registry *registry, std::uint32_t name, const wl_interface &interface,
                        std::uint32_t version) {
        return static_cast<Object *>(wl_registry_bind(registry, name, &interface, version));
    }

    WaylandDisplay fDisplay; // goes after all that is on it
    WaylandOwner<wl_registry, wl_registry_destroy> fRegistry;
    WaylandSeat fSeat;
    WaylandKeyboard fSessionKeyboard; // whose keymap ours has
    WaylandOwner<zwp_virtual_keyboard_manager_v1, zwp_virtual_keyboard_manager_v1_destroy> fKeyboards;
    WaylandOwner<zwp_virtual_keyboard_v1, zwp_virtual_keyboard_v1_destroy> fKeyboard;
    WaylandOwner<zwlr_virtual_pointer_manager_v1, zwlr_virtual_pointer_manager_v1_destroy> fPointers;
    WaylandOwner<zwlr_virtual_pointer_v1, zwlr_virtual_pointer_v1_destroy> fPointer;
    WaylandOwner<zwlr_foreign_toplevel_manager_v1, zwlr_foreign_toplevel_manager_v1_destroy> fWindows;
    std::unique_ptr<KernelKeyboard> fKernelKeyboard;   // for what the compositor does not offer
    std::vector<std::unique_ptr<Toplevel>> fToplevels; // in place, since their events know them by address
    Toplevel *fActive = nullptr;
    FrontWindow fFront;
    std::string fKeymap; // the keyboard has one when it is not empty
    SystemDescriptor fKeymapFile;
    std::uint32_t fKeymapSize = 0;
    bool fKeepsKeymap = false; // whatever comes
    std::bitset<kVirtualKeys> fDown;
    std::bitset<kVirtualKeys> fFlushed; // that were down as of the last time
    std::optional<KeyKeeper> fKeeper;
    std::vector<std::uint16_t> fKept;  // the modifiers that the keeper knows of
    std::unique_ptr<SwayLayout> fSway; // null where the compositor is another
    SystemDescriptor fBoth;            // can be read when the display or sway can
    std::uint32_t fGroup = 0;          // in force
    unsigned fLayoutChanges = 0;
};

WlrootsDesktop::~WlrootsDesktop() {
    for (std::size_t key = 0; key < kVirtualKeys; ++key) {
        if (fDown.test(key)) {
            std::ignore = Key(static_cast<std::uint16_t>(key), false);
        }
    }
    std::ignore = Flush(); // where this fails the compositor lets them go, since we leave
}

void WlrootsDesktop::TakeGlobal(wl_registry *registry, std::uint32_t name, std::string_view interface,
                                std::uint32_t version) {
    if (interface == wl_seat_interface.name && fSeat == nullptr) {
        fSeat.reset(Bind<wl_seat>(registry, name, wl_seat_interface, std::min(version, kWaylandSeatVersion)));
    } else if (interface == zwp_virtual_keyboard_manager_v1_interface.name) {
        fKeyboards.reset(Bind<zwp_virtual_keyboard_manager_v1>(registry, name,
                                                               zwp_virtual_keyboard_manager_v1_interface, 1));
    } else if (interface == zwlr_virtual_pointer_manager_v1_interface.name) {
        fPointers.reset(Bind<zwlr_virtual_pointer_manager_v1>(registry, name,
                                                              zwlr_virtual_pointer_manager_v1_interface, 1));
    } else if (interface == zwlr_foreign_toplevel_manager_v1_interface.name && fWindows == nullptr) {
        static constexpr zwlr_foreign_toplevel_manager_v1_listener kListener = {
            .toplevel =
                [](void *desktop, zwlr_foreign_toplevel_manager_v1 *,
                   zwlr_foreign_toplevel_handle_v1 *handle) {
                    static_cast<WlrootsDesktop *>(desktop)->TakeToplevel(handle);
                },
            .finished = [](void *, zwlr_foreign_toplevel_manager_v1 *) {},
        };
        fWindows.reset(Bind<zwlr_foreign_toplevel_manager_v1>(
            registry, name, zwlr_foreign_toplevel_manager_v1_interface, std::min(version, kToplevelVersion)));
        zwlr_foreign_toplevel_manager_v1_add_listener(fWindows.get(), &kListener, this);
    }
}

bool WlrootsDesktop::Start(std::string *problem) {
    static constexpr wl_registry_listener kListener = {
        .global =
            [](void *desktop, wl_registry *registry, std::uint32_t name, const char *interface,
               std::uint32_t version) {
                static_cast<WlrootsDesktop *>(desktop)->TakeGlobal(registry, name, interface, version);
            },
        .global_remove = [](void *, wl_registry *, std::uint32_t) {},
    };
    const Clock::time_point end = Clock::now() + kTimeToStart;
    fRegistry.reset(wl_display_get_registry(fDisplay.get()));
    wl_registry_add_listener(fRegistry.get(), &kListener, this);
    if (!Settle(end) || (fWindows == nullptr && fKeyboards == nullptr)) {
        return false;
    }
    if (fPointers != nullptr) {
        fPointer.reset(zwlr_virtual_pointer_manager_v1_create_virtual_pointer(fPointers.get(), fSeat.get()));
    }
    if (fSeat != nullptr && fKeyboards != nullptr && !MakeKeyboard(end)) {
        return false;
    }
    if (fKeyboard == nullptr || fPointer == nullptr) {
        fKernelKeyboard = KernelKeyboard::Make(problem);
        if (fKernelKeyboard == nullptr) {
            *problem =
                fKeyboard == nullptr
                    ? Translated("the Wayland compositor takes no keys from programs, and %1", *problem)
                    : Translated("the Wayland compositor takes no turns of the wheel from programs, and %1",
                                 *problem);
        }
    }
    ListenToSway();
    FindFront();
    return true;
}

void WlrootsDesktop::ListenToSway() {
    fSway = SwayLayout::Open();
    fBoth.Reset(fSway == nullptr ? -1 : epoll_create1(EPOLL_CLOEXEC));
    if (!fBoth) {
        fSway.reset();
        return;
    }
    for (const int end : {wl_display_get_fd(fDisplay.get()), fSway->Descriptor()}) {
        epoll_event event{.events = EPOLLIN, .data = {}};
        std::ignore = epoll_ctl(fBoth.Get(), EPOLL_CTL_ADD, end, &event); // fails for want of memory only
    }
    TakeGroup();
}

void WlrootsDesktop::TakeGroup() {
    if (fSway != nullptr && !fSway->Take()) {
        fSway.reset(); // the last group stays
    }
    if (fSway != nullptr && fSway->Group() != fGroup) {
        fGroup = fSway->Group();
        ++fLayoutChanges;
        if (!fKeymap.empty()) {
            SendModifiers(); // whoever asks sway then gets one answer for all keyboards
        }
    }
}

// Asks for the session's keymap first, because a new keyboard brings the compositor's own, which every client
// is told about.
bool WlrootsDesktop::MakeKeyboard(Clock::time_point end) {
    ListenToKeyboard();
    if (!Settle(end) || !Settle(end)) { // what the seat has, then its keymap
        return false;
    }
    fKeyboard.reset(zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(fKeyboards.get(), fSeat.get()));
    fKeepsKeymap = !fKeymap.empty(); // else ours is the only keyboard
    if (fKeepsKeymap) {
        SendKeymap();
    }
    const bool isGood = Settle(end) && Settle(end);
    fKeepsKeymap = false;
    return isGood;
}

void WlrootsDesktop::SendKeymap() {
    zwp_virtual_keyboard_v1_keymap(fKeyboard.get(), WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, fKeymapFile.Get(),
                                   fKeymapSize);
    SendModifiers();
}

// The keymap arrives now, and again whenever the session gets another.
void WlrootsDesktop::ListenToKeyboard() {
    static constexpr wl_keyboard_listener kKeyboardListener = {
        .keymap =
            [](void *desktop, wl_keyboard *, std::uint32_t format, std::int32_t file, std::uint32_t size) {
                static_cast<WlrootsDesktop *>(desktop)->TakeKeymap(format, SystemDescriptor(file), size);
            },
        .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {},
        .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) {},
        .key = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
        .modifiers = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint32_t) {},
        .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {},
    };
    static constexpr wl_seat_listener kSeatListener = {
        .capabilities =
            [](void *data, wl_seat *seat, std::uint32_t capabilities) {
                auto *const desktop = static_cast<WlrootsDesktop *>(data);
                const bool has = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
                if (has == (desktop->fSessionKeyboard != nullptr)) {
                    return;
                }
                desktop->fSessionKeyboard.reset(has ? wl_seat_get_keyboard(seat) : nullptr);
                if (has) {
                    wl_keyboard_add_listener(desktop->fSessionKeyboard.get(), &kKeyboardListener, desktop);
                }
            },
        .name = [](void *, wl_seat *, const char *) {},
    };
    wl_seat_add_listener(fSeat.get(), &kSeatListener, this);
}

// Our keyboard is one of the session's, so its keymap comes back to us.
void WlrootsDesktop::TakeKeymap(std::uint32_t format, SystemDescriptor file, std::uint32_t size) {
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 || fKeepsKeymap) {
        return;
    }
    std::string text = ReadWaylandKeymapFile(file.Get(), size);
    if (text.empty() || text == fKeymap) {
        return;
    }
    fKeymap = std::move(text);
    fKeymapFile = std::move(file);
    fKeymapSize = size;
    ++fLayoutChanges;
    if (fKeyboard != nullptr) {
        SendKeymap();
    }
}

void WlrootsDesktop::TakeToplevel(zwlr_foreign_toplevel_handle_v1 *handle) {
    using Told = zwlr_foreign_toplevel_handle_v1;
    static constexpr auto kOf = [](void *data) { return static_cast<Toplevel *>(data); };
    static constexpr zwlr_foreign_toplevel_handle_v1_listener kListener = {
        .title = [](void *, Told *, const char *) {},
        .app_id = [](void *data, Told *, const char *id) { kOf(data)->told.id = id; },
        .output_enter = [](void *, Told *, wl_output *) {},
        .output_leave = [](void *, Told *, wl_output *) {},
        .state =
            [](void *data, Told *, wl_array *states) {
                const std::span all(static_cast<const std::uint32_t *>(states->data),
                                    states->size / sizeof(std::uint32_t));
                const auto has = [all](std::uint32_t state) { return std::ranges::count(all, state) > 0; };
                kOf(data)->told.isActive = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
                kOf(data)->told.isFullScreen = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_FULLSCREEN);
            },
        .done = [](void *data, Told *) { kOf(data)->state = kOf(data)->told; },
        .closed = [](void *data, Told *) { kOf(data)->isClosed = true; },
        .parent = [](void *data, Told *, Told *owner) { kOf(data)->told.owner = owner; },
    };
    fToplevels.push_back(std::make_unique<Toplevel>());
    fToplevels.back()->handle.reset(handle);
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kListener, fToplevels.back().get());
}

Toplevel *WlrootsDesktop::Find(zwlr_foreign_toplevel_handle_v1 *handle) {
    const auto found = std::ranges::find_if(
        fToplevels, [handle](const auto &toplevel) { return toplevel->handle.get() == handle; });
    return found == fToplevels.end() ? nullptr : found->get();
}

// A dialog counts as the window it belongs to.
void WlrootsDesktop::FindFront() {
    std::erase_if(fToplevels, [](const auto &toplevel) { return toplevel->isClosed; });
    const auto found =
        std::ranges::find_if(fToplevels, [](const auto &toplevel) { return toplevel->state.isActive; });
    fActive = found == fToplevels.end() ? nullptr : found->get();
    fFront = {};
    const Toplevel *window = fActive;
    for (std::size_t depth = 0; window != nullptr && depth < kDeepestDialog; ++depth) {
        if (depth == 0 || !window->state.id.empty()) {
            fFront.entryId = window->state.id;
        }
        window = window->state.owner == nullptr ? nullptr : Find(window->state.owner);
    }
}

bool WlrootsDesktop::Take() {
    while (wl_display_prepare_read(fDisplay.get()) != 0) {
        if (wl_display_dispatch_pending(fDisplay.get()) < 0) {
            return false;
        }
    }
    if (!WaitFor(fDisplay.get(), POLLIN, Clock::now())) {
        wl_display_cancel_read(fDisplay.get());
    } else if (wl_display_read_events(fDisplay.get()) < 0) {
        return false;
    }
    const bool isGood = wl_display_dispatch_pending(fDisplay.get()) >= 0;
    TakeGroup();
    FindFront();
    return isGood && wl_display_get_error(fDisplay.get()) == 0;
}

// The answer to a sync follows the answers to all earlier requests.
bool WlrootsDesktop::Settle(Clock::time_point end) {
    static constexpr wl_callback_listener kListener = {
        .done = [](void *isDone, wl_callback *, std::uint32_t) { *static_cast<bool *>(isDone) = true; }};
    bool isDone = false;
    const WaylandOwner<wl_callback, wl_callback_destroy> sync(wl_display_sync(fDisplay.get()));
    wl_callback_add_listener(sync.get(), &kListener, &isDone);
    while (Flush() && Take()) {
        if (isDone) {
            return true;
        }
        if (!WaitFor(fDisplay.get(), POLLIN, end)) {
            break;
        }
    }
    return false;
}

bool WlrootsDesktop::Key(std::uint16_t scanCode, bool down) {
    if (fKeyboard == nullptr) {
        return fKernelKeyboard != nullptr && fKernelKeyboard->Key(scanCode, down);
    }
    if (fKeymap.empty() || scanCode >= kVirtualKeys) {
        return false;
    }
    fDown.set(scanCode, down);
    zwp_virtual_keyboard_v1_key(fKeyboard.get(), Now(), scanCode,
                                down ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
    if (std::ranges::count(kModifierKeys, scanCode, &ModifierKey::scanCode) > 0) {
        SendModifiers();
    }
    return true;
}

void WlrootsDesktop::SendModifiers() {
    std::uint32_t held = 0;
    for (const ModifierKey &modifier : kModifierKeys) {
        held |= fDown.test(modifier.scanCode) ? modifier.bit : 0;
    }
    SendModifiers(held);
}

void WlrootsDesktop::SendModifiers(std::uint32_t held) {
    zwp_virtual_keyboard_v1_modifiers(fKeyboard.get(), held, 0, 0, fGroup);
}

// Without a keeper the keys are pressed anyway: it matters only if the program is killed.
void WlrootsDesktop::TellKeeper(const std::bitset<kVirtualKeys> &keys) {
    std::vector<std::uint16_t> modifiers;
    for (const ModifierKey &modifier : kModifierKeys) {
        if (keys.test(modifier.scanCode)) {
            modifiers.push_back(modifier.scanCode);
        }
    }
    if (fKeeper && modifiers != fKept) {
        std::ignore = fKeeper->Know(modifiers);
        fKept = std::move(modifiers);
    }
}

bool WlrootsDesktop::Scroll(ScrollDirection direction, int steps) {
    using enum ScrollDirection;
    if (fPointer == nullptr) {
        if (fKernelKeyboard != nullptr) {
            fKernelKeyboard->Scroll(direction, steps);
        }
        return fKernelKeyboard != nullptr;
    }
    const bool isVertical = direction == Up || direction == Down;
    const std::uint32_t axis =
        isVertical ? WL_POINTER_AXIS_VERTICAL_SCROLL : WL_POINTER_AXIS_HORIZONTAL_SCROLL;
    const int sign = direction == Up || direction == Left ? -1 : 1;
    for (int step = 0; step < steps; ++step) {
        zwlr_virtual_pointer_v1_axis_source(fPointer.get(), WL_POINTER_AXIS_SOURCE_WHEEL);
        zwlr_virtual_pointer_v1_axis_discrete(fPointer.get(), Now(), axis, wl_fixed_from_int(sign * kNotch),
                                              sign);
        zwlr_virtual_pointer_v1_frame(fPointer.get());
    }
    return true;
}

bool WlrootsDesktop::Ask(WindowRequest request) {
    const bool isToWindow = request == WindowRequest::Close || request == WindowRequest::Minimize ||
                            request == WindowRequest::FullScreen;
    if (fWindows == nullptr || !isToWindow) {
        return false; // the protocol has no more
    }
    if (fActive == nullptr) {
        return true;
    }
    zwlr_foreign_toplevel_handle_v1 *const window = fActive->handle.get();
    if (request == WindowRequest::Close) {
        zwlr_foreign_toplevel_handle_v1_close(window);
    } else if (request == WindowRequest::Minimize) {
        zwlr_foreign_toplevel_handle_v1_set_minimized(window);
    } else if (zwlr_foreign_toplevel_handle_v1_get_version(window) <
               ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_SET_FULLSCREEN_SINCE_VERSION) {
        return false;
    } else if (fActive->state.isFullScreen) {
        zwlr_foreign_toplevel_handle_v1_unset_fullscreen(window);
    } else {
        zwlr_foreign_toplevel_handle_v1_set_fullscreen(window, nullptr);
    }
    return true;
}

bool WlrootsDesktop::Flush() {
    TellKeeper(fFlushed | fDown);
    const bool isSent = fKernelKeyboard == nullptr || fKernelKeyboard->Flush();
    const Clock::time_point end = Clock::now() + kTimeToRead;
    while (wl_display_flush(fDisplay.get()) < 0) {
        if (errno != EAGAIN || !WaitFor(fDisplay.get(), POLLOUT, end)) {
            break;
        }
    }
    fFlushed = fDown;
    TellKeeper(fDown);
    return isSent && wl_display_get_error(fDisplay.get()) == 0;
}

std::unique_ptr<WlrootsDesktop> StartDesktop(std::string *problem) {
    WaylandDisplay display = ConnectToWayland();
    if (display == nullptr) {
        return nullptr;
    }
    auto desktop = std::make_unique<WlrootsDesktop>(std::move(display));
    return desktop->Start(problem) ? std::move(desktop) : nullptr;
}

// The compositor releases a killed program's keys but does not tell windows that its modifiers are up, so the
// next click would have them. Pressing and releasing them on another keyboard tells the windows.
void WlrootsDesktop::KeepModifiers() {
    if (fKeyboard == nullptr) {
        return;
    }
    fKeeper.emplace([](const std::vector<std::uint16_t> & /*keys*/) {
        std::string problem;
        const std::unique_ptr<WlrootsDesktop> desktop = StartDesktop(&problem);
        if (desktop != nullptr && desktop->fKeyboard != nullptr) {
            desktop->SendModifiers(kModifierKeys.front().bit);
            desktop->SendModifiers(0);
            std::ignore = desktop->Settle(Clock::now() + kTimeToStart); // nobody is left to be told
        }
    });
}

} // namespace

std::unique_ptr<Desktop> OpenWlrootsDesktop(std::string *problem) {
    std::unique_ptr<WlrootsDesktop> desktop = StartDesktop(problem);
    if (desktop != nullptr) {
        desktop->KeepModifiers();
    }
    return desktop;
}

} // namespace drevix
