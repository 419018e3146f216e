#include "platform/base/block.h"

#include "platform/base/status.h"

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

OSErr Block::Reallocate(std::size_t size) {
    // The reserve is optional: if it does not fit, the exact size still may.
    const std::size_t room = std::numeric_limits<std::size_t>::max() - fReserve;
    const std::size_t wanted = std::max(size, fReserve + std::min(fReserve, room));
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
    return noErr;
}

} // namespace drevix
