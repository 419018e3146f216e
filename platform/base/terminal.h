// The terminal that a program writes to.
#pragma once

#include <cstddef>

namespace drevix {

// The columns of the terminal that standard output is; `otherwise` when it is none, or does not tell.
[[nodiscard]] std::size_t TerminalColumns(std::size_t otherwise);

} // namespace drevix
