// Events between processes, and the handlers that take them: addressed by process serial number, carried by
// the session bus, handed over by the event loop. Main thread only. Nothing here waits.
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
inline constexpr AEEventID kAnswerEvent = FourCharCode("ansr"); // as which a queued answer arrives
inline constexpr AEKeyword keyDirectObject = FourCharCode("----");
inline constexpr std::int16_t kAutoGenerateReturnID = -1;
inline constexpr std::int32_t kAnyTransactionID = 0;
inline constexpr std::int32_t kAEDefaultTimeout = -1;

// Typed bytes. Releases itself.
struct AEDesc {
    DescType descriptorType = typeNull;
    std::vector<std::uint8_t> data;
};

// An event: to be sent, received, or the answer that a handler fills in.
struct AppleEvent {
    AEEventClass eventClass = 0;
    AEEventID eventID = 0;
    ProcessSerialNumber address{}; // whom it goes to; of an answer, who sent it
    AEDesc directObject;
};

enum class AESendMode : std::int32_t {
    NoReply = 1,
    QueueReply =
        2, // the answer comes as an event 'aevt'/'ansr' from the process that was asked, or not at all
};
inline constexpr AESendMode kAENoReply = AESendMode::NoReply;
inline constexpr AESendMode kAEQueueReply = AESendMode::QueueReply;

// More of an event's direct object than this is cut off on arrival.
inline constexpr std::size_t kMostDirectObjectBytes = std::size_t{64} * 1024;

// Makes a descriptor with a copy of the bytes. noErr or memFullErr.
[[nodiscard]] OSErr AECreateDesc(DescType type, const void *bytes, std::size_t size, AEDesc *result);

// Makes an event without a direct object for the process that a descriptor of type typeProcessSerialNumber
// names. noErr; errAECoercionFail for another descriptor; paramErr for a return id or transaction other than
// the two above.
[[nodiscard]] OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEDesc &target,
                                       std::int16_t returnID, std::int32_t transactionID, AppleEvent *result);

// Sends an event. noErr; procNotFound when the process does not run; memFullErr; ioErr. Of one kind of event
// with a queued reply a process owes at most one answer: while it does, another is not sent and gives noErr
// all the same, until the process has been silent for 5 s, then 10 s, 20 s, ... up to a minute. An answer to
// the event before is then no longer taken.
[[nodiscard]] OSStatus AESendMessage(const AppleEvent &event, AESendMode mode, std::int32_t timeout);

// Takes an event. What a handler puts into *reply is the answer for whoever waits for one; a status other
// than noErr tells him that there is none.
using AEEventHandler = OSErr (*)(const AppleEvent *event, AppleEvent *reply, std::uint32_t refcon);

// Installs the handler for an event class and id, replacing any earlier one. memFullErr: the earlier one stays.
[[nodiscard]] OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandler handler,
                                          std::uint32_t refcon);
// Removes the handler. errAEEventNotHandled when there is none.
[[nodiscard]] OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID);

// Copies the first `maximumSize` bytes of a parameter, of which keyDirectObject is the only one. The type it
// has and its whole size are stored where a pointer is given. errAEDescNotFound when there is none,
// errAECoercionFail when it is of another type than `wanted`; nothing is copied or stored then.
[[nodiscard]] OSErr AEGetParamPtr(const AppleEvent &event, AEKeyword keyword, DescType wanted,
                                  DescType *actualType, void *bytes, std::size_t maximumSize,
                                  std::size_t *actualSize);

// Hands an event to its handler, as the event loop does. errAEEventNotHandled when there is none; else what
// the handler gives.
[[nodiscard]] OSErr AEProcessEvent(const AppleEvent &event, AppleEvent *reply);

} // namespace drevix
