// Locks that let the user's programs take turns, and the folder for state that is not settings but must be
// kept.
#pragma once

#include "platform/files/owners.h"
#include "platform/files/paths.h"

#include <chrono>
#include <string>
#include <string_view>

namespace drevix {

// The folder of our own state: "com.halcyra.drevix" in $XDG_STATE_HOME, else in "~/.local/state".
// kCreateFolder creates it if missing, private to the user (mode 0700). noErr; fnfErr if it is missing or
// there is no home folder; permErr if it belongs to another user; or the error creating or using it. *path is
// set only on success.
[[nodiscard]] OSErr StateFolder(FolderCreation creation, std::string *path);

// Holds the named lock from Acquire until destruction: a private file in the state folder, so no other user
// can block us. The file stays. Not for threads, nor for a second lock of the same name in one process: it
// would wait for itself.
class UserLock {
  public:
    // noErr, also if already held here; fBsyErr if another program holds it for longer than `wait`; or the
    // error creating or locking its file. On a file system without locks, always succeeds.
    [[nodiscard]] OSErr Acquire(std::string_view name, std::chrono::milliseconds wait);
    void Release() { fFile.Reset(); }
    [[nodiscard]] bool IsHeld() const { return static_cast<bool>(fFile); }

  private:
    DiskDescriptor fFile;
};

// Releases a lock that was not held before.
class LockForNow {
  public:
    explicit LockForNow(UserLock &lock) : fLock(lock), fWasHeld(lock.IsHeld()) {}
    LockForNow(const LockForNow &) = delete;
    LockForNow &operator=(const LockForNow &) = delete;
    ~LockForNow() {
        if (!fWasHeld) {
            fLock.Release();
        }
    }

  private:
    UserLock &fLock;
    bool fWasHeld;
};

// Locks an open file until its descriptor is closed; fBsyErr after `wait`, else as UserLock.
[[nodiscard]] OSErr LockDescriptor(int descriptor, std::chrono::milliseconds wait);

} // namespace drevix
