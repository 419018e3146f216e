#include "helperlink/login_items.h"

#include "platform/base/ascii.h"
#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "platform/desktop/app_folder.h"
#include "platform/desktop/autostart.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"
#include "platform/plist/property_list.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {
namespace {

constexpr auto kFileName = PascalLiteral("loginwindow.plist");
constexpr std::string_view kItemsKey = "AutoLaunchedApplicationDictionary";
constexpr std::string_view kPathKey = "Path";
constexpr std::size_t kMostMatches = 16;
constexpr mode_t kNewFileMode = 0666; // less the user's umask

// The login items file as read.
struct ItemsFile {
    std::string path;
    std::optional<PropertyList> root; // a dictionary; nullopt for an empty file
};

// The part after the last slash that is not at the end.
std::string_view LeafOf(std::string_view path) {
    const std::size_t last = path.size() < 2 ? std::string_view::npos : path.rfind('/', path.size() - 2);
    return path.substr(last + 1); // npos + 1 is 0
}

// The path of the login items file, created if missing, also at a link's target.
OSErr FindFile(std::string *path) {
    FSSpec spec = {};
    std::ranges::copy(kFileName, spec.name.begin());
    OSErr status =
        FindFolder(kOnSystemDisk, kPreferencesFolderType, kCreateFolder, &spec.vRefNum, &spec.parID);
    if (status != noErr) {
        return status;
    }
    *path = PathFromSpec(spec);
    std::string target;
    if (status = FollowLinks(*path, &target); status != noErr) {
        return status;
    }
    const DiskDescriptor made(CurrentDisk().Open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL, kNewFileMode));
    return made || errno == EEXIST ? noErr : LastError();
}

OSErr OpenItems(ItemsFile *file) {
    if (const OSErr status = FindFile(&file->path); status != noErr) {
        return status;
    }
    PropertyList root(false);
    if (ReadPropertyList(file->path, &root) == noErr && root.As<PropertyListDictionary>() != nullptr) {
        file->root = std::move(root);
        return noErr;
    }
    // Only an empty file may be replaced; a damaged one may still be of value to its owner.
    std::string bytes;
    return ReadWholeFile(file->path, &bytes) == noErr && bytes.empty() ? noErr : resNotFound;
}

OSErr SaveItems(const ItemsFile &file) {
    return ReplaceWholeFile(file.path, PropertyListText(*file.root));
}

// The path of an item; null if it is not an item.
const std::string *PathOf(const PropertyList &item) {
    const auto *entries = item.As<PropertyListDictionary>();
    const PropertyList *path = entries == nullptr ? nullptr : entries->Find(kPathKey);
    return path == nullptr ? nullptr : path->As<std::string>();
}

PropertyList MakeItem(std::string_view path, bool isHidden) {
    PropertyListDictionary item;
    item.Add("Hide", isHidden);
    item.Add(std::string(kPathKey), std::string(path));
    return item;
}

// Indices of items, ascending and at most kMostMatches.
struct Matches {
    std::vector<std::size_t> items;
    bool hasExact = false;
};

template <typename IsExact, typename IsLoose>
Matches FindItems(const PropertyListArray &items, const IsExact &isExact, const IsLoose &isLoose) {
    Matches matches;
    for (std::size_t i = 0; i < items.size() && matches.items.size() < kMostMatches; ++i) {
        const std::string *path = PathOf(items[i]);
        if (path == nullptr) {
            continue;
        }
        const bool exact = isExact(*path);
        matches.hasExact |= exact;
        if (exact || isLoose(*path)) {
            matches.items.push_back(i);
        }
    }
    return matches;
}

// Removes the matches from `first` on and returns their paths.
std::vector<std::string> RemoveItems(PropertyListArray &items, const std::vector<std::size_t> &matches,
                                     std::size_t first) {
    std::vector<std::string> removed;
    for (std::size_t i = matches.size(); i-- > first;) { // backwards, so that indices stay valid
        const auto item = items.begin() + static_cast<std::ptrdiff_t>(matches[i]);
        removed.push_back(*PathOf(*item));
        items.erase(item);
    }
    return removed;
}

bool HasProgram(std::string_view item) {
    struct stat found {};
    std::string program = ProgramOfAppFolder(item); // may be a link in trees made of links
    return !program.empty() && FollowLinks(program, &program) == noErr &&
           CurrentDisk().StatusAt(program.c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

OSErr StartAtLogin(std::string_view item) {
    return HasProgram(item) ? WriteAutostartEntry(NameOfAppFolder(item), ProgramOfAppFolder(item))
                            : OSErr{noErr};
}

// Removes an item's autostart entry, unless another item of that name remains.
OSErr DontStartAtLogin(const PropertyListArray &items, std::string_view removed) {
    const std::string name = NameOfAppFolder(removed);
    if (name.empty()) {
        return noErr;
    }
    for (const PropertyList &item : items) {
        const std::string *path = PathOf(item);
        if (path != nullptr && NameOfAppFolder(*path) == name && HasProgram(*path)) {
            return StartAtLogin(*path);
        }
    }
    return RemoveAutostartEntry(name);
}

OSErr DontStartAtLogin(const PropertyListArray &items, const std::vector<std::string> &removed) {
    OSErr first = noErr;
    for (const std::string &path : removed) {
        const OSErr status = DontStartAtLogin(items, path);
        first = first == noErr ? status : first;
    }
    return first;
}

// The items of the file read; null if there are none or the value is not an array.
PropertyListArray *ItemsOf(ItemsFile *file) {
    PropertyList *items =
        file->root.has_value() ? file->root->As<PropertyListDictionary>()->Find(kItemsKey) : nullptr;
    return items == nullptr ? nullptr : items->As<PropertyListArray>();
}

// Adds an empty item list.
void AddItems(ItemsFile *file) {
    if (!file->root.has_value()) {
        file->root = PropertyListDictionary();
    }
    auto &entries = *file->root->As<PropertyListDictionary>();
    if (entries.Find(kItemsKey) == nullptr) {
        entries.Add(std::string(kItemsKey), PropertyListArray());
    }
}

// The item to register.
struct NewItem {
    std::string_view path;
    std::string_view name; // another name that matches, or empty
    bool isHidden;
    bool replaces;
};

// Sets *wasRegistered once the items have been searched, whatever happens next.
OSErr AddItem(const NewItem &item, bool *wasRegistered) try {
    ItemsFile file;
    if (const OSErr status = OpenItems(&file); status != noErr) {
        return status;
    }
    if (!IsAscii(item.path) || !IsAscii(item.name)) {
        return memFullErr;
    }
    AddItems(&file);
    PropertyListArray *items = ItemsOf(&file);
    if (items == nullptr) {
        return resNotFound;
    }
    const Matches matches = FindItems(
        *items, [&](std::string_view path) { return IsEqualWithoutCase(path, item.path); },
        [&](std::string_view path) {
            return path.ends_with(LeafOf(item.path)) || (!item.name.empty() && path.ends_with(item.name));
        });
    *wasRegistered = matches.hasExact;
    std::vector<std::string> removed;
    if (matches.items.empty() || (!item.replaces && !matches.hasExact)) {
        items->push_back(MakeItem(item.path, item.isHidden));
    } else if (!matches.hasExact || matches.items.size() > 1) {
        removed = {*PathOf((*items)[matches.items[0]])};
        (*items)[matches.items[0]] = MakeItem(item.path, item.isHidden);
        const std::vector<std::string> others = RemoveItems(*items, matches.items, 1);
        removed.insert(removed.end(), others.begin(), others.end());
    }
    const bool isAsItWas = matches.hasExact && matches.items.size() == 1;
    OSErr status = isAsItWas ? OSErr{noErr} : SaveItems(file);
    if (status != noErr) {
        return status;
    }
    status = DontStartAtLogin(*items, removed);
    const OSErr started = StartAtLogin(item.path);
    return status == noErr ? started : status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

// Sets *removed once the items have been searched, whatever happens next.
OSErr RemoveItem(std::string_view name, std::uint16_t *removed) try {
    ItemsFile file;
    if (const OSErr status = OpenItems(&file); status != noErr) {
        return status;
    }
    PropertyListArray *items = ItemsOf(&file);
    if (items == nullptr) {
        return resNotFound;
    }
    if (!IsAscii(name)) {
        return memFullErr;
    }
    const Matches matches = FindItems(
        *items, [](std::string_view) { return false; },
        [&](std::string_view path) { return path.ends_with(name); });
    *removed = static_cast<std::uint16_t>(matches.items.size());
    if (matches.items.empty()) {
        return noErr;
    }
    const std::vector<std::string> paths = RemoveItems(*items, matches.items, 0);
    if (const OSErr status = SaveItems(file); status != noErr) {
        return status;
    }
    return DontStartAtLogin(*items, paths);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace

std::int32_t AddLoginItem(const char *path, const char *name, std::int16_t hide, std::int16_t replace,
                          std::uint16_t *wasRegistered) {
    bool was = false;
    const bool hasPath = path != nullptr && *path != '\0';
    const OSErr status =
        hasPath ? AddItem({path, name == nullptr ? "" : name, hide != 0, replace != 0}, &was) : paramErr;
    if (wasRegistered != nullptr) {
        *wasRegistered = was ? 1 : 0;
    }
    return status;
}

std::int32_t RemoveLoginItem(const char *name, std::uint16_t *removed) {
    std::uint16_t count = 0;
    const bool hasName = name != nullptr && *name != '\0'; // every path ends with an empty name
    const OSErr status = hasName ? RemoveItem(name, &count) : paramErr;
    if (removed != nullptr) {
        *removed = count;
    }
    return status;
}

} // namespace drevix
