#include "qbase/fast_sort.h"

#include "platform/base/clock.h"
#include "platform/base/status.h"
#include "qbase/sort_range.h"

#include <algorithm>

namespace drevix {

bool gSortCancelled = false;
std::uint32_t gRandomState = 0;

namespace {

std::size_t gElementSize = 0;
FastCompareFunction gElementCompare = nullptr;

} // namespace

void StartSort() {
    gSortCancelled = false;
    FQSRandomSeed(TickCount());
}

OSErr SortResult() {
    return gSortCancelled ? userCanceledErr : noErr;
}

OSErr FastQSort(void *start, std::int32_t count, std::int32_t size, FastCompareFunction compare) {
    gElementSize = static_cast<std::size_t>(std::max(size, 1));
    gElementCompare = compare;
    const ElementOrder order{compare};
    const auto elements = static_cast<std::size_t>(std::max(count, 0));
    return gElementSize == kOffsetSize ? SortElements(start, elements, kOffsetSize, order)
                                       : SortElements(start, elements, gElementSize, order);
}

void CancelFastQSort() {
    gSortCancelled = true;
}

void *FastBSearch(const void *key, void *start, std::int32_t count, std::int32_t size,
                  FastCompareFunction compare) {
    auto *const elements = static_cast<std::byte *>(start);
    std::int64_t lo = 0;
    std::int64_t hi = count;
    while (lo < hi) {
        const std::int64_t mid = (lo + hi - 1) / 2;
        std::byte *const element = elements + mid * size;
        const std::int32_t order = compare(key, element);
        if (order == 0) {
            return element;
        }
        if (order > 0) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    return nullptr;
}

std::int32_t FQSRandom() {
    return static_cast<std::int32_t>(NextRandom());
}

void FQSRandomSeed(std::uint32_t seed) {
    gRandomState = seed;
}

void MemSwap(void *a, void *b, std::size_t count) {
    if (a != b) {
        auto *const first = static_cast<std::byte *>(a);
        std::swap_ranges(first, first + count, static_cast<std::byte *>(b));
    }
}

void ChooseMedian(void *destination, void *a, void *b, void *c) {
    RangeSorter<std::size_t, ElementOrder>(gElementSize, {gElementCompare})
        .PlaceMedian(static_cast<std::byte *>(destination), static_cast<std::byte *>(a),
                     static_cast<std::byte *>(b), static_cast<std::byte *>(c));
}

} // namespace drevix
