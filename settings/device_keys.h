// The device values of a settings record other than actions, by their names in files and on the command line.
#pragma once

#include "settings/app_prefs.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace drevix {

enum class DeviceValue : std::uint8_t {
    Flag,   // 0 or 1, a truth value in files
    Switch, // 0 or 1, a number in files
    Number, // 0 to 255
};

struct DeviceKey {
    std::string_view key;
    DeviceValue kind;
    ControlGroup group; // restored together with this group
    std::uint8_t DevicePrefs::*field;
};

// In the order of a record's dictionary.
// clang-format off
inline constexpr auto kDeviceKeys = std::to_array<DeviceKey>({
    {"clickEnabled",            DeviceValue::Flag,   ControlGroup::Tuner, &DevicePrefs::click},
    {"ringSensitivity",         DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSensitivity},
    {"ringSpeed",               DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSpeed},
    {"tunerSensitivity",        DeviceValue::Number, ControlGroup::Tuner, &DevicePrefs::toolSensitivity},
    {"ringSensitivitySeparate", DeviceValue::Switch, ControlGroup::Ring,  &DevicePrefs::useSeparateNavSens},
    {"ringSensitivityX",        DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSensitivityX},
    {"ringSensitivityY",        DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSensitivityY},
    {"ringSensitivityZ",        DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSensitivityZ},
    {"ringSpeedSeparate",       DeviceValue::Switch, ControlGroup::Ring,  &DevicePrefs::useSeparateNavSpeed},
    {"ringSpeedX",              DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSpeedX},
    {"ringSpeedY",              DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSpeedY},
    {"ringSpeedZ",              DeviceValue::Number, ControlGroup::Ring,  &DevicePrefs::navSpeedZ},
});
// clang-format on

} // namespace drevix
