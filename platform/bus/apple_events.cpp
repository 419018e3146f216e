#include "platform/bus/apple_events.h"

#include "platform/base/status.h"
#include "platform/bus/event_requests.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <new>
#include <utility>

namespace drevix {
namespace {

struct InstalledHandler {
    AEEventHandler handler;
    std::uint32_t refcon;
};
using HandlerTable = std::map<std::pair<AEEventClass, AEEventID>, InstalledHandler>;

// Lives as long as the program, so that an event during exit still finds it.
HandlerTable &Handlers() {
    static auto &handlers = *new HandlerTable;
    return handlers;
}

} // namespace

OSErr AECreateDesc(DescType type, const void *bytes, std::size_t size, AEDesc *result) try {
    const auto *first = static_cast<const std::uint8_t *>(bytes);
    *result = {type, std::vector<std::uint8_t>(first, first + size)};
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEDesc &target,
                         std::int16_t returnID, std::int32_t transactionID, AppleEvent *result) {
    if (target.descriptorType != typeProcessSerialNumber ||
        target.data.size() != sizeof(ProcessSerialNumber)) {
        return errAECoercionFail;
    }
    if (returnID != kAutoGenerateReturnID || transactionID != kAnyTransactionID) {
        return paramErr;
    }
    *result = {eventClass, eventID, {}, {}};
    std::memcpy(&result->address, target.data.data(), sizeof result->address);
    return noErr;
}

OSStatus AESendMessage(const AppleEvent &event, AESendMode mode, std::int32_t /*timeout*/) try {
    return EventRequests::Instance().Send(event, mode);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr AEInstallEventHandler(AEEventClass eventClass, AEEventID eventID, AEEventHandler handler,
                            std::uint32_t refcon) try {
    Handlers()[{eventClass, eventID}] = {handler, refcon};
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr AERemoveEventHandler(AEEventClass eventClass, AEEventID eventID) {
    return Handlers().erase({eventClass, eventID}) != 0 ? noErr : errAEEventNotHandled;
}

OSErr AEGetParamPtr(const AppleEvent &event, AEKeyword keyword, DescType wanted, DescType *actualType,
                    void *bytes, std::size_t maximumSize, std::size_t *actualSize) {
    const AEDesc &parameter = event.directObject;
    if (keyword != keyDirectObject || parameter.descriptorType == typeNull) {
        return errAEDescNotFound;
    }
    if (parameter.descriptorType != wanted && wanted != typeWildCard) {
        return errAECoercionFail;
    }
    std::copy_n(parameter.data.data(), std::min(parameter.data.size(), maximumSize),
                static_cast<std::uint8_t *>(bytes));
    if (actualType != nullptr) {
        *actualType = parameter.descriptorType;
    }
    if (actualSize != nullptr) {
        *actualSize = parameter.data.size();
    }
    return noErr;
}

OSErr AEProcessEvent(const AppleEvent &event, AppleEvent *reply) {
    const auto found = Handlers().find({event.eventClass, event.eventID});
    if (found == Handlers().end()) {
        return errAEEventNotHandled;
    }
    const InstalledHandler installed = found->second;
    return installed.handler(&event, reply, installed.refcon);
}

} // namespace drevix
