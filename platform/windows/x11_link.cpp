#include "platform/windows/x11_link.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <utility>
#include <xcb/xcbext.h>

namespace drevix {
namespace {

constexpr std::chrono::milliseconds kTimeToConnect{5000};
constexpr std::uint32_t kLongestProperty = 16384; // in words of four bytes

// In the order of X11Name.
constexpr auto kNames = std::to_array<std::string_view>({
    "_NET_SUPPORTED",
    "_NET_ACTIVE_WINDOW",
    "_NET_SHOWING_DESKTOP",
    "_NET_CLOSE_WINDOW",
    "_NET_WM_STATE",
    "_NET_WM_STATE_FULLSCREEN",
    "WM_CHANGE_STATE",
    "_GTK_APPLICATION_ID",
    "_KDE_NET_WM_DESKTOP_FILE",
    "_NET_WM_PID",
});
static_assert(kNames.size() == static_cast<std::size_t>(X11Name::Count));

} // namespace

std::unique_ptr<X11Link> X11Link::Open(const char *display) {
    int screen = 0;
    xcb_connection_t *const connection = xcb_connect(display, &screen);
    std::unique_ptr<X11Link> link(new X11Link(connection, screen));
    return link->IsLost() || link->fRoot == XCB_NONE ? nullptr : std::move(link);
}

X11Link::X11Link(xcb_connection_t *connection, int screen) : fConnection(connection) {
    if (IsLost()) {
        return;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 1 && screen > 0; --screen) {
        xcb_screen_next(&screens);
    }
    fRoot = screens.rem > 0 ? screens.data->root : XCB_NONE;
    GiveTime(kTimeToConnect);
    std::array<xcb_intern_atom_cookie_t, kNames.size()> questions{};
    std::ranges::transform(kNames, questions.begin(), [connection](std::string_view name) {
        return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    });
    std::ranges::transform(questions, fAtoms.begin(), [this](xcb_intern_atom_cookie_t question) {
        const auto answer = Await<xcb_intern_atom_reply_t>(question);
        return answer == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : answer->atom;
    });
}

void *X11Link::AwaitAnswer(unsigned sequence) {
    xcb_flush(fConnection.get());
    for (;;) {
        void *answer = nullptr;
        xcb_generic_error_t *error = nullptr;
        if (xcb_poll_for_reply(fConnection.get(), sequence, &answer, &error) != 0) {
            const X11Owner<xcb_generic_error_t> freed(error);
            return answer;
        }
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(fEnd - std::chrono::steady_clock::now()).count();
        pollfd look = {.fd = xcb_get_file_descriptor(fConnection.get()), .events = POLLIN, .revents = 0};
        const int ready = left > 0 ? poll(&look, 1, static_cast<int>(left)) : 0;
        if (ready == 0 || (ready < 0 && errno != EINTR)) {
            xcb_discard_reply(fConnection.get(), sequence);
            fIsLate = true;
            return nullptr;
        }
    }
}

xcb_get_property_cookie_t X11Link::AskFor(xcb_window_t window, xcb_atom_t property) const {
    return xcb_get_property(fConnection.get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                            kLongestProperty);
}

std::string X11Link::AwaitBytes(xcb_get_property_cookie_t question, unsigned format) {
    const auto answer = Await<xcb_get_property_reply_t>(question);
    if (answer == nullptr || answer->format != format) {
        return {};
    }
    const auto size = static_cast<std::size_t>(xcb_get_property_value_length(answer.get()));
    return {static_cast<const char *>(xcb_get_property_value(answer.get())), size};
}

std::string X11Link::AwaitText(xcb_get_property_cookie_t question) {
    return AwaitBytes(question, 8);
}

std::vector<std::uint32_t> X11Link::AwaitNumbers(xcb_get_property_cookie_t question) {
    const std::string bytes = AwaitBytes(question, 32);
    std::vector<std::uint32_t> numbers(bytes.size() / sizeof(std::uint32_t));
    if (!numbers.empty()) {
        std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(std::uint32_t));
    }
    return numbers;
}

} // namespace drevix
