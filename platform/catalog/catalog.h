// The catalog: files and folders of the mounted file systems, in the platform's terms of volume, folder id
// and Pascal name.
//
// Every mounted file system is a volume. kRootVolume is the one at "/"; the others have lower numbers, stable
// for the life of the process. 0 and kOnSystemDisk also mean kRootVolume. On each volume folder 2 is the root
// and 1 the root's parent; every other folder has an id from FolderIdFromPath that is unique across all
// volumes, so it is found whatever volume is given with it. Everything goes through "platform/files/disk.h".
// Main thread only.
#pragma once

#include "platform/base/types.h"
#include "platform/catalog/named_files.h"
#include "platform/files/files.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// The script of a name that is in the system's own.
inline constexpr std::int16_t kSystemScript = -1;

// A file's Finder information, as stored in an AppleDouble file.
struct FInfo {
    OSType fdType;
    OSType fdCreator;
    std::uint16_t fdFlags;
};
inline constexpr std::uint16_t kHasCustomIcon = 0x0400; // bits of fdFlags
inline constexpr std::uint16_t kIsAlias = 0x8000;
inline constexpr OSType kUnknownType = FourCharCode(R"(????)"); // as a type or a creator
inline constexpr OSType kApplicationType = FourCharCode("APPL");
inline constexpr OSType kSymbolicLinkType = FourCharCode("slnk");

// Bit of CatalogInfo::ioFlAttrib: it is a folder.
inline constexpr std::uint8_t kFolderAttribute = 0x10;

// The parameter block of PBGetCatInfoSync.
struct CatalogInfo {
    // Input, and output as noted.
    std::int16_t ioVRefNum;   // out for a folder: its volume
    std::int16_t ioFDirIndex; // above 0: the n-th entry of the folder; 0: by name; below: the folder itself
    std::int32_t ioDrDirID;   // the folder to look in; out for a folder: its own id
    Str63 ioName;             // in when looking up by name, else out
    // Out
    std::uint8_t ioFlAttrib; // kFolderAttribute or 0
    std::int32_t ioDrParID;  // the containing folder; kRootParentFolder for a volume's root
    std::uint64_t ioNode;    // inode and
    std::uint64_t ioDevice;  // device: equal if two paths lead to the same file or folder
    FInfo ioFlFndrInfo;      // of a file or folder
};

// Looks up a file or folder. A symbolic link is a file of type kSymbolicLinkType; it is not followed. Finder
// information comes from a valid AppleDouble file beside it. Without one, executable programs, scripts and
// desktop entries have type kApplicationType, everything else kUnknownType; the creator is kUnknownType.
// Pipes and devices have no Finder information. noErr; fnfErr if there is no such entry, also for an index
// past the last; dirNFErr for an unknown folder; nsvErr for an unknown volume; bdNamErr; else the error
// reading it. On failure *info's outputs are undefined. A lookup by index costs as much as reading the whole
// folder: see ListFolder.
[[nodiscard]] OSErr PBGetCatInfoSync(CatalogInfo *info);

// The names of all entries of a folder, sorted by name, which is also PBGetCatInfoSync's index order. An
// AppleDouble file is part of the file beside it and not an entry; one without such a file is an entry.
// Statuses as PBGetCatInfoSync.
[[nodiscard]] OSErr ListFolder(std::int16_t volume, std::int32_t folder, std::vector<Str63> *names);

// Volumes

// The parameter block of PBHGetVInfoSync.
struct VolumeInfo {
    std::int16_t ioVRefNum; // in
    Str63 ioName;           // out: 27 characters at most
    std::int16_t ioVFSID;   // out: the kind of file system, below
    std::string mountPoint; // out: absolute path of its root, UTF-8
};
// Values of ioVFSID. 1 to 0x4000: on a server; above 0x4000: local with a foreign format.
inline constexpr std::int16_t kLocalFileSystem = 0;
inline constexpr std::int16_t kServerFileSystem = 2;
inline constexpr std::int16_t kDiscFileSystem = 0x4147; // optical discs
inline constexpr std::int16_t kDosFileSystem = 0x4953;  // FAT and NTFS

// Describes a mounted volume. noErr, nsvErr for an unknown or unmounted one, or the error reading the mount
// table; the outputs are set only on success.
[[nodiscard]] OSErr PBHGetVInfoSync(VolumeInfo *info);

// What the system supports. The selectors are 'alis', bit 0: aliases, and 'fs  ', bit 1: FSSpec calls.
// gestaltUndefSelectorErr for any other.
[[nodiscard]] OSErr Gestalt(OSType selector, std::int32_t *response);

// References

// FSPathMakeRef makes a reference to the target of an absolute or relative path, following links; FSRefAtName
// to the folder's entry of that name, without following it. noErr, fnfErr, dirNFErr, ...; *ref is set only on
// success. Only the last component of a reference's path may be a link.
[[nodiscard]] OSErr FSPathMakeRef(const std::string &path, FSRef *ref);
[[nodiscard]] OSErr FSRefAtName(const FSRef &folder, const std::string &name, FSRef *ref);

// The specification of an existing file or folder. A name that does not fit 63 Mac OS Roman characters is
// replaced by a DistinctName, which leads to the file for the life of the process. *folder (optional) gets
// the id of the item itself; paramErr if it is not a folder.
[[nodiscard]] OSErr FSSpecFromRef(const FSRef &ref, FSSpec *spec, std::int32_t *folder = nullptr);

// Whether a file name (UTF-8) fits a Pascal string of `limit` characters and converts back to itself.
[[nodiscard]] bool FitsPascalName(std::string_view name, std::size_t limit);
// A Mac OS Roman name for a file whose own name cannot be used: its start, with '?' for characters that Mac
// OS Roman lacks, then '#' and the number in eight hexadecimal digits, then its extension if short.
[[nodiscard]] std::string DistinctName(std::string_view name, std::size_t limit, std::uint32_t number);
// A number for DistinctName that depends on every byte of the text: FNV-1a, 32 bits.
[[nodiscard]] std::uint32_t NumberOfText(std::string_view text);

// Changing

// Creates a folder with the user's default mode; ignores `script`. dupFNErr if the name is taken. *folder,
// its id, is set only on success.
[[nodiscard]] OSErr FSpDirCreate(const FSSpec &spec, std::int16_t script, std::int32_t *folder);

// Removes a file or link and its AppleDouble file, or an orphaned AppleDouble file. fnfErr if there is
// neither; notAFileErr for a folder, with nothing removed. Keeps another file that only has the name of an
// AppleDouble file.
[[nodiscard]] OSErr FSpDelete(const FSSpec &spec);

// Finder information as from PBGetCatInfoSync, also for a file that has only its AppleDouble file so far.
[[nodiscard]] OSErr FSpGetFInfo(const FSSpec &spec, FInfo *info);
// Writes Finder information to the file's AppleDouble file, creating it if missing and keeping everything
// else in it. fnfErr if there is neither; mapReadErr if the AppleDouble file is damaged or not ours. A
// failure changes nothing.
[[nodiscard]] OSErr FSpSetFInfo(const FSSpec &spec, const FInfo &info);

} // namespace drevix
