#include "util/items/alias_file.h"

#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "platform/catalog/resource_file.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"
#include "settings/pascal_strings.h"
#include "util/items/alias_record.h"
#include "util/items/disk_info.h"
#include "util/items/file_references.h"

#include <algorithm>
#include <new>
#include <optional>
#include <span>
#include <tuple>

namespace drevix {

std::int16_t gAFAliasAndFSSAvailable = -1;

namespace {

constexpr Str255 kNoName{};

bool HasBit(OSType selector, int bit) {
    std::int32_t response = 0;
    return Gestalt(selector, &response) == noErr && (response >> bit & 1) != 0;
}

OSType TypeOfVolume(std::int16_t volume) {
    std::int16_t kind = kUnknownDisk;
    // A volume of unknown kind counts as a disk.
    std::ignore = GetDiskType(volume, &kind);
    return kind == kServerDisk ? kServerAliasType : kDiskAliasType;
}

// Whether the catalog entry is the special folder of a type.
bool IsFolderOfType(const CatalogInfo &folder, OSType type) {
    std::int16_t volume = 0;
    std::int32_t id = 0;
    if (FindFolder(folder.ioVRefNum, type, kDontCreateFolder, &volume, &id) != noErr) {
        return false;
    }
    // The id alone is not enough: the path to a user's folder may contain links or be one.
    constexpr Str63 kItself = {1, '.'};
    FSRef real;
    FSSpec spec{};
    CatalogInfo special{};
    return FSPathMakeRef(PathFromSpec({volume, id, kItself}), &real) == noErr &&
           FSSpecFromRef(real, &spec, nullptr) == noErr &&
           DrevixGetCatInfo(spec, 0, &special, nullptr) == noErr && special.ioDevice == folder.ioDevice &&
           special.ioNode == folder.ioNode;
}

OSType TypeOfFolder(const CatalogInfo &folder) {
    for (const AFFolderType *row = gAFFolderTypes.data(); row->folder != 0; ++row) {
        if (IsFolderOfType(folder, row->folder)) {
            return row->alias;
        }
    }
    return kFolderAliasType;
}

OSErr FillBlock(Block *block, std::span<const std::byte> bytes) {
    const OSErr status = block->Resize(bytes.size());
    if (status == noErr) {
        std::ranges::copy(bytes, block->Data());
    }
    return status;
}

void ReadCustomIcons(const FSSpec &iconFile, IconHandles &icons) {
    ResourceFile file;
    if (file.Open(iconFile, fsRdPerm) != noErr) {
        return;
    }
    for (std::size_t i = 0; i < icons.size(); ++i) {
        if (const Resource *icon = file.Get1Resource(gAFCustomIconTypes[i], kCustomIconID)) {
            std::ignore =
                FillBlock(&icons[i], std::as_bytes(std::span(icon->data))); // out of memory: no icon
        }
    }
}

// The file with the icons of an item that has the custom-icon bit.
std::optional<FSSpec> IconFileOf(const FSSpec &item, const CatalogInfo &info, bool isFolder) {
    if ((info.ioFlFndrInfo.fdFlags & kHasCustomIcon) == 0) {
        return std::nullopt;
    }
    FSSpec file = item;
    if (isFolder) {
        file = {info.ioVRefNum, info.ioDrDirID, {}};
        std::ranges::copy(gAFCustomIconFileName, file.name.begin());
    }
    return file;
}

bool Exists(const Block &icon) {
    return icon.Size() > 0;
}

std::span<const std::byte> BytesOf(const Block &block) {
    return {block.Data(), block.Size()};
}

// Adds the alias record and the icons; *flags gets the Finder flags for them.
OSErr AddResources(const FSSpec &aliasSpec, const Block &alias, const IconHandles &icons,
                   std::uint16_t *flags) {
    ResourceFile file;
    OSErr status = file.Open(aliasSpec, fsRdWrPerm);
    if (status == noErr) {
        status = file.AddResource(BytesOf(alias), kAliasResourceType, kAliasID, aliasSpec.name.data());
    }
    if (status != noErr) {
        return status;
    }
    *flags = kIsAlias;
    for (std::size_t i = 0; i < icons.size(); ++i) {
        // An alias without its icon still opens the item, so lack of space for one is not an error.
        if (Exists(icons[i]) && file.AddResource(BytesOf(icons[i]), gAFCustomIconTypes[i], kAliasIconID,
                                                 kNoName.data()) == noErr) {
            *flags |= kHasCustomIcon;
        }
    }
    return file.Close();
}

OSErr AddFlags(const FSSpec &aliasSpec, std::uint16_t flags) {
    FInfo info{};
    const OSErr status = FSpGetFInfo(aliasSpec, &info);
    if (status != noErr) {
        return status;
    }
    info.fdFlags |= flags;
    return FSpSetFInfo(aliasSpec, info);
}

// Creates the link and flushes its folder, because settings that name it will be flushed soon.
OSErr MakeLink(const FSSpec &item, const FSSpec &aliasSpec) {
    const std::string path = PathFromSpec(aliasSpec);
    if (CurrentDisk().MakeSymbolicLink(PathFromSpec(item).c_str(), path.c_str()) != 0) {
        return LastError();
    }
    const OSErr status = FlushFolder(FolderOfPath(path));
    if (status != noErr) {
        CurrentDisk().Remove(path.c_str());
    }
    return status;
}

} // namespace

std::int16_t AliasesAvailable() {
    if (gAFAliasAndFSSAvailable < 0) {
        gAFAliasAndFSSAvailable = HasBit(FourCharCode("alis"), 0) && HasBit(FourCharCode("fs  "), 1) ? 1 : 0;
    }
    return gAFAliasAndFSSAvailable;
}

OSErr GetSourceInfo(const FSSpec &item, OSType *typeOut, OSType *creatorOut, IconHandles &icons) try {
    icons = {};
    CatalogInfo info{};
    bool isFolder = false;
    if (const OSErr status = DrevixGetCatInfo(item, 0, &info, &isFolder); status != noErr) {
        return status;
    }
    OSType type =
        info.ioFlFndrInfo.fdType == kApplicationType ? kApplicationAliasType : info.ioFlFndrInfo.fdType;
    OSType creator = info.ioFlFndrInfo.fdCreator;
    const std::optional<FSSpec> iconFile = IconFileOf(item, info, isFolder);
    if (isFolder) {
        const bool isVolume = info.ioDrParID == kRootParentFolder;
        type = isVolume ? TypeOfVolume(info.ioVRefNum) : TypeOfFolder(info);
        creator = kFinderCreator;
        if (isVolume && !iconFile) {
            std::ignore =
                GetDiskIcon(info.ioVRefNum, icons.data()); // if memory is out, the alias has no icon
        }
    }
    if (typeOut != nullptr) {
        *typeOut = type;
    }
    if (creatorOut != nullptr) {
        *creatorOut = creator;
    }
    if (iconFile) {
        ReadCustomIcons(*iconFile, icons);
    }
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr CreateAliasFile(const FSSpec &item, const FSSpec &aliasSpec) try {
    if (AliasesAvailable() == 0) {
        return gestaltUndefSelectorErr;
    }
    OSType type = 0;
    OSType creator = 0;
    IconHandles icons;
    Block alias;
    OSErr status = GetSourceInfo(item, &type, &creator, icons);
    if (status == noErr) {
        status = NewAlias(item, &alias);
    }
    if (status == noErr) {
        status = FSpCreateResFile(aliasSpec, creator, type, kSystemScript);
    }
    if (status != noErr) {
        return status;
    }
    std::uint16_t flags = 0;
    status = AddResources(aliasSpec, alias, icons, &flags);
    if (status == noErr) {
        status = AddFlags(aliasSpec, flags);
    }
    if (status == noErr) {
        status = MakeLink(item, aliasSpec);
    }
    if (status != noErr) {
        std::ignore = FSpDelete(aliasSpec); // report the first failure
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
