#include "helperlink/device_text.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace drevix {

std::string DeviceVersionText(std::uint16_t version) {
    const auto digit = [version](int position) { return (version >> (4 * position)) & 15; };
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%d.%02d", 10 * digit(3) + digit(2), 10 * digit(1) + digit(0));
    return text.data();
}

std::string DeviceSerialText(const ConnectedDevice &device) {
    const std::uint8_t(&s)[8] = device.serialNumber;
    if (s[0] == 0) {
        return "n/a";
    }
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%02X%02X%02X%02X%02X%02X%02X", s[7], s[6], s[5], s[4], s[3],
                  s[2], s[1]);
    return text.data();
}

std::string DeviceNameText(const std::uint8_t (&name)[128]) {
    return {std::begin(name), std::find(std::begin(name), std::end(name), 0)};
}

} // namespace drevix
