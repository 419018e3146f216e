#include "platform/bus/event_bytes.h"

#include <algorithm>
#include <systemd/sd-bus.h>

namespace drevix {

bool ReadEventBytes(sd_bus_message *message, std::vector<std::uint8_t> *bytes) {
    const void *found = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(message, 'y', &found, &size) < 0) {
        return false;
    }
    const auto *first = static_cast<const std::uint8_t *>(found);
    bytes->assign(first, first + std::min(size, kMostDirectObjectBytes));
    return true;
}

} // namespace drevix
