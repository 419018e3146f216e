// The desktop of an X server without a screen, whose window manager is played by the test.
#include "platform/files/owners.h"
#include "platform/windows/desktop_x11.h"
#include "tests/support/testing.h"

#include <array>
#include <csignal>
#include <memory>
#include <poll.h>
#include <thread>
#include <xcb/xcb.h>

namespace drevix {
namespace {

using namespace std::chrono_literals;

template <class Object>
using Freed = std::unique_ptr<Object, decltype(&std::free)>;

constexpr std::uint16_t kKeyA = 30; // scan code
constexpr std::uint16_t kLeftShift = 42;

bool Within(std::chrono::milliseconds time, const std::function<bool()> &look) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!look()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

class DesktopX11 : public testing::Test {
  protected:
    void SetUp() override {
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        const SystemDescriptor told(ends[0]);
        fServer = fork();
        if (fServer == 0) {
            const std::string end = std::to_string(ends[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", end.c_str(), "-nolisten", "tcp", nullptr);
            _exit(1);
        }
        close(ends[1]);
        std::array<char, 16> number{};
        pollfd look = {.fd = told.Get(), .events = POLLIN, .revents = 0};
        if (poll(&look, 1, 20000) <= 0 || read(told.Get(), number.data(), number.size() - 1) <= 0) {
            GTEST_SKIP() << "there is no Xvfb";
        }
        fDisplay = ':' + std::string(number.data(), std::strcspn(number.data(), "\n"));
        fManager.reset(xcb_connect(fDisplay.c_str(), nullptr));
        fRoot = xcb_setup_roots_iterator(xcb_get_setup(fManager.get())).data->root;
        const std::uint32_t managing = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
        xcb_change_window_attributes(fManager.get(), fRoot, XCB_CW_EVENT_MASK, &managing);
        fDesktop = OpenX11Desktop(fDisplay.c_str());
        ASSERT_NE(fDesktop, nullptr);
    }
    void TearDown() override {
        fDesktop.reset();
        EndServer();
    }
    void EndServer() {
        if (fServer > 0) {
            kill(fServer, SIGKILL);
            waitpid(fServer, nullptr, 0);
            fServer = 0;
        }
    }

    [[nodiscard]] xcb_atom_t Atom(const char *name) const {
        const auto cookie =
            xcb_intern_atom(fManager.get(), 0, static_cast<std::uint16_t>(std::strlen(name)), name);
        return Freed<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(fManager.get(), cookie, nullptr),
                                              &std::free)
            ->atom;
    }
    void Set(xcb_window_t window, xcb_atom_t property, std::uint32_t value) const {
        xcb_change_property(fManager.get(), XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_CARDINAL, 32, 1,
                            &value);
        xcb_flush(fManager.get());
    }
    void Name(xcb_window_t window, const char *property, const std::string &text) const {
        xcb_change_property(fManager.get(), XCB_PROP_MODE_REPLACE, window, Atom(property), XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
        xcb_flush(fManager.get());
    }
    [[nodiscard]] xcb_window_t Window(const std::string &name, const std::string &itsClass) const {
        const xcb_window_t window = xcb_generate_id(fManager.get());
        xcb_create_window(fManager.get(), XCB_COPY_FROM_PARENT, window, fRoot, 0, 0, 9, 9, 0,
                          XCB_WINDOW_CLASS_COPY_FROM_PARENT, XCB_COPY_FROM_PARENT, 0, nullptr);
        if (!itsClass.empty()) {
            Name(window, "WM_CLASS", name + '\0' + itsClass + '\0');
        }
        return window;
    }
    void Activate(xcb_window_t window) const { Set(fRoot, Atom("_NET_ACTIVE_WINDOW"), window); }
    void Support(const std::vector<xcb_atom_t> &names) const {
        xcb_change_property(fManager.get(), XCB_PROP_MODE_REPLACE, fRoot, Atom("_NET_SUPPORTED"),
                            XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(names.size()), names.data());
        xcb_flush(fManager.get());
    }
    [[nodiscard]] bool IsFront(const std::string &windowClass) const {
        return Within(5s, [&] { return fDesktop->Take() && fDesktop->Front().windowClass == windowClass; });
    }
    // By the server's own account, whoever has pressed it.
    [[nodiscard]] bool IsDown(std::uint16_t scanCode) const {
        const Freed<xcb_query_keymap_reply_t> keys(
            xcb_query_keymap_reply(fManager.get(), xcb_query_keymap(fManager.get()), nullptr), &std::free);
        const unsigned code = scanCode + 8U;
        return (keys->keys[code / 8] >> (code % 8) & 1) != 0;
    }
    // The next event of this kind; null where none comes.
    [[nodiscard]] Freed<xcb_generic_event_t> Next(int kind) const {
        Freed<xcb_generic_event_t> event(nullptr, &std::free);
        const bool came = Within(5s, [&] {
            event.reset(xcb_poll_for_event(fManager.get()));
            return event != nullptr && (event->response_type & 0x7F) == kind;
        });
        return came ? std::move(event) : Freed<xcb_generic_event_t>(nullptr, &std::free);
    }

    pid_t fServer = 0;
    std::string fDisplay;
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> fManager{nullptr, &xcb_disconnect};
    xcb_window_t fRoot = XCB_NONE;
    std::unique_ptr<Desktop> fDesktop;
};

TEST_F(DesktopX11, FrontWindow_IsToldAsItChanges) {
    EXPECT_TRUE(IsFront(""));
    const xcb_window_t gimp = Window("gimp", "Gimp-2.10");
    Activate(gimp);
    EXPECT_TRUE(IsFront("Gimp-2.10"));
    EXPECT_EQ(fDesktop->Front().windowName, "gimp");
    EXPECT_EQ(fDesktop->Front().process, static_cast<std::uint32_t>(getpid()));
    EXPECT_NE(fDesktop->Front().program.find("platform_windows_test"), std::string::npos);

    const xcb_window_t dialog = Window("portal", "Portal");
    Set(dialog, XCB_ATOM_WM_TRANSIENT_FOR, gimp);
    Activate(dialog);
    EXPECT_TRUE(IsFront("Gimp-2.10")) << "a dialog is its owner's";
    const xcb_window_t office = Window("office", "Start\xE9");
    Activate(office);
    EXPECT_TRUE(IsFront("Start\u00E9"));
    for (const char *other : {"Writer", "Calc"}) { // a window may become another application's
        Name(office, "WM_CLASS", std::string("office\0", 7) + other);
        EXPECT_TRUE(IsFront(other));
    }
    const xcb_window_t ofNameless = Window("java", "Java");
    Set(ofNameless, XCB_ATOM_WM_TRANSIENT_FOR, Window("", ""));
    Name(ofNameless, "_KDE_NET_WM_DESKTOP_FILE", "/usr/share/applications/org.kde.kate.desktop");
    Activate(ofNameless);
    EXPECT_TRUE(IsFront("Java"));
    EXPECT_EQ(fDesktop->Front().entryId, "org.kde.kate.desktop");
    Set(gimp, XCB_ATOM_WM_TRANSIENT_FOR, dialog); // in a circle
    Activate(dialog);
    EXPECT_TRUE(IsFront("Gimp-2.10"));
    Activate(XCB_NONE);
    EXPECT_TRUE(IsFront(""));
}

TEST_F(DesktopX11, Keys_AreLetGoAtEveryEnd) {
    EXPECT_FALSE(fDesktop->Key(248, true));
    ASSERT_TRUE(fDesktop->Key(kLeftShift, true) && fDesktop->Key(kKeyA, true) && fDesktop->Flush());
    EXPECT_TRUE(Within(5s, [&] { return IsDown(kLeftShift) && IsDown(kKeyA); }));
    ASSERT_TRUE(fDesktop->Key(kKeyA, false) && fDesktop->Flush());
    EXPECT_TRUE(Within(5s, [&] { return !IsDown(kKeyA) && IsDown(kLeftShift); }));
    fDesktop.reset();
    EXPECT_FALSE(IsDown(kLeftShift));

    const pid_t helper = fork();
    if (helper == 0) {
        const std::unique_ptr<Desktop> desktop = OpenX11Desktop(fDisplay.c_str());
        const bool isDown = desktop->Key(kLeftShift, true) && desktop->Key(kKeyA, true) && desktop->Flush();
        pause();
        _exit(isDown ? 0 : 1);
    }
    EXPECT_TRUE(Within(5s, [&] { return IsDown(kLeftShift) && IsDown(kKeyA); }));
    kill(helper, SIGKILL);
    waitpid(helper, nullptr, 0);
    EXPECT_TRUE(Within(5s, [&] { return !IsDown(kLeftShift) && !IsDown(kKeyA); })) << "killed";
}

TEST_F(DesktopX11, Layout_IsAskedForAgainWhenKeysGetOtherCharacters) {
    ASSERT_TRUE(fDesktop->Take());
    const unsigned before = fDesktop->LayoutChanges();
    ASSERT_TRUE(fDesktop->Key(kLeftShift, true) && fDesktop->Key(kKeyA, true) && fDesktop->Flush());
    ASSERT_TRUE(fDesktop->Key(kKeyA, false) && fDesktop->Key(kLeftShift, false) && fDesktop->Flush());
    EXPECT_TRUE(Within(5s, [&] { return !IsDown(kLeftShift); }));
    ASSERT_TRUE(fDesktop->Take());
    const unsigned typed = fDesktop->LayoutChanges();
    EXPECT_LE(typed, before + 1) << "at most the keys' keyboard came to the front, not each key";
    const xcb_keysym_t other = 'y';
    xcb_change_keyboard_mapping(fManager.get(), 1, kKeyA + 8, 1, &other);
    xcb_flush(fManager.get());
    EXPECT_TRUE(Within(5s, [&] { return fDesktop->Take() && fDesktop->LayoutChanges() > typed; }));
}

TEST_F(DesktopX11, Wheel_TurnsAreButtonsOfEachDirection) {
    const std::uint32_t buttons = XCB_EVENT_MASK_BUTTON_PRESS;
    xcb_change_window_attributes(fManager.get(), fRoot, XCB_CW_EVENT_MASK, &buttons);
    EXPECT_FALSE(IsDown(kKeyA)); // the server has come so far
    using enum ScrollDirection;
    ASSERT_TRUE(fDesktop->Scroll(Up, 2) && fDesktop->Scroll(Down, 1) && fDesktop->Scroll(Left, 1) &&
                fDesktop->Scroll(Right, 1) && fDesktop->Flush());
    for (const int button : {4, 4, 5, 6, 7}) {
        const auto press = Next(XCB_BUTTON_PRESS);
        ASSERT_NE(press, nullptr) << button;
        EXPECT_EQ(reinterpret_cast<const xcb_button_press_event_t *>(press.get())->detail, button);
    }
}

TEST_F(DesktopX11, Requests_GoToTheWindowManager) {
    const std::tuple<WindowRequest, const char *, const char *, bool, std::uint32_t> rows[] = {
        {WindowRequest::Close, "_NET_CLOSE_WINDOW", "_NET_CLOSE_WINDOW", true, XCB_CURRENT_TIME},
        {WindowRequest::Minimize, "_NET_ACTIVE_WINDOW", "WM_CHANGE_STATE", true, 3},
        {WindowRequest::FullScreen, "_NET_WM_STATE_FULLSCREEN", "_NET_WM_STATE", true, 2},
        {WindowRequest::ShowDesktop, "_NET_SHOWING_DESKTOP", "_NET_SHOWING_DESKTOP", false, 1},
    };
    const xcb_window_t window = Window("a", "A");
    Activate(window);
    ASSERT_TRUE(IsFront("A"));
    for (const auto &[request, needed, name, isToWindow, first] : rows) {
        EXPECT_FALSE(fDesktop->Ask(request)) << name << " although this is not supported";
        Support({Atom("UTF8_STRING"), Atom(needed)});
        ASSERT_TRUE(Within(5s, [&, asked = request] { return fDesktop->Ask(asked); })) << name;
        ASSERT_TRUE(fDesktop->Flush());
        const auto event = Next(XCB_CLIENT_MESSAGE);
        ASSERT_NE(event, nullptr) << name;
        const auto &message = *reinterpret_cast<const xcb_client_message_event_t *>(event.get());
        EXPECT_EQ(message.type, Atom(name));
        EXPECT_EQ(message.window, isToWindow ? window : fRoot) << name;
        EXPECT_EQ(message.data.data32[0], first) << name;
    }
    EXPECT_FALSE(fDesktop->Ask(WindowRequest::ShowAllWindows));
}

TEST_F(DesktopX11, ServerGone_IsToldAndSurvived) {
    ASSERT_TRUE(fDesktop->Key(kKeyA, true) && fDesktop->Flush() && fDesktop->Take());
    EndServer();
    EXPECT_TRUE(Within(5s, [&] { return !fDesktop->Take(); }));
    EXPECT_FALSE(fDesktop->Flush());
    EXPECT_EQ(OpenX11Desktop(fDisplay.c_str()), nullptr);
}

} // namespace
} // namespace drevix
