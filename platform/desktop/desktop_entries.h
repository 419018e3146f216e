// The applications that are installed, as their desktop entries describe them. The form is the Desktop Entry
// Specification 1.5, the folders are those of the XDG Base Directory Specification.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// One application. Texts are UTF-8 as the entry has them: well-formed only if its author took care.
struct DesktopEntry {
    std::string id;   // path below the applications folder with "-" for "/": "org.kde.krita.desktop"
    std::string path; // absolute
    std::string name; // in the user's language where the entry has it
    std::string icon; // a name in the icon theme or an absolute path; may be empty
    bool isHidden;    // is not to be offered: removed, or kept out of menus
    std::string exec; // its command line, with field codes; may be empty
    bool isInTerminal;
    std::string startupClass = {}; // the class that its windows have (StartupWMClass); may be empty
    std::string categories = {};   // "Network;WebBrowser;", may be empty
};

// The longest file that is read as an entry.
inline constexpr std::size_t kDesktopEntryMaxBytes = std::size_t{1} << 20;

// One line "KEY=VALUE" of an entry's own group: what it says, and where it lies in the text.
struct EntryLine {
    std::string_view key;
    std::string_view value;
    std::size_t start;
    std::size_t end; // its line end, or the end of the text
};
inline constexpr std::string_view kDesktopEntryGroup = "[Desktop Entry]";

// Calls `visit` with each such line, blanks around key and value taken off, until it says true; false when it
// never does. *groupEnd becomes the place behind the last line of the group that is not empty, of those that
// were come to; it stays as it is where there is no group.
bool FindEntryLine(std::string_view text, std::size_t *groupEnd,
                   const std::function<bool(const EntryLine &)> &visit);

// The language of messages, such as "de_AT.UTF-8": the first of $LC_ALL, $LC_MESSAGES and $LANG that is not
// empty.
[[nodiscard]] std::string MessagesLocale();

// Reads the entry of an application; `id` is the file's own name. Invalid lines are skipped.
// noErr; -1, with *entry unchanged, for a file that describes no application (another type, or without a
// name) or is no regular file of a sensible size; memFullErr; or the file's error.
[[nodiscard]] OSErr ReadDesktopEntry(const std::string &path, std::string_view locale, DesktopEntry *entry);

// The words of the command that starts an entry's application without a file: quotes and field codes are done
// with, and a terminal is put before a program that needs one. Empty for an entry without a command.
[[nodiscard]] std::vector<std::string> CommandOfEntry(const DesktopEntry &entry);

// Every application that is to be offered, in no particular order: the folders "applications" in
// $XDG_DATA_HOME and $XDG_DATA_DIRS with their subfolders. Of two entries with one id the first counts, and a
// hidden one hides those behind it. Folders and files that cannot be read are left out. Empty without memory.
[[nodiscard]] std::vector<DesktopEntry> InstalledApplications(std::string_view locale);

// The entry of an id, ".desktop" included, in the folder that counts for it, hidden or not. False, with *entry
// unchanged, when there is none.
[[nodiscard]] bool FindDesktopEntry(const std::string &id, std::string_view locale, DesktopEntry *entry);

// The application that opens a MIME type or the addresses of a scheme ("x-scheme-handler/mailto"), as the lists
// say that the user, his desktop and the system keep (MIME Applications Associations Specification 1.0.1). False,
// with *entry unchanged, when none of them names one that is installed.
[[nodiscard]] bool FindDefaultApplication(std::string_view type, DesktopEntry *entry);

} // namespace drevix
