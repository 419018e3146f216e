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
// Folder types, and their places on a Linux desktop.
inline constexpr OSType kVolumeRootFolderType = FourCharCode("root");
inline constexpr OSType kPreferencesFolderType = FourCharCode("pref"); // $XDG_CONFIG_HOME, "~/.config"
inline constexpr OSType kTrashFolderType =
    FourCharCode("trsh"); // "Trash/files" in $XDG_DATA_HOME, "~/.local/share"
inline constexpr OSType kAppleMenuFolderType = FourCharCode("amnu"); // "applications" there: menu entries
inline constexpr OSType kStartupFolderType = FourCharCode("strt");   // "autostart" in the preferences folder

// Folders

// Finds one of the user's folders; fnfErr for a type that a Linux desktop does not have. `volume` is
// kOnSystemDisk, kRootVolume, or another mounted volume (fnfErr if the folder is not on it). *foundVolume is
// kRootVolume for the first two: the folder's id leads to it wherever it is. noErr; nsvErr for a volume that
// is not mounted; fnfErr if the folder is missing and not to be created; else the error creating it. The
// outputs are set only on success.
[[nodiscard]] OSErr FindFolder(std::int16_t volume, OSType folderType, FolderCreation creation,
                               std::int16_t *foundVolume, std::int32_t *foundFolder);

// The id of the folder at an absolute path, stable for the life of the process. Unchecked.
[[nodiscard]] std::int32_t FolderIdFromPath(const std::string &path);

// The path for a specification; empty for an unknown folder id or for a name that is empty or contains a zero
// byte. '/' in the name becomes ':', because the two systems' separators are swapped.
[[nodiscard]] std::string PathFromSpec(const FSSpec &spec);

// Files by specification

// Creates an empty file with the user's default mode. dupFNErr if it exists; it is then unchanged. Drops
// creator and type, which files outside the items folder do not have here. Ignores `script`.
[[nodiscard]] OSErr FSpCreate(const FSSpec &spec, OSType creator, OSType fileType, std::int16_t script);

// Opens the data fork: the file itself. The outputs are set only on success.
[[nodiscard]] OSErr FSpOpenDF(const FSSpec &spec, Permission permission, FileRef *file);

// Opens the resource fork. No file here has one, so always fails: fnfErr even for an existing file.
[[nodiscard]] OSErr FSpOpenRF(const FSSpec &spec, Permission permission, FileRef *file);

} // namespace drevix
