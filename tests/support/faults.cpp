#include "tests/support/faults.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace drevix::test {

void *FaultyAllocator::Reallocate(void *memory, std::size_t size) {
    fLargest = std::max(fLargest, size);
    return IsNext() ? nullptr : fBefore->Reallocate(memory, size);
}

bool FaultyDisk::Fails() {
    if (!IsNext()) {
        return false;
    }
    if (onFault) {
        onFault();
        return false;
    }
    errno = fError == 0 ? EIO : fError; // of a call that moves no bytes
    return true;
}

bool FaultyDisk::Moves(std::size_t *count) {
    if (!Fails()) {
        return true;
    }
    *count /= 2;
    return fError == 0 && *count > 0;
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
