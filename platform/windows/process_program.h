// The program that a process runs.
#pragma once

#include <cstdint>
#include <string>

namespace drevix {

// The path of its file; where that may not be looked at, as with other users' processes, the first word of its command
// line. Empty for 0, for a process that is gone, and where neither can be had.
[[nodiscard]] std::string ProgramOfProcess(std::uint32_t process);

} // namespace drevix
