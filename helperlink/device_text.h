// A connected device as text, the same in every program.
#pragma once

#include "helperlink/driver_messages.h"

#include <string>

namespace drevix {

// "1.05" for 0x0105. A digit above 9 counts as its four-bit value.
[[nodiscard]] std::string DeviceVersionText(std::uint16_t version);
// The serial number's 14 hexadecimal digits, highest byte first; "n/a" if there is none.
[[nodiscard]] std::string DeviceSerialText(const ConnectedDevice &device);
// A vendor or product name: UTF-8 up to the first zero byte.
[[nodiscard]] std::string DeviceNameText(const std::uint8_t (&name)[128]);

} // namespace drevix
