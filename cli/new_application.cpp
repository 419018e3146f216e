#include "cli/new_application.h"

#include "platform/desktop_entries.h"
#include "platform/disk.h"
#include "platform/file_update.h"
#include "platform/status.h"
#include "settings/prefs_list.h"

#include <cerrno>
#include <string_view>

namespace drevix {
namespace {

constexpr std::string_view kDesktopExtension = ".desktop";
constexpr std::string_view kNothingAdded = "nothing was added";

Outcome NoApplication(const std::string &path, std::string_view why) {
    return Failed("cannot add " + path + ": " + std::string(why) +
                  "; nothing was added; give an application");
}

Outcome DescribeDesktopEntry(const std::string &path, const std::string &language,
                             NewApplication *application) {
    DesktopEntry entry;
    const OSErr status = ReadDesktopEntry(path, language, &entry);
    if (status == -1) {
        return NoApplication(path, "it is not the desktop entry of an application");
    }
    if (status != noErr) {
        return FailedFile("cannot read", path, status, kNothingAdded);
    }
    application->shownName = entry.name;
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

} // namespace drevix
