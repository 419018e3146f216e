// Tells when a file was written, replaced, made or removed.
#pragma once

#include <string>

namespace drevix {

class FileWatch {
  public:
    // Watches the file's folder, since a file may be replaced by another; a folder that is missing is not watched.
    explicit FileWatch(const std::string &path);
    FileWatch(const FileWatch &) = delete;
    FileWatch &operator=(const FileWatch &) = delete;
    ~FileWatch();

    // Can be read when something happened in the folder; -1 when nothing is watched.
    [[nodiscard]] int Descriptor() const { return fDescriptor; }
    // Whether something happened to the file since the last call.
    [[nodiscard]] bool TakeChange();

  private:
    std::string fName;
    int fDescriptor;
};

} // namespace drevix
