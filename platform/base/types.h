// The platform's basic types: statuses, four-character codes and Pascal strings. Every other header builds on
// these.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace drevix {

// A status: 0 for success, else a negative code from "platform/base/status.h".
using OSErr = std::int16_t;
// The same in 32 bits, where the platform has that.
using OSStatus = std::int32_t;

// A four-character code. The first character is the most significant byte.
using OSType = std::uint32_t;

// Makes a four-character code from its text: FourCharCode("pref") is 0x70726566.
consteval OSType FourCharCode(const char (&text)[5]) {
    OSType code = 0;
    for (int i = 0; i < 4; ++i) {
        code = (code << 8) | static_cast<unsigned char>(text[i]);
    }
    return code;
}

// A Pascal string is a length byte followed by that many Mac OS Roman characters, without a terminator.
using StringPtr = std::uint8_t *;
using ConstStringPtr = const std::uint8_t *;
using Str31 = std::array<std::uint8_t, 32>;
using Str63 = std::array<std::uint8_t, 64>;
using Str255 = std::array<std::uint8_t, 256>;

// The characters of a Pascal string; never more than its field holds, whatever the length byte.
template <std::size_t N>
[[nodiscard]] std::string_view PascalCharacters(const std::array<std::uint8_t, N> &text) {
    return {reinterpret_cast<const char *>(text.data()) + 1, std::min<std::size_t>(text[0], N - 1)};
}

// Makes a Pascal string constant from a literal: PascalLiteral("pref") is {4, 'p', 'r', 'e', 'f'}.
template <std::size_t N>
consteval std::array<std::uint8_t, N> PascalLiteral(const char (&text)[N]) {
    static_assert(N >= 1 && N <= 256, "a Pascal string holds at most 255 characters");
    std::array<std::uint8_t, N> result{};
    result[0] = static_cast<std::uint8_t>(N - 1);
    for (std::size_t i = 0; i + 1 < N; ++i) {
        result[i + 1] = static_cast<std::uint8_t>(text[i]);
    }
    return result;
}

} // namespace drevix
