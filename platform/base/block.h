// A growable block of memory that reports failure instead of throwing.
// The record base keeps its index, its records and its user block in three of these.
#pragma once

#include "platform/base/status.h"
#include "platform/base/types.h"

namespace drevix {

// Where blocks get their memory. The default is the C library's; a test installs its own to make the n-th
// request fail.
class BlockAllocator {
  public:
    virtual ~BlockAllocator() = default;
    // As realloc(3): a null `memory` asks for a new block; null means no memory, and `memory` then stays
    // valid. `size` is never 0.
    virtual void *Reallocate(void *memory, std::size_t size);
    // As free(3).
    virtual void Release(void *memory);
};

// Installs the allocator that all blocks use from now on, null for the default, and returns the one installed
// before. Blocks that hold memory must be released by the allocator that gave it, so install before the first
// block is made.
BlockAllocator *SetBlockAllocator(BlockAllocator *allocator);

// An owned run of bytes. Its address stays the same until it is resized. Not copyable; moving leaves an empty
// block.
class Block {
  public:
    Block() = default;
    Block(Block &&other) noexcept;
    Block &operator=(Block &&other) noexcept;
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    ~Block();

    // Start of the bytes, aligned for any plain type; null only while nothing was ever allocated.
    [[nodiscard]] std::byte *Data() { return fData; }
    [[nodiscard]] const std::byte *Data() const { return fData; }
    // The bytes in use, as last set by Resize.
    [[nodiscard]] std::size_t Size() const { return fSize; }

    // How many bytes it can grow by without being moved.
    [[nodiscard]] std::size_t Room() const { return fReserve - fSize; }

    // Sets the size. Bytes kept stay unchanged, bytes gained are undefined. Growing beyond the reserve may
    // move the block; the reserve then doubles at least, so that n appends cost O(n) copies. Shrinking never
    // fails and keeps the reserve, but for a size of 0, which gives all memory back.
    // noErr, or memFullErr with the block unchanged.
    [[nodiscard]] OSErr Resize(std::size_t size);
    // Makes room for `size` bytes in all, which may move the block. noErr, or memFullErr with the block
    // unchanged.
    [[nodiscard]] OSErr Reserve(std::size_t size) { return size <= fReserve ? noErr : Reallocate(size); }

  private:
    OSErr Reallocate(std::size_t size);
    void Release();

    std::byte *fData = nullptr;
    std::size_t fSize = 0;
    std::size_t fReserve = 0;
};

inline OSErr Block::Resize(std::size_t size) {
    if (size == 0) {
        Release();
        return noErr;
    }
    const OSErr status = Reserve(size);
    fSize = status == noErr ? size : fSize;
    return status;
}

} // namespace drevix
