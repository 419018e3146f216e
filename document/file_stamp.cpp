#include "document/file_stamp.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"

#include <fcntl.h>

namespace drevix {
namespace {

std::int64_t Nanoseconds(const timespec &time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

} // namespace

FileStamp StampOfDescriptor(int descriptor) {
    struct stat found {};
    if (CurrentDisk().StatusOf(descriptor, &found) != 0) {
        return {};
    }
    return {found.st_dev, found.st_ino, Nanoseconds(found.st_mtim), Nanoseconds(found.st_ctim),
            found.st_size};
}

FileStamp StampOfFile(const std::string &path) {
    const DiskDescriptor opened(CurrentDisk().Open(path.c_str(), O_PATH, 0));
    return opened ? StampOfDescriptor(opened.Get()) : FileStamp{};
}

bool AreSameFile(const std::string &a, const std::string &b) {
    std::string first;
    std::string second;
    if (FollowLinks(a, &first) != noErr || FollowLinks(b, &second) != noErr) {
        return false;
    }
    const FileStamp stamp = StampOfFile(first);
    const FileStamp other = StampOfFile(second);
    return first == second ||
           (stamp != FileStamp{} && stamp.device == other.device && stamp.inode == other.inode);
}

} // namespace drevix
