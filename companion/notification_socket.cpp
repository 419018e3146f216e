#include "companion/notification_socket.h"

#include "platform/base/status.h"

namespace drevix {
namespace {

// On the same machine this is immediate or never happens. A peer that accepts no connections must not block
// the window.
constexpr std::chrono::milliseconds kLimit{100};

} // namespace

std::int32_t SocketInitAddress(SocketAddress *address, std::uint16_t port, const char *host) {
    std::array<std::uint8_t, 4> found{};
    if (address == nullptr || ResolveHost(host, &found) != noErr) {
        return kSocketNoAddress;
    }
    *address = {};
    address->family = kSocketFamilyIPv4;
    address->port = {static_cast<std::uint8_t>(port >> 8), static_cast<std::uint8_t>(port)};
    address->address = found;
    return 0;
}

std::int32_t SocketSendMessage(const char *message, std::uint16_t port, const char *host) {
    SocketAddress address{};
    if (SocketInitAddress(&address, port, host) != 0) {
        return kSocketNoAddress;
    }
    const SocketRef socket = SocketCreate(SocketDealWithData, nullptr);
    OSErr status = SocketConnect(socket, address, kLimit);
    if (status == noErr && message != nullptr) {
        status = SocketSend(socket, message, kLimit);
    }
    if (status == noErr) {
        SocketAddToRunLoop(socket);
    } else {
        SocketInvalidate(socket);
    }
    return status;
}

void SocketDealWithData(SocketRef socket, SocketCallBackType /*type*/, const SocketAddress * /*address*/,
                        const void * /*data*/, void * /*context*/) {
    SocketInvalidate(socket);
}

} // namespace drevix
