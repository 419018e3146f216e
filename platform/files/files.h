// Open files behind 16-bit references. Everything goes through "platform/files/disk.h". Main thread only.
#pragma once

#include "platform/base/types.h"

#include <string>

namespace drevix {

// An open file; never 0.
using FileRef = std::int16_t;

// The access mode for opening a file.
enum class Permission : std::int8_t {
    Read = 1,      // fsRdPerm
    ReadWrite = 3, // fsRdWrPerm
};
inline constexpr Permission fsRdPerm = Permission::Read;
inline constexpr Permission fsRdWrPerm = Permission::ReadWrite;

// A file or folder, by its absolute path.
struct FSRef {
    std::string path; // UTF-8
};

// One transfer (PBReadSync, PBWriteSync).
struct IOParam {
    FileRef ioRefNum;
    void *ioBuffer;
    std::int32_t ioReqCount;  // bytes requested
    std::int32_t ioActCount;  // bytes transferred, always set
    std::int16_t ioPosMode;   // fsAtMark or fsFromStart; noCacheMask may be added and has no effect here
    std::int64_t ioPosOffset; // with fsFromStart: where the transfer starts, at most the end of the file
};

inline constexpr std::int16_t fsAtMark = 0;
inline constexpr std::int16_t fsFromStart = 1;
inline constexpr std::int16_t noCacheMask = 0x20;

// Open files. Every function returns rfNumErr for a reference that is not open.

// Opens the regular file at a path. noErr, or the error; tmfoErr if all references are in use; notAFileErr,
// without blocking, for a folder, pipe, socket or device.
[[nodiscard]] OSErr OpenFile(const std::string &path, Permission permission, FileRef *file);

// As OpenFile, for an open descriptor of anything but a folder. Takes ownership of the descriptor; on failure
// closes it.
[[nodiscard]] OSErr AdoptDescriptor(int descriptor, Permission permission, FileRef *file);

// Closes the file; frees the reference in every case but rfNumErr.
OSErr FSClose(FileRef file);

// The length in bytes; 0 for a stream.
[[nodiscard]] OSErr GetEOF(FileRef file, std::int64_t *length);

// Truncates the file or extends it with zeros. wrPermErr for a file opened for reading. A mark beyond the new
// end moves to it.
[[nodiscard]] OSErr SetEOF(FileRef file, std::int64_t length);

// Sets the mark; `mode` must be fsFromStart, else paramErr. posErr for a negative offset; eofErr, with the
// mark at the end, for an offset beyond the end.
[[nodiscard]] OSErr SetFPos(FileRef file, std::int16_t mode, std::int64_t offset);

// Reads at the mark and advances it. eofErr if the file ends first, ioErr and so on for a failed transfer.
// *count: bytes requested on entry, bytes read on return.
[[nodiscard]] OSErr FSRead(FileRef file, std::int32_t *count, void *bytes);

// Read and write at the mark or at ioPosOffset, like FSRead; the mark ends after the bytes transferred. A
// write past the end extends the file; wrPermErr for a file opened for reading; posErr for a negative offset.
[[nodiscard]] OSErr PBReadSync(IOParam *transfer);
[[nodiscard]] OSErr PBWriteSync(IOParam *transfer);

// Flushes the file's bytes to the disk.
[[nodiscard]] OSErr PBFlushFileSync(FileRef file);

// The number of references in use, for tests that check for files left open.
[[nodiscard]] int OpenFileCount();

} // namespace drevix
