#include "platform/desktop/resources.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"

#include <new>

namespace drevix {

OSErr FindResourceFolder(FSRef *folder) try {
    std::string program;
    if (const OSErr status = FollowLinks("/proc/self/exe", &program); status != noErr) {
        return status;
    }
    std::string path = FolderOfPath(FolderOfPath(program)) + "/share/drevix-settings";
    if (const OSErr status = FollowLinks(path, &path); status != noErr) {
        return status;
    }
    struct stat found {};
    if (CurrentDisk().StatusAt(path.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) {
        return fnfErr;
    }
    folder->path = path;
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
