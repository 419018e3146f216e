#include "helper/file_watch.h"

#include "platform/file_update.h"

#include <array>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace drevix {

FileWatch::FileWatch(const std::string &path)
    : fName(path.substr(path.rfind('/') + 1)), fDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (fDescriptor >= 0) {
        ::inotify_add_watch(fDescriptor, FolderOfPath(path).c_str(),
                            IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE);
    }
}

FileWatch::~FileWatch() {
    if (fDescriptor >= 0) {
        ::close(fDescriptor);
    }
}

bool FileWatch::TakeChange() {
    alignas(inotify_event) std::array<char, 4096> events{};
    bool isChanged = false;
    for (ssize_t size = 0; (size = ::read(fDescriptor, events.data(), events.size())) > 0;) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, events.data() + at, sizeof event);
            isChanged = isChanged || fName == (event.len > 0 ? events.data() + at + sizeof event : "");
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    return isChanged;
}

} // namespace drevix
