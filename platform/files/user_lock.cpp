#include "platform/files/user_lock.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/paths.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <thread>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

constexpr std::string_view kFolderName = "com.halcyra.drevix";
constexpr mode_t kFolderMode = 0700;
constexpr mode_t kLockMode = 0600;
constexpr mode_t kOthersBits = 077;

// Between two attempts at a lock that another program holds.
constexpr std::chrono::milliseconds kPause{5};

std::string StatePath() {
    const char *state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') {
        return JoinPath(state, kFolderName);
    }
    const std::string home = HomeFolder();
    return home.empty() ? std::string() : JoinPath(JoinPath(home, ".local/state"), kFolderName);
}

// Refuses anything that another user could change or replace.
OSErr CheckOwn(int descriptor, mode_t mode) {
    struct stat found {};
    if (CurrentDisk().StatusOf(descriptor, &found) != 0) {
        return LastError();
    }
    if (found.st_uid != ::geteuid()) {
        return permErr;
    }
    const bool isOpen = (found.st_mode & kOthersBits) != 0;
    return !isOpen || CurrentDisk().SetMode(descriptor, mode) == 0 ? noErr : LastError();
}

// Opens a file or folder that must be private to the user.
OSErr OpenOwn(const std::string &path, int flags, mode_t mode, DiskDescriptor *result) {
    DiskDescriptor opened(CurrentDisk().Open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, mode));
    const OSErr status = opened ? CheckOwn(opened.Get(), mode) : LastError();
    if (status == noErr) {
        *result = std::move(opened);
    }
    return status;
}

} // namespace

OSErr StateFolder(FolderCreation creation, std::string *path) try {
    std::string folder = StatePath();
    if (folder.empty()) {
        return fnfErr;
    }
    if (creation == kCreateFolder) {
        if (const OSErr status = MakeFolders(folder); status != noErr) {
            return status;
        }
    }
    DiskDescriptor opened;
    const OSErr status = OpenOwn(folder, O_RDONLY | O_DIRECTORY, kFolderMode, &opened);
    if (status == noErr) {
        *path = std::move(folder);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr UserLock::Acquire(std::string_view name, std::chrono::milliseconds wait) try {
    if (IsHeld()) {
        return noErr;
    }
    std::string folder;
    DiskDescriptor opened;
    OSErr status = StateFolder(kCreateFolder, &folder);
    if (status == noErr) {
        status = OpenOwn(JoinPath(folder, name), O_RDWR | O_CREAT, kLockMode, &opened);
    }
    if (status == noErr) {
        status = LockDescriptor(opened.Get(), wait);
    }
    if (status == noErr) {
        fFile = std::move(opened);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr LockDescriptor(int descriptor, std::chrono::milliseconds wait) {
    const auto end = std::chrono::steady_clock::now() + wait;
    while (CurrentDisk().Lock(descriptor) != 0) {
        if (errno == ENOLCK || errno == ENOSYS || errno == EOPNOTSUPP || errno == EINVAL) {
            return noErr; // a file system without locks
        }
        if (errno != EINTR && (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end)) {
            return LastError();
        }
        std::this_thread::sleep_for(kPause);
    }
    return noErr;
}

} // namespace drevix
