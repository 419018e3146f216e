#include "platform/files/temporary_file.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/paths.h"
#include "platform/files/user_lock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace drevix {
namespace {

constexpr int kDigits = 16;
constexpr std::string_view kDigitSet = "0123456789abcdef";
constexpr int kMostTries = 8; // a name that is taken by chance is a wonder, twice is an attack

// False when the kernel has none to give.
bool AppendRandomDigits(std::string *out) {
    std::array<std::uint8_t, kDigits> random{};
    if (::getentropy(random.data(), random.size()) != 0) {
        return false;
    }
    for (const std::uint8_t byte : random) {
        *out += kDigitSet[byte % kDigitSet.size()];
    }
    return true;
}

// Long enough for a program that only checks whether the file is a left-over.
constexpr std::chrono::milliseconds kLongestLook{1000};

// Whether the open file is still the one at the path.
bool IsFileAt(const std::string &path, int descriptor) {
    struct stat opened {};
    struct stat named {};
    return CurrentDisk().StatusOf(descriptor, &opened) == 0 &&
           CurrentDisk().StatusAt(path.c_str(), &named) == 0 && named.st_ino == opened.st_ino &&
           named.st_dev == opened.st_dev;
}

// The lock is asked for last: it shows that the program that made the file is gone.
bool IsLeftOver(int descriptor) {
    struct stat found {};
    return CurrentDisk().StatusOf(descriptor, &found) == 0 && S_ISREG(found.st_mode) &&
           found.st_uid == ::geteuid() && found.st_nlink == 1 && CurrentDisk().Lock(descriptor) == 0;
}

} // namespace

OSErr MakeTemporaryFile(std::string_view folder, std::string_view prefix, std::string_view suffix,
                        mode_t mode, std::string *path, DiskDescriptor *file) {
    for (int tries = 0; tries < kMostTries; ++tries) {
        std::string name = JoinPath(folder, prefix);
        if (!AppendRandomDigits(&name)) {
            break;
        }
        name += suffix;
        DiskDescriptor made(
            CurrentDisk().Open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_NOCTTY, mode));
        if (made) {
            *file = std::move(made);
            *path = std::move(name);
            return noErr;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return LastError();
}

OSErr MakeLockedTemporaryFile(std::string_view folder, std::string_view prefix, std::string_view suffix,
                              mode_t mode, std::string *path, DiskDescriptor *file) {
    for (int tries = 0; tries < kMostTries; ++tries) {
        std::string name;
        DiskDescriptor made;
        OSErr status = MakeTemporaryFile(folder, prefix, suffix, mode, &name, &made);
        if (status != noErr) {
            return status;
        }
        status = LockDescriptor(made.Get(), kLongestLook);
        if (status != noErr) {
            CurrentDisk().Remove(name.c_str());
            return status;
        }
        if (IsFileAt(name, made.Get())) {
            *file = std::move(made);
            *path = std::move(name);
            return noErr;
        }
        CurrentDisk().Remove(name.c_str()); // cleared before we had the lock
    }
    return fBsyErr;
}

void ClearTemporaryFiles(const std::string &folder, std::string_view prefix, std::string_view suffix) {
    std::vector<std::string> names;
    if (CurrentDisk().ListFolder(folder.c_str(), &names) != 0) {
        return;
    }
    for (const std::string &name : names) {
        if (!IsTemporaryName(name, prefix, suffix)) {
            continue;
        }
        const std::string path = JoinPath(folder, name);
        DiskDescriptor opened;
        if (OpenLeftOver(path, &opened)) {
            CurrentDisk().Remove(path.c_str());
        }
    }
}

bool OpenLeftOver(const std::string &path, DiskDescriptor *file) {
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    DiskDescriptor opened(CurrentDisk().Open(path.c_str(), kFlags, 0));
    if (!opened || !IsLeftOver(opened.Get())) {
        return false;
    }
    *file = std::move(opened);
    return true;
}

bool IsTemporaryName(std::string_view name, std::string_view prefix, std::string_view suffix) {
    if (name.size() != prefix.size() + kDigits + suffix.size() || !name.starts_with(prefix) ||
        !name.ends_with(suffix)) {
        return false;
    }
    return std::ranges::all_of(name.substr(prefix.size(), kDigits),
                               [](char c) { return kDigitSet.find(c) != kDigitSet.npos; });
}

} // namespace drevix
