// UTF-8, one character at a time.
#pragma once

#include <string>
#include <string_view>

namespace drevix {

inline constexpr char32_t kMalformedUtf8 = 0xFFFFFFFF;

// Takes the next character off the front of a text that is not empty. A malformed sequence (overlong, a
// surrogate, beyond U+10FFFF, cut short) gives kMalformedUtf8 and is taken off as far as it could have been
// well-formed: the Unicode standard's "maximal subpart".
[[nodiscard]] char32_t TakeUtf8(std::string_view *text);

// Appends a character, which is at most U+10FFFF. May throw std::bad_alloc.
void AppendUtf8(std::string *text, char32_t character);

} // namespace drevix
