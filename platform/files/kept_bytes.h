// What a file held before it was written in place, kept in the user's state folder until the new bytes are on
// the disk. Its folder "kept" has two files for each write: "DIGITS.kept" with the old bytes, and
// "DIGITS.note", which names the file and holds the new bytes.
#pragma once

#include "platform/base/types.h"
#include "platform/files/user_lock.h"

#include <string>
#include <string_view>

namespace drevix {

// To write a file in place, the new bytes are first written behind everything in it, from this offset on, and
// flushed; then over the old bytes, and flushed; then the rest is cut off. So an interrupted write leaves a
// file that is longer than both the old and the new bytes.
[[nodiscard]] std::size_t OffsetOfCopy(std::string_view old, std::string_view bytes);

// The folder of the copies. Files made there under a temporary name ending in kStageSuffix are removed when
// their program has died. As StateFolder.
inline constexpr std::string_view kStageSuffix = ".stage";
[[nodiscard]] OSErr KeptFolder(FolderCreation creation, std::string *folder);

// One file's old bytes. A lock keeps our programs from writing files in place at the same time.
class KeptBytes {
  public:
    // Takes the lock, waiting up to a second, and repairs what dead programs had begun. fBsyErr; or why the
    // state folder cannot be used.
    [[nodiscard]] OSErr TakeTurn();

    // Keeps `old`, flushed, for the open file at `path`, which is about to get `bytes`. After a failure nothing is kept.
    [[nodiscard]] OSErr Keep(const std::string &path, int descriptor, std::string_view old,
                             std::string_view bytes);

    // Drops the copy: the file is intact.
    void Drop();
    // The same, but the copy stays for a month as "DIGITS.old". Returns its path; empty if it could not stay.
    [[nodiscard]] std::string DropToOld();

  private:
    UserLock fTurn;
    std::string fKept;
    std::string fNote;
};

// Puts back the old bytes of every file that one of our programs was writing in place when it died. Leaves
// alone a file that is intact or that somebody has written since; in the latter case the copy becomes
// "DIGITS.old", which goes after a month. A file that is missing is looked at again next time: for a month if
// its folder exists, for ever if that is missing too, as on a disk that is not mounted. Does nothing while
// another program writes.
void MendFilesCutShort();

// The path of the copy of what the file at `path` held before a write of this process that failed and could not be
// undone; empty if there is none. May throw std::bad_alloc.
[[nodiscard]] std::string FindKeptCopy(const std::string &path);

} // namespace drevix
