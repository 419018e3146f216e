// Writing a whole file so that a failure, or a death, on the way leaves the old one.
#pragma once

#include "platform/files/owners.h"

#include <string>
#include <string_view>

namespace drevix {

enum class UpdateMethod {
    // A new file is written beside the old one, flushed, renamed over it, and the folder flushed: killed at
    // any point, the old or the new file is there whole. A link is followed first and stays one; mode and
    // owner are kept. Where the folder cannot be written, or the owner could not be kept, but the file can be
    // written, it is done in place.
    Replace,
    // The file itself is written, at the commit, by "WriteSharedFile": its old bytes are kept in the user's state
    // folder until the new ones are on the disk. The new ones wait in a file there that has no name. Where there is
    // no file yet, one is made as with Replace.
    InPlace,
};

// One update of one file. Write to File(), then Commit(); a FileUpdate destroyed before that leaves the file
// as it was, with nothing beside it, and removes it when it was not there. Two programs that replace the same
// file wait for each other.
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

    // The empty file to write to, for reading too; 0 before Open. Belongs to the update: do not close it.
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

// The whole file at a path. memFullErr when it does not fit in memory, else as OpenFile and FSRead.
[[nodiscard]] OSErr ReadWholeFile(const std::string &path, std::string *bytes);

// Makes `bytes` the file at a path, as one FileUpdate that replaces it. The statuses are those of Open, of
// writing, and of Commit.
[[nodiscard]] OSErr ReplaceWholeFile(const std::string &path, std::string_view bytes,
                                     const std::string &modeOf = {});

// Keeps what the file at `path` holds, and its mode, under `keptPath` in the same folder, however either
// changes later. What `keptPath` held before, unless it is the same bytes, moves to `keptPath` with ".1",
// ".2", ... the first that is free. noErr, or why not; `path` is untouched in every case.
[[nodiscard]] OSErr KeepFileAside(const std::string &path, const std::string &keptPath);

// Returns when what was made, renamed or removed in a folder is on the disk. noErr, also for a folder that
// cannot be flushed: one that may be written but not read, or that of a file system without such a thing.
[[nodiscard]] OSErr FlushFolder(const std::string &folder);

} // namespace drevix
