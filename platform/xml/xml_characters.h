// Character data of XML documents.
#pragma once

#include <string>
#include <string_view>

namespace drevix {

// Character data: markup escaped, and a carriage return too, which which a reader would take for a line end.
// What is no UTF-8, and characters that XML 1.0 forbids (its production 2, Char), become U+FFFD.
void AppendCharacters(std::string &out, std::string_view text);

} // namespace drevix
