#include "platform/desktop/app_folder.h"

#include "platform/base/status.h"
#include "platform/plist/property_list.h"

#include <new>

namespace drevix {
namespace {

constexpr std::string_view kAppExtension = ".app";
constexpr OSErr kNoInfoList = -1;

std::string TextOf(const PropertyListDictionary &entries, std::string_view key) {
    const PropertyList *value = entries.Find(key);
    const auto *text = value == nullptr ? nullptr : value->As<std::string>();
    return text == nullptr ? std::string() : *text;
}

std::string_view WithoutSlashes(std::string_view path) {
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    return path;
}

} // namespace

OSErr ReadInfoList(const std::string &path, AppFolderInfo *info) try {
    PropertyList root(false);
    if (const OSErr status = ReadPropertyList(path, &root); status != noErr) {
        return status;
    }
    const auto *entries = root.As<PropertyListDictionary>();
    if (entries == nullptr) {
        return kNoInfoList;
    }
    *info = {TextOf(*entries, "CFBundleVersion"), TextOf(*entries, "CFBundleSignature")};
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

std::string InfoListOfAppFolder(std::string_view folder) {
    return std::string(WithoutSlashes(folder)) + "/Contents/Info.plist";
}

std::string NameOfAppFolder(std::string_view folder) {
    std::string_view name = WithoutSlashes(folder);
    name.remove_prefix(name.rfind('/') + 1); // npos + 1 is 0
    if (name.size() <= kAppExtension.size() || !name.ends_with(kAppExtension)) {
        return {};
    }
    return std::string(name.substr(0, name.size() - kAppExtension.size()));
}

std::string ProgramOfAppFolder(std::string_view folder) {
    const std::string name = NameOfAppFolder(folder);
    return name.empty() ? name : std::string(WithoutSlashes(folder)) + "/Contents/Linux/" + name;
}

} // namespace drevix
