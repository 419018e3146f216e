#include "tests/support/faults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/wait.h>
#include <unistd.h>

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

void ForEachFault(int least, std::initializer_list<int> errors,
                  const std::function<bool(const FaultAt &fault)> &run,
                  std::initializer_list<Lasts> lengths) {
    const auto once = {Lasts::Once};
    for (const int error : errors) {
        SCOPED_TRACE("error " + std::to_string(error));
        const auto withError = [&](int failAt, Lasts lasts) {
            SCOPED_TRACE("call " + std::to_string(failAt) + (lasts == Lasts::Once ? "" : " and later ones"));
            return run({failAt, lasts, error});
        };
        ForEachFault(least, withError, error == kOfNew ? once : lengths);
    }
}

bool DiesAt(int call, Death death, const std::function<bool()> &work) {
    const pid_t child = ::fork();
    if (child == 0) {
        FaultyDisk disk(call, Lasts::Once, 0);
        (death == Death::BeforeTheCall ? disk.onFault : disk.onHalf) = [] { ::_exit(1); };
        const bool succeeds = work();
        ::_exit(disk.WasHit() ? 1 : succeeds ? 0 : 2);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << call;
    return status != 0;
}

} // namespace drevix::test
