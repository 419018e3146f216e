#include "tests/support/faults.h"

#include <cerrno>

namespace drevix::test {

FaultyAllocator::FaultyAllocator(int failAt, Lasts lasts)
    : fFailAt(failAt), fLasts(lasts), fBefore(SetBlockAllocator(this)) {}

FaultyAllocator::~FaultyAllocator() {
    SetBlockAllocator(fBefore);
}

void *FaultyAllocator::Reallocate(void *memory, std::size_t size) {
    ++fCalls;
    const bool fails = fLasts == Lasts::Once ? fCalls == fFailAt : fCalls >= fFailAt;
    return fails ? nullptr : fBefore->Reallocate(memory, size);
}

FaultyDisk::FaultyDisk(int failAt, Lasts lasts, int error)
    : fFailAt(failAt), fLasts(lasts), fError(error), fBefore(SetDisk(this)) {}

FaultyDisk::~FaultyDisk() {
    SetDisk(fBefore);
}

bool FaultyDisk::Fails() {
    ++fCalls;
    const bool fails = fLasts == Lasts::Once ? fCalls == fFailAt : fCalls >= fFailAt;
    if (fails && onFault) {
        onFault();
        return false;
    }
    errno = fails ? fError : errno;
    return fails;
}

int FaultyDisk::Open(const char *path, int flags, mode_t mode) {
    return Fails() ? -1 : Disk::Open(path, flags, mode);
}

ssize_t FaultyDisk::ReadAt(int fd, void *bytes, std::size_t count, off_t offset) {
    if (Fails()) {
        return fError == 0 && count > 1 ? Disk::ReadAt(fd, bytes, count / 2, offset) : -1;
    }
    return Disk::ReadAt(fd, bytes, count, offset);
}

ssize_t FaultyDisk::WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) {
    if (Fails()) {
        return fError == 0 && count > 1 ? Disk::WriteAt(fd, bytes, count / 2, offset) : -1;
    }
    return Disk::WriteAt(fd, bytes, count, offset);
}

int FaultyDisk::SetSize(int fd, off_t size) {
    return Fails() ? -1 : Disk::SetSize(fd, size);
}

int FaultyDisk::Flush(int fd) {
    return Fails() ? -1 : Disk::Flush(fd);
}

int FaultyDisk::StatusOf(int fd, struct stat *status) {
    return Fails() ? -1 : Disk::StatusOf(fd, status);
}

int FaultyDisk::StatusAt(const char *path, struct stat *status) {
    return Fails() ? -1 : Disk::StatusAt(path, status);
}

int FaultyDisk::SetMode(int fd, mode_t mode) {
    return Fails() ? -1 : Disk::SetMode(fd, mode);
}

int FaultyDisk::Rename(const char *from, const char *to) {
    return Fails() ? -1 : Disk::Rename(from, to);
}

int FaultyDisk::MakeLink(const char *from, const char *to) {
    return Fails() ? -1 : Disk::MakeLink(from, to);
}

int FaultyDisk::MakeSymbolicLink(const char *target, const char *path) {
    return Fails() ? -1 : Disk::MakeSymbolicLink(target, path);
}

int FaultyDisk::MakeFolder(const char *path, mode_t mode) {
    return Fails() ? -1 : Disk::MakeFolder(path, mode);
}

int FaultyDisk::RealPath(const char *path, std::string *real) {
    return Fails() ? -1 : Disk::RealPath(path, real);
}

int FaultyDisk::ListFolder(const char *path, std::vector<std::string> *names) {
    return Fails() ? -1 : Disk::ListFolder(path, names);
}

} // namespace drevix::test
