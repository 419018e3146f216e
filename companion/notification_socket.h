// Tells the companion dial's helper on this machine that its files have changed: one TCP connection per
// message. Main thread only.
#pragma once

#include "platform/net/socket.h"

#include <cstdint>

namespace drevix {

inline constexpr std::int32_t kSocketNoAddress = -1;

// Sends the message's bytes without its terminator (null: none) over a new connection to the host (null: this
// machine). The connection closes when the peer answers or hangs up. 0 if sent; -1 if the host cannot be
// found; else the status of the connection or transfer, with nothing left open. Takes at most 0.2 s, plus any
// name lookup.
std::int32_t SocketSendMessage(const char *message, std::uint16_t port, const char *host);

// Fills in the address of a port on the host (null: this machine). 0; -1, with the record unchanged, for a
// null record or if the host cannot be found.
[[nodiscard]] std::int32_t SocketInitAddress(SocketAddress *address, std::uint16_t port, const char *host);

// The callback of such a connection: closes it on any event.
void SocketDealWithData(SocketRef socket, SocketCallBackType type, const SocketAddress *address,
                        const void *data, void *context);

} // namespace drevix
