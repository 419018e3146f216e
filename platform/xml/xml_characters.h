// Character data of XML documents.
#pragma once

#include <string>
#include <string_view>

namespace drevix {

// What takes the place of a character that cannot be kept.
inline constexpr std::string_view kReplacement = "\uFFFD";

// Appends text as character data: escapes markup, and a carriage return, which a reader would take for a line
// end. Malformed UTF-8 and characters that XML 1.0 forbids (production 2, Char) become U+FFFD.
void AppendCharacters(std::string &out, std::string_view text);

} // namespace drevix
