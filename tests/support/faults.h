// Faults for tests, installed through the same interfaces as the real allocator and the real disk.
#pragma once

#include "platform/block.h"
#include "platform/disk.h"

#include <functional>

namespace drevix::test {

// How long a fault lasts.
enum class Lasts { Once, ForEver };

// Makes the n-th block allocation (from 1) fail while it lives; later ones too when it lasts for ever.
class FaultyAllocator : public BlockAllocator {
  public:
    FaultyAllocator(int failAt, Lasts lasts);
    ~FaultyAllocator() override;
    void *Reallocate(void *memory, std::size_t size) override;
    [[nodiscard]] bool WasHit() const { return fCalls >= fFailAt; }

  private:
    int fFailAt;
    Lasts fLasts;
    int fCalls = 0;
    BlockAllocator *fBefore;
};

// The real disk, with the n-th call (from 1) that reads, writes or changes something failing while it lives.
// A failing transfer moves half of its bytes first when `error` is 0 (a short transfer, followed by an error
// if it lasts).
class FaultyDisk : public Disk {
  public:
    // `error` is the errno to report, such as ENOSPC.
    FaultyDisk(int failAt, Lasts lasts, int error);
    ~FaultyDisk() override;
    [[nodiscard]] bool WasHit() const { return fCalls >= fFailAt; }
    // Called instead of failing, when set; for a process that is to die at its n-th call.
    std::function<void()> onFault;

    int Open(const char *path, int flags, mode_t mode) override;
    ssize_t ReadAt(int fd, void *bytes, std::size_t count, off_t offset) override;
    ssize_t WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) override;
    int SetSize(int fd, off_t size) override;
    int Flush(int fd) override;
    int StatusOf(int fd, struct stat *status) override;
    int StatusAt(const char *path, struct stat *status) override;
    int SetMode(int fd, mode_t mode) override;
    int Rename(const char *from, const char *to) override;
    int MakeLink(const char *from, const char *to) override;
    int MakeSymbolicLink(const char *target, const char *path) override;
    int MakeFolder(const char *path, mode_t mode) override;
    int RealPath(const char *path, std::string *real) override;
    int ListFolder(const char *path, std::vector<std::string> *names) override;

  private:
    bool Fails();

    int fFailAt;
    Lasts fLasts;
    int fError;
    int fCalls = 0;
    Disk *fBefore;
};

} // namespace drevix::test
