// Events between processes and their handlers: addressed by process serial number, sent over the session bus,
// delivered by the event loop. Main thread only. Never blocks.
#pragma once

#include "platform/base/types.h"
#include "platform/bus/processes.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace drevix {

using AEEventClass = OSType;
using AEEventID = OSType;
using AEKeyword = OSType;
using DescType = OSType;

inline constexpr DescType typeNull = FourCharCode("null");     // no data
inline constexpr DescType typeWildCard = FourCharCode("****"); // bytes of any type
inline constexpr DescType typeProcessSerialNumber = FourCharCode("psn ");
inline constexpr AEEventClass kCoreEventClass = FourCharCode("aevt");
inline constexpr AEEventID kAnswerEvent = FourCharCode("ansr"); // the event id of a queued answer
inline constexpr AEKeyword keyDirectObject = FourCharCode("----");
inline constexpr std::int16_t kAutoGenerateReturnID = -1;
inline constexpr std::int32_t kAnyTransactionID = 0;
inline constexpr std::int32_t kAEDefaultTimeout = -1;

// Typed bytes; releases itself.
struct AEDesc {
    DescType descriptorType = typeNull;
    std::vector<std::uint8_t> data;
};

// An event to send, a received one, or the answer that a handler fills in.
struct AppleEvent {
    AEEventClass eventClass = 0;
    AEEventID eventID = 0;
    ProcessSerialNumber address{}; // the recipient; for an answer, its sender
    AEDesc directObject;
};

enum class AESendMode : std::int32_t {
    NoReply = 1,
    QueueReply = 2, // the answer comes as an event 'aevt'/'ansr' from that process, or not at all
};
inline constexpr AESendMode kAENoReply = AESendMode::NoReply;
inline constexpr AESendMode kAEQueueReply = AESendMode::QueueReply;

// A longer direct object is truncated on arrival.
inline constexpr std::size_t kMostDirectObjectBytes = std::size_t{64} * 1024;

// Creates a descriptor with a copy of the bytes. noErr or memFullErr.
[[nodiscard]] OSErr AECreateDesc(DescType type, const void *bytes, std::size_t size, AEDesc *result);

// Creates an event without a direct object, addressed by a descriptor of type typeProcessSerialNumber. noErr;
// errAECoercionFail for another descriptor type; paramErr for a return id or transaction other than the two
// above.
[[nodiscard]] OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEDesc &target,
                                       std::int16_t returnID, std::int32_t transactionID, AppleEvent *result);

// Sends an event. noErr; procNotFound if the process is not running; memFullErr; ioErr. A process owes at
// most one answer per kind of event with a queued reply: while one is pending, another event is not sent
// (still noErr), until the process has been silent for 5 s, then 10 s, 20 s, ... up to a minute. An answer to
// the earlier event is then ignored.
[[nodiscard]] OSStatus AESendMessage(const AppleEvent &event, AESendMode mode, std::int32_t timeout);

// Handles an event. What it puts into *reply is the answer if the sender wants one; a status other than noErr
// means no answer.
using AEEventHandler = OSErr (*)(const AppleEvent *event, AppleEvent *reply, std::uint32_t refcon);

// Installs the handler for an event class and id, replacing any earlier one. memFullErr, with the
// earlier one kept.
[[nodiscard]] OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandler handler,
                                          std::uint32_t refcon);
// Removes the handler. errAEEventNotHandled if there is none.
[[nodiscard]] OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID);

// Copies the first `maximumSize` bytes of a parameter; the only one is keyDirectObject. Stores its type and
// full size if the pointers are given. errAEDescNotFound if there is none, errAECoercionFail if its type is
// not `wanted`; nothing is copied or stored then.
[[nodiscard]] OSErr AEGetParamPtr(const AppleEvent &event, AEKeyword keyword, DescType wanted,
                                  DescType *actualType, void *bytes, std::size_t maximumSize,
                                  std::size_t *actualSize);

// Dispatches an event to its handler, as the event loop does. errAEEventNotHandled if there is none; else the
// handler's status.
[[nodiscard]] OSErr AEProcessEvent(const AppleEvent &event, AppleEvent *reply);

} // namespace drevix
