// Shared by sender and receiver of an event. Internal to this folder.
#pragma once

#include "platform/bus/apple_events.h"

#include <vector>

struct sd_bus_message;

namespace drevix {

// Reads the next byte array ("ay") of a message, cut to kMostDirectObjectBytes. False if there is none.
[[nodiscard]] bool ReadEventBytes(sd_bus_message *message, std::vector<std::uint8_t> *bytes);

} // namespace drevix
