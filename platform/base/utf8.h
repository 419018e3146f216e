// UTF-8, one character at a time.
#pragma once

#include <string>
#include <string_view>

namespace drevix {

inline constexpr char32_t kMalformedUtf8 = 0xFFFFFFFF;

// Removes the first character from a non-empty text. For a malformed sequence (overlong, a surrogate, above
// U+10FFFF, truncated), returns kMalformedUtf8 and removes the Unicode standard's "maximal subpart".
[[nodiscard]] char32_t TakeUtf8(std::string_view *text);

// Appends a character up to U+10FFFF. May throw std::bad_alloc.
void AppendUtf8(std::string *text, char32_t character);

} // namespace drevix
