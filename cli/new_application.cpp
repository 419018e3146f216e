#include "cli/new_application.h"

#include "platform/disk.h"
#include "platform/file_update.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <string_view>
#include <vector>

namespace drevix {
namespace {

constexpr std::string_view kDesktopExtension = ".desktop";
constexpr std::string_view kDesktopGroup = "[Desktop Entry]";
constexpr std::string_view kNothingAdded = "nothing was added";

Outcome NoApplication(const std::string &path, std::string_view why) {
    return Failed("cannot add " + path + ": " + std::string(why) +
                  "; nothing was added; give an application");
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// A value's escapes: "\s" is a blank, "\n" and the other control characters do not belong in a name.
std::string Unescaped(std::string_view value) {
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            text.push_back(value[i]);
        } else {
            ++i;
            text.push_back(value[i] == '\\' ? '\\' : ' ');
        }
    }
    return text;
}

using DesktopEntry = std::map<std::string, std::string, std::less<>>;

// The keys of the main group; of a key given twice the first counts.
DesktopEntry ParseDesktopEntry(std::string_view text) {
    DesktopEntry entry;
    bool inGroup = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = Trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = line.find('=');
        if (line.starts_with('[')) {
            inGroup = line == kDesktopGroup;
        } else if (inGroup && !line.starts_with('#') && equals != line.npos) {
            entry.emplace(Trimmed(line.substr(0, equals)), Unescaped(Trimmed(line.substr(equals + 1))));
        }
    }
    return entry;
}

// The keys under which a name in this language may stand, best first: with "de_AT.UTF-8@euro" those of
// "de_AT@euro", "de_AT", "de@euro" and "de", and the untranslated one.
std::vector<std::string> NameKeys(std::string_view language) {
    const std::size_t at = language.find('@');
    const std::string modifier(at == language.npos ? "" : language.substr(at));
    const std::string_view place = language.substr(0, language.find_first_of(".@"));
    const std::string country(place);
    const std::string plain(place.substr(0, place.find('_')));
    std::vector<std::string> keys;
    for (const std::string &locale : {country + modifier, country, plain + modifier, plain}) {
        keys.push_back("Name[" + locale + "]");
    }
    keys.emplace_back("Name");
    return keys;
}

Outcome DescribeDesktopEntry(const std::string &path, const std::string &language,
                             NewApplication *application) {
    std::string text;
    if (const OSErr status = ReadWholeFile(path, &text); status != noErr) {
        return FailedFile("cannot read", path, status, kNothingAdded);
    }
    const DesktopEntry entry = ParseDesktopEntry(text);
    const auto type = entry.find("Type");
    if (type == entry.end() || type->second != "Application") {
        return NoApplication(path, "it is not the desktop entry of an application");
    }
    for (const std::string &key : NameKeys(language)) {
        if (const auto name = entry.find(key); name != entry.end() && !name->second.empty()) {
            application->shownName = name->second;
            break;
        }
    }
    application->fileName.resize(application->fileName.size() - kDesktopExtension.size());
    return Done();
}

Outcome DescribeFolder(const std::string &path) {
    struct stat found {};
    const std::string information = path + "/Contents/Info.plist";
    return CurrentDisk().StatusAt(information.c_str(), &found) == 0
               ? Done()
               : NoApplication(path, "the folder is no application");
}

} // namespace

Outcome DescribeApplication(const std::string &path, const std::string &language,
                            NewApplication *application) {
    *application = {};
    application->fileName = AppFileNameFromPath(path);
    std::string target;
    struct stat found {};
    OSErr status = FollowLinks(path, &target);
    if (status == noErr && CurrentDisk().StatusAt(target.c_str(), &found) != 0) {
        status = StatusFromErrno(errno);
    }
    if (status != noErr) {
        return FailedFile("cannot add", path, status, kNothingAdded);
    }
    if (application->fileName.empty()) {
        return NoApplication(path, "it has no name");
    }
    if (S_ISDIR(found.st_mode)) {
        return DescribeFolder(path);
    }
    if (application->fileName.size() > kDesktopExtension.size() &&
        application->fileName.ends_with(kDesktopExtension)) {
        return DescribeDesktopEntry(path, language, application);
    }
    return S_ISREG(found.st_mode) && (found.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0
               ? Done()
               : NoApplication(path, "it is no application, desktop entry or program");
}

std::string PreferredLanguage() {
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const char *value = std::getenv(name); value != nullptr && *value != '\0') {
            return value;
        }
    }
    return {};
}

} // namespace drevix
