// Makes text from files safe for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace drevix {

// Replaces each control character in UTF-8 text, including line ends, by '?': a name from a file must not
// control the terminal or break a line. Keeps invalid UTF-8 bytes. May throw std::bad_alloc.
[[nodiscard]] std::string PlainText(std::string_view text);

} // namespace drevix
