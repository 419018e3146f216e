// Tells the companion dial's helper, on the local machine, that its files have changed: one TCP connection a
// message. Main thread only.
#pragma once

#include "platform/net/socket.h"

#include <cstdint>

namespace drevix {

inline constexpr std::int32_t kSocketNoAddress = -1;

// Sends the message's bytes, without its terminator (null: none), over a new connection to the host (null:
// this machine), which closes when the peer answers anything or hangs up. 0 when sent; -1 when the host cannot
// be found; else the status of the connection or the transfer, and then nothing stays open. Takes at most a
// fifth of a second, but for looking up a name.
std::int32_t SocketSendMessage(const char *message, std::uint16_t port, const char *host);

// Fills the address of a port of the host (null: this machine). 0; -1, with the record unchanged, when there
// is no record or the host cannot be found.
[[nodiscard]] std::int32_t SocketInitAddress(SocketAddress *address, std::uint16_t port, const char *host);

// The callback of such a connection: closes it, whatever came.
void SocketDealWithData(SocketRef socket, SocketCallBackType type, const SocketAddress *address,
                        const void *data, void *context);

} // namespace drevix
