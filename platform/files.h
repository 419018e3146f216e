// Open files behind 16-bit references, and files named by folder and Pascal name.
// All of it goes through "platform/disk.h". Main thread only.
#pragma once

#include "platform/types.h"

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

// A file by folder and name; the file need not exist.
struct FSSpec {
    std::int16_t vRefNum; // volume; the root volume is kRootVolume
    std::int32_t parID;   // folder id, as FindFolder gives it
    Str63 name;           // Mac OS Roman
};

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

inline constexpr std::int16_t kOnSystemDisk = -32768;
inline constexpr std::int16_t kRootVolume = -100;
inline constexpr std::int32_t kRootParentFolder = 1;
inline constexpr std::int32_t kRootFolder = 2;
// Types of folders, and where a Linux desktop has them.
inline constexpr OSType kVolumeRootFolderType = FourCharCode("root");
inline constexpr OSType kPreferencesFolderType = FourCharCode("pref"); // $XDG_CONFIG_HOME, "~/.config"
inline constexpr OSType kTrashFolderType =
    FourCharCode("trsh"); // "Trash/files" in $XDG_DATA_HOME, "~/.local/share"
inline constexpr OSType kAppleMenuFolderType = FourCharCode("amnu"); // "applications" there: menu entries
inline constexpr OSType kStartupFolderType = FourCharCode("strt");   // "autostart" in the preferences folder
enum class FolderCreation : bool { Never = false, IfMissing = true };
inline constexpr FolderCreation kDontCreateFolder = FolderCreation::Never;
inline constexpr FolderCreation kCreateFolder = FolderCreation::IfMissing;

// Folders

// Finds a folder of the user. A type that a Linux desktop has no folder for gives fnfErr. `volume` is
// kOnSystemDisk or kRootVolume, or another mounted volume, where the folder is found only if it lies there
// (else fnfErr). *foundVolume is kRootVolume for the first two: the folder's id leads to it wherever it lies.
// noErr; nsvErr for a volume that is not mounted; fnfErr when the folder does not exist and is not to be
// created; else why it could not be made. The outputs are set only on success.
[[nodiscard]] OSErr FindFolder(std::int16_t volume, OSType folderType, FolderCreation creation,
                               std::int16_t *foundVolume, std::int32_t *foundFolder);

// The user's home folder: $HOME when that is an absolute path, else the account's. Empty when there is none.
[[nodiscard]] std::string HomeFolder();

// The id of the folder at an absolute path, the same for the same path as long as the process lives. No check
// is made.
[[nodiscard]] std::int32_t FolderIdFromPath(const std::string &path);

// The path of the file that a specification names; empty for an unknown folder id, and for a name that is
// empty or holds a zero byte. A name's '/' becomes ':', as the two systems' separators are exchanged.
[[nodiscard]] std::string PathFromSpec(const FSSpec &spec);

// Files by specification

// Makes an empty file with the user's default mode. dupFNErr when there is one, which then stays as it is.
// Creator and type are not kept: files outside the items folder have none here. `script` is not looked at.
[[nodiscard]] OSErr FSpCreate(const FSSpec &spec, OSType creator, OSType fileType, std::int16_t script);

// Opens the data fork: the file itself. The outputs are set only on success.
[[nodiscard]] OSErr FSpOpenDF(const FSSpec &spec, Permission permission, FileRef *file);

// Opens the resource fork. No file here has one, so the status is fnfErr for a file that exists too.
[[nodiscard]] OSErr FSpOpenRF(const FSSpec &spec, Permission permission, FileRef *file);

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
