// Which of the ring's sensitivities and speeds the sliders edit.
#pragma once

#include "settings/app_prefs.h"

#include <array>

namespace drevix {

// A pair of fields; null members if the sliders edit nothing.
struct RingFields {
    std::uint8_t DevicePrefs::*sensitivity;
    std::uint8_t DevicePrefs::*speed;
};

// By Axis. A control without an axis has no fields of its own.
inline constexpr auto kAxisFields = std::to_array<RingFields>({
    {nullptr, nullptr},
    {&DevicePrefs::navSensitivityX, &DevicePrefs::navSpeedX},
    {&DevicePrefs::navSensitivityY, &DevicePrefs::navSpeedY},
    {&DevicePrefs::navSensitivityZ, &DevicePrefs::navSpeedZ},
});

// The axis whose own values the sliders edit while a slot is selected; none while all axes share their
// values.
[[nodiscard]] inline Axis EditedAxis(const DevicePrefs &device, SlotIndex slot) {
    const ControlSlot *control = FindControlSlot(slot);
    return device.useSeparateNavSens == 0 || control == nullptr ? Axis::None : control->axis;
}

// The fields that the sliders edit while a slot is selected.
[[nodiscard]] inline RingFields EditedRingFields(const DevicePrefs &device, SlotIndex slot) {
    return device.useSeparateNavSens == 0 ? RingFields{&DevicePrefs::navSensitivity, &DevicePrefs::navSpeed}
                                          : kAxisFields[static_cast<std::size_t>(EditedAxis(device, slot))];
}

} // namespace drevix
