#include "platform/input/input_devices.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

constexpr std::uint32_t kComings = IN_CREATE | IN_ATTRIB | IN_MOVED_TO;
constexpr std::string_view kDeviceName = "event";

bool IsDeviceName(std::string_view name) {
    return name.starts_with(kDeviceName) && name.size() > kDeviceName.size() &&
           std::ranges::all_of(name.substr(kDeviceName.size()), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

InputDevices::InputDevices(std::string folder)
    : fFolder(std::move(folder)), fDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    WatchFolder();
}

// Whether the folder appeared and is now watched.
bool InputDevices::WatchFolder() {
    if (fWatch >= 0) {
        return false;
    }
    // Watches the folder above first, so that a folder created between the two steps is not missed.
    const std::string above = std::filesystem::path(fFolder).parent_path();
    fAboveWatch = ::inotify_add_watch(Descriptor(), above.c_str(), IN_CREATE | IN_MOVED_TO | IN_ONLYDIR);
    fWatch = ::inotify_add_watch(Descriptor(), fFolder.c_str(), kComings | IN_ONLYDIR);
    if (fWatch >= 0) {
        ::inotify_rm_watch(Descriptor(), fAboveWatch);
        fAboveWatch = -1;
    }
    return fWatch >= 0;
}

void InputDevices::AddAll(std::vector<std::string> *paths) const {
    std::error_code error; // a folder that cannot be read has no devices for us
    for (std::filesystem::directory_iterator entry(fFolder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (IsDeviceName(entry->path().filename().string())) {
            paths->push_back(entry->path());
        }
    }
}

std::vector<std::string> InputDevices::TakeNew() {
    std::vector<std::string> paths;
    bool isWhole = std::exchange(fIsFirst, false);
    alignas(inotify_event) std::array<char, 4096> bytes{};
    for (ssize_t size = 0; (size = ::read(Descriptor(), bytes.data(), bytes.size())) > 0;) {
        for (ssize_t place = 0; place < size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(bytes.data() + place);
            place += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if (event->wd == fWatch && (event->mask & IN_IGNORED) != 0) {
                fWatch = -1; // the folder went with its last device
            } else if (event->wd == fWatch && event->len > 0 && IsDeviceName(event->name)) {
                paths.push_back(fFolder + "/" + event->name);
            }
            isWhole = isWhole || (event->mask & IN_Q_OVERFLOW) != 0;
        }
    }
    if (WatchFolder() || isWhole) {
        AddAll(&paths);
    }
    return paths;
}

} // namespace drevix
