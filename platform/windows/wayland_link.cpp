#include "platform/windows/wayland_link.h"

#include <cerrno>
#include <cstdlib>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

// A keymap takes some 60 KB; this is beyond any.
constexpr std::uint32_t kLongestKeymap = 4 << 20;

} // namespace

void LetGoOfSeat(wl_seat *seat) {
    if (wl_seat_get_version(seat) >= WL_SEAT_RELEASE_SINCE_VERSION) {
        wl_seat_release(seat);
    } else {
        wl_seat_destroy(seat);
    }
}

void LetGoOfKeyboard(wl_keyboard *keyboard) {
    if (wl_keyboard_get_version(keyboard) >= WL_KEYBOARD_RELEASE_SINCE_VERSION) {
        wl_keyboard_release(keyboard);
    } else {
        wl_keyboard_destroy(keyboard);
    }
}

// The library's own function would wait for a compositor that does not accept connections.
SystemDescriptor ConnectedToWayland() {
    const char *const display = std::getenv("WAYLAND_DISPLAY");
    const char *const folder = std::getenv("XDG_RUNTIME_DIR");
    if (display == nullptr || *display == '\0' || (*display != '/' && folder == nullptr)) {
        return {};
    }
    const std::string path = *display == '/' ? std::string(display) : std::string(folder) + '/' + display;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return {};
    }
    path.copy(address.sun_path, path.size());
    SystemDescriptor connected(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto *const where = reinterpret_cast<const sockaddr *>(&address);
    return connected && connect(connected.Get(), where, sizeof address) == 0 ? std::move(connected)
                                                                             : SystemDescriptor();
}

WaylandDisplay ConnectToWayland() {
    SystemDescriptor connected = ConnectedToWayland();
    return WaylandDisplay(connected ? wl_display_connect_to_fd(connected.Release()) : nullptr);
}

std::string ReadWaylandKeymapFile(int file, std::uint32_t size) {
    if (size > kLongestKeymap) {
        return {};
    }
    std::string text(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = pread(file, text.data() + done, size - done, static_cast<off_t>(done));
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (got == 0 || errno != EINTR) {
            return {};
        }
    }
    return text.substr(0, text.find('\0'));
}

} // namespace drevix
