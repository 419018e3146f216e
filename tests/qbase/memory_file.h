// An open file in memory, for tests and fuzzers that read or write thousands of files.
#pragma once

#include "platform/files/files.h"
#include "tests/support/testing.h"

#include <sys/mman.h>

namespace drevix::test {

// A file of its own for as long as it lives. Reaches its bytes past the disk, so faults do not hit it.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view bytes = {}) : fDescriptor(::memfd_create("file", MFD_CLOEXEC)) {
        std::ignore = AdoptDescriptor(::dup(fDescriptor), fsRdWrPerm, &fFile); // on failure Ref() is 0
        std::ignore = Set(bytes); // a file that lacks them is found by the first read
    }
    ~MemoryFile() {
        FSClose(fFile);
        ::close(fDescriptor);
    }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    [[nodiscard]] FileRef Ref() const { return fFile; }
    [[nodiscard]] std::string Bytes() const {
        std::string bytes(static_cast<std::size_t>(::lseek(fDescriptor, 0, SEEK_END)), '\0');
        bytes.resize(static_cast<std::size_t>(::pread(fDescriptor, bytes.data(), bytes.size(), 0)));
        return bytes;
    }
    // Makes the file these bytes. False when they could not be written.
    [[nodiscard]] bool Set(std::string_view bytes) const {
        return ::ftruncate(fDescriptor, 0) == 0 &&
               ::pwrite(fDescriptor, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
    }
    // Sets the length; bytes gained are zeros that take no memory.
    [[nodiscard]] bool SetLength(off_t length) const { return ::ftruncate(fDescriptor, length) == 0; }

  private:
    int fDescriptor;
    FileRef fFile = 0;
};

} // namespace drevix::test
