// A growable block of memory that reports failure instead of throwing. The record base uses three: index,
// records and user block.
#pragma once

#include "platform/base/status.h"
#include "platform/base/types.h"

namespace drevix {

// The allocator for blocks. The default is the C library's; tests install their own to make the n-th request
// fail.
class BlockAllocator {
  public:
    virtual ~BlockAllocator() = default;
    // As realloc(3): a null `memory` requests a new block; a null result means out of memory, and `memory`
    // stays valid. `size` is never 0.
    virtual void *Reallocate(void *memory, std::size_t size);
    // As free(3).
    virtual void Release(void *memory);
};

// Installs the allocator for all blocks (null: the default) and returns the previous one. A block must be
// released by the allocator that allocated it, so call this before the first block is created.
BlockAllocator *SetBlockAllocator(BlockAllocator *allocator);

// Owns a run of bytes. The address changes only on a resize. Not copyable; moving from it leaves an empty
// block.
class Block {
  public:
    Block() = default;
    Block(Block &&other) noexcept;
    Block &operator=(Block &&other) noexcept;
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    ~Block();

    // The bytes, aligned for any plain type; null only if nothing was ever allocated.
    [[nodiscard]] std::byte *Data() { return fData; }
    [[nodiscard]] const std::byte *Data() const { return fData; }
    // The size as last set by Resize.
    [[nodiscard]] std::size_t Size() const { return fSize; }

    // How many bytes the block can grow without moving.
    [[nodiscard]] std::size_t Room() const { return fReserve - fSize; }

    // Adds `size` bytes of the room, at most Room(), to the size; they are undefined. Nothing moves.
    void TakeRoom(std::size_t size) { fSize += size; }

    // Sets the size. Keeps existing bytes; new ones are undefined. Growing beyond the reserve may move the
    // block and at least doubles the reserve, so that n appends cost O(n) copies. Shrinking never fails and
    // keeps the reserve, except that size 0 frees all memory. noErr, or memFullErr with the block unchanged.
    [[nodiscard]] OSErr Resize(std::size_t size);
    // Makes room for `size` bytes in total; may move the block. noErr, or memFullErr with the block
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
