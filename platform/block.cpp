#include "platform/block.h"

#include "platform/status.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace drevix {
namespace {

BlockAllocator gDefaultAllocator;
BlockAllocator *gAllocator = &gDefaultAllocator;

} // namespace

void *BlockAllocator::Reallocate(void *memory, std::size_t size) {
    return std::realloc(memory, size);
}

void BlockAllocator::Release(void *memory) {
    std::free(memory);
}

BlockAllocator *SetBlockAllocator(BlockAllocator *allocator) {
    return std::exchange(gAllocator, allocator != nullptr ? allocator : &gDefaultAllocator);
}

Block::Block(Block &&other) noexcept
    : fData(std::exchange(other.fData, nullptr)), fSize(std::exchange(other.fSize, 0)),
      fReserve(std::exchange(other.fReserve, 0)) {}

Block &Block::operator=(Block &&other) noexcept {
    if (this != &other) {
        Release();
        fData = std::exchange(other.fData, nullptr);
        fSize = std::exchange(other.fSize, 0);
        fReserve = std::exchange(other.fReserve, 0);
    }
    return *this;
}

Block::~Block() {
    Release();
}

void Block::Release() {
    if (fData != nullptr) {
        gAllocator->Release(fData);
    }
    fData = nullptr;
    fSize = fReserve = 0;
}

OSErr Block::Resize(std::size_t size) {
    if (size == 0) {
        Release();
        return noErr;
    }
    if (size > fReserve) {
        // The half more is a wish: when it cannot be had, the exact size still may.
        const std::size_t room = std::numeric_limits<std::size_t>::max() - fReserve;
        const std::size_t wanted = std::max(size, fReserve + std::min(fReserve / 2, room));
        std::size_t granted = wanted;
        void *memory = gAllocator->Reallocate(fData, granted);
        if (memory == nullptr && wanted > size) {
            granted = size;
            memory = gAllocator->Reallocate(fData, granted);
        }
        if (memory == nullptr) {
            return memFullErr;
        }
        fData = static_cast<std::byte *>(memory);
        fReserve = granted;
    }
    fSize = size;
    return noErr;
}

} // namespace drevix
