#include "platform/base/clock.h"

#include <chrono>

namespace drevix {

std::uint32_t TickCount() {
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 60>>;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<Ticks>(now).count());
}

} // namespace drevix
