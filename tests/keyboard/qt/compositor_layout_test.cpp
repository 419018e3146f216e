// The names of keys where a Wayland compositor has the keyboard.
#include "keyboard/key_names.h"
#include "tests/support/testing.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <wayland-client.h>
#include <wayland-server.h>
#include <xkbcommon/xkbcommon.h>

#include <atomic>
#include <memory>
#include <thread>

namespace drevix::test {
namespace {

// What a compositor tells its clients of the keyboard.
struct Keyboard {
    std::string keymap;
    std::optional<std::uint32_t> group; // told to a client with the focus only
    std::size_t claimed = 0;            // bytes that the keymap is said to have; 0 for those that it has
    bool isThere = true;
};

std::string KeymapText(const char *layout) {
    xkb_context *const context = xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES);
    const xkb_rule_names names = {"", "", layout, "", ""};
    xkb_keymap *const keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    char *const written = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    std::string text = written;
    std::free(written);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return text;
}

// A socket that listens in a folder and, where somebody serves it, a compositor with one seat and no more.
class Compositor {
  public:
    explicit Compositor(const ScratchFolder &folder)
        : fDisplayName("WAYLAND_DISPLAY", folder.Path("compositor")) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        folder.Path("compositor").copy(address.sun_path, sizeof address.sun_path - 1);
        fSocket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(fSocket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        EXPECT_EQ(listen(fSocket, 0), 0);
    }
    ~Compositor() {
        if (!fServing.joinable()) {
            close(fSocket);
            return;
        }
        fIsOver = true;
        fServing.join();
        wl_display_destroy_clients(fDisplay);
        wl_display_destroy(fDisplay);
    }

    void Serve(const Keyboard &keyboard) {
        fKeyboard = keyboard;
        fDisplay = wl_display_create();
        wl_global_create(fDisplay, &wl_seat_interface, 5, this, BindSeat);
        EXPECT_EQ(wl_display_add_socket_fd(fDisplay, fSocket), 0);
        fServing = std::thread([this] {
            while (!fIsOver) {
                wl_event_loop_dispatch(wl_display_get_event_loop(fDisplay), 5);
                wl_display_flush_clients(fDisplay);
            }
        });
    }

  private:
    static void Release(wl_client * /*client*/, wl_resource *resource) { wl_resource_destroy(resource); }

    static void BindSeat(wl_client *client, void *data, std::uint32_t version, std::uint32_t id) {
        static constexpr struct wl_seat_interface kSeat = {
            .get_pointer = nullptr, .get_keyboard = GiveKeyboard, .get_touch = nullptr, .release = Release};
        auto *const seat = wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(seat, &kSeat, data, nullptr);
        const bool isThere = static_cast<Compositor *>(data)->fKeyboard.isThere;
        wl_seat_send_capabilities(seat, isThere ? WL_SEAT_CAPABILITY_KEYBOARD : WL_SEAT_CAPABILITY_POINTER);
    }

    static void GiveKeyboard(wl_client *client, wl_resource *seat, std::uint32_t id) {
        static constexpr struct wl_keyboard_interface kInterface = {.release = Release};
        wl_resource *const resource =
            wl_resource_create(client, &wl_keyboard_interface, wl_resource_get_version(seat), id);
        wl_resource_set_implementation(resource, &kInterface, nullptr, nullptr);
        const Keyboard &keyboard = static_cast<Compositor *>(wl_resource_get_user_data(seat))->fKeyboard;
        const std::size_t size = keyboard.keymap.size() + 1;
        const int file = memfd_create("keymap", MFD_CLOEXEC);
        EXPECT_EQ(write(file, keyboard.keymap.c_str(), size), static_cast<ssize_t>(size));
        wl_keyboard_send_keymap(resource, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                static_cast<std::uint32_t>(keyboard.claimed != 0 ? keyboard.claimed : size));
        close(file);
        if (keyboard.group) {
            wl_keyboard_send_modifiers(resource, 1, 0, 0, 0, *keyboard.group);
        }
    }

    ScopedVariable fDisplayName;
    int fSocket = -1;
    Keyboard fKeyboard;
    wl_display *fDisplay = nullptr;
    std::atomic<bool> fIsOver = false;
    std::thread fServing;
};

// Names came from the configured layout, here the French one, whatever the compositor's was. They still do
// where it has none that can be used.
TEST(CompositorLayout, Names_AreThoseOfTheCompositorsKeymapAndGroup) {
    const std::string german = KeymapText("de,us");
    std::string invented = german; // as on-screen keyboards number their keys
    constexpr std::string_view kEscape = "Escape ]";
    invented.replace(invented.find(kEscape), kEscape.size(), "a ]");
    const std::tuple<const char *, Keyboard, char> rows[] = {
        {"the first group where none is told", {german, {}}, 'y'},
        {"the first group", {german, 0}, 'y'},
        {"the second group", {german, 1}, 'z'},
        {"a keymap that is cut off", {german, 0, german.size() * 2}, 'w'},
        {"a keymap that is none", {"xkb_keymap {", 0}, 'w'},
        {"a keymap that is too long", {german, 0, 1U << 30}, 'w'},
        {"letters on Escape", {invented, 0}, 'w'},
        {"no keyboard", {german, 0, 0, false}, 'w'},
    };
    const ScopedVariable display("DISPLAY", "");
    const ScopedVariable configured("XKB_DEFAULT_LAYOUT", "fr");
    constexpr std::uint8_t kLowerLeft = 6;
    for (const auto &[what, keyboard, printed] : rows) { // the latter on the key at the lower left
        const ScratchFolder folder;
        Compositor compositor(folder);
        compositor.Serve(keyboard);
        GetKeyboardInformation();
        EXPECT_EQ(GetKeyChar(kLowerLeft), printed) << what;
        // Over the connection that the program's windows have: nothing changes where there is no keymap.
        wl_display *const connection = wl_display_connect(nullptr);
        gAsciiTable[kLowerLeft] = '?';
        const bool isRead = GetKeyboardInformationOver(connection);
        EXPECT_EQ(GetKeyChar(kLowerLeft), isRead ? printed : '?') << what;
        EXPECT_EQ(isRead, printed != 'w') << what;
        EXPECT_NE(wl_display_roundtrip(connection), -1);
        wl_display_disconnect(connection);
    }
}

// A compositor that hangs must not hold up the start.
TEST(CompositorLayout, CompositorThatHangs_IsNotWaitedFor) {
    const ScopedVariable display("DISPLAY", "");
    const ScopedVariable configured("XKB_DEFAULT_LAYOUT", "de");
    const ScratchFolder folder;
    const Compositor compositor(folder); // the first is in its queue, and the others do not get that far
    for (int i = 0; i < 3; ++i) {
        gAsciiTable = {};
        const auto start = std::chrono::steady_clock::now();
        GetKeyboardInformation();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_EQ(GetKeyChar(6), 'y');
    }
}

} // namespace
} // namespace drevix::test
