// Locks by which the user's programs take turns, and the folder in which programs keep what is neither settings
// nor to be lost.
#pragma once

#include "platform/files/owners.h"
#include "platform/files/paths.h"

#include <chrono>
#include <string>
#include <string_view>

namespace drevix {

// The folder of our own state: "com.halcyra.drevix" in $XDG_STATE_HOME, else in "~/.local/state". With
// kCreateFolder it is made if it is missing, and nobody but the user may look into it (mode 0700). noErr;
// fnfErr when it is not there, or there is no home folder; permErr when it belongs to another user; or why it
// cannot be made or used. *path is set only on success.
[[nodiscard]] OSErr StateFolder(FolderCreation creation, std::string *path);

// Holds the lock of that name from Acquire until destruction: a file of the user's own in the state folder that
// no other user can open, so none can keep us waiting. The file stays. Not for threads or for a second
// lock of the same name in one process: it would wait for itself.
class UserLock {
  public:
    // noErr, also when it is held here already; fBsyErr when another program holds it for longer than `wait`; or
    // why its file cannot be made or locked. A file system without locks counts as acquired.
    [[nodiscard]] OSErr Acquire(std::string_view name, std::chrono::milliseconds wait);
    void Release() { fFile.Reset(); }
    [[nodiscard]] bool IsHeld() const { return static_cast<bool>(fFile); }

  private:
    DiskDescriptor fFile;
};

// Locks an open file until its descriptor is closed; fBsyErr after `wait`, else as UserLock.
[[nodiscard]] OSErr LockDescriptor(int descriptor, std::chrono::milliseconds wait);

} // namespace drevix
