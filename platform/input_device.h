// Input devices as the kernel shows them (its evdev interface): what a device is, and what it sends.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// One event, with the numbers of "platform/input_codes.h".
struct RawEvent {
    std::uint16_t type;
    std::uint16_t code;
    std::int32_t value;
    friend bool operator==(const RawEvent &, const RawEvent &) = default;
};

// An absolute axis, or a counter: the least and the most that it can send, and what it stood at when it was asked.
struct InputAxis {
    std::uint16_t code;
    std::int32_t least;
    std::int32_t most;
    std::int32_t value;
};

inline constexpr std::size_t kKeyCodes = 0x300; // the kernel's KEY_CNT
inline constexpr std::size_t kDialCodes = 0x10; // REL_CNT

// A device: who it is and what it can send. One piece of hardware may be several devices of the kernel.
struct InputDescription {
    std::string name; // as the kernel has it, bytes of any kind
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::uint16_t version = 0;
    std::string serial;
    std::bitset<kKeyCodes> keys;
    std::bitset<kDialCodes> dials;
    std::vector<InputAxis> axes;
};

// The name of the device that we make ourselves to type with, so that it is never taken for one to listen to.
inline constexpr std::string_view kOwnInputDeviceName = "Drevix virtual keyboard";

} // namespace drevix
