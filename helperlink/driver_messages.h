// Messages to the device helper and the companion's processes: finding them, "reload your settings" and
// "which devices are connected". docs/driver-messages.md has the messages byte by byte. Main thread only.
// Never blocks: a helper that hangs cannot hang the panel.
#pragma once

#include "platform/bus/apple_events.h"
#include "platform/bus/processes.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace drevix {

// Process names. Letter case is ignored, accents are not.
inline constexpr auto kDrevixHelperName = PascalLiteral("DrevixHelper");
inline constexpr auto kTarnixName = PascalLiteral("Drevix tarnix");
inline constexpr auto kTarnixHelperName = PascalLiteral("Drevix tarnix Helper");

// The requests, and the parts of the answer to the second one.
inline constexpr AEEventClass kDriverEventClass = FourCharCode("PLZW");
inline constexpr AEEventID kReloadPrefsEvent = FourCharCode("PLZU");
inline constexpr AEEventID kConnectedDevicesEvent = FourCharCode("PLZD");
inline constexpr DescType kDeviceListType = FourCharCode("PLZT");

inline constexpr int kMostDevices = 4;

#pragma pack(push, 2)
// One connected device. Numbers are in native byte order.
struct ConnectedDevice {
    std::uint16_t vendorID;
    std::uint16_t productID;
    std::uint16_t productVers; // binary-coded decimal: 0x0105 is version 1.05
    std::uint8_t interfaceNum;
    std::uint8_t reserved0;
    std::uint32_t reserved1;
    std::uint8_t vendorName[128];
    std::uint8_t productName[128];
    std::uint8_t serialNumber[8]; // byte 0: 0 if there is none; bytes 1 to 7: the number, lowest byte first
    std::uint8_t reserved2[120];
};

// The connected devices, as the helper sends and the panel stores them.
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

// Where answers are stored; null before the first InstallAppleEventHandlers, never cleared afterwards.
extern DeviceList *gConnectedListPtr;

// Finds the process of that name with the lowest process id. noErr; procNotFound if none runs or there is no
// session bus; or the process list's error. *psn (optional) is set only on success.
[[nodiscard]] OSErr FindNamedProcess(ConstStringPtr name, ProcessSerialNumber *psn);

// Tells the process of that name to reload its settings. noErr means the message was sent, not that it was
// acted on; else the status of the first step that failed: procNotFound if it is not running.
[[nodiscard]] OSStatus RequestDriverPrefsUpdate(ConstStringPtr name);

// Asks the device helper which devices are connected and returns at once. The answer arrives later through
// the event loop, in the list given to InstallAppleEventHandlers; `list` should be that one. paramErr, with
// nothing sent, if it is null; else as RequestDriverPrefsUpdate. While an answer is pending, nothing more is
// sent to the helper ("platform/bus/apple_events.h").
[[nodiscard]] OSStatus GetConnectedDevices(const DeviceList *list);

// Start and stop storing answers in *list, which must live until RemoveAppleEventHandlers. A shorter answer
// replaces only the first bytes; a longer one is cut. Both always return noErr.
OSErr InstallAppleEventHandlers(DeviceList *list);
OSErr RemoveAppleEventHandlers();

// The handler that InstallAppleEventHandlers installs: stores an answer's device list. errAEDescNotFound or
// errAECoercionFail, with the list unchanged, for an answer without one.
[[nodiscard]] OSErr ReceiveConnectedDevicesReply(const AppleEvent *event, AppleEvent *reply,
                                                 std::uint32_t refcon);

} // namespace drevix
