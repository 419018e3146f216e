// The settings record: what every control of the device does in one application. docs/settings-record.md has
// the layout byte by byte, which is also the layout in the settings file.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace drevix {

// The number of an action slot in a record, 0 to 31; -1 for none.
using SlotIndex = std::int16_t;
inline constexpr SlotIndex kNoSlot = -1;

inline constexpr int kActionSlots = 32;
inline constexpr int kMaxFileNameLength = 63; // characters of `appFileName`
inline constexpr int kMaxAppNameLength = 31;  // characters of `appName` and of a slot's `data`

// Application signatures with a special meaning.
inline constexpr OSType kGlobalSignature = 0;                   // the global record
inline constexpr OSType kWildcardSignature = 1;                 // factory records identified by name alone
inline constexpr OSType kNoSignature = FourCharCode(R"(????)"); // an application without a signature

inline constexpr std::uint8_t kNoKeyCode = 255; // a keystroke without a key

// The platform's classic event modifiers, as `ActionSlot::modifiers` holds them.
inline constexpr std::uint16_t kCommandModifier = 0x0100;
inline constexpr std::uint16_t kShiftModifier = 0x0200;
inline constexpr std::uint16_t kCapsLockModifier = 0x0400;
inline constexpr std::uint16_t kOptionModifier = 0x0800;
inline constexpr std::uint16_t kControlModifier = 0x1000;

// The fields are at even offsets. Packed anyway, because in a damaged file a record may start anywhere.
#pragma pack(push, 1)
// What one control does. "settings/action_commands.h" says which fields each command uses.
struct ActionSlot {
    std::uint16_t command;   // 0: no action
    std::uint16_t modifiers; // classic event modifiers
    std::uint8_t keyCode;    // virtual key code 0 to 127, or kNoKeyCode
    std::uint8_t repeat;
    std::uint16_t delay; // the chosen repeat menu item; 0xFFFF for a negative tag
    std::uint32_t crc;   // of a companion menu entry's title
    std::uint32_t reserved2;
    Str31 data; // such as the name of the alias file of an item to open
};

// The settings of the one device model.
struct DevicePrefs {
    std::uint8_t click;          // click sound, 0 or 1
    std::uint8_t navSensitivity; // sensitivities and speeds are 0 to 255, 100 by default
    std::uint8_t toolSensitivity;
    std::uint8_t navSpeed;
    std::uint8_t useSeparateNavSens; // 1: use the three axes' values instead of navSensitivity
    std::uint8_t navSensitivityX;
    std::uint8_t navSensitivityY;
    std::uint8_t navSensitivityZ;
    std::uint8_t useSeparateNavSpeed; // likewise for navSpeed
    std::uint8_t navSpeedX;
    std::uint8_t navSpeedY;
    std::uint8_t navSpeedZ;
    std::uint32_t reserved3;
    ActionSlot action[kActionSlots];
};

// One record. Names are Mac OS Roman.
struct AppPrefs {
    OSType application; // creator signature
    Str63 appFileName;  // the application's file name without ".app": what identifies the record
    Str31 appName;      // the display name
    std::uint8_t active;
    std::uint8_t factory; // 1: came with the panel
    std::uint8_t global;  // this and the next three belong to the device helper; never set here
    std::uint8_t forward;
    std::uint16_t client;
    std::uint8_t reserved1;
    std::uint8_t reserved2;
    std::uint32_t reserved3;
    std::uint32_t clientMask; // belongs to the device helper
    DevicePrefs device[1];
};
#pragma pack(pop)

static_assert(offsetof(ActionSlot, modifiers) == 2 && offsetof(ActionSlot, keyCode) == 4);
static_assert(offsetof(ActionSlot, repeat) == 5 && offsetof(ActionSlot, delay) == 6);
static_assert(offsetof(ActionSlot, crc) == 8 && offsetof(ActionSlot, reserved2) == 12);
static_assert(offsetof(ActionSlot, data) == 16 && sizeof(ActionSlot) == 48);
static_assert(offsetof(DevicePrefs, navSensitivity) == 1 && offsetof(DevicePrefs, toolSensitivity) == 2);
static_assert(offsetof(DevicePrefs, navSpeed) == 3 && offsetof(DevicePrefs, useSeparateNavSens) == 4);
static_assert(offsetof(DevicePrefs, navSensitivityZ) == 7 && offsetof(DevicePrefs, useSeparateNavSpeed) == 8);
static_assert(offsetof(DevicePrefs, navSpeedZ) == 11 && offsetof(DevicePrefs, reserved3) == 12);
static_assert(offsetof(DevicePrefs, action) == 16 && sizeof(DevicePrefs) == 1552);
static_assert(offsetof(AppPrefs, appFileName) == 4 && offsetof(AppPrefs, appName) == 68);
static_assert(offsetof(AppPrefs, active) == 100 && offsetof(AppPrefs, factory) == 101);
static_assert(offsetof(AppPrefs, client) == 104 && offsetof(AppPrefs, reserved3) == 108);
static_assert(offsetof(AppPrefs, clientMask) == 112 && offsetof(AppPrefs, device) == 116);
static_assert(sizeof(AppPrefs) == 1668 && alignof(AppPrefs) == 1);
static_assert(std::has_unique_object_representations_v<AppPrefs>, "a field lost bytes to padding");
static_assert(std::is_trivially_copyable_v<AppPrefs>);

// The axis whose separate sensitivity and speed a control uses, and the part of the device it belongs to.
enum class Axis : std::uint8_t { None, X, Y, Z };
enum class ControlGroup : std::uint8_t { Ring, Tuner, Buttons };

// A slot that a control is bound to.
struct ControlSlot {
    SlotIndex slot;
    std::string_view key; // its name in property lists and on the command line
    Axis axis;
    ControlGroup group;
};

// clang-format off
// The control slots and their keys, in dictionary order. The other 17 slots are never shown.
inline constexpr auto kControlSlots = std::to_array<ControlSlot>({
    {0,  "ringLeft",   Axis::X,    ControlGroup::Ring},
    {1,  "ringRight",  Axis::X,    ControlGroup::Ring},
    {2,  "ringUp",     Axis::Y,    ControlGroup::Ring},
    {3,  "ringDown",   Axis::Y,    ControlGroup::Ring},
    {8,  "ringXYRest", Axis::X,    ControlGroup::Ring},
    {4,  "ringCCW",    Axis::Z,    ControlGroup::Ring},
    {5,  "ringCW",     Axis::Z,    ControlGroup::Ring},
    {9,  "ringZRest",  Axis::Z,    ControlGroup::Ring},
    {6,  "tunerCCW",   Axis::None, ControlGroup::Tuner},
    {7,  "tunerCW",    Axis::None, ControlGroup::Tuner},
    {16, "buttonV",    Axis::None, ControlGroup::Buttons},
    {17, "buttonP",    Axis::None, ControlGroup::Buttons},
    {18, "buttonI",    Axis::None, ControlGroup::Buttons},
    {19, "buttonII",   Axis::None, ControlGroup::Buttons},
    {20, "buttonIII",  Axis::None, ControlGroup::Buttons},
});
// clang-format on
static_assert(kControlSlots.size() == 15);

// The row of a slot, or of a key (case-sensitive); null if no control has it.
[[nodiscard]] const ControlSlot *FindControlSlot(SlotIndex slot);
[[nodiscard]] const ControlSlot *FindControlSlot(std::string_view key);

// A signature as UTF-8 text: its four characters; "any" for the wildcard, empty for the global record.
[[nodiscard]] std::string SignatureText(OSType signature);

// The global record used until the factory defaults supply one: active, click sound on, all sensitivities and
// speeds 100, no actions.
inline constexpr AppPrefs gDefaultGlobalPrefs = [] {
    AppPrefs prefs{};
    prefs.active = 1;
    DevicePrefs &device = prefs.device[0];
    device.click = 1;
    device.navSensitivity = device.toolSensitivity = device.navSpeed = 100;
    device.navSensitivityX = device.navSensitivityY = device.navSensitivityZ = 100;
    device.navSpeedX = device.navSpeedY = device.navSpeedZ = 100;
    return prefs;
}();

} // namespace drevix
