// Which input devices there are, and which come.
#pragma once

#include "platform/files/owners.h"

#include <string>
#include <vector>

namespace drevix {

class InputDevices {
  public:
    // Watches a folder of devices, "event3" and the like. While it is missing, the one that it would lie in is watched.
    explicit InputDevices(std::string folder = "/dev/input");

    // Can be read when something has happened in the folder; -1 when nothing can be watched.
    [[nodiscard]] int Descriptor() const { return fDescriptor.Get(); }

    // The paths of devices that may be new since the last call, in the first call of all that are there: they came, or
    // who may read them has changed, as it does right after they came. A path may be given more than once.
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
