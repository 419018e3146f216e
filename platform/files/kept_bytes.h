// What a file held before it was written in place, kept in the user's state folder until the new bytes are on the
// disk. The folder "kept" there has two files for each write: "DIGITS.kept", the old bytes as they were, and
// "DIGITS.note", whose file that was and what was to be written.
#pragma once

#include "platform/base/types.h"
#include "platform/files/user_lock.h"

#include <string>
#include <string_view>

namespace drevix {

// How a file is written in place: the new bytes come whole behind everything that is there, from this offset on, are
// flushed, then written over the old ones and flushed, and what is behind them is cut off. So a file of which this
// was cut short is longer than the old bytes and than the new ones.
[[nodiscard]] std::size_t OffsetOfCopy(std::string_view old, std::string_view bytes);

// The folder of the copies. What is made there under a temporary name ending in kStageSuffix is removed when its
// program has died. As StateFolder.
inline constexpr std::string_view kStageSuffix = ".stage";
[[nodiscard]] OSErr KeptFolder(FolderCreation creation, std::string *folder);

// One file's old bytes. Its lock keeps programs of ours apart while one of them writes a file in place.
class KeptBytes {
  public:
    // Takes the turn, for which it waits up to a second, and puts right what programs that died had begun. fBsyErr;
    // or why the state folder cannot be used.
    [[nodiscard]] OSErr TakeTurn();

    // Keeps `old`, flushed, for the open file at `path`, which is about to get `bytes`. After a failure nothing is kept.
    [[nodiscard]] OSErr Keep(const std::string &path, int descriptor, std::string_view old,
                             std::string_view bytes);

    // Lets the copy go. The file is whole.
    void Drop();
    // The same, but the copy stays for a month as "DIGITS.old". Returns its path; empty if it could not stay.
    [[nodiscard]] std::string DropToOld();

  private:
    UserLock fTurn;
    std::string fKept;
    std::string fNote;
};

// Puts back the old bytes of every file that a program of ours was writing in place when it died. A file that is
// whole, or that somebody has written since, is left alone; of the latter the copy becomes "DIGITS.old", which a person
// may look at for a month; then it goes. A file that is not there now is looked at again next time: for a month where its
// folder is there, and for ever where that is not either, as on a disk that is away. Nothing is done while another
// program writes.
void MendFilesCutShort();

// The path of the copy of what the file at `path` held before a write of this process that failed and could not be
// undone; empty if there is none. May throw std::bad_alloc.
[[nodiscard]] std::string FindKeptCopy(const std::string &path);

} // namespace drevix
