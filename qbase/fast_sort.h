// Quicksort with a random or median-of-three pivot, and binary search, over any array of fixed-size elements.
// Neither allocates, so neither can fail for lack of memory. The sort state (random number, cancel flag,
// comparison) is one for the process: one sort at a time, and a comparison must not start another.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <cstdint>

namespace drevix {

// Orders two elements, or a key and an element: negative if the first sorts before the second, 0 if they are
// equal, else positive.
using FastCompareFunction = std::int32_t (*)(const void *a, const void *b);

// Sorts `count` elements of `size` bytes. Not stable. On average 1.2 n log2 n comparisons, also for sorted
// and reversed input and for equal elements. noErr, or userCanceledErr if the comparison called
// CancelFastQSort: the array then still holds all its elements, in any order.
[[nodiscard]] OSErr FastQSort(void *start, std::int32_t count, std::int32_t size,
                              FastCompareFunction compare);

// Stops the running sort. Call it from the comparison, directly or not.
void CancelFastQSort();

// Finds an element equal to the key; null if there is none. If several are equal, returns the first one that
// the search meets. The array must be sorted by the same comparison. At most log2(count) + 1 comparisons.
[[nodiscard]] void *FastBSearch(const void *key, void *start, std::int32_t count, std::int32_t size,
                                FastCompareFunction compare);

// The next random number, 0 to 32767: a linear congruential generator modulo 2^32 with the constants
// 1103515245 and 12345 from the C standard's example; the result is bits 1 to 15.
[[nodiscard]] std::int32_t FQSRandom();
// Seeds the generator. Every sort seeds it from the tick count.
void FQSRandomSeed(std::uint32_t seed);

// Swaps two byte ranges. They must be identical or not overlap.
void MemSwap(void *a, void *b, std::size_t count);

// Swaps the median of a, b and c with `destination`, using the comparison and element size of the latest
// FastQSort.
void ChooseMedian(void *destination, void *a, void *b, void *c);

} // namespace drevix
