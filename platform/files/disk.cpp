#include "platform/files/disk.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

Disk gRealDisk;
Disk *gDisk = &gRealDisk;

} // namespace

Disk *SetDisk(Disk *disk) {
    return std::exchange(gDisk, disk != nullptr ? disk : &gRealDisk);
}

Disk &CurrentDisk() {
    return *gDisk;
}

int Disk::Open(const char *path, int flags, mode_t mode) {
    return ::open(path, flags | O_CLOEXEC, mode);
}

int Disk::Close(int fd) {
    return ::close(fd);
}

ssize_t Disk::ReadAt(int fd, void *bytes, std::size_t count, off_t offset) {
    const ssize_t done = ::pread(fd, bytes, count, offset);
    return done < 0 && errno == ESPIPE ? ::read(fd, bytes, count) : done;
}

ssize_t Disk::WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) {
    const ssize_t done = ::pwrite(fd, bytes, count, offset);
    return done < 0 && errno == ESPIPE ? ::write(fd, bytes, count) : done;
}

int Disk::SetSize(int fd, off_t size) {
    return ::ftruncate(fd, size);
}

int Disk::Flush(int fd) {
    return ::fsync(fd);
}

int Disk::StatusOf(int fd, struct stat *status) {
    return ::fstat(fd, status);
}

int Disk::StatusAt(const char *path, struct stat *status) {
    return ::lstat(path, status);
}

int Disk::Lock(int fd) {
    return ::flock(fd, LOCK_EX | LOCK_NB);
}

int Disk::SetMode(int fd, mode_t mode) {
    return ::fchmod(fd, mode);
}

int Disk::SetOwner(int fd, uid_t user, gid_t group) {
    return ::fchown(fd, user, group);
}

int Disk::Rename(const char *from, const char *to) {
    return ::rename(from, to);
}

int Disk::Remove(const char *path) {
    return ::unlink(path);
}

int Disk::MakeLink(const char *from, const char *to) {
    return ::link(from, to);
}

int Disk::MakeSymbolicLink(const char *target, const char *path) {
    return ::symlink(target, path);
}

ssize_t Disk::ReadLink(const char *path, char *target, std::size_t size) {
    return ::readlink(path, target, size);
}

int Disk::MakeFolder(const char *path, mode_t mode) {
    return ::mkdir(path, mode);
}

int Disk::RealPath(const char *path, std::string *real) {
    const std::unique_ptr<char, decltype(&std::free)> found(::realpath(path, nullptr), std::free);
    if (found == nullptr) {
        return -1;
    }
    *real = found.get();
    return 0;
}

int Disk::ListFolder(const char *path, std::vector<std::string> *names) {
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir(path), ::closedir);
    if (folder == nullptr) {
        return -1;
    }
    names->clear();
    for (;;) {
        errno = 0; // the only way to tell a failure from the end
        const struct dirent *entry = ::readdir(folder.get());
        if (entry == nullptr) {
            return errno == 0 ? 0 : -1;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names->emplace_back(name);
        }
    }
}

} // namespace drevix
