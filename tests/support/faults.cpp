#include "tests/support/faults.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace drevix::test {

FaultyAllocator::FaultyAllocator(int failAt, Lasts lasts)
    : fFailAt(failAt), fLasts(lasts), fBefore(SetBlockAllocator(this)) {}

FaultyAllocator::~FaultyAllocator() {
    SetBlockAllocator(fBefore);
}

void *FaultyAllocator::Reallocate(void *memory, std::size_t size) {
    ++fCalls;
    fLargest = std::max(fLargest, size);
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

void ForEachFault(int least, const std::function<bool(int failAt, Lasts lasts)> &run,
                  std::initializer_list<Lasts> lengths) {
    for (const Lasts lasts : lengths) {
        int failAt = 1;
        while (run(failAt, lasts)) {
            ++failAt;
        }
        EXPECT_GT(failAt, least) << "the faults were not met";
    }
}

} // namespace drevix::test
