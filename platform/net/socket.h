// IPv4 stream sockets that, once added to the run loop, stay there until something happens on them. Main
// thread only. No call raises SIGPIPE or blocks longer than its limit.
#pragma once

#include "platform/base/types.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace drevix {

// An IPv4 address in the platform's format.
struct SocketAddress {
    std::uint8_t length;                 // always 0
    std::uint8_t family;                 // kSocketFamilyIPv4
    std::array<std::uint8_t, 2> port;    // network byte order
    std::array<std::uint8_t, 4> address; // network byte order
    std::array<std::uint8_t, 8> zero;
};
static_assert(offsetof(SocketAddress, port) == 2 && offsetof(SocketAddress, address) == 4);
static_assert(sizeof(SocketAddress) == 16 && std::has_unique_object_representations_v<SocketAddress>);

inline constexpr std::uint8_t kSocketFamilyIPv4 = 2;

// An open socket; never 0.
using SocketRef = std::uint32_t;

// The reason for a callback.
enum class SocketCallBackType : std::uint32_t {
    Data = 3, // the peer sent bytes, which were dropped, or hung up
};
// `address` and `data` are always null.
using SocketCallBack = void (*)(SocketRef socket, SocketCallBackType type, const SocketAddress *address,
                                const void *data, void *context);

// The most sockets waiting in the run loop; one more invalidates the oldest.
inline constexpr std::size_t kMostWaitingSockets = 8;

// The first IPv4 address of a host: a name or a dotted address; null: the local host. Only a name other than
// "localhost" is looked up, which may take as long as the system's resolver takes. noErr, or fnfErr with
// *address unchanged.
[[nodiscard]] OSErr ResolveHost(const char *host, std::array<std::uint8_t, 4> *address);

// Creates a socket, owned by the caller until it is invalidated or added to the run loop; 0 on failure. First
// serves waiting sockets that are due, for programs without an event loop.
[[nodiscard]] SocketRef SocketCreate(SocketCallBack callback, void *context);
// Connects and sends all the bytes within the limit. noErr, or the error: ioErr for a peer that refuses,
// closes or is too slow. After a failure the socket can only be invalidated.
[[nodiscard]] OSErr SocketConnect(SocketRef socket, const SocketAddress &address,
                                  std::chrono::milliseconds limit);
[[nodiscard]] OSErr SocketSend(SocketRef socket, std::string_view bytes, std::chrono::milliseconds limit);
// Gives the socket to the run loop, which calls the callback when data arrive or the peer hangs up.
void SocketAddToRunLoop(SocketRef socket);
// Closes the socket and removes it from the run loop. Ignores an invalid reference.
void SocketInvalidate(SocketRef socket);

// The number of open sockets, for tests that check for one left open.
[[nodiscard]] std::size_t OpenSocketCount();

} // namespace drevix
