#include "helperlink/driver_messages.h"

#include "platform/base/equal_string.h"
#include "platform/base/log.h"
#include "platform/base/status.h"

#include "settings/pascal_strings.h"

#include <tuple>

namespace drevix {

DeviceList *gConnectedListPtr = nullptr;

namespace {

OSStatus SendDriverEvent(ConstStringPtr name, AEEventID eventID, AESendMode mode) {
    ProcessSerialNumber psn{};
    OSErr status = FindNamedProcess(name, &psn);
    AEDesc target;
    if (status == noErr) {
        status = AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, &target);
    }
    AppleEvent event;
    if (status == noErr) {
        status = AECreateAppleEvent(kDriverEventClass, eventID, target, kAutoGenerateReturnID,
                                    kAnyTransactionID, &event);
    }
    const OSStatus sent = status == noErr ? AESendMessage(event, mode, kAEDefaultTimeout) : status;
    if (IsLogged("helperlink")) {
        LogStep("helperlink", eventID == kReloadPrefsEvent ? "asked to reload:" : "asked for devices:",
                stringWithPascalString(name), static_cast<OSErr>(sent));
    }
    return sent;
}

} // namespace

OSErr FindNamedProcess(ConstStringPtr name, ProcessSerialNumber *psn) {
    ProcessSerialNumber next{0, kNoProcess};
    for (;;) {
        if (const OSErr status = GetNextProcess(&next); status != noErr) {
            return status;
        }
        Str255 processName{};
        ProcessInfoRec info{kProcessInfoLength, processName.data()};
        if (const OSErr status = GetProcessInformation(next, &info); status != noErr) {
            return status;
        }
        if (EqualString(name, processName.data(), LetterCase::Ignored)) {
            break;
        }
    }
    if (psn != nullptr) {
        *psn = next;
    }
    return noErr;
}

OSStatus RequestDriverPrefsUpdate(ConstStringPtr name) {
    return SendDriverEvent(name, kReloadPrefsEvent, kAENoReply);
}

OSStatus GetConnectedDevices(const DeviceList *list) {
    return list == nullptr ? paramErr
                           : SendDriverEvent(kDrevixHelperName.data(), kConnectedDevicesEvent, kAEQueueReply);
}

OSErr InstallAppleEventHandlers(DeviceList *list) {
    gConnectedListPtr = list;
    // Without a handler the panel shows its last list, as it does without a helper.
    std::ignore = AEInstallEventHandler(kCoreEventClass, kAnswerEvent, ReceiveConnectedDevicesReply, 0);
    return noErr;
}

OSErr RemoveAppleEventHandlers() {
    // One may not be installed.
    std::ignore = AERemoveEventHandler(kCoreEventClass, kAnswerEvent);
    return noErr;
}

OSErr ReceiveConnectedDevicesReply(const AppleEvent *event, AppleEvent * /*reply*/,
                                   std::uint32_t /*refcon*/) {
    return AEGetParamPtr(*event, keyDirectObject, kDeviceListType, nullptr, gConnectedListPtr,
                         sizeof(DeviceList), nullptr);
}

} // namespace drevix
