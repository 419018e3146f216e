// Single items of the items folder: from a slot's text to the item and back.

#include "platform/base/equal_string.h"
#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"
#include "platform/files/user_lock.h"
#include "util/items/alias_file.h"
#include "util/items/file_references.h"
#include "util/items/items_folder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <climits>
#include <fcntl.h>
#include <new>
#include <span>
#include <tuple>

namespace drevix {
namespace {

constexpr std::size_t kLongestName = std::tuple_size_v<Str31> - 1;
constexpr int kMostNumbers = 100; // tried before giving up
constexpr std::chrono::milliseconds kLongestTurn{1000};

struct Place {
    std::int16_t volume = 0;
    std::int32_t folder = 0;
};

OSErr FindPlace(FolderCreation creation, Place *place) {
    return FindDrevixItemsFolder(kDrevixItemsFolderName.data(), creation, nullptr, &place->volume,
                                 &place->folder);
}

FSSpec SpecOf(const Place &place, std::string_view name) {
    FSSpec spec = {place.volume, place.folder, {}};
    spec.name[0] = static_cast<std::uint8_t>(std::min(name.size(), spec.name.size() - 1));
    std::copy_n(name.begin(), spec.name[0], spec.name.begin() + 1);
    return spec;
}

// A link's direct target; empty if not a link.
std::string TargetOf(const std::string &path) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length =
        path.empty() ? -1 : CurrentDisk().ReadLink(path.c_str(), target.data(), target.size());
    if (length <= 0) {
        return {};
    }
    std::string found(target.data(), static_cast<std::size_t>(length));
    if (!found.starts_with('/')) {
        found.insert(0, FolderOfPath(path) + '/');
    }
    return found;
}

bool IsThere(const std::string &path) {
    const DiskDescriptor opened(CurrentDisk().Open(path.c_str(), O_PATH, 0)); // none at an empty path
    return static_cast<bool>(opened);
}

// The first entry in the folder with this name, ignoring letter case; empty if none.
Str63 FindName(const std::vector<Str63> &names, ConstStringPtr name) {
    const auto found = std::ranges::find_if(
        names, [&](const Str63 &other) { return EqualString(other.data(), name, LetterCase::Ignored); });
    return found == names.end() ? Str63{} : *found;
}

// Whether the alias file points to the item and matches what would be created for it now.
bool IsAliasOf(const FSSpec &aliasSpec, const FSSpec &item) {
    FInfo info{};
    OSType type = 0;
    OSType creator = 0;
    IconHandles icons;
    return FSpGetFInfo(aliasSpec, &info) == noErr && GetSourceInfo(item, &type, &creator, icons) == noErr &&
           (info.fdFlags & kIsAlias) != 0 && info.fdType == type && info.fdCreator == creator;
}

// Creates the alias file under one name; dupFNErr if anything else has that name.
OSErr MakeUnderName(const Place &place, const std::vector<Str63> &names, std::string_view name,
                    const FSSpec &item) {
    const FSSpec wanted = SpecOf(place, name);
    if (const Str63 taken = FindName(names, wanted.name.data()); taken[0] != 0) {
        const FSSpec there = {place.volume, place.folder, taken};
        if (taken != wanted.name || TargetOf(PathFromSpec(there)) != PathFromSpec(item)) {
            return dupFNErr;
        }
        if (IsAliasOf(there, item)) {
            return noErr;
        }
        if (const OSErr status = FSpDelete(there); status != noErr) {
            return status;
        }
    }
    return CreateAliasFile(item, wanted);
}

// The item at a path, or its target if it is an alias file in the items folder.
OSErr FindItem(const std::string &path, const Place &place, FSSpec *item) {
    CatalogInfo folder{};
    CatalogInfo items{};
    OSErr status = GetFSSpecFromNSString(path.c_str(), item, MissingItem::Refused);
    if (status == noErr && item->parID == kRootParentFolder) {
        return noErr; // a volume lies in no folder
    }
    if (status == noErr) {
        status = DrevixGetCatInfo(*item, -1, &folder, nullptr);
    }
    if (status == noErr) {
        status = DrevixGetCatInfo({place.volume, place.folder, {}}, -1, &items, nullptr);
    }
    if (status != noErr || folder.ioNode != items.ioNode || folder.ioDevice != items.ioDevice) {
        return status;
    }
    const std::string target = TargetOf(PathFromSpec(*item));
    return target.empty() ? noErr : GetFSSpecFromNSString(target.c_str(), item, MissingItem::Refused);
}

// Whether the item's name can be used as it is; a volume goes by its own name.
bool HasPlainName(const FSSpec &item, const std::string &leaf) {
    constexpr std::string_view kCompanionStart = "._"; // would be taken for another file's AppleDouble file
    return item.parID == kRootParentFolder ||
           (FitsPascalName(leaf, leaf.size()) && !leaf.starts_with(kCompanionStart));
}

OSErr MakeItem(const Place &place, const FSSpec &item, std::string *name) {
    std::vector<Str63> names;
    if (const OSErr status = ListFolder(place.volume, place.folder, &names); status != noErr) {
        return status;
    }
    const std::string path = PathFromSpec(item);
    const std::string leaf = LeafOfPath(path);
    if (HasPlainName(item, leaf)) {
        *name = PascalCharacters(item.name).substr(0, kLongestName);
        if (const OSErr status = MakeUnderName(place, names, *name, item); status != dupFNErr) {
            return status;
        }
    }
    const std::uint32_t number = NumberOfText(path);
    for (std::uint32_t i = 0; i < kMostNumbers; ++i) {
        *name = DistinctName(leaf.starts_with("._") ? leaf.substr(1) : leaf, kLongestName, number + i);
        if (const OSErr status = MakeUnderName(place, names, *name, item); status != dupFNErr) {
            return status;
        }
    }
    return dirFulErr;
}

} // namespace

DrevixItem ResolveDrevixItem(const Str31 &name) try {
    Place place;
    if (name[0] == 0 || FindPlace(kDontCreateFolder, &place) != noErr) {
        return {{}, false};
    }
    FSSpec spec = SpecOf(place, PascalCharacters(name));
    std::string target = TargetOf(PathFromSpec(spec));
    std::vector<Str63> names;
    if (target.empty() && ListFolder(place.volume, place.folder, &names) == noErr) {
        spec.name = FindName(names, spec.name.data());
        target = TargetOf(PathFromSpec(spec));
    }
    const bool exists = IsThere(target);
    return {std::move(target), exists};
} catch (const std::bad_alloc &) {
    return {{}, false};
}

OSErr MakeDrevixItem(const std::string &path, Str31 *storedName) try {
    if (path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    ClearHalfMadeItems(kDrevixItemsFolderName.data());
    Place place;
    FSSpec item{};
    OSErr status = GetFSSpecFromNSString(path.c_str(), &item, MissingItem::Refused);
    if (status == noErr) {
        status = FindPlace(kCreateFolder, &place);
    }
    if (status == noErr) {
        status = FindItem(path, place, &item);
    }
    std::string name;
    if (status == noErr) {
        UserLock turn;
        std::ignore = turn.Acquire(kItemsLockName, kLongestTurn); // where nobody can have it, nobody clears
        status = MakeItem(place, item, &name);
    }
    if (status == noErr) {
        *storedName = {};
        (*storedName)[0] = static_cast<std::uint8_t>(name.size());
        std::ranges::copy(name, storedName->begin() + 1);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
