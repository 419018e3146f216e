// The sort behind FastQSort, as a template over the element size and the order, so that sorting a base's
// index costs no call but the caller's own comparison. Used by qbase/ alone.
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

// FQSRandom, for the sort itself: small ranges draw so often that a call would be felt.
inline std::uint32_t NextRandom() {
    gRandomState = gRandomState * 1103515245U + 12345U;
    return (gRandomState & 0xFFFFU) >> 1;
}

// A range with this many elements or more takes the median of three as its pivot, a smaller one any element.
inline constexpr std::size_t kMedianThreshold = 25;

// The element size of a base's index, known to the compiler.
using OffsetSize = std::integral_constant<std::size_t, sizeof(std::int32_t)>;
inline constexpr OffsetSize kOffsetSize;

// An order of elements by a comparison of the elements themselves. An Order gives each element's key and
// compares two keys, so that the pivot's key is worked out once for a whole partition.
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

    // Sorts [lo, hi) until cancelled. Recursion goes into the smaller part, so its depth stays within log2 of
    // the count.
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

    // The smaller part of a range, which often has no two elements.
    void SortPart(std::byte *lo, std::byte *hi) {
        if (static_cast<std::size_t>(hi - lo) > fSize) {
            Sort(lo, hi);
        }
    }

    // Whichever is drawn as the pivot, one comparison orders two elements. A quarter of the ranges are pairs.
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

    // Brings the pivot to the start of the range.
    void PlacePivot(std::byte *lo, std::size_t count) {
        const std::uint32_t random = NextRandom();
        if (count < kMedianThreshold) {
            Swap(lo, lo + random % static_cast<std::uint32_t>(count) * fSize);
        } else {
            PlaceMedian(lo, lo, lo + count / 2 * fSize, lo + random % count * fSize);
        }
    }

    // Divides the range by the pivot at its start; the result is where the pivot belongs. Both scans stop at
    // elements equal to the pivot, so long runs of equal keys are divided evenly. Up to i no element sorts
    // after the pivot and from j on none before it, so where the scans meet nothing is compared again.
    std::byte *Partition(std::byte *lo, std::byte *hi) {
        const Key pivot = fOrder.KeyOf(lo);
        std::byte *i = lo;
        std::byte *j = hi;
        for (;;) {
            std::int32_t order = 0; // of the element at which the upward scan stops
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

// The start of every sort: clears the cancel flag and seeds the random state from the clock, so that pivots
// differ from run to run. The end of every sort: noErr, or userCanceledErr.
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
