// Quicksort with a random or median-of-three pivot, and binary search, over any array of fixed-size elements.
// Neither allocates, so neither can fail for lack of memory. The sort state (random number, cancel flag,
// comparison) is one for the process: one sort at a time, and a comparison must not start another.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <cstdint>

namespace drevix {

// Orders two elements, or a key and an element: negative, 0 or positive as the first sorts before, with or
// after the second.
using FastCompareFunction = std::int32_t (*)(const void *a, const void *b);

// Sorts `count` elements of `size` bytes. The order of equal elements is not defined. On average 1.2 n log2 n
// comparisons, also for input in order, in reverse and with equal elements. noErr, or userCanceledErr when
// the comparison called CancelFastQSort: the array then holds its elements in no defined order.
[[nodiscard]] OSErr FastQSort(void *start, std::int32_t count, std::int32_t size,
                              FastCompareFunction compare);

// Makes the running sort stop. Called from the comparison, or from code that it calls.
void CancelFastQSort();

// An element that equals the key, null when there is none. Of several equal ones the first that the halving
// meets. The array must be in the order of the comparison. At most log2(count) + 1 comparisons.
[[nodiscard]] void *FastBSearch(const void *key, void *start, std::int32_t count, std::int32_t size,
                                FastCompareFunction compare);

// The next random number, 0 to 32767: a linear congruence modulo 2^32 with the constants 1103515245 and 12345
// of the C standard's example, of which bits 1 to 15 are drawn.
[[nodiscard]] std::int32_t FQSRandom();
// Sets the random state. Every sort starts from the tick count.
void FQSRandomSeed(std::uint32_t seed);

// Exchanges two byte ranges, which are the same or do not overlap.
void MemSwap(void *a, void *b, std::size_t count);

// Exchanges the median of a, b and c, by the comparison and for the element size of the latest FastQSort,
// with `destination`.
void ChooseMedian(void *destination, void *a, void *b, void *c);

} // namespace drevix
