// The installed applications, from their desktop entries (Desktop Entry Specification 1.5) in the folders of
// the XDG Base Directory Specification.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// One application. Texts are the entry's UTF-8, possibly malformed.
struct DesktopEntry {
    std::string id;   // path below the applications folder with "-" for "/": "org.kde.krita.desktop"
    std::string path; // absolute
    std::string name; // in the user's language, if available
    std::string icon; // a name in the icon theme or an absolute path; may be empty
    bool isHidden;    // not to be offered: removed, or hidden from menus
    std::string exec; // its command line, with field codes; may be empty
    bool isInTerminal;
    std::string startupClass = {}; // the class that its windows have (StartupWMClass); may be empty
    std::string categories = {};   // "Network;WebBrowser;", may be empty
};

// The longest file that is read as an entry.
inline constexpr std::size_t kDesktopEntryMaxBytes = std::size_t{1} << 20;

// One line "KEY=VALUE" of the entry's main group: its contents and its position in the text.
struct EntryLine {
    std::string_view key;
    std::string_view value;
    std::size_t start;
    std::size_t end; // its line end, or the end of the text
};
inline constexpr std::string_view kDesktopEntryGroup = "[Desktop Entry]";

// Calls `visit` with each such line, key and value trimmed, until it returns true; false if it never does.
// *groupEnd gets the position after the last non-empty line visited in the group; unchanged if there is no
// group.
bool FindEntryLine(std::string_view text, std::size_t *groupEnd,
                   const std::function<bool(const EntryLine &)> &visit);

// The locale for messages, such as "de_AT.UTF-8": the first non-empty of $LC_ALL, $LC_MESSAGES and $LANG.
[[nodiscard]] std::string MessagesLocale();

// Reads an application's entry; `id` is the file's name. Skips invalid lines. noErr; -1, with *entry
// unchanged, for a file that does not describe an application (another type, or no name), is too large or not
// a regular file; memFullErr; or the file's error.
[[nodiscard]] OSErr ReadDesktopEntry(const std::string &path, std::string_view locale, DesktopEntry *entry);

// The words of the command that starts an entry's application without a file: quotes and field codes
// resolved, preceded by a terminal if the program needs one. Empty if the entry has no command.
[[nodiscard]] std::vector<std::string> CommandOfEntry(const DesktopEntry &entry);

// All applications to offer, unordered, from "applications" and its subfolders in $XDG_DATA_HOME and
// $XDG_DATA_DIRS. If ids clash the first counts, even a hidden one. Skips unreadable folders and files. Empty
// if out of memory.
[[nodiscard]] std::vector<DesktopEntry> InstalledApplications(std::string_view locale);

// The entry of an id, including ".desktop", in the first folder that has it, even if hidden. False, with
// *entry unchanged, if there is none.
[[nodiscard]] bool FindDesktopEntry(const std::string &id, std::string_view locale, DesktopEntry *entry);

// The application for a MIME type or a URI scheme ("x-scheme-handler/mailto"), by the lists of the user, the
// desktop and the system (MIME Applications Associations Specification 1.0.1). False, with *entry unchanged,
// if none of them names an installed one.
[[nodiscard]] bool FindDefaultApplication(std::string_view type, DesktopEntry *entry);

} // namespace drevix
