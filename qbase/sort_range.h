// The sort behind FastQSort, as a template over the element size and the order, so that sorting a base's
// index calls nothing but the caller's comparison. Internal to qbase/.
#pragma once

#include "qbase/fast_sort.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace drevix {

// True from CancelFastQSort until the next sort.
extern bool gSortCancelled;
// The state of FQSRandom.
extern std::uint32_t gRandomState;

// FQSRandom inline: small ranges draw so often that a call would cost.
inline std::uint32_t NextRandom() {
    gRandomState = gRandomState * 1103515245U + 12345U;
    return (gRandomState & 0xFFFFU) >> 1;
}

// Ranges of at least this many elements use the median of three as pivot, smaller ones a random element.
inline constexpr std::size_t kMedianThreshold = 25;

// The element size of a base's index as a compile-time constant.
using OffsetSize = std::integral_constant<std::size_t, sizeof(std::int32_t)>;
inline constexpr OffsetSize kOffsetSize;

// Compares the elements themselves. An Order extracts an element's key and compares two keys, so that the
// pivot's key is extracted once per partition.
struct ElementOrder {
    using Key = const void *;
    [[nodiscard]] Key KeyOf(const std::byte *element) const { return element; }
    [[nodiscard]] std::int32_t Compare(Key a, Key b) const { return compare(a, b); }

    FastCompareFunction compare;
};

// `Size` is std::size_t, or OffsetSize where the size is known to the compiler.
template <class Size, class Order>
class RangeSorter {
  public:
    RangeSorter(Size size, Order order) : fSize(size), fOrder(order) {}

    // Sorts [lo, hi) until cancelled. Recurses into the smaller part, so the depth is at most log2 of the
    // count.
    void Sort(std::byte *lo, std::byte *hi) {
        while (!gSortCancelled) {
            const std::size_t count = static_cast<std::size_t>(hi - lo) / fSize;
            if (count <= 2) {
                if (count == 2) {
                    SortPair(lo, lo + fSize);
                }
                return;
            }
            PlacePivot(lo, count);
            std::byte *const pivot = Partition(lo, hi);
            if (pivot == lo) {
                lo += fSize;
                continue;
            }
            Swap(lo, pivot);
            std::byte *const right = pivot + fSize;
            if (pivot - lo < hi - right) {
                SortPart(lo, pivot);
                lo = right;
            } else {
                SortPart(right, hi);
                hi = pivot;
            }
        }
    }

    void PlaceMedian(std::byte *destination, std::byte *a, std::byte *b, std::byte *c) {
        const Key keyA = fOrder.KeyOf(a);
        const Key keyB = fOrder.KeyOf(b);
        const Key keyC = fOrder.KeyOf(c);
        std::byte *median = nullptr;
        if (fOrder.Compare(keyA, keyB) > 0) {
            median = fOrder.Compare(keyA, keyC) <= 0 ? a : fOrder.Compare(keyB, keyC) > 0 ? b : c;
        } else {
            median = fOrder.Compare(keyA, keyC) > 0 ? a : fOrder.Compare(keyB, keyC) > 0 ? c : b;
        }
        Swap(median, destination);
    }

  private:
    using Key = typename Order::Key;

    // Sorts the smaller part of a range, which often has fewer than two elements.
    void SortPart(std::byte *lo, std::byte *hi) {
        if (static_cast<std::size_t>(hi - lo) > fSize) {
            Sort(lo, hi);
        }
    }

    // Two elements need one comparison and no pivot. A quarter of the ranges are pairs.
    void SortPair(std::byte *first, std::byte *second) {
        if (fOrder.Compare(fOrder.KeyOf(second), fOrder.KeyOf(first)) < 0) {
            Swap(first, second);
        }
    }

    void Swap(std::byte *a, std::byte *b) {
        if constexpr (std::is_same_v<Size, OffsetSize>) {
            std::uint32_t first = 0;
            std::uint32_t second = 0;
            std::memcpy(&first, a, sizeof first);
            std::memcpy(&second, b, sizeof second);
            std::memcpy(a, &second, sizeof second);
            std::memcpy(b, &first, sizeof first);
        } else {
            MemSwap(a, b, fSize);
        }
    }

    // Moves the pivot to the start of the range.
    void PlacePivot(std::byte *lo, std::size_t count) {
        const std::uint32_t random = NextRandom();
        if (count < kMedianThreshold) {
            Swap(lo, lo + random % static_cast<std::uint32_t>(count) * fSize);
        } else {
            PlaceMedian(lo, lo, lo + count / 2 * fSize, lo + random % count * fSize);
        }
    }

    // Partitions the range around the pivot at its start and returns the pivot's final position. Both scans
    // stop at elements equal to the pivot, so long runs of equal keys split evenly. No element up to i sorts
    // after the pivot and none from j on before it, so nothing is compared again where the scans meet.
    std::byte *Partition(std::byte *lo, std::byte *hi) {
        const Key pivot = fOrder.KeyOf(lo);
        std::byte *i = lo;
        std::byte *j = hi;
        for (;;) {
            std::int32_t order = 0; // of the element where the upward scan stopped
            do {
                i += fSize;
            } while (i < j && (order = fOrder.Compare(fOrder.KeyOf(i), pivot)) < 0);
            if (i == j) {
                return i - fSize;
            }
            do {
                j -= fSize;
            } while (i < j && fOrder.Compare(fOrder.KeyOf(j), pivot) > 0);
            if (i == j) {
                return order > 0 ? i - fSize : i;
            }
            Swap(i, j);
        }
    }

    [[no_unique_address]] Size fSize;
    Order fOrder;
};

// StartSort clears the cancel flag and seeds the generator from the clock, so that pivots differ from run to
// run. EndSort returns noErr or userCanceledErr.
void StartSort();
[[nodiscard]] OSErr SortResult();

// Sorts `count` elements. noErr or userCanceledErr, as FastQSort.
template <class Size, class Order>
[[nodiscard]] OSErr SortElements(void *start, std::size_t count, Size size, Order order) {
    StartSort();
    auto *const first = static_cast<std::byte *>(start);
    RangeSorter<Size, Order>(size, order).Sort(first, first + count * size);
    return SortResult();
}

} // namespace drevix
