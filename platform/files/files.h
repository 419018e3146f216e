// Open files behind 16-bit references.
// All of it goes through "platform/files/disk.h". Main thread only.
#pragma once

#include "platform/base/types.h"

#include <string>

namespace drevix {

// An open file. 0 is never one.
using FileRef = std::int16_t;

// How a file is opened.
enum class Permission : std::int8_t {
    Read = 1,      // fsRdPerm
    ReadWrite = 3, // fsRdWrPerm
};
inline constexpr Permission fsRdPerm = Permission::Read;
inline constexpr Permission fsRdWrPerm = Permission::ReadWrite;

// A file or folder by its absolute path.
struct FSRef {
    std::string path; // UTF-8
};

// One transfer (PBReadSync, PBWriteSync).
struct IOParam {
    FileRef ioRefNum;
    void *ioBuffer;
    std::int32_t ioReqCount;  // bytes wanted
    std::int32_t ioActCount;  // bytes done, set in every case
    std::int16_t ioPosMode;   // fsAtMark or fsFromStart; noCacheMask may be added and has no effect here
    std::int64_t ioPosOffset; // with fsFromStart: where the transfer starts, at most at the end
};

inline constexpr std::int16_t fsAtMark = 0;
inline constexpr std::int16_t fsFromStart = 1;
inline constexpr std::int16_t noCacheMask = 0x20;

// Open files. Every function gives rfNumErr for a reference that is not open.

// Opens the regular file at a path. noErr, or why not; tmfoErr when all references are taken; notAFileErr, without
// waiting, for a folder, pipe, socket or device.
[[nodiscard]] OSErr OpenFile(const std::string &path, Permission permission, FileRef *file);

// As OpenFile, for an open descriptor of anything but a folder. It then belongs to the reference; on failure it is
// closed.
[[nodiscard]] OSErr AdoptDescriptor(int descriptor, Permission permission, FileRef *file);

// Closes the file; the reference is free in every case but rfNumErr.
OSErr FSClose(FileRef file);

// The length in bytes; 0 for a stream.
[[nodiscard]] OSErr GetEOF(FileRef file, std::int64_t *length);

// Cuts or lengthens (with zeros) the file. wrPermErr for a file opened for reading. A mark beyond moves to
// the new end.
[[nodiscard]] OSErr SetEOF(FileRef file, std::int64_t length);

// Places the mark; `mode` is fsFromStart, else paramErr. posErr for a negative offset. eofErr, with the mark
// at the end, for an offset beyond the end.
[[nodiscard]] OSErr SetFPos(FileRef file, std::int16_t mode, std::int64_t offset);

// Reads at the mark and moves it. eofErr when the file ends first (*count is then what was read), ioErr and
// the like for a failed transfer. *count: in bytes wanted, out bytes read.
[[nodiscard]] OSErr FSRead(FileRef file, std::int32_t *count, void *bytes);

// Read and write at the mark, or from ioPosOffset on, as FSRead; the mark is then behind what was moved. A
// write beyond the end lengthens the file, wrPermErr for a file opened for reading; posErr for a negative
// offset.
[[nodiscard]] OSErr PBReadSync(IOParam *transfer);
[[nodiscard]] OSErr PBWriteSync(IOParam *transfer);

// Returns when the file's bytes are on the disk.
[[nodiscard]] OSErr PBFlushFileSync(FileRef file);

// Number of references in use, for tests that look for a file left open.
[[nodiscard]] int OpenFileCount();

} // namespace drevix
