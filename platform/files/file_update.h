// Writes a whole file so that a failure or a crash midway leaves the old one.
#pragma once

#include "platform/files/owners.h"

#include <string>
#include <string_view>

namespace drevix {

enum class UpdateMethod {
    // Writes a new file beside the old one, flushes it, renames it over the old one and flushes the folder:
    // after a kill at any point, either the old or the new file is intact. Follows and keeps a link; keeps
    // mode and owner. If the folder is not writable, or the owner cannot be kept, but the file is writable,
    // updates in place instead.
    Replace,
    // The file itself is written, at the commit, by "WriteSharedFile": its old bytes are kept in the user's state
    // folder until the new ones are on the disk. The new ones wait in a file there that has no name. Where there is
    // no file yet, one is made as with Replace.
    InPlace,
};

// One update of one file. Write to File(), then Commit(). A FileUpdate destroyed before that restores the old
// state and leaves nothing behind. Two programs that replace the same file wait for each other.
class FileUpdate {
  public:
    FileUpdate() = default;
    FileUpdate(const FileUpdate &) = delete;
    FileUpdate &operator=(const FileUpdate &) = delete;
    ~FileUpdate();

    // Starts an update of the file at an absolute or relative path; the file need not exist. The status is
    // that of opening the file for writing: permErr for a file that may not be written even if its folder
    // may, notAFileErr, dirNFErr, ...; fBsyErr when another program holds the same file's update for longer
    // than a second. A device or pipe is written directly, and cannot be put back. A new file that replaces
    // none has the mode of the file at `modeOf`, if given, before anything is written to it, else the user's
    // default. Where nothing can be put into the state folder, a file to be written in place is refused.
    [[nodiscard]] OSErr Open(const std::string &path, UpdateMethod method, const std::string &modeOf = {});

    // The empty file to write to (also readable); 0 before Open. Owned by the update: do not close it.
    [[nodiscard]] FileRef File() const { return fFile.Get(); }

    // Flushes what was written and makes it the file. On failure the old file is back, but for two cases. When a
    // folder could not be flushed after the rename, the new one is in place and its safety against a power cut is
    // not known. When the old bytes could not be written back in place, "FindKeptCopy" says where they are.
    [[nodiscard]] OSErr Commit();

  private:
    OSErr OpenBeside(const std::string &modeOf);
    OSErr MakeBeside(DiskDescriptor *result);
    OSErr OpenInPlace();
    OSErr OpenStage();
    OSErr CommitStage();
    void Discard();

    std::string fTarget; // where the file lies; links followed when it is to be replaced
    std::string fBeside; // the new file beside it; empty when writing in place
    OwnedFile fFile;
    bool fExisted = false;
    bool fIsStaged = false; // fFile is to be written over fTarget
};

// Reads the whole file at a path. memFullErr if it does not fit in memory; else as OpenFile and FSRead.
[[nodiscard]] OSErr ReadWholeFile(const std::string &path, std::string *bytes);

// Replaces the file at a path by `bytes` in one FileUpdate. The status of Open, of writing, or of Commit.
[[nodiscard]] OSErr ReplaceWholeFile(const std::string &path, std::string_view bytes,
                                     const std::string &modeOf = {});

// Copies the file at `path`, with its mode, to `keptPath` in the same folder; the two are independent. An
// existing file there, unless it has the same bytes, moves to the first free of `keptPath` plus ".1", ".2",
// ... noErr, or the error; never changes `path`.
[[nodiscard]] OSErr KeepFileAside(const std::string &path, const std::string &keptPath);

// Flushes a folder: what was created, renamed or removed in it. noErr, also for a folder that cannot be
// flushed because it is writable but not readable, or the file system does not support it.
[[nodiscard]] OSErr FlushFolder(const std::string &folder);

} // namespace drevix
