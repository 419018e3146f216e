#include "platform/files/file_watch.h"

#include "platform/base/status.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"

#include <array>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace drevix {
namespace {

constexpr unsigned kEvents = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE |
                             IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

bool IsLink(const std::string &path) {
    std::string target;
    return FollowLinks(path, &target) == noErr && target != path;
}

} // namespace

FileWatch::FileWatch(const std::string &path)
    : fPath(path), fName(path.substr(path.rfind('/') + 1)),
      fDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    Watch();
}

// The number of a watch on the nearest folder that is there; the same folder has the same one again.
int FileWatch::WatchNearest() const {
    std::string folder = FolderOfPath(fPath);
    int watch = -1;
    while ((watch = ::inotify_add_watch(Descriptor(), folder.c_str(), kEvents)) < 0) {
        const std::string above = FolderOfPath(folder);
        if (above == folder) {
            break;
        }
        folder = above;
    }
    return watch;
}

// Until it is the same folder twice: another may have been made before the one above it was watched.
void FileWatch::Watch() {
    for (int watch = WatchNearest(); watch != fWatch; watch = WatchNearest()) {
        if (fWatch >= 0) {
            ::inotify_rm_watch(Descriptor(), fWatch); // or it went with its folder
        }
        fWatch = watch;
    }
}

// A file that is made is a change once it is written, a link at once.
bool FileWatch::IsChange(const char *name, unsigned what) const {
    return fName == name && ((what & IN_CREATE) == 0 || IsLink(fPath));
}

bool FileWatch::TakeChange() {
    alignas(inotify_event) std::array<char, 4096> events{};
    bool isChanged = false;
    for (ssize_t size = 0; (size = ::read(Descriptor(), events.data(), events.size())) > 0;) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, events.data() + at, sizeof event);
            isChanged =
                isChanged || IsChange(event.len > 0 ? events.data() + at + sizeof event : "", event.mask);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    const int before = fWatch;
    Watch();
    return isChanged || fWatch != before;
}

} // namespace drevix
