#include "platform/files/kept_bytes.h"

#include "platform/base/status.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"
#include "platform/files/temporary_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <optional>
#include <tuple>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace drevix {
namespace {

constexpr std::string_view kFolder = "kept";
constexpr std::string_view kLockName = "kept.lock";
constexpr std::string_view kKeptSuffix = ".kept";
constexpr std::string_view kNoteSuffix = ".note";
constexpr std::string_view kOldSuffix = ".old";
constexpr mode_t kMode = 0600;
constexpr std::chrono::milliseconds kLongestTurn{1000};
constexpr std::chrono::hours kMonth{24 * 31};

// How a note begins; the path and the new bytes follow. Read by the same machine only.
struct NoteHead {
    std::array<char, 8> mark;
    std::uint64_t inode;     // of the file
    std::uint64_t oldLength; // in bytes, as the others
    std::uint64_t pathLength;
    std::uint64_t newLength;
};
static_assert(sizeof(NoteHead) == 40 && std::has_unique_object_representations_v<NoteHead>);
constexpr std::array<char, 8> kMark = {'D', 'r', 'v', 'x', 'K', 'e', 'p', '1'};

struct Note {
    NoteHead head = {};
    std::string path;
    std::string bytes;
};

// A copy that this process has not dropped yet. A failure must be reported even when the disk can no longer
// be asked.
struct Left {
    std::string path;
    std::string kept;
};

std::vector<Left> &AllLeft() {
    static std::vector<Left> left;
    return left;
}

void Forget(const std::string &kept) {
    std::erase_if(AllLeft(), [&](const Left &left) { return left.kept == kept; });
}

OSErr Flush(int descriptor) {
    return CurrentDisk().Flush(descriptor) == 0 ? noErr : LastError();
}

OSErr WriteFlushed(int descriptor, std::string_view bytes) {
    const OSErr status = WriteAllAt(descriptor, bytes, 0);
    return status == noErr ? Flush(descriptor) : status;
}

std::optional<Note> ParseNote(const std::string &bytes) {
    Note note;
    if (bytes.size() < sizeof note.head) {
        return std::nullopt;
    }
    std::memcpy(&note.head, bytes.data(), sizeof note.head);
    const std::size_t rest = bytes.size() - sizeof note.head;
    if (note.head.mark != kMark || note.head.pathLength > rest ||
        note.head.newLength != rest - note.head.pathLength) {
        return std::nullopt;
    }
    note.path = bytes.substr(sizeof note.head, note.head.pathLength);
    note.bytes = bytes.substr(sizeof note.head + note.head.pathLength);
    return note;
}

// Whether each byte of `found` is that of `a` or of `b`, which are zero behind their ends.
bool IsMixture(std::string_view found, std::string_view a, std::string_view b) {
    const auto at = [](std::string_view bytes, std::size_t i) { return i < bytes.size() ? bytes[i] : '\0'; };
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (found[i] != at(a, i) && found[i] != at(b, i)) {
            return false;
        }
    }
    return true;
}

bool IsCutShort(std::string_view found, std::string_view old, std::string_view bytes) {
    const std::size_t offset = OffsetOfCopy(old, bytes);
    return found.size() > offset && found.size() - offset <= bytes.size() &&
           IsMixture(found.substr(0, offset), old, bytes) && IsMixture(found.substr(offset), bytes, {});
}

OSErr PutBack(const std::string &path, std::string_view old) {
    const DiskDescriptor file(
        CurrentDisk().Open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW, 0));
    OSErr status = file ? WriteFlushed(file.Get(), old) : LastError();
    if (status == noErr && CurrentDisk().SetSize(file.Get(), static_cast<off_t>(old.size())) != 0) {
        status = LastError();
    }
    return status == noErr ? Flush(file.Get()) : status;
}

// What is to become of a kept copy.
enum class Fate { Stays, Goes, IsOld };

// Renaming a kept copy to an old one sets its time.
bool IsOlderThanAMonth(const std::string &path) {
    struct stat status {};
    return CurrentDisk().StatusAt(path.c_str(), &status) == 0 &&
           std::chrono::system_clock::now() - std::chrono::system_clock::from_time_t(status.st_ctim.tv_sec) >
               kMonth;
}

Fate MendFile(const Note &note, const std::string &kept) {
    std::string old;
    std::string found;
    struct stat status {};
    if (const OSErr read = ReadWholeFile(kept, &old); read != noErr) {
        return read == fnfErr ? Fate::Goes : Fate::Stays; // only the note could not be removed
    }
    if (CurrentDisk().StatusAt(note.path.c_str(), &status) != 0) {
        const bool isRemoved =
            errno == ENOENT && CurrentDisk().StatusAt(FolderOfPath(note.path).c_str(), &status) == 0;
        return isRemoved && IsOlderThanAMonth(kept) ? Fate::IsOld : Fate::Stays;
    }
    if (!S_ISREG(status.st_mode) || status.st_ino != note.head.inode || old.size() != note.head.oldLength) {
        return Fate::IsOld;
    }
    if (ReadWholeFile(note.path, &found) != noErr) {
        return Fate::Stays;
    }
    if (found == old || found == note.bytes) {
        return Fate::Goes;
    }
    if (!IsCutShort(found, old, note.bytes)) {
        return Fate::IsOld;
    }
    return PutBack(note.path, old) == noErr ? Fate::Goes : Fate::Stays;
}

std::string WithSuffix(const std::string &note, std::string_view suffix) {
    return note.substr(0, note.size() - kNoteSuffix.size()) + std::string(suffix);
}

// An incomplete note means that its file was not changed yet.
void Mend(const std::string &notePath) {
    std::string bytes;
    if (ReadWholeFile(notePath, &bytes) != noErr) {
        return;
    }
    const std::string kept = WithSuffix(notePath, kKeptSuffix);
    const std::optional<Note> note = ParseNote(bytes);
    const Fate fate = note ? MendFile(*note, kept) : Fate::Goes;
    Disk &disk = CurrentDisk();
    if (fate == Fate::IsOld && disk.Rename(kept.c_str(), WithSuffix(notePath, kOldSuffix).c_str()) != 0) {
        return;
    }
    if (fate != Fate::Stays) {
        disk.Remove(notePath.c_str());
        Forget(kept);
    }
    if (fate == Fate::Goes) {
        disk.Remove(kept.c_str());
    }
}

// Under the lock. A copy without a note belongs to a file that was not touched yet. A stage with a name
// belongs to a program that has died or is about to remove the name.
void MendAll(const std::string &folder) {
    std::vector<std::string> names;
    if (CurrentDisk().ListFolder(folder.c_str(), &names) != 0) {
        return;
    }
    for (const std::string &name : names) {
        if (IsTemporaryName(name, {}, kNoteSuffix)) {
            Mend(JoinPath(folder, name));
        }
    }
    for (const std::string &name : names) {
        const bool isKept = IsTemporaryName(name, {}, kKeptSuffix);
        const std::string note = name.substr(0, name.find('.')) + std::string(kNoteSuffix);
        const bool isOld = IsTemporaryName(name, {}, kOldSuffix) && IsOlderThanAMonth(JoinPath(folder, name));
        if (isOld || IsTemporaryName(name, {}, kStageSuffix) ||
            (isKept && std::ranges::find(names, note) == names.end())) {
            CurrentDisk().Remove(JoinPath(folder, name).c_str());
        }
    }
}

std::string NoteBytes(const std::string &path, const struct stat &file, std::string_view old,
                      std::string_view bytes) {
    const NoteHead head = {kMark, file.st_ino, old.size(), path.size(), bytes.size()};
    std::string note(sizeof head, '\0');
    std::memcpy(note.data(), &head, sizeof head);
    return note.append(path).append(bytes);
}

} // namespace

std::size_t OffsetOfCopy(std::string_view old, std::string_view bytes) {
    return std::max(old.size(), bytes.size());
}

OSErr KeptFolder(FolderCreation creation, std::string *folder) try {
    OSErr status = StateFolder(creation, folder);
    if (status == noErr) {
        *folder = JoinPath(*folder, kFolder);
        status = creation == kCreateFolder ? MakeFolders(*folder) : OSErr{noErr};
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr KeptBytes::TakeTurn() try {
    OSErr status = fTurn.Acquire(kLockName, kLongestTurn);
    std::string folder;
    if (status == noErr) {
        status = KeptFolder(kCreateFolder, &folder);
    }
    if (status == noErr) {
        MendAll(folder);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr KeptBytes::Keep(const std::string &path, int descriptor, std::string_view old,
                      std::string_view bytes) try {
    std::string folder;
    std::string real;
    struct stat file {};
    OSErr status = KeptFolder(kDontCreateFolder, &folder);
    if (status == noErr && (CurrentDisk().RealPath(path.c_str(), &real) != 0 ||
                            CurrentDisk().StatusOf(descriptor, &file) != 0)) {
        status = LastError();
    }
    DiskDescriptor kept;
    if (status == noErr) {
        status = MakeTemporaryFile(folder, {}, kKeptSuffix, kMode, &fKept, &kept);
    }
    if (status == noErr) {
        status = WriteFlushed(kept.Get(), old);
    }
    if (status == noErr) {
        std::string name = fKept.substr(0, fKept.size() - kKeptSuffix.size()) + std::string(kNoteSuffix);
        const DiskDescriptor note(
            CurrentDisk().Open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kMode));
        status = note ? noErr : LastError();
        if (status == noErr) {
            fNote = std::move(name);
            status = WriteFlushed(note.Get(), NoteBytes(real, file, old, bytes));
        }
    }
    if (status == noErr) {
        status = FlushFolder(folder);
    }
    if (status == noErr) {
        AllLeft().push_back({path, fKept});
    } else {
        Drop();
    }
    return status;
} catch (const std::bad_alloc &) {
    Drop();
    return memFullErr;
}

// The note first: a copy without one is ignored.
void KeptBytes::Drop() {
    Forget(fKept);
    for (std::string *path : {&fNote, &fKept}) {
        if (!path->empty()) {
            CurrentDisk().Remove(path->c_str());
            path->clear();
        }
    }
}

std::string KeptBytes::DropToOld() try {
    std::string old = WithSuffix(fNote, kOldSuffix);
    const std::string folder = FolderOfPath(old);
    const bool isOld = CurrentDisk().Rename(fKept.c_str(), old.c_str()) == 0;
    Drop();
    return isOld && FlushFolder(folder) == noErr ? old : std::string();
} catch (const std::bad_alloc &) {
    Drop();
    return {};
}

void MendFilesCutShort() try {
    std::string folder;
    std::vector<std::string> names;
    if (KeptFolder(kDontCreateFolder, &folder) != noErr ||
        CurrentDisk().ListFolder(folder.c_str(), &names) != 0 || names.empty()) {
        return;
    }
    UserLock turn;
    if (turn.Acquire(kLockName, std::chrono::milliseconds{0}) == noErr) {
        MendAll(folder);
    }
} catch (const std::bad_alloc &) {
    return; // the next program does it
}

std::string FindKeptCopy(const std::string &path) {
    std::string target;
    const bool isFollowed = FollowLinks(path, &target) == noErr;
    for (const Left &left : AllLeft()) {
        if (left.path == path || (isFollowed && left.path == target)) {
            return left.kept;
        }
    }
    return {};
}

} // namespace drevix
