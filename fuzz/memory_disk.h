// Open files that are strings: a fuzzer that reads and writes ten million of them has no time for system calls.
#pragma once

#include "platform/files/disk.h"
#include "platform/files/files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace drevix::fuzz {

// A disk with nothing on it but the files that MemoryFile opens. In use from its construction on.
class MemoryDisk : public Disk {
  public:
    static MemoryDisk &Get() {
        static MemoryDisk disk;
        return disk;
    }
    int OpenNew() {
        fFiles.emplace_back();
        return static_cast<int>(fFiles.size()) - 1;
    }
    std::string &FileOf(int fd) { return fFiles[static_cast<std::size_t>(fd)]; }

    int Close(int /*fd*/) override { return 0; }
    ssize_t ReadAt(int fd, void *bytes, std::size_t count, off_t offset) override {
        const std::string &file = FileOf(fd);
        const auto start = std::min(static_cast<std::size_t>(offset), file.size());
        const std::size_t done = std::min(count, file.size() - start);
        std::memcpy(bytes, file.data() + start, done);
        return static_cast<ssize_t>(done);
    }
    ssize_t WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) override {
        std::string &file = FileOf(fd);
        const auto start = static_cast<std::size_t>(offset);
        file.resize(std::max(file.size(), start + count));
        std::memcpy(file.data() + start, bytes, count);
        return static_cast<ssize_t>(count);
    }
    int SetSize(int fd, off_t size) override {
        FileOf(fd).resize(static_cast<std::size_t>(size));
        return 0;
    }
    int Flush(int /*fd*/) override { return 0; }
    int StatusOf(int fd, struct stat *status) override {
        *status = {};
        status->st_mode = S_IFREG;
        status->st_size = static_cast<off_t>(FileOf(fd).size());
        return 0;
    }

  private:
    MemoryDisk() { SetDisk(this); }
    std::vector<std::string> fFiles;
};

// One open file, for the life of the process.
class MemoryFile {
  public:
    MemoryFile() : fDescriptor(MemoryDisk::Get().OpenNew()) {
        std::ignore = AdoptDescriptor(fDescriptor, fsRdWrPerm, &fFile); // on failure Ref() is 0
    }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    [[nodiscard]] FileRef Ref() const { return fFile; }
    [[nodiscard]] const std::string &Bytes() const { return MemoryDisk::Get().FileOf(fDescriptor); }
    void Set(std::string_view bytes) const { MemoryDisk::Get().FileOf(fDescriptor) = bytes; }

  private:
    int fDescriptor;
    FileRef fFile = 0;
};

} // namespace drevix::fuzz
