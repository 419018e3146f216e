// Files named by folder and Pascal name, and the user's folders.
#pragma once

#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace drevix {

// A file by folder and name; the file need not exist.
struct FSSpec {
    std::int16_t vRefNum; // volume; the root volume is kRootVolume
    std::int32_t parID;   // folder id, as FindFolder gives it
    Str63 name;           // Mac OS Roman
};

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

// Folders

// Finds a folder of the user. A type that a Linux desktop has no folder for gives fnfErr. `volume` is
// kOnSystemDisk or kRootVolume, or another mounted volume, where the folder is found only if it lies there
// (else fnfErr). *foundVolume is kRootVolume for the first two: the folder's id leads to it wherever it lies.
// noErr; nsvErr for a volume that is not mounted; fnfErr when the folder does not exist and is not to be
// created; else why it could not be made. The outputs are set only on success.
[[nodiscard]] OSErr FindFolder(std::int16_t volume, OSType folderType, FolderCreation creation,
                               std::int16_t *foundVolume, std::int32_t *foundFolder);

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

} // namespace drevix
