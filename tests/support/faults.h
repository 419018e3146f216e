// Faults for tests, injected through the interfaces of the allocator and the disk.
#pragma once

#include "platform/base/block.h"
#include "platform/files/disk.h"

#include <cerrno>
#include <functional>
#include <initializer_list>
#include <new>
#include <string>
#include <utility>

namespace drevix::test {

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

// The real disk, but that of two files the second is opened for the first.
class ExchangedFile : public ScopedDisk {
  public:
    ExchangedFile(std::string first, std::string second)
        : fFirst(std::move(first)), fSecond(std::move(second)) {}
    int Open(const char *path, int flags, mode_t mode) override {
        return Disk::Open(path == fFirst ? fSecond.c_str() : path, flags, mode);
    }

  private:
    std::string fFirst, fSecond;
};

struct FullDisk : ScopedDisk {
    ssize_t WriteAt(int /*fd*/, const void * /*bytes*/, std::size_t /*count*/, off_t /*offset*/) override {
        errno = ENOSPC;
        return -1;
    }
};

// Which calls of the disk can fail: All are with those of the last group of FaultyDisk.
enum class DiskCalls { Usual, All };

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
    DiskCalls calls = DiskCalls::Usual;

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
    int Lock(int fd) override { return calls == DiskCalls::All && Fails() ? -1 : Disk::Lock(fd); }
    int SetOwner(int fd, uid_t user, gid_t group) override {
        return calls == DiskCalls::All && Fails() ? -1 : Disk::SetOwner(fd, user, group);
    }
    int Remove(const char *path) override {
        return calls == DiskCalls::All && Fails() ? -1 : Disk::Remove(path);
    }
    ssize_t ReadLink(const char *path, char *target, std::size_t size) override {
        return calls == DiskCalls::All && Fails() ? -1 : Disk::ReadLink(path, target, size);
    }

  private:
    bool Fails();
    // Whether a transfer moves anything; halves the count of a short one.
    bool Moves(std::size_t *count);

    int fError;
};

inline constexpr int kNoFault = 1'000'000; // a step that no test reaches
inline constexpr int kOfNew = -1;          // in the place of an errno: a `new` fails, once only

// The n-th `new` from now on fails once; 0: none. For programs with failing_new.h.
inline int gNewFailsIn = 0;

// Runs `work` with one disk fault, a memory fault for ENOMEM, or a `new` that fails for kOfNew. Returns whether
// it was hit.
template <class Work>
bool MeetsFault(int failAt, Lasts lasts, int error, const Work &work, DiskCalls calls = DiskCalls::Usual) {
    gNewFailsIn = error == kOfNew ? failAt : 0;
    const bool ofDisk = error != kOfNew && error != ENOMEM;
    FaultyAllocator memory(error == ENOMEM ? failAt : kNoFault, lasts);
    FaultyDisk disk(ofDisk ? failAt : kNoFault, lasts, error);
    disk.calls = calls;
    work();
    const bool hasFailed = error == kOfNew && gNewFailsIn == 0;
    gNewFailsIn = 0;
    return hasFailed || memory.WasHit() || disk.WasHit();
}

// Calls `run(failAt, lasts)`, which returns whether it hit the fault, with 1, 2, ... until it does not. Fewer
// than `least` faults fail the running test.
void ForEachFault(int least, const std::function<bool(int failAt, Lasts lasts)> &run,
                  std::initializer_list<Lasts> lengths = {Lasts::Once, Lasts::ForEver});

// The call that fails, how long, and with what errno.
struct FaultAt {
    int call;
    Lasts lasts;
    int error;
    // As MeetsFault.
    template <class Work>
    [[nodiscard]] bool Meets(const Work &work, DiskCalls calls = DiskCalls::Usual) const {
        return MeetsFault(call, lasts, error, work, calls);
    }
};

// As above, with each of these errors; what fails in `run` tells of the fault.
void ForEachFault(int least, std::initializer_list<int> errors,
                  const std::function<bool(const FaultAt &fault)> &run,
                  std::initializer_list<Lasts> lengths = {Lasts::Once, Lasts::ForEver});

// A row of a table of operations that are tried with every fault.
template <class Function>
struct Operation {
    std::string name;
    std::function<Function> run;
};

// What the operation gives, or `otherwise` if there is no memory for what the test makes to call it.
template <class Operation, class Result>
Result GivenMemory(const Operation &operation, Result otherwise) {
    try {
        return operation();
    } catch (const std::bad_alloc &) {
        return otherwise;
    }
}

enum class Death { BeforeTheCall, HalfOfATransfer };

// Runs `work` in a process that dies at its n-th call of the disk. False once there are fewer; then it must give true.
bool DiesAt(int call, Death death, const std::function<bool()> &work);

} // namespace drevix::test
