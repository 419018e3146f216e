#include "platform/windows/desktop_x11.h"

#include "platform/windows/key_keeper.h"
#include "platform/windows/x11_front.h"
#include "platform/windows/x11_layout.h"
#include "platform/windows/x11_link.h"

#include <algorithm>
#include <bitset>
#include <chrono>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>
#include <xcb/xtest.h>

namespace drevix {
namespace {

constexpr unsigned kKeycodeOffset = 8; // X11 keeps the key codes 0 to 7 for itself
constexpr std::size_t kX11Keys = 256 - kKeycodeOffset;
using KeySet = std::bitset<kX11Keys>;

// Smaller than the library's own buffer, which it would send when full, in the middle of a keystroke.
constexpr int kMostUnsent = 200;
constexpr std::chrono::milliseconds kTimeToAnswer{200};

constexpr std::uint8_t kFirstWheelButton = 4; // up, down, left, right

enum class KeyState : std::uint8_t { Down = XCB_KEY_PRESS, Up = XCB_KEY_RELEASE };

void SendInput(const X11Link &link, std::uint8_t kind, std::size_t detail) {
    xcb_test_fake_input(link.Get(), kind, static_cast<std::uint8_t>(detail), XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                        0);
}

void SendKey(const X11Link &link, std::size_t scanCode, KeyState state) {
    SendInput(link, static_cast<std::uint8_t>(state), scanCode + kKeycodeOffset);
}

// Waits, for a while, until the server has done what was requested.
void Settle(X11Link *link) {
    link->GiveTime(kTimeToAnswer);
    std::ignore = link->Await<xcb_get_input_focus_reply_t>(xcb_get_input_focus(link->Get()));
}

bool HasTestExtension(const X11Link &link) {
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(link.Get(), &xcb_test_id);
    return extension != nullptr && extension->present != 0;
}

std::vector<std::uint16_t> ListOf(const KeySet &keys) {
    std::vector<std::uint16_t> list;
    for (std::size_t key = 0; key < kX11Keys; ++key) {
        if (keys.test(key)) {
            list.push_back(static_cast<std::uint16_t>(key));
        }
    }
    return list;
}

// Runs in the keeper's process, over its own connection. Not at once: the server may still have to read a
// press from the killed program, and it may read two connections in either order. Only once: a second time
// would release keys of a program that has taken the killed one's place.
void LetGo(const std::string &display, const std::vector<std::uint16_t> &keys) {
    constexpr std::chrono::milliseconds kBeforeRelease{50};
    std::this_thread::sleep_for(kBeforeRelease);
    const std::unique_ptr<X11Link> link = X11Link::Open(display.empty() ? nullptr : display.c_str());
    if (link == nullptr) {
        return;
    }
    for (const std::uint16_t key : keys) {
        SendKey(*link, key, KeyState::Up);
    }
    Settle(link.get());
}

// A message to the window manager about a window.
struct Message {
    X11Name name;
    std::array<std::uint32_t, 5> data{};
};

class X11Desktop final : public Desktop {
  public:
    X11Desktop(std::unique_ptr<X11Link> link, const std::string &display)
        : fLink(std::move(link)), fFront(fLink.get()), fLayout(fLink.get()),
          fHasTest(HasTestExtension(*fLink)),
          fKeeper([display](const std::vector<std::uint16_t> &keys) { LetGo(display, keys); }) {}
    ~X11Desktop() override;

    [[nodiscard]] int Descriptor() const override { return xcb_get_file_descriptor(fLink->Get()); }
    [[nodiscard]] bool Take() override;
    [[nodiscard]] const FrontWindow &Front() const override { return fFront.Description(); }
    [[nodiscard]] unsigned LayoutChanges() const override { return fLayout.Changes(); }
    [[nodiscard]] bool Key(std::uint16_t scanCode, bool down) override;
    [[nodiscard]] bool Scroll(ScrollDirection direction, int steps) override;
    [[nodiscard]] bool Ask(WindowRequest request) override;
    [[nodiscard]] bool Flush() override;

  private:
    void TellKeeper(const KeySet &keys);
    void CountUnsent();
    [[nodiscard]] bool AskFrontWindow(X11Name needed, const Message &message);
    [[nodiscard]] bool ToggleShowDesktop();
    [[nodiscard]] bool IsSupported(X11Name name);
    void Send(xcb_window_t window, const Message &message);

    std::unique_ptr<X11Link> fLink;
    X11Front fFront;
    X11LayoutWatch fLayout;
    bool fHasTest;
    KeyKeeper fKeeper;
    KeySet fDown;
    KeySet fKept; // what the keeper knows of
    int fUnsent = 0;
};

X11Desktop::~X11Desktop() {
    for (const std::uint16_t key : ListOf(fDown)) {
        SendKey(*fLink, key, KeyState::Up);
    }
    fDown.reset();
    Settle(fLink.get());
    if (!fLink->IsLate()) { // else the keeper tries
        TellKeeper({});
    }
}

bool X11Desktop::Take() {
    do {
        while (const X11Owner<xcb_generic_event_t> event{xcb_poll_for_event(fLink->Get())}) {
            fFront.Notice(*event);
            fLayout.Notice(*event);
        }
    } while (fFront.Update());
    return !fLink->IsLost();
}

bool X11Desktop::Key(std::uint16_t scanCode, bool down) {
    if (!fHasTest || scanCode >= kX11Keys) {
        return false;
    }
    SendKey(*fLink, scanCode, down ? KeyState::Down : KeyState::Up);
    fDown.set(scanCode, down);
    CountUnsent();
    return true;
}

bool X11Desktop::Scroll(ScrollDirection direction, int steps) {
    const std::size_t button = kFirstWheelButton + static_cast<std::size_t>(direction);
    for (int step = 0; fHasTest && step < steps; ++step) {
        SendInput(*fLink, XCB_BUTTON_PRESS, button);
        SendInput(*fLink, XCB_BUTTON_RELEASE, button);
        CountUnsent();
    }
    return fHasTest;
}

void X11Desktop::CountUnsent() {
    if (++fUnsent >= kMostUnsent) {
        std::ignore = Flush(); // a lost connection is noticed at the next one
    }
}

// Without a keeper the keys are pressed anyway: it matters only if the program is killed.
void X11Desktop::TellKeeper(const KeySet &keys) {
    if (keys != fKept) {
        std::ignore = fKeeper.Know(ListOf(keys));
        fKept = keys;
    }
}

// Keys pressed and released between two calls reach the server together, so the keeper need not know them.
bool X11Desktop::Flush() {
    TellKeeper(fKept | fDown);
    xcb_flush(fLink->Get());
    fUnsent = 0;
    TellKeeper(fDown);
    return !fLink->IsLost();
}

bool X11Desktop::Ask(WindowRequest request) {
    constexpr std::uint32_t kToggle = 2;
    constexpr std::uint32_t kFromUser = 2; // as from a taskbar
    constexpr std::uint32_t kIconic = 3;
    switch (request) {
    case WindowRequest::Close:
        return AskFrontWindow(X11Name::CloseWindow, {X11Name::CloseWindow, {XCB_CURRENT_TIME, kFromUser}});
    case WindowRequest::Minimize: // older than the list of what is supported
        return AskFrontWindow(X11Name::ActiveWindow, {X11Name::ChangeState, {kIconic}});
    case WindowRequest::FullScreen:
        return AskFrontWindow(
            X11Name::FullScreen,
            {X11Name::WindowState, {kToggle, fLink->Atom(X11Name::FullScreen), XCB_ATOM_NONE, kFromUser}});
    case WindowRequest::ShowDesktop:
        return ToggleShowDesktop();
    case WindowRequest::ShowApplicationWindows:
    case WindowRequest::ShowAllWindows:
        break; // there is no message for these
    }
    return false;
}

bool X11Desktop::AskFrontWindow(X11Name needed, const Message &message) {
    if (!IsSupported(needed)) {
        return false;
    }
    if (fFront.Window() != XCB_NONE) {
        Send(fFront.Window(), message);
    }
    return true;
}

bool X11Desktop::ToggleShowDesktop() {
    if (!IsSupported(X11Name::ShowingDesktop)) {
        return false;
    }
    const auto showing =
        fLink->AwaitNumbers(fLink->AskFor(fLink->Root(), fLink->Atom(X11Name::ShowingDesktop)));
    const bool isShowing = !showing.empty() && showing.front() != 0;
    Send(fLink->Root(), {X11Name::ShowingDesktop, {isShowing ? 0U : 1U}});
    return true;
}

// Asks each time, because the window manager may have been replaced.
bool X11Desktop::IsSupported(X11Name name) {
    fLink->GiveTime(kTimeToAnswer);
    const auto names = fLink->AwaitNumbers(fLink->AskFor(fLink->Root(), fLink->Atom(X11Name::Supported)));
    return std::ranges::count(names, fLink->Atom(name)) > 0;
}

void X11Desktop::Send(xcb_window_t window, const Message &message) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = fLink->Atom(message.name);
    std::ranges::copy(message.data, event.data.data32);
    xcb_send_event(fLink->Get(), 0, fLink->Root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
}

} // namespace

std::unique_ptr<Desktop> OpenX11Desktop(const char *display) {
    std::unique_ptr<X11Link> link = X11Link::Open(display);
    return link == nullptr ? nullptr
                           : std::make_unique<X11Desktop>(std::move(link), display == nullptr ? "" : display);
}

} // namespace drevix
