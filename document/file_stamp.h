// Stamps that distinguish one state of a file from another.
#pragma once

#include <cstdint>
#include <string>

namespace drevix {

// All zero for a missing file.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t modified = 0; // nanoseconds
    std::int64_t changed = 0;  // nanoseconds; set by the kernel, not by programs
    std::int64_t size = 0;     // bytes
    bool operator==(const FileStamp &) const = default;
};

// The stamp of the file at a path, following links, or of an open descriptor. That of a missing file if stat
// fails.
[[nodiscard]] FileStamp StampOfFile(const std::string &path);
[[nodiscard]] FileStamp StampOfDescriptor(int descriptor);

// Whether two paths name the same file, or the same place for one that does not exist yet.
[[nodiscard]] bool AreSameFile(const std::string &a, const std::string &b);

} // namespace drevix
