// Reads the maps of devices: the user's own, then those that came with the program.
#pragma once

#include "device/device_map.h"
#include "platform/files/files.h"

#include <functional>
#include <string>
#include <vector>

namespace drevix {

// The folder of the user's maps, in the preferences folder, and the folder of the others, in the resources.
inline constexpr const char *kUsersMapsFolder = "com.halcyra.drevix.maps";
inline constexpr const char *kMapsFolder = "maps";

// Reads every "*.map" of both folders, ordered by name, the user's first. Reports each error, or why a file
// cannot be read, in a line ("FILE:3: ..."); the rest of the file counts.
[[nodiscard]] std::vector<DeviceMap> ReadMapFiles(const std::string &preferences, const FSRef &resources,
                                                  const std::function<void(const std::string &)> &complain);

} // namespace drevix
