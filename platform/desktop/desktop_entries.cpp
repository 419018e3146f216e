#include "platform/desktop/desktop_entries.h"

#include "platform/base/ascii.h"
#include "platform/base/status.h"
#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"
#include "platform/files/shared_file.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <new>
#include <optional>
#include <set>
#include <tuple>

namespace drevix {
namespace {

namespace fs = std::filesystem;

constexpr OSErr kNoApplication = -1;
constexpr int kMaxFolderDepth = 8; // links can form a cycle
constexpr std::string_view kEntryExtension = ".desktop";

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// A string value, unescaped; unknown escapes stay.
std::string Unescaped(std::string_view value) {
    constexpr std::string_view kLetters = "sntr\\";
    constexpr std::string_view kMeanings = " \n\t\r\\";
    std::string text;
    text.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        const std::size_t meaning =
            value[i] == '\\' && i + 1 < value.size() ? kLetters.find(value[i + 1]) : std::string_view::npos;
        text += meaning == std::string_view::npos ? value[i] : kMeanings[meaning];
        i += meaning == std::string_view::npos ? 0 : 1;
    }
    return text;
}

// The languages for a name, best first: for "de_AT.UTF-8@euro" these are "de_AT@euro", "de_AT", "de@euro" and
// "de".
std::vector<std::string> LanguagesOf(std::string_view locale) {
    const std::size_t at = std::min(locale.find('@'), locale.size());
    const std::string modifier(locale.substr(at));
    const std::string_view place = locale.substr(0, std::min(locale.find('.'), at));
    const std::string language(place.substr(0, place.find('_')));
    std::vector<std::string> languages = {std::string(place) + modifier, std::string(place),
                                          language + modifier, language};
    std::erase(languages, std::string());
    return languages;
}

// The data read from an entry.
struct EntryText {
    std::string_view type;
    std::string_view icon;
    std::string_view exec;
    std::string_view name;
    std::size_t nameRank = 0; // lower: better language match
    bool isHidden = false;
    bool isInTerminal = false;
    std::string_view startupClass;
    std::string_view categories;
};

// How well the language of "Name[LANGUAGE]" matches; nullopt for a key that is not a name in a wanted
// language.
std::optional<std::size_t> RankOfNameKey(std::string_view key, const std::vector<std::string> &languages) {
    if (key == "Name") {
        return languages.size();
    }
    if (!key.starts_with("Name[") || !key.ends_with(']')) {
        return std::nullopt;
    }
    key = key.substr(5, key.size() - 6);
    const auto found = std::ranges::find(languages, key);
    return found == languages.end() ? std::nullopt
                                    : std::optional(static_cast<std::size_t>(found - languages.begin()));
}

void TakeLine(std::string_view key, std::string_view value, const std::vector<std::string> &languages,
              EntryText &entry) {
    if (key == "Type") {
        entry.type = value;
    } else if (key == "Icon") {
        entry.icon = value;
    } else if (key == "Exec") {
        entry.exec = value;
    } else if (key == "StartupWMClass") {
        entry.startupClass = value;
    } else if (key == "Categories") {
        entry.categories = value;
    } else if (key == "Terminal") {
        entry.isInTerminal = value == "true";
    } else if (key == "NoDisplay" || key == "Hidden") {
        entry.isHidden = entry.isHidden || value == "true";
    } else if (const auto rank = RankOfNameKey(key, languages); rank && !value.empty()) {
        if (entry.name.empty() || *rank < entry.nameRank) {
            entry.name = value;
            entry.nameRank = *rank;
        }
    }
}

EntryText ParseEntry(std::string_view text, const std::vector<std::string> &languages) {
    EntryText entry;
    std::size_t ignored = 0;
    FindEntryLine(text, &ignored, [&](const EntryLine &line) {
        TakeLine(line.key, line.value, languages, entry);
        return false;
    });
    return entry;
}

// The words of a command line. Within double quotes, blanks are ordinary and a backslash escapes the next
// character.
std::vector<std::string> QuotedWords(std::string_view line) {
    std::vector<std::string> words(1);
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"') {
            isQuoted = !isQuoted;
        } else if (isQuoted && line[i] == '\\' && i + 1 < line.size()) {
            words.back() += line[++i];
        } else if (line[i] == ' ' && !isQuoted) {
            words.emplace_back();
        } else {
            words.back() += line[i];
        }
    }
    std::erase(words, std::string());
    return words;
}

// A word with its field codes expanded; those for files are dropped.
std::string WithoutFieldCodes(std::string_view word, const DesktopEntry &entry) {
    std::string text;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] != '%' || i + 1 == word.size()) {
            text += word[i];
            continue;
        }
        const char code = word[++i];
        text += code == '%' ? "%" : code == 'c' ? entry.name : code == 'k' ? entry.path : std::string();
    }
    return text;
}

std::string Variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

// The absolute paths in a list "/a:/b"; uses `otherwise` if the list is empty.
std::vector<std::string> PathsOf(const std::string &list, std::string_view otherwise) {
    std::vector<std::string> paths;
    for (std::string_view rest = list.empty() ? otherwise : std::string_view(list); !rest.empty();) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        if (rest.starts_with('/')) {
            paths.emplace_back(rest.substr(0, end));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return paths;
}

// A folder of the user's that the catalog knows; none if it is missing.
std::vector<std::string> UsersFolder(OSType type) {
    std::int16_t volume = 0;
    std::int32_t own = 0;
    const OSErr status = FindFolder(kOnSystemDisk, type, kDontCreateFolder, &volume, &own);
    return status == noErr ? std::vector{FolderPath(volume, own)} : std::vector<std::string>();
}

// The folders of entries, the user's own first. Relative paths do not count.
std::vector<std::string> EntryFolders() {
    std::vector<std::string> folders = UsersFolder(kAppleMenuFolderType);
    for (const std::string &shared : PathsOf(Variable("XDG_DATA_DIRS"), "/usr/local/share:/usr/share")) {
        folders.push_back(JoinPath(shared, "applications"));
    }
    return folders;
}

// The entries found so far.
struct Search {
    std::string_view locale;
    std::set<std::string> ids;
    std::vector<DesktopEntry> entries;
};

void FindInFolder(const fs::path &folder, const std::string &idStart, int depth, Search &search) {
    std::error_code error;
    for (fs::directory_iterator found(folder, error), end; !error && found != end; found.increment(error)) {
        const std::string name = found->path().filename();
        std::error_code unreadable;
        if (found->is_directory(unreadable)) {
            if (depth < kMaxFolderDepth) {
                FindInFolder(found->path(), idStart + name + '-', depth + 1, search);
            }
        } else if (DesktopEntry entry;
                   name.ends_with(kEntryExtension) && search.ids.insert(idStart + name).second &&
                   ReadDesktopEntry(found->path(), search.locale, &entry) == noErr && !entry.isHidden) {
            entry.id = idStart + name;
            search.entries.push_back(std::move(entry));
        }
    }
}

// The parts of a list "a;b;".
std::vector<std::string> ListParts(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(';'), list.size());
        parts.emplace_back(Trimmed(list.substr(0, end)));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    std::erase(parts, std::string());
    return parts;
}

// The names of the files that associate applications with types: those for the current desktops, then the
// general one.
std::vector<std::string> AssociationFiles() {
    constexpr const char *kFile = "mimeapps.list";
    std::vector<std::string> files;
    std::string desktops = Variable("XDG_CURRENT_DESKTOP");
    std::ranges::replace(desktops, ':', ';');
    for (const std::string &desktop : ListParts(desktops)) {
        files.push_back(WithSmallLetters(desktop) + "-" + kFile);
    }
    files.emplace_back(kFile);
    return files;
}

// The default entries for a type in such a file, best first.
std::vector<std::string> DefaultsIn(std::string_view text, std::string_view type) {
    bool isInGroup = false;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = Trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = std::min(line.find('='), line.size());
        if (line.starts_with('[')) {
            isInGroup = line == "[Default Applications]";
        } else if (isInGroup && equals < line.size() && Trimmed(line.substr(0, equals)) == type) {
            return ListParts(line.substr(equals + 1));
        }
    }
    return {};
}

} // namespace

bool FindEntryLine(std::string_view text, std::size_t *groupEnd,
                   const std::function<bool(const EntryLine &)> &visit) {
    bool isInGroup = false; // other groups describe additional actions
    for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        const std::string_view line = Trimmed(text.substr(start, end - start));
        const std::size_t equals = line.starts_with('#') ? line.npos : line.find('=');
        if (line.starts_with('[')) {
            isInGroup = line == kDesktopEntryGroup;
        } else if (isInGroup && equals != line.npos &&
                   visit({Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)), start, end})) {
            return true;
        }
        if (isInGroup && !line.empty()) {
            *groupEnd = std::min(end + 1, text.size());
        }
    }
    return false;
}

std::string MessagesLocale() {
    for (const char *name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (std::string locale = Variable(name); !locale.empty()) {
            return locale;
        }
    }
    return {};
}

std::vector<std::string> CommandOfEntry(const DesktopEntry &entry) {
    std::vector<std::string> words;
    for (const std::string &word : QuotedWords(entry.exec)) {
        if (word == "%i") {
            if (!entry.icon.empty()) {
                words.insert(words.end(), {"--icon", entry.icon});
            }
        } else if (std::string filled = WithoutFieldCodes(word, entry); !filled.empty()) {
            words.push_back(std::move(filled));
        }
    }
    if (entry.isInTerminal && !words.empty()) {
        words.insert(words.begin(), {"x-terminal-emulator", "-e"});
    }
    return words;
}

OSErr ReadDesktopEntry(const std::string &path, std::string_view locale, DesktopEntry *entry) try {
    std::string text;
    if (const OSErr status = ReadSharedFile(path, kDesktopEntryMaxBytes, &text); status != noErr) {
        return status;
    }
    const EntryText found = ParseEntry(text, LanguagesOf(locale));
    if (found.type != "Application" || found.name.empty()) {
        return kNoApplication;
    }
    *entry = {LeafOfPath(path),
              path,
              Unescaped(found.name),
              Unescaped(found.icon),
              found.isHidden,
              Unescaped(found.exec),
              found.isInTerminal,
              Unescaped(found.startupClass),
              Unescaped(found.categories)};
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

std::vector<DesktopEntry> InstalledApplications(std::string_view locale) try {
    Search search = {locale, {}, {}};
    for (const std::string &folder : EntryFolders()) {
        FindInFolder(folder, {}, 0, search);
    }
    return std::move(search.entries);
} catch (const std::bad_alloc &) {
    return {};
}

bool FindDesktopEntry(const std::string &id, std::string_view locale, DesktopEntry *entry) try {
    if (!id.ends_with(kEntryExtension) || id.find('/') != std::string::npos) {
        return false;
    }
    // The first "-" of an id may stand for a subfolder that contains the entry.
    std::string inFolder = id;
    if (const std::size_t dash = id.find('-'); dash != std::string::npos) {
        inFolder[dash] = '/';
    }
    for (const std::string &folder : EntryFolders()) {
        for (const std::string &name : {id, inFolder}) {
            if (ReadDesktopEntry(JoinPath(folder, name), locale, entry) == noErr) {
                entry->id = id;
                return true;
            }
        }
    }
    return false;
} catch (const std::bad_alloc &) {
    return false;
}

bool FindDefaultApplication(std::string_view type, DesktopEntry *entry) try {
    std::vector<std::string> folders = UsersFolder(kPreferencesFolderType);
    for (std::vector<std::string> more : {PathsOf(Variable("XDG_CONFIG_DIRS"), "/etc/xdg"), EntryFolders()}) {
        std::ranges::move(more, std::back_inserter(folders));
    }
    for (const std::string &folder : folders) {
        for (const std::string &name : AssociationFiles()) {
            std::string text;
            // A missing or unreadable list names nothing.
            std::ignore = ReadSharedFile(JoinPath(folder, name), kDesktopEntryMaxBytes, &text);
            for (const std::string &id : DefaultsIn(text, type)) {
                if (FindDesktopEntry(id, MessagesLocale(), entry)) {
                    return true;
                }
            }
        }
    }
    return false;
} catch (const std::bad_alloc &) {
    return false;
}

} // namespace drevix
