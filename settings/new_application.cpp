#include "settings/new_application.h"

#include "platform/base/status.h"
#include "platform/desktop/app_folder.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

namespace drevix {
namespace {

constexpr std::string_view kEntryExtension = ".desktop";
constexpr std::size_t kSignatureLength = 4;

// The signature in an application's property list: its first four characters in Mac OS Roman; none if
// shorter.
OSType SignatureOf(const AppFolderInfo &info) {
    Str255 text{};
    getPascalString(info.signature, text.data());
    if (text[0] < kSignatureLength) {
        return kNoSignature;
    }
    OSType signature = 0;
    for (std::size_t i = 1; i <= kSignatureLength; ++i) {
        signature = (signature << 8) | text[i];
    }
    return signature;
}

} // namespace

NewApplication ApplicationOfEntry(const DesktopEntry &entry) {
    std::string_view name(entry.path);
    name.remove_prefix(name.rfind('/') + 1);
    if (name.ends_with(kEntryExtension)) {
        name.remove_suffix(kEntryExtension.size());
    }
    return {kNoSignature, std::string(name), entry.name};
}

NewApplication ApplicationOfPath(const std::string &path, std::string_view locale) {
    DesktopEntry entry;
    if (path.ends_with(kEntryExtension) && ReadDesktopEntry(path, locale, &entry) == noErr) {
        return ApplicationOfEntry(entry);
    }
    AppFolderInfo info;
    const bool isFolder = ReadInfoList(InfoListOfAppFolder(path), &info) == noErr;
    const std::string name = AppFileNameFromPath(path);
    return {isFolder ? SignatureOf(info) : kNoSignature, name, name};
}

} // namespace drevix
