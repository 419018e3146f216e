#include "platform/files.h"

#include "platform/disk.h"
#include "platform/mac_roman.h"
#include "platform/status.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <pwd.h>
#include <span>
#include <unistd.h>
#include <vector>

namespace drevix {
namespace {

constexpr int kNoDescriptor = -1;
// A process may have 1024 descriptors by default; the classic file table had 348 entries.
constexpr std::size_t kMostFiles = 348;
constexpr mode_t kNewFileMode = 0666;   // less the user's umask
constexpr mode_t kNewFolderMode = 0700; // as the desktop's base directory rules ask
// One transfer call moves at most this on Linux (read(2), NOTES).
constexpr std::size_t kMostPerCall = 0x7FFFF000;

struct OpenedFile {
    int descriptor = kNoDescriptor;
    Permission permission = Permission::Read;
    std::int64_t mark = 0;
};

std::array<OpenedFile, kMostFiles> gFiles;

OSErr LastError() {
    return StatusFromErrno(errno);
}

// The file of a reference; null when it is not open.
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

// The folders that have an id, the first at kFirstFolderId.
constexpr std::int32_t kFirstFolderId = 16;
std::vector<std::string> gFolders;

std::string FolderPath(std::int32_t folder) {
    if (folder == kRootFolder || folder == kRootParentFolder) {
        return "/";
    }
    const auto index = static_cast<std::size_t>(folder - kFirstFolderId);
    return folder >= kFirstFolderId && index < gFolders.size() ? gFolders[index] : std::string();
}

std::string HomeFolder() {
    if (const char *home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        return home;
    }
    const struct passwd *user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

std::string PreferencesFolder() {
    if (const char *folder = std::getenv("XDG_CONFIG_HOME"); folder != nullptr && folder[0] == '/') {
        return folder;
    }
    const std::string home = HomeFolder();
    return home.empty() ? std::string() : home + "/.config";
}

// Makes the folder and those above it that are missing.
OSErr MakeFolders(const std::string &path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        if (CurrentDisk().MakeFolder(path.substr(0, end).c_str(), kNewFolderMode) != 0 && errno != EEXIST) {
            return LastError();
        }
        if (end == std::string::npos) {
            return noErr;
        }
    }
}

OSErr RequireFolder(const std::string &path) {
    const int descriptor = CurrentDisk().Open(path.c_str(), O_PATH | O_DIRECTORY, 0);
    if (descriptor < 0) {
        return LastError();
    }
    CurrentDisk().Close(descriptor);
    return noErr;
}

// Repeats `transfer(bytes done so far)` until all is done, nothing more comes or it fails.
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

enum class Direction { Read, Write };

OSErr TransferAtMark(FileRef reference, Direction direction, std::int32_t wanted, std::int32_t *actual,
                     void *bytes) {
    *actual = 0;
    OpenedFile *file = FindFile(reference);
    if (file == nullptr) {
        return rfNumErr;
    }
    if (wanted < 0 || (bytes == nullptr && wanted > 0)) {
        return paramErr;
    }
    if (direction == Direction::Write && file->permission != Permission::ReadWrite) {
        return wrPermErr;
    }
    std::size_t done = 0;
    const OSErr status = TransferAll(
        static_cast<std::size_t>(wanted), &done, [&](std::size_t before, std::size_t count) -> ssize_t {
            const off_t offset = file->mark + static_cast<off_t>(before);
            std::byte *place = static_cast<std::byte *>(bytes) + before;
            return direction == Direction::Read
                       ? CurrentDisk().ReadAt(file->descriptor, place, count, offset)
                       : CurrentDisk().WriteAt(file->descriptor, place, count, offset);
        });
    file->mark += static_cast<std::int64_t>(done);
    *actual = static_cast<std::int32_t>(done);
    // A write that moves nothing and reports nothing is a disk that is out of order, not an end of file.
    return status == eofErr && direction == Direction::Write ? ioErr : status;
}

} // namespace

OSErr FindFolder(std::int16_t volume, OSType folderType, FolderCreation creation, std::int16_t *foundVolume,
                 std::int32_t *foundFolder) try {
    if (volume != kOnSystemDisk && volume != kRootVolume) {
        return nsvErr;
    }
    const std::string path = folderType == kPreferencesFolderType ? PreferencesFolder() : std::string();
    if (path.empty()) {
        return fnfErr;
    }
    if (creation == kCreateFolder) {
        if (const OSErr status = MakeFolders(path); status != noErr) {
            return status;
        }
    }
    if (const OSErr status = RequireFolder(path); status != noErr) {
        return status;
    }
    const std::int32_t folder = FolderIdFromPath(path);
    *foundVolume = kRootVolume;
    *foundFolder = folder;
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

std::int32_t FolderIdFromPath(const std::string &path) {
    if (path == "/") {
        return kRootFolder;
    }
    auto found = std::ranges::find(gFolders, path);
    if (found == gFolders.end()) {
        found = gFolders.insert(gFolders.end(), path);
    }
    return kFirstFolderId + static_cast<std::int32_t>(found - gFolders.begin());
}

std::string PathFromSpec(const FSSpec &spec) {
    const std::string folder = FolderPath(spec.parID);
    const std::size_t length = std::min<std::size_t>(spec.name[0], spec.name.size() - 1);
    if (folder.empty() || length == 0) {
        return {};
    }
    std::string name = Utf8FromMacRoman(std::span(spec.name).subspan(1, length));
    std::ranges::replace(name, '/', ':');
    return folder.back() == '/' ? folder + name : folder + '/' + name;
}

OSErr FSpCreate(const FSSpec &spec, OSType /*creator*/, OSType /*fileType*/, std::int16_t /*script*/) try {
    const std::string path = PathFromSpec(spec);
    if (path.empty()) {
        return bdNamErr;
    }
    const int descriptor = CurrentDisk().Open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, kNewFileMode);
    if (descriptor < 0) {
        return LastError();
    }
    CurrentDisk().Close(descriptor);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpOpenDF(const FSSpec &spec, Permission permission, FileRef *file) try {
    const std::string path = PathFromSpec(spec);
    return path.empty() ? bdNamErr : OpenFile(path, permission, file);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpOpenRF(const FSSpec & /*spec*/, Permission /*permission*/, FileRef * /*file*/) {
    return fnfErr;
}

OSErr OpenFile(const std::string &path, Permission permission, FileRef *file) {
    if (path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    const int flags = permission == Permission::ReadWrite ? O_RDWR : O_RDONLY;
    const int descriptor = CurrentDisk().Open(path.c_str(), flags | O_NOCTTY, 0);
    return descriptor < 0 ? LastError() : AdoptDescriptor(descriptor, permission, file);
}

OSErr AdoptDescriptor(int descriptor, Permission permission, FileRef *file) {
    struct stat status {};
    OSErr result = CurrentDisk().StatusOf(descriptor, &status) == 0 ? noErr : LastError();
    if (result == noErr && S_ISDIR(status.st_mode)) {
        result = notAFileErr;
    }
    const auto slot = std::ranges::find(gFiles, kNoDescriptor, &OpenedFile::descriptor);
    if (result == noErr && slot == gFiles.end()) {
        result = tmfoErr;
    }
    if (result != noErr) {
        CurrentDisk().Close(descriptor);
        return result;
    }
    *slot = {descriptor, permission, 0};
    *file = static_cast<FileRef>(slot - gFiles.begin() + 1);
    return noErr;
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
    return TransferAtMark(reference, Direction::Read, *count, count, bytes);
}

OSErr PBReadSync(IOParam *transfer) {
    return TransferAtMark(transfer->ioRefNum, Direction::Read, transfer->ioReqCount, &transfer->ioActCount,
                          transfer->ioBuffer);
}

OSErr PBWriteSync(IOParam *transfer) {
    return TransferAtMark(transfer->ioRefNum, Direction::Write, transfer->ioReqCount, &transfer->ioActCount,
                          transfer->ioBuffer);
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
