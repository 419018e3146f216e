#include "platform/windows/wayland_keyboard.h"

#include "platform/files/owners.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <wayland-client.h>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;

template <auto Destroy>
struct Destroyer {
    template <class Object>
    void operator()(Object *object) const {
        Destroy(object);
    }
};
template <class Object, auto Destroy>
using Owner = std::unique_ptr<Object, Destroyer<Destroy>>;

// The versions that let go of a seat and of its keyboard; what is only destroyed here goes on to be told of
// in the compositor.
constexpr std::uint32_t kSeatVersion = 5;

void LetGo(wl_seat *seat) {
    if (wl_seat_get_version(seat) >= WL_SEAT_RELEASE_SINCE_VERSION) {
        wl_seat_release(seat);
    } else {
        wl_seat_destroy(seat);
    }
}
void LetGo(wl_keyboard *keyboard) {
    if (wl_keyboard_get_version(keyboard) >= WL_KEYBOARD_RELEASE_SINCE_VERSION) {
        wl_keyboard_release(keyboard);
    } else {
        wl_keyboard_destroy(keyboard);
    }
}

// A keymap takes some 60 KB; this is beyond any.
constexpr std::uint32_t kLongestKeymap = 4 << 20;

// Empty for a file that does not hold as much, which reading shows where mapping would end the program.
std::string ReadKeymapFile(int file, std::uint32_t size) {
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

// Asks over one connection, on a queue of its own, so that nobody else's events are handled here.
class Asker {
  public:
    Asker(wl_display *display, Clock::time_point end)
        : fDisplay(display), fEnd(end), fQueue(wl_display_create_queue(display)) {}

    // Each answer is needed for the next question: which seats there are, which has a keyboard, its keymap.
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
    Owner<wl_event_queue, wl_event_queue_destroy> fQueue; // goes after all that is on it
    Owner<wl_display, wl_proxy_wrapper_destroy> fOnQueue;
    Owner<wl_registry, wl_registry_destroy> fRegistry;
    Owner<wl_seat, static_cast<void (*)(wl_seat *)>(LetGo)> fSeat;
    Owner<wl_keyboard, static_cast<void (*)(wl_keyboard *)>(LetGo)> fKeyboard;
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
                asker->fSeat.reset(static_cast<wl_seat *>(
                    wl_registry_bind(registry, name, &wl_seat_interface, std::min(version, kSeatVersion))));
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

// Called from C, which no exception may cross.
void Asker::TakeKeymap(std::uint32_t format, SystemDescriptor file, std::uint32_t size) try {
    if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) {
        fKeymap.text = ReadKeymapFile(file.Get(), size);
    }
} catch (const std::bad_alloc &) {
    fKeymap.text.clear();
}

// An answer to a sync comes behind the answers to all that was asked before it.
bool Asker::WaitForAnswers() {
    static constexpr wl_callback_listener kListener = {
        .done = [](void *isDone, wl_callback *, std::uint32_t) { *static_cast<bool *>(isDone) = true; }};
    bool isDone = false;
    const Owner<wl_callback, wl_callback_destroy> sync(wl_display_sync(fOnQueue.get()));
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

// Takes in what is there, or comes before the time is up.
bool Asker::TakeInEvents() {
    if (wl_display_prepare_read_queue(fDisplay, fQueue.get()) != 0) { // some are there already
        return wl_display_dispatch_queue_pending(fDisplay, fQueue.get()) >= 0;
    }
    // What a compositor that is slow to read leaves over is sent with the next request.
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

// A socket that is connected to the compositor, if there is one. The library's own way would wait for one that
// does not accept.
SystemDescriptor ConnectedSocket() {
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

} // namespace

bool ReadWaylandKeymap(std::chrono::milliseconds limit, WaylandKeymap *keymap) {
    const Clock::time_point end = Clock::now() + limit;
    SystemDescriptor connected = ConnectedSocket();
    if (!connected) {
        return false;
    }
    const Owner<wl_display, wl_display_disconnect> display(wl_display_connect_to_fd(connected.Release()));
    return display != nullptr && Asker(display.get(), end).Ask(keymap);
}

bool ReadWaylandKeymapOver(void *connection, std::chrono::milliseconds limit, WaylandKeymap *keymap) {
    return Asker(static_cast<wl_display *>(connection), Clock::now() + limit).Ask(keymap);
}

} // namespace drevix
