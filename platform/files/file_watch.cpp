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

// A watch on the nearest existing folder; the same folder always has the same number.
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

// Repeat until it is the same folder twice: one may have been created before the folder above was watched.
void FileWatch::Watch() {
    for (int watch = WatchNearest(); watch != fWatch; watch = WatchNearest()) {
        if (fWatch >= 0) {
            ::inotify_rm_watch(Descriptor(), fWatch); // or it was removed with its folder
        }
        fWatch = watch;
    }
}

// A new file counts as a change once it is written, a link at once.
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
