// The file that says which simulated devices are connected: a line a device, made of "field=value" words, such as
//     version=1.05 serial=07060504030201 productName="Drevix Veltrana"
// A value with blanks goes in double quotes. Empty lines and lines that start with '#' are ignored.
#pragma once

#include "helperlink/driver_messages.h"
#include "platform/input/input_device.h"

#include <string>
#include <string_view>

namespace drevix {

// Adds the device that a line describes, if any. False, with the list unchanged and the reason in *problem (the end
// of a sentence), for an invalid line or a fifth device.
[[nodiscard]] bool AddDevice(std::string_view line, DeviceList *list, std::string *problem);

// The devices of a whole file's text. False as AddDevice, with the line's number in *problem.
[[nodiscard]] bool ParseDevices(std::string_view text, DeviceList *list, std::string *problem);

// The devices that the file at a path describes; none when there is no such file. False as ParseDevices, also for
// a file that cannot be read.
[[nodiscard]] bool ReadDevices(const std::string &path, DeviceList *list, std::string *problem);

// A device of the kernel, as reported to the panel. Omits a serial number that is not 14 hexadecimal digits,
// because the panel could not show it.
[[nodiscard]] ConnectedDevice DeviceOfDescription(const InputDescription &description);

} // namespace drevix
