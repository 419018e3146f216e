// What the two sides of an event share. For the other files of this folder.
#pragma once

#include "platform/bus/apple_events.h"

#include <vector>

struct sd_bus_message;

namespace drevix {

// The bytes "ay" that come next in a message, cut to kMostDirectObjectBytes. False when there are none.
[[nodiscard]] bool ReadEventBytes(sd_bus_message *message, std::vector<std::uint8_t> *bytes);

} // namespace drevix
