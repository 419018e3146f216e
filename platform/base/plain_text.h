// Text from files on its way to a terminal.
#pragma once

#include <string>
#include <string_view>

namespace drevix {

// UTF-8 text with each control character, line ends among them, replaced by '?': a name out of a file must
// not steer the terminal, nor break a line in two. Bytes that are no UTF-8 stay. May throw std::bad_alloc.
[[nodiscard]] std::string PlainText(std::string_view text);

} // namespace drevix
