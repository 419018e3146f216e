// RAII owners of descriptors and file references.
#pragma once

#include "platform/files/disk.h"
#include "platform/files/files.h"

#include <unistd.h>
#include <utility>

namespace drevix {

// Owns at most one handle and releases it with kGiveBack, ignoring its result.
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
    // An output parameter for a new handle; releases the current one.
    [[nodiscard]] Handle *Out() {
        Reset();
        return &fHandle;
    }
    // Transfers the handle to the caller.
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

// A descriptor from Disk::Open.
using DiskDescriptor = Owned<int, -1, CloseOnDisk>;
// Any other descriptor: a socket, a watch.
using SystemDescriptor = Owned<int, -1, ::close>;
// A reference from OpenFile and similar functions.
using OwnedFile = Owned<FileRef, FileRef{0}, FSClose>;

} // namespace drevix
