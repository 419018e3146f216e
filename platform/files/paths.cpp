#include "platform/files/paths.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <new>
#include <pwd.h>
#include <unistd.h>

namespace drevix {
namespace {

constexpr int kMostLinks = 40;          // as many as the kernel follows (path_resolution(7))
constexpr mode_t kNewFolderMode = 0700; // as the XDG Base Directory Specification requires

} // namespace

std::string FolderOfPath(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string LeafOfPath(const std::string &path) {
    return path.substr(path.rfind('/') + 1); // npos + 1 is 0
}

std::string JoinPath(std::string_view folder, std::string_view name) {
    std::string path(folder);
    return path.append(path.ends_with('/') ? "" : "/").append(name);
}

OSErr FollowLinks(const std::string &path, std::string *target) try {
    std::string reached = path;
    for (int i = 0; i < kMostLinks; ++i) {
        std::array<char, PATH_MAX> link{};
        const ssize_t length = CurrentDisk().ReadLink(reached.c_str(), link.data(), link.size());
        if (length < 0 && errno != EINVAL && errno != ENOENT && errno != ENOTDIR) {
            return LastError(); // it may be a link
        }
        if (length < 0) { // not a link, or missing
            *target = reached;
            return noErr;
        }
        const std::string next(link.data(), static_cast<std::size_t>(length));
        reached = next.starts_with('/') ? next : FolderOfPath(reached).append("/").append(next);
    }
    return bdNamErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

// Mostly the folder is there already, which one call tells.
OSErr MakeFolders(const std::string &path) {
    const auto make = [&path] { return CurrentDisk().MakeFolder(path.c_str(), kNewFolderMode) == 0; };
    const std::string above = FolderOfPath(path);
    bool isMade = make();
    if (!isMade && errno == ENOENT && above != path) {
        if (const OSErr status = MakeFolders(above); status != noErr) {
            return status;
        }
        isMade = make();
    }
    if (isMade) {
        return FlushFolder(above); // or a power cut takes it away with all that is in it
    }
    return errno == EEXIST ? OSErr{noErr} : LastError();
}

std::string HomeFolder() {
    if (const char *home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        return home;
    }
    const struct passwd *user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

} // namespace drevix
