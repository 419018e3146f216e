#include "platform/autostart.h"

#include "platform/desktop_entries.h"
#include "platform/disk.h"
#include "platform/file_update.h"
#include "platform/status.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <new>

namespace drevix {
namespace {

constexpr std::string_view kGroup = "[Desktop Entry]";
constexpr std::string_view kOurMark = "X-Drevix-LoginItem";
constexpr mode_t kFolderMode = 0700; // as the base directory specification asks for

// The escapes of a value of type "string".
std::string EscapedValue(std::string_view text) {
    std::string value;
    for (const char character : text) {
        switch (character) {
        case '\\':
            value += "\\\\";
            break;
        case '\n':
            value += "\\n";
            break;
        case '\r':
            value += "\\r";
            break;
        case '\t':
            value += "\\t";
            break;
        default:
            value += character;
        }
    }
    return value;
}

std::string QuotedArgument(std::string_view text) {
    std::string argument = "\"";
    for (const char character : text) {
        if (std::string_view("\"`$\\").find(character) != std::string_view::npos) {
            argument += '\\';
        }
        argument += character;
        if (character == '%') {
            argument += '%'; // one alone would start a field code
        }
    }
    return argument + '"';
}

OSErr FindEntryPath(std::string_view name, FolderCreation creation, std::string *path) {
    if (name.empty() || name.find('/') != std::string_view::npos) {
        return bdNamErr;
    }
    FSSpec folder = {};
    const OSErr status =
        FindFolder(kOnSystemDisk, kPreferencesFolderType, creation, &folder.vRefNum, &folder.parID);
    if (status != noErr) {
        return status;
    }
    folder.name = {9, 'a', 'u', 't', 'o', 's', 't', 'a', 'r', 't'};
    const std::string folderPath = PathFromSpec(folder);
    if (creation == kCreateFolder && CurrentDisk().MakeFolder(folderPath.c_str(), kFolderMode) != 0 &&
        errno != EEXIST) {
        return StatusFromErrno(errno);
    }
    *path = folderPath + '/' + std::string(name) + ".desktop";
    return noErr;
}

// One line of the entry's own group: where its key and its value lie in the text.
struct Line {
    std::size_t start;
    std::size_t end; // its line end, or the end of the text
    std::string_view key;
};

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t start = text.find_first_not_of(kBlanks);
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

// Calls `visit` with each line of the entry's group until it says true; false when it never does. `end`, if
// given, becomes the place behind the group's last line that is not empty; npos when there is no group.
template <typename Visit>
bool FindLine(std::string_view text, std::size_t *end, const Visit &visit) {
    bool isInGroup = false;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t lineEnd = std::min(text.find('\n', start), text.size());
        const std::string_view line = Trimmed(text.substr(start, lineEnd - start));
        if (line.starts_with('[')) {
            isInGroup = line == kGroup;
        } else if (isInGroup && visit(Line{start, lineEnd, Trimmed(line.substr(0, line.find('=')))})) {
            return true;
        }
        if (isInGroup && !line.empty()) {
            *end = std::min(lineEnd + 1, text.size());
        }
        start = lineEnd + 1;
    }
    return false;
}

bool IsOurs(std::string_view text) {
    std::size_t ignored = 0;
    return FindLine(text, &ignored, [](const Line &line) { return line.key == kOurMark; });
}

// Gives a key of the entry's group a value: in its line, else in a new line at the group's end.
void SetKey(std::string &text, std::string_view key, std::string_view value) {
    const std::string wanted = std::string(key) + '=' + std::string(value);
    std::size_t groupEnd = std::string::npos;
    Line found = {};
    if (FindLine(text, &groupEnd, [&](const Line &line) {
            found = line;
            return line.key == key;
        })) {
        text.replace(found.start, found.end - found.start, wanted);
    } else {
        const bool endsLine = groupEnd == 0 || text[groupEnd - 1] == '\n';
        text.insert(groupEnd, (endsLine ? "" : "\n") + wanted + '\n');
    }
}

// The entry that is there; fnfErr when none is, -1 for what is no file of a sensible size.
OSErr ReadEntry(const std::string &path, std::string *text) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) { // to open a pipe would wait for its writer
        return error ? StatusFromErrno(error.value()) : -1;
    }
    if (std::filesystem::file_size(path, error) > kDesktopEntryMaxBytes) {
        return -1;
    }
    return ReadWholeFile(path, text);
}

std::string NewEntry(std::string_view name) {
    std::string text(kGroup);
    return text + "\nType=Application\nName=" + EscapedValue(name) + "\nNoDisplay=true\n" +
           std::string(kOurMark) + "=true\n";
}

} // namespace

std::string ExecOfProgram(std::string_view program) {
    const std::string argument = QuotedArgument(program);
    // A program's own path may hold no "=", and some desktops look for it before they make "%%" one; what a
    // shell is given may hold both.
    const bool needsShell = program.find_first_of("=%") != std::string_view::npos;
    return EscapedValue(needsShell ? R"(/bin/sh -c "exec \"\$0\"" )" + argument : argument);
}

OSErr WriteAutostartEntry(std::string_view name, std::string_view program) try {
    std::string path;
    if (const OSErr status = FindEntryPath(name, kCreateFolder, &path); status != noErr) {
        return status;
    }
    std::string before;
    const OSErr status = ReadEntry(path, &before);
    if (status != fnfErr && (status != noErr || !IsOurs(before))) {
        return status == -1 ? OSErr{noErr} : status; // another program's
    }
    std::string text = status == fnfErr ? NewEntry(name) : before;
    SetKey(text, "Exec", ExecOfProgram(program));
    SetKey(text, "TryExec", EscapedValue(program)); // a panel that was removed is passed over
    return text == before ? OSErr{noErr} : ReplaceWholeFile(path, text);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr RemoveAutostartEntry(std::string_view name) try {
    std::string path;
    std::string text;
    if (const OSErr status = FindEntryPath(name, kDontCreateFolder, &path); status != noErr) {
        return status == fnfErr ? OSErr{noErr} : status;
    }
    if (const OSErr status = ReadEntry(path, &text); status != noErr) {
        return status == fnfErr || status == dirNFErr || status == -1 ? OSErr{noErr} : status;
    }
    return !IsOurs(text) || CurrentDisk().Remove(path.c_str()) == 0 ? OSErr{noErr} : StatusFromErrno(errno);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
