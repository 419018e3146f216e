// What tells one state of a file from another.
#pragma once

#include <cstdint>
#include <string>

namespace drevix {

// All zero for a file that is not there.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t modified = 0; // nanoseconds
    std::int64_t changed = 0;  // nanoseconds; the kernel's own, which no program can set
    std::int64_t size = 0;     // bytes
    bool operator==(const FileStamp &) const = default;
};

// The stamp of what the path leads to, links followed; that of an open descriptor. A file that cannot be looked
// at has that of a missing one.
[[nodiscard]] FileStamp StampOfFile(const std::string &path);
[[nodiscard]] FileStamp StampOfDescriptor(int descriptor);

// Whether two paths lead to one file, or to one place where none is yet.
[[nodiscard]] bool AreSameFile(const std::string &a, const std::string &b);

} // namespace drevix
