// The message link to the device helper and the companion's processes: who runs, "reload your settings", and
// "which devices are connected". docs/driver-messages.md has the messages byte by byte.
// Main thread only. Nothing here waits for a process: a helper that hangs cannot hold up the panel.
#pragma once

#include "platform/bus/apple_events.h"
#include "platform/bus/processes.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace drevix {

// The processes that are told and asked, by name. Letter case does not count, accents do.
inline constexpr auto kDrevixHelperName = PascalLiteral("DrevixHelper");
inline constexpr auto kTarnixName = PascalLiteral("Drevix tarnix");
inline constexpr auto kTarnixHelperName = PascalLiteral("Drevix tarnix Helper");

// The requests, and what the answer to the second one holds.
inline constexpr AEEventClass kDriverEventClass = FourCharCode("PLZW");
inline constexpr AEEventID kReloadPrefsEvent = FourCharCode("PLZU");
inline constexpr AEEventID kConnectedDevicesEvent = FourCharCode("PLZD");
inline constexpr DescType kDeviceListType = FourCharCode("PLZT");

inline constexpr int kMostDevices = 4;

#pragma pack(push, 2)
// One connected device. Numbers are in the byte order of the machine.
struct ConnectedDevice {
    std::uint16_t vendorID;
    std::uint16_t productID;
    std::uint16_t productVers; // binary-coded decimal: 0x0105 is version 1.05
    std::uint8_t interfaceNum;
    std::uint8_t reserved0;
    std::uint32_t reserved1;
    std::uint8_t vendorName[128];
    std::uint8_t productName[128];
    std::uint8_t serialNumber[8]; // byte 0: 0 when there is none; bytes 1 to 7: the number, lowest byte first
    std::uint8_t reserved2[120];
};

// The connected devices as the helper sends them, and as the panel keeps them.
struct DeviceList {
    std::uint16_t count;
    std::uint16_t filler1;
    std::uint32_t filler2;
    std::uint32_t filler3;
    ConnectedDevice device[kMostDevices]; // in the helper's order
};
#pragma pack(pop)

static_assert(offsetof(ConnectedDevice, productID) == 2 && offsetof(ConnectedDevice, productVers) == 4);
static_assert(offsetof(ConnectedDevice, interfaceNum) == 6 && offsetof(ConnectedDevice, reserved0) == 7);
static_assert(offsetof(ConnectedDevice, reserved1) == 8 && offsetof(ConnectedDevice, vendorName) == 12);
static_assert(offsetof(ConnectedDevice, productName) == 140);
static_assert(offsetof(ConnectedDevice, serialNumber) == 268);
static_assert(offsetof(ConnectedDevice, reserved2) == 276 && sizeof(ConnectedDevice) == 396);
static_assert(offsetof(DeviceList, filler1) == 2 && offsetof(DeviceList, filler2) == 4);
static_assert(offsetof(DeviceList, filler3) == 8 && offsetof(DeviceList, device) == 12);
static_assert(sizeof(DeviceList) == 1596 && alignof(DeviceList) == 2);
static_assert(std::has_unique_object_representations_v<DeviceList>, "a field lost bytes to padding");
static_assert(std::is_trivially_copyable_v<DeviceList>);

// Where answers go; null before the first InstallAppleEventHandlers, never cleared after it.
extern DeviceList *gConnectedListPtr;

// Finds the first process of that name, lowest process id first. noErr; else why the process list ended,
// procNotFound when no such process runs or there is no session bus. *psn, which may be null, is set only on
// success.
[[nodiscard]] OSErr FindNamedProcess(ConstStringPtr name, ProcessSerialNumber *psn);

// Tells the process of that name to read its settings again. The status of the first step that failed:
// procNotFound when it does not run; noErr says that the message is on its way, not that it was obeyed.
[[nodiscard]] OSStatus RequestDriverPrefsUpdate(ConstStringPtr name);

// Asks the device helper which devices are connected, and returns at once; the answer comes from the event
// loop later, into the list that InstallAppleEventHandlers was given. `list` should be that one; paramErr, with
// nothing sent, when it is null; else as RequestDriverPrefsUpdate. While the helper owes an answer, nothing
// more is sent to it ("platform/bus/apple_events.h").
[[nodiscard]] OSStatus GetConnectedDevices(const DeviceList *list);

// From now on answers are stored in *list, which must live until RemoveAppleEventHandlers, or from then on no
// longer. What an answer does not bring stays as it was: a shorter one replaces its first bytes, a longer one
// is cut. Both give noErr in every case.
OSErr InstallAppleEventHandlers(DeviceList *list);
OSErr RemoveAppleEventHandlers();

// Stores an answer's device list; the handler that InstallAppleEventHandlers installs. errAEDescNotFound or
// errAECoercionFail, with the list unchanged, for an answer without one.
[[nodiscard]] OSErr ReceiveConnectedDevicesReply(const AppleEvent *event, AppleEvent *reply,
                                                 std::uint32_t refcon);

} // namespace drevix
