#include "platform/files/shared_file.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/kept_bytes.h"
#include "platform/files/owners.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <limits>
#include <new>
#include <utility>

namespace drevix {
namespace {

constexpr OSErr kUnfit = -1; // too long, or not a regular file
constexpr std::size_t kMostOldBytes = std::numeric_limits<std::int32_t>::max() - 1;

struct RegularFile {
    std::string path;
    int descriptor = -1; // of `file`
    OwnedFile file;
};

// Opens a regular file without waiting for the other end of a pipe.
OSErr OpenRegular(const std::string &path, Permission permission, RegularFile *result) {
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
    if (!S_ISREG(found.st_mode)) {
        return kUnfit;
    }
    result->path = path;
    result->descriptor = opened.Get();
    return AdoptDescriptor(opened.Release(), permission, result->file.Out());
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
        return status == noErr ? fBsyErr : status; // it has grown
    }
    read.resize(static_cast<std::size_t>(count));
    *bytes = std::move(read);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr WriteFrom(FileRef file, std::size_t offset, std::string_view bytes) {
    // const_cast: the buffer is also used for reading; writing does not change it.
    IOParam transfer = {
        file,        const_cast<char *>(bytes.data()), static_cast<std::int32_t>(bytes.size()), 0,
        fsFromStart, static_cast<std::int64_t>(offset)};
    return PBWriteSync(&transfer);
}

// Writes and flushes before anything else is written.
OSErr WriteThrough(FileRef file, std::size_t offset, std::string_view bytes) {
    const OSErr status = WriteFrom(file, offset, bytes);
    return status == noErr ? PBFlushFileSync(file) : status;
}

OSErr Cut(FileRef file, std::size_t length) {
    const OSErr status = SetEOF(file, static_cast<std::int64_t>(length));
    return status == noErr ? PBFlushFileSync(file) : status;
}

// The new bytes are first written behind the old ones. A disk without room for them then says so before the
// old ones are touched. And while the old ones are being overwritten, a mixture of both could pass for a
// valid file; the copy behind it shows that it is not.
OSErr WriteOver(FileRef file, std::string_view old, std::string_view bytes, bool *isCut) {
    OSErr status = WriteThrough(file, OffsetOfCopy(old, bytes), bytes);
    if (status == noErr) {
        status = WriteThrough(file, 0, bytes);
    }
    *isCut = status == noErr;
    // Also removes what another program may have appended meanwhile.
    return status == noErr ? Cut(file, bytes.size()) : status;
}

// Puts what may have been cut off behind the file again first, for the same reason.
OSErr WriteBack(FileRef file, std::string_view old, std::string_view bytes, bool isCut) {
    OSErr status = isCut ? WriteThrough(file, OffsetOfCopy(old, bytes), bytes) : OSErr{noErr};
    if (status == noErr) {
        status = WriteThrough(file, 0, old);
    }
    return status == noErr ? Cut(file, old.size()) : status;
}

// Writes the bytes over those of an open file. If the old ones could not be put back, the copy stays for the
// next program.
OSErr Replace(const RegularFile &opened, std::string_view bytes, std::string *oldCopy) {
    KeptBytes kept;
    OSErr status = kept.TakeTurn();
    std::string old; // read only now: what another program had left may have been put right just before
    if (status == noErr) {
        status = ReadAll(opened.file.Get(), kMostOldBytes, &old);
    }
    if (status != noErr) {
        return status;
    }
    if (old == bytes) {
        return WriteFrom(opened.file.Get(), 0, bytes);
    }
    status = kept.Keep(opened.path, opened.descriptor, old, bytes);
    if (status != noErr) {
        return status;
    }
    bool isCut = false;
    status = WriteOver(opened.file.Get(), old, bytes, &isCut);
    if (status == noErr && oldCopy != nullptr) {
        *oldCopy = kept.DropToOld();
    } else if (status == noErr || WriteBack(opened.file.Get(), old, bytes, isCut) == noErr) {
        kept.Drop();
    }
    return status;
}

} // namespace

OSErr ReadSharedFile(const std::string &path, std::size_t most, std::string *bytes) try {
    RegularFile opened;
    const OSErr status = OpenRegular(path, fsRdPerm, &opened);
    return status == noErr ? ReadAll(opened.file.Get(), most, bytes) : status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr WriteSharedFile(const std::string &path, std::string_view bytes, std::string *old) try {
    if (old != nullptr) {
        old->clear();
    }
    RegularFile opened;
    OSErr status = OpenRegular(path, fsRdWrPerm, &opened);
    if (status != fnfErr) {
        return status == noErr ? Replace(opened, bytes, old) : status;
    }
    {
        const DiskDescriptor made(
            CurrentDisk().Open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, kNewFileMode));
        status = made ? OpenRegular(path, fsRdWrPerm, &opened) : LastError();
        if (!made) {
            return status;
        }
    }
    if (status == noErr) {
        status = WriteThrough(opened.file.Get(), 0, bytes);
    }
    if (status != noErr) {
        CurrentDisk().Remove(path.c_str());
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
