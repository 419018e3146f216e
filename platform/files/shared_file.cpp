#include "platform/files/shared_file.h"

#include "platform/base/status.h"
#include "platform/files/owners.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <limits>
#include <new>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

constexpr OSErr kUnfit = -1;          // too long, or no regular file
constexpr mode_t kNewFileMode = 0666; // less the user's umask
constexpr std::size_t kMostOldBytes = std::numeric_limits<std::int32_t>::max() - 1;

// Opens a regular file without waiting for the other end of a pipe.
OSErr OpenRegular(const std::string &path, Permission permission, OwnedFile *file) {
    if (path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    Disk &disk = CurrentDisk();
    const int flags = permission == Permission::ReadWrite ? O_RDWR : O_RDONLY;
    DiskDescriptor opened(disk.Open(path.c_str(), flags | O_NOCTTY | O_NONBLOCK, 0));
    struct stat found {};
    if (!opened || disk.StatusOf(opened.Get(), &found) != 0) {
        return LastError();
    }
    return S_ISREG(found.st_mode) ? AdoptDescriptor(opened.Release(), permission, file->Out()) : kUnfit;
}

OSErr ReadAll(FileRef file, std::size_t most, std::string *bytes) try {
    std::int64_t length = 0;
    if (const OSErr status = GetEOF(file, &length); status != noErr) {
        return status;
    }
    if (length > static_cast<std::int64_t>(most)) {
        return kUnfit;
    }
    std::string read(static_cast<std::size_t>(length) + 1, '\0');
    auto count = static_cast<std::int32_t>(read.size());
    const OSErr status = FSRead(file, &count, read.data());
    if (status != eofErr) {
        return status == noErr ? fBsyErr : status; // the end did not come where it was
    }
    read.resize(static_cast<std::size_t>(count));
    *bytes = std::move(read);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr WriteFrom(FileRef file, std::size_t offset, std::string_view bytes) {
    // The transfer's buffer serves reading too; writing leaves it alone.
    IOParam transfer = {
        file,        const_cast<char *>(bytes.data()), static_cast<std::int32_t>(bytes.size()), 0,
        fsFromStart, static_cast<std::int64_t>(offset)};
    return PBWriteSync(&transfer);
}

// On the disk before anything else is written.
OSErr WriteThrough(FileRef file, std::size_t offset, std::string_view bytes) {
    const OSErr status = WriteFrom(file, offset, bytes);
    return status == noErr ? PBFlushFileSync(file) : status;
}

OSErr Cut(FileRef file, std::size_t length) {
    const OSErr status = SetEOF(file, static_cast<std::int64_t>(length));
    return status == noErr ? PBFlushFileSync(file) : status;
}

// The new bytes first come whole behind the old ones: a disk without room for them says so before the old ones
// are touched, and while these are being replaced, by a mixture of both that could look like a file as it should
// be, what stands behind it shows that it is none.
OSErr WriteOver(FileRef file, const std::string &old, std::string_view bytes) {
    OSErr status = old.empty() ? noErr : WriteThrough(file, std::max(old.size(), bytes.size()), bytes);
    if (status == noErr) {
        status = WriteThrough(file, 0, bytes);
    }
    // Another program may have written more meanwhile; that goes too.
    return status == noErr ? Cut(file, bytes.size()) : status;
}

OSErr Replace(FileRef file, const std::string &old, std::string_view bytes) {
    if (old == bytes) {
        return WriteFrom(file, 0, bytes);
    }
    const OSErr status = WriteOver(file, old, bytes);
    if (status != noErr) {
        // Nobody is left to tell when the old bytes cannot be put back: the caller already has the first failure.
        std::ignore = WriteFrom(file, 0, old);
        std::ignore = Cut(file, old.size());
    }
    return status;
}

} // namespace

OSErr ReadSharedFile(const std::string &path, std::size_t most, std::string *bytes) {
    OwnedFile file;
    const OSErr status = OpenRegular(path, fsRdPerm, &file);
    return status == noErr ? ReadAll(file.Get(), most, bytes) : status;
}

OSErr WriteSharedFile(const std::string &path, std::string_view bytes) {
    Disk &disk = CurrentDisk();
    OwnedFile file;
    OSErr status = OpenRegular(path, fsRdWrPerm, &file);
    const bool isNew = status == fnfErr;
    if (isNew) {
        const DiskDescriptor made(disk.Open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, kNewFileMode));
        if (!made) {
            return LastError();
        }
        status = OpenRegular(path, fsRdWrPerm, &file);
    }
    std::string old;
    if (status == noErr) {
        status = ReadAll(file.Get(), kMostOldBytes, &old);
    }
    if (status == noErr) {
        status = Replace(file.Get(), old, bytes);
    }
    if (status != noErr && isNew && old.empty()) {
        disk.Remove(path.c_str());
    }
    return status;
}

} // namespace drevix
