#include "platform/catalog/catalog_names.h"

#include "platform/base/mac_roman.h"
#include "platform/catalog/named_files.h"
#include "platform/files/paths.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <span>
#include <utility>

namespace drevix {
namespace {

constexpr std::int32_t kFirstFolderId = 16; // the classic file system reserved lower ids
constexpr std::size_t kLongestExtension = 6;

// The folders with an id, starting at kFirstFolderId, and the ids by path.
std::vector<std::string> gFolders;
std::map<std::string, std::int32_t, std::less<>> gFolderIds;

// Mount points with a number, descending from kRootVolume.
std::vector<std::string> gVolumeRoots = {"/"};

// Entries whose Pascal name is lossy: (folder, Pascal name) to own name.
std::map<std::pair<std::string, std::string>, std::string> gLongNames;

// Converts file names between the systems: each system's separator may occur in the other's names.
std::string MacRomanName(std::string_view name) {
    std::string characters = MacRomanFromUtf8(name);
    std::ranges::replace(characters, ':', '/');
    return characters;
}

std::string OwnName(std::string_view characters) {
    std::string name =
        Utf8FromMacRoman({reinterpret_cast<const std::uint8_t *>(characters.data()), characters.size()});
    std::ranges::replace(name, '/', ':');
    return name;
}

} // namespace

Str63 Str63FromMacRoman(std::string_view text) {
    Str63 name{};
    const std::size_t length = std::min(text.size(), name.size() - 1);
    name[0] = static_cast<std::uint8_t>(length);
    std::copy_n(text.begin(), length, name.begin() + 1);
    return name;
}

std::int32_t FolderIdFromPath(const std::string &path) {
    if (path == "/") {
        return kRootFolder;
    }
    if (const auto row = gFolderIds.find(path); row != gFolderIds.end()) {
        return row->second;
    }
    // The path before its id: an id without a path, as after an error between the two, would lead nowhere.
    const auto id = kFirstFolderId + static_cast<std::int32_t>(gFolders.size());
    gFolders.push_back(path);
    gFolderIds.emplace(path, id);
    return id;
}

std::string FolderPath(std::int16_t volume, std::int32_t folder) {
    if (folder == kRootFolder || folder == kRootParentFolder) {
        return RootOfVolume(volume);
    }
    const auto index = static_cast<std::size_t>(folder - kFirstFolderId);
    return folder >= kFirstFolderId && index < gFolders.size() ? gFolders[index] : std::string();
}

std::int16_t NumberOfVolume(const std::string &root) {
    auto found = std::ranges::find(gVolumeRoots, root);
    if (found == gVolumeRoots.end()) {
        found = gVolumeRoots.insert(gVolumeRoots.end(), root);
    }
    return static_cast<std::int16_t>(kRootVolume - (found - gVolumeRoots.begin()));
}

std::string RootOfVolume(std::int16_t number) {
    if (number == 0 || number == kOnSystemDisk) {
        return "/";
    }
    const auto index = static_cast<std::size_t>(kRootVolume - number);
    return number <= kRootVolume && index < gVolumeRoots.size() ? gVolumeRoots[index] : std::string();
}

bool FitsPascalName(std::string_view name, std::size_t limit) {
    const std::string characters = MacRomanName(name);
    return characters.size() <= limit && OwnName(characters) == name;
}

std::string DistinctName(std::string_view name, std::size_t limit, std::uint32_t number) {
    char digits[10]; // '#', eight digits and a zero byte
    std::snprintf(digits, sizeof digits, "#%08X", number);
    std::string beginning = MacRomanName(name);
    std::string extension;
    const std::size_t dot = beginning.rfind('.');
    if (dot != beginning.npos && dot > 0 && beginning.size() - dot <= kLongestExtension) {
        extension = beginning.substr(dot);
        beginning.resize(dot);
    }
    const std::size_t rest = sizeof digits - 1 + extension.size();
    beginning.resize(std::min(beginning.size(), limit > rest ? limit - rest : 0));
    return beginning + digits + extension;
}

std::uint32_t NumberOfText(std::string_view text) {
    constexpr std::uint32_t kBasis = 0x811C9DC5;
    constexpr std::uint32_t kPrime = 0x01000193;
    std::uint32_t number = kBasis;
    for (const char character : text) {
        number = (number ^ static_cast<std::uint8_t>(character)) * kPrime;
    }
    return number;
}

Str63 NameOfEntry(const std::string &folder, std::string_view name) {
    constexpr std::size_t kLimit = std::tuple_size_v<Str63> - 1;
    if (FitsPascalName(name, kLimit)) {
        return Str63FromMacRoman(MacRomanName(name));
    }
    // The name rarely collides with another entry's; then the next number is used.
    for (std::uint32_t number = NumberOfText(name);; ++number) {
        const std::string distinct = DistinctName(name, kLimit, number);
        const auto [row, isNew] = gLongNames.try_emplace({folder, distinct}, name);
        if (isNew || row->second == name) {
            return Str63FromMacRoman(distinct);
        }
    }
}

std::string EntryOfName(const std::string &folder, const Str63 &name) {
    const std::string_view characters = PascalCharacters(name);
    if (characters.empty() || characters.find('\0') != characters.npos) {
        return {}; // the system would cut the name at a zero byte
    }
    const auto row = gLongNames.find({folder, std::string(characters)});
    return row != gLongNames.end() ? row->second : OwnName(characters);
}

std::string PathFromSpec(const FSSpec &spec) {
    std::string folder = FolderPath(spec.vRefNum, spec.parID);
    if (folder.empty() || spec.parID == kRootParentFolder) {
        return folder; // the root's parent contains only the volume itself
    }
    const std::string name = EntryOfName(folder, spec.name);
    return name.empty() ? std::string() : JoinPath(folder, name);
}

} // namespace drevix
