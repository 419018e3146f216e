#include "platform/files/files.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/owners.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>

namespace drevix {
namespace {

constexpr int kNoDescriptor = -1;
// A process may have 1024 descriptors by default; the classic file table had 348 entries.
constexpr std::size_t kMostFiles = 348;
// The most bytes per transfer call on Linux (read(2), NOTES).
constexpr std::size_t kMostPerCall = 0x7FFFF000;

struct OpenedFile {
    int descriptor = kNoDescriptor;
    Permission permission = Permission::Read;
    std::int64_t mark = 0;
};

std::array<OpenedFile, kMostFiles> gFiles;

// The file of a reference; null if it is not open.
OpenedFile *FindFile(FileRef file) {
    if (file < 1 || static_cast<std::size_t>(file) > gFiles.size()) {
        return nullptr;
    }
    OpenedFile &found = gFiles[static_cast<std::size_t>(file) - 1];
    return found.descriptor == kNoDescriptor ? nullptr : &found;
}

OSErr LengthOf(const OpenedFile &file, std::int64_t *length) {
    struct stat status {};
    if (CurrentDisk().StatusOf(file.descriptor, &status) != 0) {
        return LastError();
    }
    *length = status.st_size;
    return noErr;
}

// Repeats `transfer(bytes done so far)` until it is done, reaches the end or fails.
template <typename Transfer>
OSErr TransferAll(std::size_t wanted, std::size_t *done, const Transfer &transfer) {
    *done = 0;
    while (*done < wanted) {
        const ssize_t moved = transfer(*done, std::min(wanted - *done, kMostPerCall));
        if (moved < 0 && errno == EINTR) {
            continue;
        }
        if (moved < 0) {
            return LastError();
        }
        if (moved == 0) {
            return eofErr;
        }
        *done += static_cast<std::size_t>(moved);
    }
    return noErr;
}

// Assigns the open descriptor to a free reference if its file type is acceptable; else closes it.
OSErr Adopt(int descriptor, Permission permission, bool (*willDo)(mode_t), FileRef *file) {
    DiskDescriptor owned(descriptor);
    struct stat status {};
    if (CurrentDisk().StatusOf(descriptor, &status) != 0) {
        return LastError();
    }
    if (!willDo(status.st_mode)) {
        return notAFileErr;
    }
    const auto slot = std::ranges::find(gFiles, kNoDescriptor, &OpenedFile::descriptor);
    if (slot == gFiles.end()) {
        return tmfoErr;
    }
    *slot = {owned.Release(), permission, 0};
    *file = static_cast<FileRef>(slot - gFiles.begin() + 1);
    return noErr;
}

enum class Direction { Read, Write };

OSErr TransferBytes(IOParam *transfer, Direction direction) {
    const std::int32_t wanted = transfer->ioReqCount;
    auto *const bytes = static_cast<std::byte *>(transfer->ioBuffer);
    transfer->ioActCount = 0;
    OpenedFile *file = FindFile(transfer->ioRefNum);
    if (file == nullptr) {
        return rfNumErr;
    }
    if (wanted < 0 || (bytes == nullptr && wanted > 0)) {
        return paramErr;
    }
    if (direction == Direction::Write && file->permission != Permission::ReadWrite) {
        return wrPermErr;
    }
    if ((transfer->ioPosMode & ~noCacheMask) == fsFromStart) {
        if (transfer->ioPosOffset < 0) {
            return posErr;
        }
        file->mark = transfer->ioPosOffset;
    }
    std::size_t done = 0;
    const OSErr status = TransferAll(
        static_cast<std::size_t>(wanted), &done, [&](std::size_t before, std::size_t count) -> ssize_t {
            const off_t offset = file->mark + static_cast<off_t>(before);
            return direction == Direction::Read
                       ? CurrentDisk().ReadAt(file->descriptor, bytes + before, count, offset)
                       : CurrentDisk().WriteAt(file->descriptor, bytes + before, count, offset);
        });
    file->mark += static_cast<std::int64_t>(done);
    transfer->ioActCount = static_cast<std::int32_t>(done);
    // A write of nothing without an error means a faulty disk, not the end of the file.
    return status == eofErr && direction == Direction::Write ? ioErr : status;
}

} // namespace

OSErr OpenFile(const std::string &path, Permission permission, FileRef *file) {
    if (path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    // O_NONBLOCK: opening a pipe would block for its other end, a serial line for a carrier.
    const int flags = (permission == Permission::ReadWrite ? O_RDWR : O_RDONLY) | O_NOCTTY | O_NONBLOCK;
    const int descriptor = CurrentDisk().Open(path.c_str(), flags, 0);
    const auto isRegular = [](mode_t mode) { return S_ISREG(mode); };
    return descriptor < 0 ? LastError() : Adopt(descriptor, permission, isRegular, file);
}

OSErr AdoptDescriptor(int descriptor, Permission permission, FileRef *file) {
    return Adopt(
        descriptor, permission, [](mode_t mode) { return !S_ISDIR(mode); }, file);
}

OSErr FSClose(FileRef reference) {
    OpenedFile *file = FindFile(reference);
    if (file == nullptr) {
        return rfNumErr;
    }
    const int result = CurrentDisk().Close(file->descriptor);
    *file = OpenedFile();
    return result == 0 ? noErr : LastError();
}

OSErr GetEOF(FileRef reference, std::int64_t *length) {
    const OpenedFile *file = FindFile(reference);
    return file == nullptr ? rfNumErr : LengthOf(*file, length);
}

OSErr SetEOF(FileRef reference, std::int64_t length) {
    OpenedFile *file = FindFile(reference);
    if (file == nullptr) {
        return rfNumErr;
    }
    if (file->permission != Permission::ReadWrite) {
        return wrPermErr;
    }
    if (length < 0) {
        return posErr;
    }
    if (CurrentDisk().SetSize(file->descriptor, length) != 0) {
        return LastError();
    }
    file->mark = std::min(file->mark, length);
    return noErr;
}

OSErr SetFPos(FileRef reference, std::int16_t mode, std::int64_t offset) {
    OpenedFile *file = FindFile(reference);
    if (file == nullptr) {
        return rfNumErr;
    }
    if (mode != fsFromStart) {
        return paramErr;
    }
    if (offset < 0) {
        return posErr;
    }
    std::int64_t length = 0;
    if (const OSErr status = LengthOf(*file, &length); status != noErr) {
        return status;
    }
    file->mark = std::min(offset, length);
    return offset > length ? eofErr : noErr;
}

OSErr FSRead(FileRef reference, std::int32_t *count, void *bytes) {
    IOParam transfer = {reference, bytes, *count, 0, fsAtMark, 0};
    const OSErr status = PBReadSync(&transfer);
    *count = transfer.ioActCount;
    return status;
}

OSErr PBReadSync(IOParam *transfer) {
    return TransferBytes(transfer, Direction::Read);
}

OSErr PBWriteSync(IOParam *transfer) {
    return TransferBytes(transfer, Direction::Write);
}

OSErr PBFlushFileSync(FileRef reference) {
    const OpenedFile *file = FindFile(reference);
    if (file == nullptr) {
        return rfNumErr;
    }
    return CurrentDisk().Flush(file->descriptor) == 0 ? noErr : LastError();
}

int OpenFileCount() {
    return static_cast<int>(gFiles.size() - static_cast<std::size_t>(std::ranges::count(
                                                gFiles, kNoDescriptor, &OpenedFile::descriptor)));
}

} // namespace drevix
