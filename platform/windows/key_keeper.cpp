#include "platform/windows/key_keeper.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <span>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

constexpr std::size_t kMostKeys = 255;

// The number of keys, then their scan codes. Never empty, which would look like the end of the pipe.
using KeysMessage = std::array<std::uint16_t, 1 + kMostKeys>;

void KeepOnly(int end) {
    const auto kept = static_cast<unsigned>(end);
    if (kept > 3) {
        std::ignore = close_range(3, kept - 1, 0);
    }
    std::ignore = close_range(kept + 1, ~0U, 0);
    // A reader of the program's output would wait until the last holder closes it.
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        std::ignore = dup2(nothing, standard);
    }
}

// Signals from the terminal or the session that end the program must not end this process first.
void StayAlive() {
    std::ignore = setsid();
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT}) {
        std::ignore = std::signal(signal, SIG_IGN);
    }
    prctl(PR_SET_NAME, "drevix-keys");
}

[[noreturn]] void Keep(int end, const KeyKeeper::LetGo &letGo) {
    StayAlive();
    KeepOnly(end);
    KeysMessage last{};
    for (;;) {
        KeysMessage message{};
        const ssize_t size = recv(end, message.data(), sizeof message, 0);
        if (size > 0) {
            last = message;
        } else if (size == 0 || errno != EINTR) {
            break;
        }
    }
    if (const std::size_t count = std::min<std::size_t>(last.front(), kMostKeys); count > 0) {
        letGo(std::vector<std::uint16_t>(last.begin() + 1,
                                         last.begin() + 1 + static_cast<std::ptrdiff_t>(count)));
    }
    _exit(0);
}

} // namespace

KeyKeeper::KeyKeeper(LetGo letGo) : fLetGo(std::move(letGo)) {
    std::ignore = Start(); // Know tries again
}

// Starts it through an intermediate process that ends at once, so that it is not a child anyone must wait
// for.
bool KeyKeeper::Start() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return false;
    }
    fEnd.Reset(ends[0]);
    const SystemDescriptor other(ends[1]);
    const pid_t between = fork();
    if (between == 0) {
        fEnd.Reset();
        if (fork() == 0) {
            Keep(other.Get(), fLetGo);
        }
        _exit(0);
    }
    while (between > 0 && waitpid(between, nullptr, 0) < 0 && errno == EINTR) {
    }
    return between > 0;
}

bool KeyKeeper::Send(const std::vector<std::uint16_t> &keys) const {
    KeysMessage message{static_cast<std::uint16_t>(std::min(keys.size(), kMostKeys))};
    std::ranges::copy(std::span(keys).first(message.front()), message.begin() + 1);
    const std::size_t size = (1U + message.front()) * sizeof message.front();
    return send(fEnd.Get(), message.data(), size, MSG_DONTWAIT | MSG_NOSIGNAL) == static_cast<ssize_t>(size);
}

bool KeyKeeper::Know(const std::vector<std::uint16_t> &keys) {
    return Send(keys) || (Start() && Send(keys));
}

} // namespace drevix
