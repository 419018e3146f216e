// The terminal that a program writes to.
#pragma once

#include <cstddef>

namespace drevix {

// The width of the terminal on standard output, in columns; `otherwise` if unknown or not a terminal.
[[nodiscard]] std::size_t TerminalColumns(std::size_t otherwise);

} // namespace drevix
