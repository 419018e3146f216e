#include "platform/desktop/autostart.h"

#include "platform/base/status.h"
#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "platform/desktop/desktop_entries.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"
#include "platform/files/shared_file.h"

#include <new>

namespace drevix {
namespace {

constexpr std::string_view kOurMark = "X-Drevix-LoginItem";

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
            argument += '%'; // a single % would start a field code
        }
    }
    return argument + '"';
}

OSErr FindEntryPath(std::string_view name, FolderCreation creation, std::string *path) {
    if (name.empty() || name.find('/') != std::string_view::npos) {
        return bdNamErr;
    }
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    const OSErr status = FindFolder(kOnSystemDisk, kStartupFolderType, creation, &volume, &folder);
    if (status == noErr) {
        *path = JoinPath(FolderPath(volume, folder), name) + ".desktop";
    }
    return status;
}

bool IsOurs(std::string_view text) {
    std::size_t ignored = 0;
    return FindEntryLine(text, &ignored, [](const EntryLine &line) { return line.key == kOurMark; });
}

// Sets a key in the entry's group, which must exist: in its line, else in a new line at the group's end.
void SetKey(std::string &text, std::string_view key, std::string_view value) {
    const std::string wanted = std::string(key) + '=' + std::string(value);
    std::size_t groupEnd = 0;
    EntryLine found = {};
    if (FindEntryLine(text, &groupEnd, [&](const EntryLine &line) {
            found = line;
            return line.key == key;
        })) {
        text.replace(found.start, found.end - found.start, wanted);
    } else {
        const bool endsLine = text[groupEnd - 1] == '\n';
        text.insert(groupEnd, (endsLine ? "" : "\n") + wanted + '\n');
    }
}

std::string NewEntry(std::string_view name) {
    std::string text(kDesktopEntryGroup);
    return text + "\nType=Application\nName=" + EscapedValue(name) + "\nNoDisplay=true\n" +
           std::string(kOurMark) + "=true\n";
}

} // namespace

std::string ExecOfProgram(std::string_view program) {
    const std::string argument = QuotedArgument(program);
    // A program's path must not contain "=", and some desktops look it up before turning "%%" into "%"; the argument of
    // a program that starts another may contain both. "nice" changes nothing with 0, and no shell reads the path.
    const bool needsStarter = program.find_first_of("=%") != std::string_view::npos;
    return EscapedValue(needsStarter ? "nice -n 0 " + argument : argument);
}

OSErr WriteAutostartEntry(std::string_view name, std::string_view program) try {
    std::string path;
    if (const OSErr status = FindEntryPath(name, kCreateFolder, &path); status != noErr) {
        return status;
    }
    std::string before;
    const OSErr status = ReadSharedFile(path, kDesktopEntryMaxBytes, &before);
    if (status != fnfErr && (status != noErr || !IsOurs(before))) {
        return status == -1 ? OSErr{noErr} : status; // another program's
    }
    std::string text = status == fnfErr ? NewEntry(name) : before;
    SetKey(text, "Exec", ExecOfProgram(program));
    SetKey(text, "TryExec", EscapedValue(program)); // skipped if the panel was uninstalled
    return text == before ? OSErr{noErr} : ReplaceWholeFile(path, text);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr RemoveAutostartEntry(std::string_view name) try {
    std::string path;
    std::string text;
    OSErr status = FindEntryPath(name, kDontCreateFolder, &path);
    if (status == noErr) {
        status = ReadSharedFile(path, kDesktopEntryMaxBytes, &text);
    }
    if (status != noErr) {
        return status == fnfErr || status == dirNFErr || status == -1 ? OSErr{noErr} : status;
    }
    return !IsOurs(text) || CurrentDisk().Remove(path.c_str()) == 0 ? OSErr{noErr} : LastError();
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
