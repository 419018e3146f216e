// Finds input devices, including new ones.
#pragma once

#include "platform/files/owners.h"

#include <string>
#include <vector>

namespace drevix {

class InputDevices {
  public:
    // Watches a folder of devices, "event3" and the like. While it is missing, watches the folder above it.
    explicit InputDevices(std::string folder = "/dev/input");

    // Readable when something has happened in the folder; -1 if nothing can be watched.
    [[nodiscard]] int Descriptor() const { return fDescriptor.Get(); }

    // The paths of devices that may be new since the last call; all of them in the first call. A device
    // counts as new again when its permissions have changed, as they do right after it appears. A path may be
    // listed more than once.
    [[nodiscard]] std::vector<std::string> TakeNew();

  private:
    bool WatchFolder();
    void AddAll(std::vector<std::string> *paths) const;

    std::string fFolder;
    SystemDescriptor fDescriptor;
    int fWatch = -1;      // of the folder; -1 while it is missing
    int fAboveWatch = -1; // of the one above it
    bool fIsFirst = true;
};

} // namespace drevix
