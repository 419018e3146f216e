// The path of a login item: walks up the catalog from the item to the root of its volume.
#include "helperlink/login_items.h"

#include "platform/base/status.h"
#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace drevix {
namespace {

constexpr std::int16_t kSmallestBuffer = 128;
constexpr std::string_view kVolumes = "/Volumes";

// A name as it appears in a path: the two systems' separators are swapped.
std::string PathName(const Str63 &name) {
    std::string text = stringWithPascalString(name.data());
    std::ranges::replace(text, '/', ':');
    return text;
}

std::string Escaped(std::string_view name) {
    std::string escaped;
    for (const char c : name) {
        const bool isPlain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.';
        escaped += isPlain ? "" : "\\";
        escaped += c;
    }
    return escaped;
}

// Prepends text to the path if the result fits into a buffer of that size.
void Prepend(std::string *path, const std::string &text, std::size_t size) {
    if (path->size() + text.size() < size - 1) {
        path->insert(0, text);
    }
}

// Prepends the names of the folders from `parent` up. *volume gets the item's volume.
OSErr PrependFolders(std::string *path, std::int32_t parent, std::size_t size, bool escapes,
                     std::int16_t *volume) {
    for (CatalogInfo info = {};; parent = info.ioDrParID) {
        info.ioVRefNum = *volume;
        info.ioFDirIndex = -1;
        info.ioDrDirID = parent;
        if (const OSErr status = PBGetCatInfoSync(&info); status != noErr) {
            return status;
        }
        *volume = info.ioVRefNum;
        const bool isVolumeRoot = info.ioDrDirID == kRootFolder;
        if (isVolumeRoot && *volume == kRootVolume) {
            return noErr;
        }
        const std::string name = PathName(info.ioName);
        Prepend(path, '/' + (escapes ? Escaped(name) : name), size);
        if (isVolumeRoot) {
            return noErr;
        }
    }
}

OSErr MakePath(const FSSpec &item, std::size_t size, bool escapes, std::string *path) try {
    std::int16_t volume = kRootVolume;
    std::int32_t root = kRootFolder;
    if (const OSErr status =
            FindFolder(kOnSystemDisk, kVolumeRootFolderType, kDontCreateFolder, &volume, &root);
        status != noErr) {
        return status;
    }
    const std::int16_t bootVolume = volume;
    const bool isDefault = item.vRefNum == 0 || item.vRefNum == kOnSystemDisk;
    volume = isDefault ? bootVolume : item.vRefNum;
    const bool isVolume = item.parID == kRootParentFolder;
    std::string made = "/";
    if (!isVolume || volume != bootVolume) {
        made += PathName(item.name);
    }
    if (made.size() >= size) {
        return paramErr;
    }
    const OSErr status = isVolume ? OSErr{noErr} : PrependFolders(&made, item.parID, size, escapes, &volume);
    if (volume != bootVolume) {
        Prepend(&made, std::string(kVolumes), size);
    }
    *path = std::move(made);
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace

std::int32_t GetLoginPath(const FSSpec *item, char *path, std::int16_t size, std::uint16_t escape,
                          std::uint16_t *length) {
    std::string made;
    const bool canBeMade = item != nullptr && path != nullptr && size >= kSmallestBuffer;
    const OSErr status =
        canBeMade ? MakePath(*item, static_cast<std::size_t>(size), escape != 0, &made) : paramErr;
    if (!made.empty()) {
        std::memcpy(path, made.c_str(), made.size() + 1);
    }
    if (length != nullptr) {
        *length = static_cast<std::uint16_t>(made.size());
    }
    return status;
}

} // namespace drevix
