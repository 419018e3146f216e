// The user's folders.

#include "platform/base/status.h"
#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "platform/files/disk.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

// A folder, relative to its XDG base directory.
struct FolderRow {
    OSType type;
    const char *variable;       // the base directory, if it is an absolute path
    std::string_view otherwise; // else the base directory in the home folder
    std::string_view below;     // the folder below the base directory; empty: the base directory itself
};
constexpr auto kFolders = std::to_array<FolderRow>({
    {kPreferencesFolderType, "XDG_CONFIG_HOME", ".config", ""},
    {kStartupFolderType, "XDG_CONFIG_HOME", ".config", "autostart"},
    {kTrashFolderType, "XDG_DATA_HOME", ".local/share", "Trash/files"},
    {kAppleMenuFolderType, "XDG_DATA_HOME", ".local/share", "applications"},
});

std::string BaseFolder(const FolderRow &row) {
    if (const char *folder = std::getenv(row.variable); folder != nullptr && folder[0] == '/') {
        return folder;
    }
    const std::string home = HomeFolder();
    return home.empty() ? std::string() : JoinPath(home, row.otherwise);
}

// The folder's path; empty for an unknown type.
std::string PathOfType(std::int16_t volume, OSType type) {
    if (type == kVolumeRootFolderType) {
        return RootOfVolume(volume);
    }
    const auto *row = std::ranges::find(kFolders, type, &FolderRow::type);
    const std::string base = row == kFolders.end() ? std::string() : BaseFolder(*row);
    return base.empty() || row->below.empty() ? base : JoinPath(base, row->below);
}

OSErr RequireFolder(const std::string &path) {
    const DiskDescriptor folder(CurrentDisk().Open(path.c_str(), O_PATH | O_DIRECTORY, 0));
    return folder ? noErr : LastError();
}

bool IsSystemDisk(std::int16_t volume) {
    return volume == kOnSystemDisk || volume == kRootVolume;
}

// Whether the folder is on the volume. Reads the mount table only for a volume other than the system disk:
// finding the preferences must not depend on it.
OSErr CheckVolume(std::int16_t volume, const std::string &path) {
    if (IsSystemDisk(volume)) {
        return noErr;
    }
    std::vector<Volume> volumes;
    if (const OSErr status = ListVolumes(&volumes); status != noErr) {
        return status;
    }
    if (FindVolume(volumes, volume) == nullptr) {
        return nsvErr;
    }
    std::string real;
    if (path.empty() || CurrentDisk().RealPath(path.c_str(), &real) != 0) {
        return fnfErr;
    }
    return VolumeOfPath(volumes, real)->number == volume ? noErr : fnfErr;
}

} // namespace

OSErr FindFolder(std::int16_t volume, OSType folderType, FolderCreation creation, std::int16_t *foundVolume,
                 std::int32_t *foundFolder) try {
    const std::string path = PathOfType(volume, folderType);
    if (const OSErr status = CheckVolume(volume, path); status != noErr) {
        return status;
    }
    if (path.empty()) {
        return fnfErr;
    }
    if (creation == kCreateFolder) {
        if (const OSErr status = MakeFolders(path); status != noErr) {
            return status;
        }
    }
    if (const OSErr status = RequireFolder(path); status != noErr) {
        return status;
    }
    *foundFolder = folderType == kVolumeRootFolderType ? kRootFolder : FolderIdFromPath(path);
    *foundVolume = IsSystemDisk(volume) ? kRootVolume : volume;
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr Gestalt(OSType selector, std::int32_t *response) {
    constexpr auto kResponses = std::to_array<std::pair<OSType, std::int32_t>>({
        {FourCharCode("alis"), 1},
        {FourCharCode("fs  "), 2},
    });
    const auto *row = std::ranges::find(kResponses, selector, &std::pair<OSType, std::int32_t>::first);
    if (row == kResponses.end()) {
        return gestaltUndefSelectorErr;
    }
    *response = row->second;
    return noErr;
}

} // namespace drevix
