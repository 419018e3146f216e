// Reports when a file is written, replaced, created or removed.
#pragma once

#include "platform/files/owners.h"

#include <string>

namespace drevix {

class FileWatch {
  public:
    // Watches the file's folder, because a file may be replaced by another, or the nearest existing folder
    // above it. Watches a link, not its target.
    explicit FileWatch(const std::string &path);

    // Readable when something happened in the folder; -1 if nothing is watched.
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
    int fWatch = -1; // the watched folder
};

} // namespace drevix
