// Owners of what must be given back: descriptors and file references.
#pragma once

#include "platform/files/disk.h"
#include "platform/files/files.h"

#include <unistd.h>
#include <utility>

namespace drevix {

// Holds at most one handle, and gives it back by kGiveBack, whose result nobody is left to take.
template <typename Handle, Handle kNone, auto kGiveBack>
class Owned {
  public:
    Owned() = default;
    explicit Owned(Handle handle) : fHandle(handle) {}
    Owned(Owned &&other) noexcept : fHandle(other.Release()) {}
    Owned &operator=(Owned &&other) noexcept {
        Reset(other.Release());
        return *this;
    }
    ~Owned() { Reset(); }

    [[nodiscard]] Handle Get() const { return fHandle; }
    explicit operator bool() const { return fHandle != kNone; }
    // Where a function puts a new one; what is held is given back.
    [[nodiscard]] Handle *Out() {
        Reset();
        return &fHandle;
    }
    // The handle, which is the caller's now.
    [[nodiscard]] Handle Release() { return std::exchange(fHandle, kNone); }
    void Reset(Handle handle = kNone) {
        if (const Handle held = std::exchange(fHandle, handle); held != kNone) {
            kGiveBack(held);
        }
    }

  private:
    Handle fHandle = kNone;
};

inline int CloseOnDisk(int descriptor) {
    return CurrentDisk().Close(descriptor);
}

// What Disk::Open gives.
using DiskDescriptor = Owned<int, -1, CloseOnDisk>;
// What the system gives otherwise: a socket, a watch.
using SystemDescriptor = Owned<int, -1, ::close>;
// What OpenFile and the like give.
using OwnedFile = Owned<FileRef, FileRef{0}, FSClose>;

} // namespace drevix
