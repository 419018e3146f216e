// Stream sockets over IPv4 that, once handed to the run loop, live there until something happens to them.
// Main thread only. No call raises SIGPIPE or waits longer than it is told.
#pragma once

#include "platform/base/types.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace drevix {

// An IPv4 address as the platform's socket address has it.
struct SocketAddress {
    std::uint8_t length;                 // left 0
    std::uint8_t family;                 // kSocketFamilyIPv4
    std::array<std::uint8_t, 2> port;    // network byte order
    std::array<std::uint8_t, 4> address; // network byte order
    std::array<std::uint8_t, 8> zero;
};
static_assert(offsetof(SocketAddress, port) == 2 && offsetof(SocketAddress, address) == 4);
static_assert(sizeof(SocketAddress) == 16 && std::has_unique_object_representations_v<SocketAddress>);

inline constexpr std::uint8_t kSocketFamilyIPv4 = 2;

// An open socket. 0 is never one.
using SocketRef = std::uint32_t;

// What a socket's callback is called for.
enum class SocketCallBackType : std::uint32_t {
    Data = 3, // bytes came from the peer, and were dropped, or it hung up
};
// `address` and `data` are null: neither is asked for.
using SocketCallBack = void (*)(SocketRef socket, SocketCallBackType type, const SocketAddress *address,
                                const void *data, void *context);

// As many sockets wait in the run loop at once; one more, and the one that has waited longest is invalidated.
inline constexpr std::size_t kMostWaitingSockets = 8;

// The first IPv4 address of a host: a name, or an address in dotted form; null for the local host. Only a
// name other than "localhost" is looked up, which may take as long as the system's resolver takes. noErr, or
// fnfErr with *address unchanged.
[[nodiscard]] OSErr ResolveHost(const char *host, std::array<std::uint8_t, 4> *address);

// A new socket, owned by the caller until it is invalidated or added to the run loop; 0 when there is none to
// be had. Waiting sockets whose time has come are served first, for programs that have no event loop.
[[nodiscard]] SocketRef SocketCreate(SocketCallBack callback, void *context);
// Connects, and sends all of the bytes, within the limit. noErr, or why not: ioErr for a peer that refuses,
// closes or is too slow. The socket is good for nothing but being invalidated then.
[[nodiscard]] OSErr SocketConnect(SocketRef socket, const SocketAddress &address,
                                  std::chrono::milliseconds limit);
[[nodiscard]] OSErr SocketSend(SocketRef socket, std::string_view bytes, std::chrono::milliseconds limit);
// Leaves the socket to the run loop, which calls the callback when data arrive or the peer hangs up.
void SocketAddToRunLoop(SocketRef socket);
// Closes the socket and takes it from the run loop. Nothing for a reference that is none.
void SocketInvalidate(SocketRef socket);

// Number of open sockets, for tests that look for one left open.
[[nodiscard]] std::size_t OpenSocketCount();

} // namespace drevix
