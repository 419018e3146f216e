#include "platform/files/file_update.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/kept_bytes.h"
#include "platform/files/paths.h"
#include "platform/files/shared_file.h"
#include "platform/files/temporary_file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <new>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

constexpr mode_t kPermissionBits = 07777;
constexpr int kMostKept = 1000; // numbered copies beside a kept file
constexpr std::size_t kChunk = std::size_t{1} << 20;
constexpr std::int64_t kMostInMemory = std::numeric_limits<std::int32_t>::max();

constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kUsersDefault = 0666; // less the umask
constexpr std::string_view kBesideSuffix = ".new";
constexpr std::size_t kLongestLeaf =
    200; // of the file, in the name of the one beside it; a name has 255 bytes

OSErr WriteAll(FileRef file, const void *bytes, std::size_t count) {
    IOParam transfer = {file, const_cast<void *>(bytes), static_cast<std::int32_t>(count), 0, fsAtMark, 0};
    return PBWriteSync(&transfer);
}

// Reads the rest of an open file.
OSErr ReadRest(FileRef file, std::string *bytes) try {
    std::int64_t length = 0;
    if (const OSErr status = GetEOF(file, &length); status != noErr) {
        return status;
    }
    if (length > kMostInMemory) {
        return memFullErr;
    }
    bytes->clear();
    // A stream reports length 0 and a file may grow, so read until the actual end.
    for (std::size_t wanted = static_cast<std::size_t>(length) + 1;; wanted = kChunk) {
        const std::size_t before = bytes->size();
        if (before + wanted > static_cast<std::size_t>(kMostInMemory)) {
            return memFullErr;
        }
        bytes->resize(before + wanted);
        auto count = static_cast<std::int32_t>(wanted);
        const OSErr status = FSRead(file, &count, bytes->data() + before);
        bytes->resize(before + static_cast<std::size_t>(count));
        if (status != noErr) {
            return status == eofErr ? noErr : status;
        }
    }
} catch (const std::bad_alloc &) {
    return memFullErr;
}

// Whether `other` is a separate file (no link) with the same bytes as the file at `path`.
bool IsCopyOf(const std::string &path, const std::string &other) {
    std::string original;
    struct stat a {};
    struct stat b {};
    Disk &disk = CurrentDisk();
    if (FollowLinks(path, &original) != noErr || disk.StatusAt(original.c_str(), &a) != 0 ||
        disk.StatusAt(other.c_str(), &b) != 0 || a.st_size != b.st_size || !S_ISREG(b.st_mode)) {
        return false;
    }
    const bool oneFile =
        a.st_dev == b.st_dev && a.st_ino == b.st_ino; // a hard link: changes with the original
    std::string bytes;
    std::string otherBytes;
    return !oneFile && ReadWholeFile(path, &bytes) == noErr && ReadWholeFile(other, &otherBytes) == noErr &&
           bytes == otherBytes;
}

// noErr if something has that name, fnfErr if nothing has; or the error, after which it may be taken.
OSErr LookAt(const std::string &path) {
    struct stat status {};
    return CurrentDisk().StatusAt(path.c_str(), &status) == 0 ? noErr : LastError();
}

// Moves the file at `path` to the first free of `path`.1, `path`.2, ...
OSErr MoveToFreeName(const std::string &path) {
    for (int i = 1; i <= kMostKept; ++i) {
        const std::string free = path + "." + std::to_string(i);
        const OSErr found = LookAt(free);
        if (found == fnfErr) {
            return CurrentDisk().Rename(path.c_str(), free.c_str()) == 0 ? noErr : LastError();
        }
        if (found != noErr) {
            return found;
        }
    }
    return dirFulErr;
}

// permErr where the owner cannot be kept.
OSErr KeepOwner(int descriptor, const struct stat &old) {
    struct stat made {};
    if (CurrentDisk().StatusOf(descriptor, &made) != 0) {
        return LastError();
    }
    const bool isSame = old.st_uid == made.st_uid && old.st_gid == made.st_gid;
    return isSame || CurrentDisk().SetOwner(descriptor, old.st_uid, old.st_gid) == 0 ? noErr : OSErr{permErr};
}

} // namespace

OSErr FlushFolder(const std::string &folder) {
    const DiskDescriptor opened(CurrentDisk().Open(folder.c_str(), O_RDONLY | O_DIRECTORY, 0));
    if (!opened) {
        return errno == EACCES ? noErr : LastError();
    }
    return CurrentDisk().Flush(opened.Get()) == 0 || errno == EINVAL ? noErr : LastError();
}

OSErr WriteAllAt(int descriptor, std::string_view bytes, off_t offset) {
    while (!bytes.empty()) {
        const ssize_t count = CurrentDisk().WriteAt(descriptor, bytes.data(), bytes.size(), offset);
        if (count <= 0) {
            return count == 0 ? OSErr{dskFulErr} : LastError();
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
        offset += count;
    }
    return noErr;
}

OSErr ReadWholeFile(const std::string &path, std::string *bytes) {
    OwnedFile file;
    const OSErr status = OpenFile(path, fsRdPerm, file.Out());
    return status == noErr ? ReadRest(file.Get(), bytes) : status;
}

FileUpdate::~FileUpdate() {
    Discard();
}

OSErr FileUpdate::Open(const std::string &path, UpdateMethod method, const NewFile &newFile) try {
    if (fFile) {
        return fBsyErr;
    }
    if (path.empty() || path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    if (const OSErr status = FollowLinks(path, &fTarget); status != noErr) {
        return status;
    }
    struct stat found {};
    fExisted = CurrentDisk().StatusAt(fTarget.c_str(), &found) == 0 || errno != ENOENT;
    if (method == UpdateMethod::Replace || !fExisted) {
        const OSErr status = OpenBeside(newFile);
        // A read-only folder may still contain a writable file. Other failures, above all a full disk, would
        // hit an in-place write just the same, and do more harm.
        const bool folderClosed = status == permErr || status == wPrErr;
        if (!folderClosed || !fExisted) {
            return status;
        }
    }
    return OpenInPlace();
} catch (const std::bad_alloc &) {
    Discard();
    return memFullErr;
}

// The file that is to be replaced, or else the one whose mode the new one is to have.
OSErr FileUpdate::FindModel(const NewFile &newFile, struct stat *model) {
    Disk &disk = CurrentDisk();
    const DiskDescriptor oldFile(disk.Open(fTarget.c_str(), O_RDWR | O_NOCTTY, 0));
    fExisted = static_cast<bool>(oldFile);
    if (!fExisted) {
        const bool isMissing = errno == ENOENT;
        const bool isNew = isMissing && newFile.modeOf.empty();
        return isNew || (isMissing && disk.StatusAt(newFile.modeOf.c_str(), model) == 0) ? noErr
                                                                                         : LastError();
    }
    if (disk.StatusOf(oldFile.Get(), model) != 0) {
        return LastError();
    }
    return S_ISREG(model->st_mode) ? noErr : permErr; // never replace a device by a file
}

OSErr FileUpdate::OpenBeside(const NewFile &newFile) {
    struct stat model {};
    OSErr status = FindModel(newFile, &model);
    if (status != noErr) {
        return status;
    }
    const bool isLikeModel = fExisted || !newFile.modeOf.empty();
    const mode_t mode = isLikeModel ? model.st_mode & kPermissionBits : newFile.mode;
    const bool hasMode = isLikeModel || mode != 0;
    DiskDescriptor made;
    status = MakeBeside(hasMode ? kPrivateMode : kUsersDefault, &made);
    if (status == noErr && fExisted) {
        status = KeepOwner(made.Get(), model);
    }
    if (status == noErr && hasMode && CurrentDisk().SetMode(made.Get(), mode) != 0) {
        status = LastError();
    }
    if (status == noErr) {
        status = AdoptDescriptor(made.Release(), fsRdWrPerm, fFile.Out());
    }
    if (status != noErr) {
        Discard();
    }
    return status;
}

// Creates the new file beside the old one, where a rename can move it, and clears what died programs left there.
OSErr FileUpdate::MakeBeside(mode_t mode, DiskDescriptor *result) {
    const std::string folder = FolderOfPath(fTarget);
    const std::string prefix = "." + LeafOfPath(fTarget).substr(0, kLongestLeaf) + ".";
    ClearTemporaryFiles(folder, prefix, kBesideSuffix);
    return MakeLockedTemporaryFile(folder, prefix, kBesideSuffix, mode, &fBeside, result);
}

OSErr FileUpdate::OpenInPlace() {
    DiskDescriptor descriptor(CurrentDisk().Open(fTarget.c_str(), O_RDWR | O_NOCTTY, 0));
    struct stat opened {};
    if (!descriptor || CurrentDisk().StatusOf(descriptor.Get(), &opened) != 0) {
        return LastError();
    }
    return S_ISREG(opened.st_mode) ? OpenStage()
                                   : AdoptDescriptor(descriptor.Release(), fsRdWrPerm, fFile.Out());
}

// Without a name the file is gone when the program is.
OSErr FileUpdate::OpenStage() {
    std::string folder;
    std::string stage;
    DiskDescriptor opened;
    OSErr status = KeptFolder(kCreateFolder, &folder);
    if (status == noErr) {
        status = MakeTemporaryFile(folder, {}, kStageSuffix, kPrivateMode, &stage, &opened);
    }
    if (status != noErr) {
        return status;
    }
    CurrentDisk().Remove(stage.c_str());
    status = AdoptDescriptor(opened.Release(), fsRdWrPerm, fFile.Out());
    fIsStaged = status == noErr;
    return status;
}

OSErr FileUpdate::CommitStage() {
    std::string bytes;
    OSErr status = SetFPos(File(), fsFromStart, 0);
    if (status == noErr) {
        status = ReadRest(File(), &bytes);
    }
    return status == noErr ? WriteSharedFile(fTarget, bytes) : status;
}

OSErr FileUpdate::CommitBeside() {
    OSErr status = PBFlushFileSync(File());
    if (status != noErr) {
        return status;
    }
    fOldKept = KeepOld();
    if (CurrentDisk().Rename(fBeside.c_str(), fTarget.c_str()) != 0) {
        status = LastError();
        RemoveKept();
        return status;
    }
    fBeside.clear();
    return FlushFolder(FolderOfPath(fTarget));
}

OSErr FileUpdate::CommitInPlace() {
    if (!fIsStaged) {
        const OSErr status = PBFlushFileSync(File());
        return status == paramErr ? OSErr{noErr}
                                  : status; // a device or pipe cannot be flushed (fsync(2), EINVAL)
    }
    fOldKept = KeepOld();
    return CommitStage(); // after a failure it is not sure what the file holds, so the kept copy stays
}

OSErr FileUpdate::Commit() try {
    if (!fFile) {
        return rfNumErr;
    }
    const OSErr status = fBeside.empty() ? CommitInPlace() : CommitBeside();
    Discard();
    return status;
} catch (const std::bad_alloc &) {
    Discard();
    return memFullErr;
}

// A link costs next to nothing, and a rename over the file leaves the old one intact under its other name.
OSErr FileUpdate::KeepOld() {
    if (fKeepAs.empty() || !fExisted) {
        return noErr;
    }
    if (!fIsStaged && CurrentDisk().MakeLink(fTarget.c_str(), fKeepAs.c_str()) == 0) {
        return noErr;
    }
    std::string bytes;
    OSErr status = ReadWholeFile(fTarget, &bytes);
    const DiskDescriptor copy(
        status == noErr
            ? CurrentDisk().Open(fKeepAs.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, kPrivateMode)
            : -1);
    if (!copy) {
        fKeepAs.clear(); // not ours
        return status == noErr ? LastError() : status;
    }
    status = WriteAllAt(copy.Get(), bytes, 0);
    if (status != noErr) {
        RemoveKept();
    }
    return status;
}

void FileUpdate::RemoveKept() {
    if (fExisted && !fKeepAs.empty()) {
        CurrentDisk().Remove(fKeepAs.c_str());
        fKeepAs.clear();
    }
}

// Closes the file and discards what was not committed.
void FileUpdate::Discard() {
    if (!fBeside.empty()) {
        CurrentDisk().Remove(fBeside.c_str());
    }
    fFile.Reset();
    fBeside.clear();
    fIsStaged = false;
}

OSErr ReplaceWholeFile(const std::string &path, std::string_view bytes, const NewFile &newFile) {
    FileUpdate update;
    OSErr status = update.Open(path, UpdateMethod::Replace, newFile);
    if (status == noErr) {
        status = WriteAll(update.File(), bytes.data(), bytes.size());
    }
    return status == noErr ? update.Commit() : status;
}

OSErr KeepFileAside(const std::string &path, const std::string &keptPath) try {
    if (IsCopyOf(path, keptPath)) {
        return noErr;
    }
    std::string original; // its mode applies if `path` is a link
    std::string bytes;
    OSErr status = FollowLinks(path, &original);
    if (status == noErr) {
        status = ReadWholeFile(original, &bytes);
    }
    if (status != noErr) {
        return status;
    }
    status = LookAt(keptPath);
    if (status == noErr) {
        status = MoveToFreeName(keptPath);
    }
    return status == noErr || status == fnfErr ? ReplaceWholeFile(keptPath, bytes, {original}) : status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
