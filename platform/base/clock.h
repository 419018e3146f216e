// The system tick.
#pragma once

#include <cstdint>

namespace drevix {

// Ticks of 1/60 s on the steady clock since an arbitrary start; wraps around after about 2.3 years.
[[nodiscard]] std::uint32_t TickCount();

} // namespace drevix
