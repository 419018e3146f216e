// Faults for tests, injected through the interfaces of the allocator and the disk.
#pragma once

#include "platform/base/block.h"
#include "platform/files/disk.h"

#include <cerrno>
#include <functional>
#include <initializer_list>

namespace drevix::test {

// How long a fault lasts.
enum class Lasts { Once, ForEver };

// Counts the calls of an interface: the n-th (from 1) fails, and with Lasts::ForEver all later ones.
class Fault {
  public:
    [[nodiscard]] bool WasHit() const { return fCalls >= fFailAt; }
    [[nodiscard]] int Calls() const { return fCalls; }

  protected:
    [[nodiscard]] bool IsAtFault() const { return fCalls == fFailAt; }
    Fault(int failAt, Lasts lasts) : fFailAt(failAt), fLasts(lasts) {}
    bool IsNext() {
        ++fCalls;
        return fLasts == Lasts::Once ? fCalls == fFailAt : fCalls >= fFailAt;
    }

  private:
    int fFailAt;
    Lasts fLasts;
    int fCalls = 0;
};

// Makes a block allocation fail, until destruction.
class FaultyAllocator : public BlockAllocator, public Fault {
  public:
    FaultyAllocator(int failAt, Lasts lasts) : Fault(failAt, lasts), fBefore(SetBlockAllocator(this)) {}
    ~FaultyAllocator() override { SetBlockAllocator(fBefore); }
    void *Reallocate(void *memory, std::size_t size) override;
    // The largest request so far, in bytes.
    [[nodiscard]] std::size_t Largest() const { return fLargest; }

  private:
    std::size_t fLargest = 0;
    BlockAllocator *fBefore;
};

// A disk of the test's own, in force until destruction.
class ScopedDisk : public Disk {
  public:
    ScopedDisk() : fBefore(SetDisk(this)) {}
    ~ScopedDisk() override { SetDisk(fBefore); }

  private:
    Disk *fBefore;
};

// One on which nothing more can be written.
struct FullDisk : ScopedDisk {
    ssize_t WriteAt(int /*fd*/, const void * /*bytes*/, std::size_t /*count*/, off_t /*offset*/) override {
        errno = ENOSPC;
        return -1;
    }
};

// The real disk with one failing call that reads, writes or changes something, until destruction. If `error`
// is 0, the failing transfer first moves half of its bytes (a short transfer, followed by an error if the
// fault lasts).
class FaultyDisk : public ScopedDisk, public Fault {
  public:
    // `error` is the errno to report, such as ENOSPC.
    FaultyDisk(int failAt, Lasts lasts, int error) : Fault(failAt, lasts), fError(error) {}
    // If set, called instead of failing; for a process that must die at its n-th call.
    std::function<void()> onFault;
    // Called, when set, after half of the bytes of the transfer that meets the fault have been moved.
    std::function<void()> onHalf;
    // Whether the calls of the last group below are among them.
    bool failsAll = false;

    int Open(const char *path, int flags, mode_t mode) override {
        return Fails() ? -1 : Disk::Open(path, flags, mode);
    }
    ssize_t ReadAt(int fd, void *bytes, std::size_t count, off_t offset) override {
        return Moves(&count) ? Disk::ReadAt(fd, bytes, count, offset) : -1;
    }
    ssize_t WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) override {
        if (!Moves(&count)) {
            return -1;
        }
        const bool isHalf = IsAtFault() && onHalf;
        const ssize_t moved = Disk::WriteAt(fd, bytes, count, offset);
        if (isHalf) {
            onHalf();
        }
        return moved;
    }
    int SetSize(int fd, off_t size) override { return Fails() ? -1 : Disk::SetSize(fd, size); }
    int Flush(int fd) override { return Fails() ? -1 : Disk::Flush(fd); }
    int StatusOf(int fd, struct stat *status) override { return Fails() ? -1 : Disk::StatusOf(fd, status); }
    int StatusAt(const char *path, struct stat *status) override {
        return Fails() ? -1 : Disk::StatusAt(path, status);
    }
    int SetMode(int fd, mode_t mode) override { return Fails() ? -1 : Disk::SetMode(fd, mode); }
    int Rename(const char *from, const char *to) override { return Fails() ? -1 : Disk::Rename(from, to); }
    int MakeLink(const char *from, const char *to) override {
        return Fails() ? -1 : Disk::MakeLink(from, to);
    }
    int MakeSymbolicLink(const char *target, const char *path) override {
        return Fails() ? -1 : Disk::MakeSymbolicLink(target, path);
    }
    int MakeFolder(const char *path, mode_t mode) override {
        return Fails() ? -1 : Disk::MakeFolder(path, mode);
    }
    int RealPath(const char *path, std::string *real) override {
        return Fails() ? -1 : Disk::RealPath(path, real);
    }
    int ListFolder(const char *path, std::vector<std::string> *names) override {
        return Fails() ? -1 : Disk::ListFolder(path, names);
    }
    int Lock(int fd) override { return failsAll && Fails() ? -1 : Disk::Lock(fd); }
    int SetOwner(int fd, uid_t user, gid_t group) override {
        return failsAll && Fails() ? -1 : Disk::SetOwner(fd, user, group);
    }
    int Remove(const char *path) override { return failsAll && Fails() ? -1 : Disk::Remove(path); }
    ssize_t ReadLink(const char *path, char *target, std::size_t size) override {
        return failsAll && Fails() ? -1 : Disk::ReadLink(path, target, size);
    }

  private:
    bool Fails();
    // Whether a transfer moves anything; halves the count of a short one.
    bool Moves(std::size_t *count);

    int fError;
};

inline constexpr int kNoFault = 1'000'000; // a step that no test reaches

// Runs `work` with one disk fault, or a memory fault for ENOMEM. Returns whether it was hit.
template <class Work>
bool MeetsFault(int failAt, Lasts lasts, int error, const Work &work) {
    const bool ofMemory = error == ENOMEM;
    FaultyAllocator memory(ofMemory ? failAt : kNoFault, lasts);
    FaultyDisk disk(ofMemory ? kNoFault : failAt, lasts, error);
    work();
    return memory.WasHit() || disk.WasHit();
}

// Calls `run(failAt, lasts)`, which returns whether it hit the fault, with 1, 2, ... until it does not. Fewer
// than `least` faults fail the running test.
void ForEachFault(int least, const std::function<bool(int failAt, Lasts lasts)> &run,
                  std::initializer_list<Lasts> lengths = {Lasts::Once, Lasts::ForEver});

} // namespace drevix::test
