// Prints what devices send, in the words of a device map ("device/device_map.h"), for authors of maps.
#pragma once

#include "cli/outcome.h"
#include "platform/input/input_device.h"

#include <ostream>
#include <string>

namespace drevix {

// Prints each readable device and what it sends, including devices plugged in meanwhile, until the user ends
// the program. Keyboards for typing are only named. Failed if there is nothing to read or to wait for.
Outcome WatchRawEvents(std::ostream &out);

// A map's line for a device, and a map's word for an event with its value as a comment; empty for an event
// that maps cannot name.
[[nodiscard]] std::string RawDeviceText(const InputDescription &device);
[[nodiscard]] std::string RawEventText(const RawEvent &event);

} // namespace drevix
