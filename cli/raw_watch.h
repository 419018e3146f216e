// What devices send, in the words of a map of devices ("device/device_map.h"), for whoever writes one.
#pragma once

#include "cli/outcome.h"
#include "platform/input/input_device.h"

#include <ostream>
#include <string>

namespace drevix {

// Prints each device that can be read and what it sends, also of those that are plugged in meanwhile, until the user
// ends the program. Keyboards for typing are named only. Failed when there is nothing to read or to wait for.
Outcome WatchRawEvents(std::ostream &out);

// A map's line for a device, and a map's word for an event with its value behind it as a comment; empty for an event
// that no map names.
[[nodiscard]] std::string RawDeviceText(const InputDescription &device);
[[nodiscard]] std::string RawEventText(const RawEvent &event);

} // namespace drevix
