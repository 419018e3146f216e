// Big-endian numbers, as in the classic formats.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace drevix {

// Reads a number of `size` bytes (at most 4) at an offset; the caller has checked that it fits.
[[nodiscard]] inline std::uint32_t GetNumber(std::span<const std::byte> bytes, std::size_t offset,
                                             std::size_t size) {
    std::uint32_t number = 0;
    for (const std::byte byte : bytes.subspan(offset, size)) {
        number = (number << 8) | std::to_integer<std::uint32_t>(byte);
    }
    return number;
}
[[nodiscard]] inline std::uint16_t Get16(std::span<const std::byte> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(GetNumber(bytes, offset, 2));
}
[[nodiscard]] inline std::uint32_t Get32(std::span<const std::byte> bytes, std::size_t offset) {
    return GetNumber(bytes, offset, 4);
}

// Appends the low `size` bytes of a number.
inline void PutNumber(std::string &bytes, std::uint32_t number, std::size_t size) {
    for (std::size_t i = size; i > 0; --i) {
        bytes.push_back(static_cast<char>(number >> (8 * (i - 1))));
    }
}
inline void Put16(std::string &bytes, std::uint32_t number) {
    PutNumber(bytes, number, 2);
}
inline void Put32(std::string &bytes, std::uint32_t number) {
    PutNumber(bytes, number, 4);
}

} // namespace drevix
