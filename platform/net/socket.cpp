#include "platform/net/socket.h"

#include "platform/base/loop_watch.h"
#include "platform/base/status.h"
#include "platform/files/owners.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <utility>
#include <vector>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;

struct OpenSocket {
    SocketRef ref;
    SystemDescriptor descriptor;
    SocketCallBack callback;
    void *context;
    std::unique_ptr<LoopWatch> watch; // while in the run loop; destroyed before the descriptor
};

std::vector<OpenSocket> gSockets; // in the order in which they started waiting
SocketRef gLastRef = 0;

OpenSocket *FindSocket(SocketRef ref) {
    const auto found = std::ranges::find(gSockets, ref, &OpenSocket::ref);
    return found == gSockets.end() ? nullptr : &*found;
}

// Closing a socket with unread bytes resets the connection, so read them first; not forever, in case the peer
// never stops.
void DropWhatArrived(int descriptor) {
    constexpr std::size_t kMost = std::size_t{1} << 20;
    std::array<char, 4096> dropped{};
    ssize_t count = 1;
    for (std::size_t total = 0; count > 0 && total < kMost; total += static_cast<std::size_t>(count)) {
        do {
            count = ::recv(descriptor, dropped.data(), dropped.size(), MSG_DONTWAIT);
        } while (count < 0 && errno == EINTR);
    }
}

// The callback may invalidate this socket, which moves the others.
void CallBack(SocketRef ref) {
    if (const OpenSocket *socket = FindSocket(ref)) {
        DropWhatArrived(socket->descriptor.Get());
        socket->callback(ref, SocketCallBackType::Data, nullptr, nullptr, socket->context);
    }
}

OSErr WaitFor(int descriptor, short events, Clock::time_point end) {
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        struct pollfd wanted = {descriptor, events, 0};
        const int ready = ::poll(&wanted, 1, static_cast<int>(std::max(left.count(), std::int64_t{0})));
        if (ready > 0) {
            return noErr;
        }
        if (ready == 0 || errno != EINTR) {
            return ready == 0 ? StatusFromErrno(ETIMEDOUT) : StatusFromErrno(errno);
        }
    }
}

OSErr FinishConnecting(int descriptor, Clock::time_point end) {
    if (const OSErr status = WaitFor(descriptor, POLLOUT, end); status != noErr) {
        return status;
    }
    int error = 0;
    socklen_t size = sizeof(error);
    return ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? StatusFromErrno(error)
                                                                              : StatusFromErrno(errno);
}

bool IsReadable(const OpenSocket &socket) {
    return socket.watch != nullptr && WaitFor(socket.descriptor.Get(), POLLIN, Clock::time_point()) == noErr;
}

void ServeWaitingSockets() {
    std::vector<SocketRef> ready;
    for (const OpenSocket &socket : gSockets) {
        if (IsReadable(socket)) {
            ready.push_back(socket.ref);
        }
    }
    std::ranges::for_each(ready, CallBack);
}

} // namespace

OSErr ResolveHost(const char *host, std::array<std::uint8_t, 4> *address) {
    constexpr std::array<std::uint8_t, 4> kLocalHost = {127, 0, 0, 1};
    if (host == nullptr || ::strcasecmp(host, "localhost") == 0) { // never looked up: RFC 6761, 6.3
        *address = kLocalHost;
        return noErr;
    }
    if (::inet_pton(AF_INET, host, address->data()) == 1) {
        return noErr;
    }
    struct addrinfo wish {};
    wish.ai_family = AF_INET;
    wish.ai_socktype = SOCK_STREAM;
    struct addrinfo *found = nullptr;
    if (::getaddrinfo(host, nullptr, &wish, &found) != 0) {
        return fnfErr;
    }
    struct sockaddr_in first {};
    std::memcpy(&first, found->ai_addr, sizeof(first));
    std::memcpy(address->data(), &first.sin_addr, address->size());
    ::freeaddrinfo(found);
    return noErr;
}

SocketRef SocketCreate(SocketCallBack callback, void *context) {
    ServeWaitingSockets();
    SystemDescriptor descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_TCP));
    if (!descriptor) {
        return 0;
    }
    gLastRef = gLastRef == UINT32_MAX ? 1 : gLastRef + 1;
    gSockets.push_back({gLastRef, std::move(descriptor), callback, context, nullptr});
    return gLastRef;
}

OSErr SocketConnect(SocketRef ref, const SocketAddress &address, std::chrono::milliseconds limit) {
    const OpenSocket *socket = FindSocket(ref);
    if (socket == nullptr) {
        return rfNumErr;
    }
    struct sockaddr_in to {};
    to.sin_family = AF_INET;
    std::memcpy(&to.sin_port, address.port.data(), address.port.size());
    std::memcpy(&to.sin_addr, address.address.data(), address.address.size());
    const Clock::time_point end = Clock::now() + limit;
    const int descriptor = socket->descriptor.Get();
    if (::connect(descriptor, reinterpret_cast<const struct sockaddr *>(&to), sizeof(to)) == 0) {
        return noErr;
    }
    return errno == EINPROGRESS || errno == EINTR ? FinishConnecting(descriptor, end)
                                                  : StatusFromErrno(errno);
}

OSErr SocketSend(SocketRef ref, std::string_view bytes, std::chrono::milliseconds limit) {
    const OpenSocket *socket = FindSocket(ref);
    if (socket == nullptr) {
        return rfNumErr;
    }
    const Clock::time_point end = Clock::now() + limit;
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket->descriptor.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno == EAGAIN) {
            if (const OSErr status = WaitFor(socket->descriptor.Get(), POLLOUT, end); status != noErr) {
                return status;
            }
        } else if (errno != EINTR) {
            return StatusFromErrno(errno);
        }
    }
    return noErr;
}

void SocketAddToRunLoop(SocketRef ref) {
    OpenSocket *socket = FindSocket(ref);
    if (socket == nullptr || socket->watch != nullptr) {
        return;
    }
    socket->watch = std::make_unique<LoopWatch>([ref] { CallBack(ref); });
    socket->watch->Watch(socket->descriptor.Get(), POLLIN, std::nullopt);
    const auto isWaiting = [](const OpenSocket &open) { return open.watch != nullptr; };
    if (static_cast<std::size_t>(std::ranges::count_if(gSockets, isWaiting)) > kMostWaitingSockets) {
        SocketInvalidate(std::ranges::find_if(gSockets, isWaiting)->ref);
    }
}

void SocketInvalidate(SocketRef ref) {
    std::erase_if(gSockets, [ref](const OpenSocket &socket) { return socket.ref == ref; });
}

std::size_t OpenSocketCount() {
    return gSockets.size();
}

} // namespace drevix
