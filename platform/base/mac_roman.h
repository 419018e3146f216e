// Converts the platform's 8-bit encoding, Mac OS Roman, to and from UTF-8. The table is Apple's ROMAN.TXT as
// of Mac OS 8.5 (0xDB is the euro sign, 0xF0 the private U+F8FF).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace drevix {

// Converts to UTF-8. Every byte value has a character, so MacRomanFromUtf8 restores any text. Bytes 0 to 127
// are ASCII.
[[nodiscard]] std::string Utf8FromMacRoman(std::span<const std::uint8_t> text);

// Converts to Mac OS Roman. Each character that Mac OS Roman lacks and each malformed UTF-8 sequence becomes
// '?'. A letter plus a combining accent becomes the accented letter if Mac OS Roman has it.
[[nodiscard]] std::string MacRomanFromUtf8(std::string_view text);

// Whether the text is well-formed UTF-8 and all its characters exist in Mac OS Roman.
[[nodiscard]] bool FitsMacRoman(std::string_view text);

} // namespace drevix
