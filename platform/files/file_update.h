// Writes a whole file so that a failure or a crash midway leaves the old one.
#pragma once

#include "platform/base/status.h"
#include "platform/files/owners.h"

#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <utility>

namespace drevix {

enum class UpdateMethod {
    // Writes a new file beside the old one, flushes it, renames it over the old one and flushes the folder:
    // after a kill at any point, either the old or the new file is intact. Follows and keeps a link; keeps
    // mode and owner. If the folder is not writable, or the owner cannot be kept, but the file is writable,
    // updates in place instead.
    Replace,
    // Commit writes the file itself with "WriteSharedFile", which keeps the old bytes in the user's state
    // folder until the new ones are on the disk. Until then the new ones wait there in a file without a name.
    // A file that does not exist yet is made as with Replace.
    InPlace,
};

// How a file that does not exist yet is made.
struct NewFile {
    std::string modeOf =
        {};          // with the mode of the file at this path, if given, before anything is written to it
    mode_t mode = 0; // else with this one, whatever the umask; 0: the user's default
};
// Only the user may read it.
inline const NewFile kPrivateFile = {{}, 0600};

// One update of one file. Write to File(), then Commit(). A FileUpdate destroyed before that restores the old
// state and leaves nothing behind. Of two programs that replace the same file, the later one wins.
class FileUpdate {
  public:
    FileUpdate() = default;
    FileUpdate(const FileUpdate &) = delete;
    FileUpdate &operator=(const FileUpdate &) = delete;
    ~FileUpdate();

    // Starts an update of the file at an absolute or relative path; the file need not exist. The status is
    // that of opening the file for writing: permErr for a file that may not be written even if its folder
    // may, notAFileErr, dirNFErr, ... A device or pipe is written directly and cannot be restored. The new
    // file beside the old one gets a name that nobody can foresee, ".NAME.DIGITS.new"; first those that dead
    // programs left are removed. If the state folder cannot be written, a file to be written in place is
    // refused.
    [[nodiscard]] OSErr Open(const std::string &path, UpdateMethod method, const NewFile &newFile = {});

    // The empty file to write to (also readable); 0 before Open. Owned by the update: do not close it.
    [[nodiscard]] FileRef File() const { return fFile.Get(); }

    // Has Commit also give the old contents this name, if nothing has it yet: by a link if the file is
    // replaced, else by a copy. The name is removed again if the file was surely not changed, and may be lost
    // in a power cut. Failing to make it does not stop Commit; OldKept gives its status afterwards: noErr,
    // also for a file that did not exist.
    void KeepOldAs(std::string path) { fKeepAs = std::move(path); }
    [[nodiscard]] OSErr OldKept() const { return fOldKept; }

    // Flushes what was written and makes it the file. After a failure the old file is back, with two
    // exceptions: if the folder could not be flushed after the rename, the new file is in place but may not
    // survive a power cut; if the old bytes could not be written back in place, "FindKeptCopy" says where
    // they are.
    [[nodiscard]] OSErr Commit();

  private:
    OSErr FindModel(const NewFile &newFile, struct stat *model);
    OSErr OpenBeside(const NewFile &newFile);
    OSErr MakeBeside(mode_t mode, DiskDescriptor *result);
    OSErr OpenInPlace();
    OSErr OpenStage();
    OSErr CommitStage();
    OSErr CommitBeside();
    OSErr CommitInPlace();
    OSErr KeepOld();
    void RemoveKept();
    void Discard();

    std::string fTarget; // where the file lies; links followed when it is to be replaced
    std::string fBeside; // the new file beside it; empty when writing in place
    std::string fKeepAs; // empty: what was there before is not kept
    OSErr fOldKept = noErr;
    OwnedFile fFile;
    bool fExisted = false;
    bool fIsStaged = false; // fFile is to be written over fTarget
};

// Writes all of the bytes at an offset of an open descriptor.
[[nodiscard]] OSErr WriteAllAt(int descriptor, std::string_view bytes, off_t offset);

// Reads the whole file at a path. memFullErr if it does not fit in memory; else as OpenFile and FSRead.
[[nodiscard]] OSErr ReadWholeFile(const std::string &path, std::string *bytes);

// Replaces the file at a path by `bytes` in one FileUpdate. The status of Open, of writing, or of Commit.
[[nodiscard]] OSErr ReplaceWholeFile(const std::string &path, std::string_view bytes,
                                     const NewFile &newFile = {});

// Copies the file at `path`, with its mode, to `keptPath` in the same folder; the two are independent. An
// existing file there, unless it has the same bytes, moves to the first free of `keptPath` plus ".1", ".2",
// ... noErr, or the error; never changes `path`.
[[nodiscard]] OSErr KeepFileAside(const std::string &path, const std::string &keptPath);

// Flushes a folder: what was created, renamed or removed in it. noErr, also for a folder that cannot be
// flushed because it is writable but not readable, or the file system does not support it.
[[nodiscard]] OSErr FlushFolder(const std::string &folder);

} // namespace drevix
