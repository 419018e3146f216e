// The catalog: what the files and folders of the mounted file systems are, under the platform's own terms of
// volume, folder id and Pascal name.
//
// Every mounted file system is a volume. kRootVolume is the one at "/", the others have numbers below it that
// stay the same as long as the process lives; 0 and kOnSystemDisk mean kRootVolume too. On each volume folder
// 2 is its root and 1 that root's parent; every other folder has an id that no other folder has on any
// volume, the one that FolderIdFromPath gives, so it is found whatever volume is named with it.
// All of it goes through "platform/files/disk.h". Main thread only.
#pragma once

#include "platform/base/types.h"
#include "platform/catalog/named_files.h"
#include "platform/files/files.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// What a person's desktop knows of a file, as an AppleDouble file holds it.
struct FInfo {
    OSType fdType;
    OSType fdCreator;
    std::uint16_t fdFlags;
};
inline constexpr std::uint16_t kHasCustomIcon = 0x0400; // bits of fdFlags
inline constexpr std::uint16_t kIsAlias = 0x8000;
inline constexpr OSType kUnknownType = FourCharCode(R"(????)"); // of a type, or of a creator
inline constexpr OSType kApplicationType = FourCharCode("APPL");
inline constexpr OSType kSymbolicLinkType = FourCharCode("slnk");

// Bit of CatalogInfo::ioFlAttrib: it is a folder.
inline constexpr std::uint8_t kFolderAttribute = 0x10;

// The parameter block of PBGetCatInfoSync.
struct CatalogInfo {
    // In, and out as noted.
    std::int16_t ioVRefNum;   // out for a folder: the volume that it lies on
    std::int16_t ioFDirIndex; // above 0: the n-th entry of the folder; 0: by name; below: the folder itself
    std::int32_t ioDrDirID;   // the folder to look in; out for a folder: its own id
    Str63 ioName;             // out unless asked by name; kept for an entry asked by name
    // Out
    std::uint8_t ioFlAttrib; // kFolderAttribute or 0
    std::int32_t ioDrParID;  // the folder that it lies in; kRootParentFolder for a volume's root
    std::uint64_t ioNode;    // inode and
    std::uint64_t ioDevice;  // device: equal for what is the same file or folder by different paths
    FInfo ioFlFndrInfo;      // of a file or folder
};

// Looks up a file or folder. A symbolic link is a file of type kSymbolicLinkType, never what it leads to.
// Finder information comes from the AppleDouble file beside it where there is a sound one; without it an
// executable program or script, and a desktop entry, has type kApplicationType, and everything else the type
// kUnknownType; the creator is then kUnknownType. Pipes and devices have no Finder information at all.
// noErr; fnfErr when there is no such entry, also for an index beyond the last; dirNFErr for an unknown
// folder; nsvErr for an unknown volume; bdNamErr; else why it could not be read. *info's outputs are
// undefined then. A look-up by index costs as much as reading the whole folder: see ListFolder.
[[nodiscard]] OSErr PBGetCatInfoSync(CatalogInfo *info);

// The names of all entries of a folder, in the order in which PBGetCatInfoSync counts them: by name. An
// AppleDouble file is a part of the file that it lies beside, and no entry; one that lies beside nothing is.
// The statuses are those of PBGetCatInfoSync.
[[nodiscard]] OSErr ListFolder(std::int16_t volume, std::int32_t folder, std::vector<Str63> *names);

// Volumes

// The parameter block of PBHGetVInfoSync.
struct VolumeInfo {
    std::int16_t ioVRefNum; // in
    Str63 ioName;           // out: 27 characters at most
    std::int16_t ioVFSID;   // out: the kind of file system, below
    std::string mountPoint; // out: absolute path of its root, UTF-8
};
// Values of ioVFSID. From 1 to 0x4000 it lies on a server, above 0x4000 it is local with a foreign format.
inline constexpr std::int16_t kLocalFileSystem = 0;
inline constexpr std::int16_t kServerFileSystem = 2;
inline constexpr std::int16_t kDiscFileSystem = 0x4147; // optical discs
inline constexpr std::int16_t kDosFileSystem = 0x4953;  // FAT and NTFS

// Tells of a mounted volume. noErr, nsvErr for an unknown or unmounted one, or why the mount table could not
// be read; the outputs are set only on success.
[[nodiscard]] OSErr PBHGetVInfoSync(VolumeInfo *info);

// What the system offers. The selectors are 'alis', bit 0: aliases, and 'fs  ', bit 1: FSSpec calls.
// gestaltUndefSelectorErr for any other.
[[nodiscard]] OSErr Gestalt(OSType selector, std::int32_t *response);

// References

// A reference to what an absolute or relative path leads to, links followed; for FSRefAtName to what the
// folder has under the name, be it a link. noErr, fnfErr, dirNFErr, ..., *ref set only on success. The path
// of a reference has no links in it but its last component.
[[nodiscard]] OSErr FSPathMakeRef(const std::string &path, FSRef *ref);
[[nodiscard]] OSErr FSRefAtName(const FSRef &folder, const std::string &name, FSRef *ref);

// The specification of a file or folder that exists. A name that a Pascal string of 63 Mac OS Roman
// characters cannot hold gets a DistinctName in the specification, which leads to the file as long as the
// process lives. `folder` is optional: the id of the item itself when it is a folder (paramErr if not).
[[nodiscard]] OSErr FSSpecFromRef(const FSRef &ref, FSSpec *spec, std::int32_t *folder = nullptr);

// Whether a file's name, UTF-8, can stand in a Pascal string of `limit` characters and lead back to the file.
[[nodiscard]] bool FitsPascalName(std::string_view name, std::size_t limit);
// A name in Mac OS Roman for a file whose own name cannot be used: the beginning of it with '?' for what Mac
// OS Roman lacks, '#' and the number in eight hexadecimal digits, and its extension where that is short.
[[nodiscard]] std::string DistinctName(std::string_view name, std::size_t limit, std::uint32_t number);
// A number for DistinctName that depends on every byte of the text: FNV-1a, 32 bits.
[[nodiscard]] std::uint32_t NumberOfText(std::string_view text);

// Changing

// Makes a folder with the user's default mode; `script` is not looked at. dupFNErr when the name is taken.
// *folder, its id, is set only on success.
[[nodiscard]] OSErr FSpDirCreate(const FSSpec &spec, std::int16_t script, std::int32_t *folder);

// Removes a file or link and the AppleDouble file beside it; also one of these that was left alone. fnfErr
// when there is neither, notAFileErr for a folder, with nothing removed. Another file that only has the name
// of an AppleDouble file stays.
[[nodiscard]] OSErr FSpDelete(const FSSpec &spec);

// Finder information as PBGetCatInfoSync gives it; of a file too that has only its AppleDouble file so far.
[[nodiscard]] OSErr FSpGetFInfo(const FSSpec &spec, FInfo *info);
// Writes Finder information into the file's AppleDouble file, which is made when missing; everything else in
// it stays. fnfErr when there is neither; mapReadErr for an AppleDouble file that is damaged or foreign. A
// failure changes nothing.
[[nodiscard]] OSErr FSpSetFInfo(const FSSpec &spec, const FInfo &info);

} // namespace drevix
