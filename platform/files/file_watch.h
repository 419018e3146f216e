// Tells when a file was written, replaced, made or removed.
#pragma once

#include "platform/files/owners.h"

#include <string>

namespace drevix {

class FileWatch {
  public:
    // Watches the file's folder, since a file may be replaced by another, and while that is missing the nearest
    // one above it. The file that a link leads to is not watched, only the link.
    explicit FileWatch(const std::string &path);

    // Can be read when something happened in the folder; -1 when nothing is watched.
    [[nodiscard]] int Descriptor() const { return fDescriptor.Get(); }
    // Whether something may have happened to the file since the last call.
    [[nodiscard]] bool TakeChange();

  private:
    void Watch();
    [[nodiscard]] int WatchNearest() const;
    [[nodiscard]] bool IsChange(const char *name, unsigned what) const;

    std::string fPath;
    std::string fName;
    SystemDescriptor fDescriptor;
    int fWatch = -1; // the one folder that is watched
};

} // namespace drevix
