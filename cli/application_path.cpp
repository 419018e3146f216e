#include "cli/application_path.h"

#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/desktop/app_folder.h"
#include "platform/desktop/desktop_entries.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"

#include <cerrno>
#include <string_view>

namespace drevix {
namespace {

constexpr std::string_view kDesktopExtension = ".desktop";
constexpr std::string_view kNothingAdded = ToTranslate("nothing was added");

Outcome NoApplication(const std::string &path, std::string_view why) {
    return Failed(
        Translated("cannot add %1: %2; nothing was added; name an application", path, Translated(why)));
}

Outcome CheckDesktopEntry(const std::string &path, const std::string &language) {
    DesktopEntry entry;
    const OSErr status = ReadDesktopEntry(path, language, &entry);
    if (status == -1) {
        return NoApplication(path, ToTranslate("it is not the desktop entry of an application"));
    }
    return status == noErr ? Done() : FailedFile("cannot read %1", path, status, kNothingAdded);
}

Outcome CheckFolder(const std::string &path) {
    struct stat found {};
    return CurrentDisk().StatusAt(InfoListOfAppFolder(path).c_str(), &found) == 0
               ? Done()
               : NoApplication(path, ToTranslate("the folder is not an application"));
}

Outcome CheckApplication(const std::string &path, const std::string &language, const struct stat &found) {
    if (S_ISDIR(found.st_mode)) {
        return CheckFolder(path);
    }
    if (path.ends_with(kDesktopExtension)) {
        return CheckDesktopEntry(path, language);
    }
    return S_ISREG(found.st_mode) && (found.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0
               ? Done()
               : NoApplication(path, ToTranslate("it is not an application, desktop entry or program"));
}

} // namespace

Outcome DescribeApplication(const std::string &path, const std::string &language,
                            NewApplication *application) {
    std::string target;
    struct stat found {};
    OSErr status = FollowLinks(path, &target);
    if (status == noErr && CurrentDisk().StatusAt(target.c_str(), &found) != 0) {
        status = StatusFromErrno(errno);
    }
    if (status != noErr) {
        return FailedFile("cannot add %1", path, status, kNothingAdded);
    }
    *application = ApplicationOfPath(path, language);
    const std::string &name = application->fileName;
    return name.empty() || name == "." || name == ".."
               ? NoApplication(path, ToTranslate("its path does not end in a name"))
               : CheckApplication(path, language, found);
}

} // namespace drevix
