// Sorting and searching a base through its index; record data never move.
// One sort or search at a time in the process: a comparison must not start another, nor remove records.
#pragma once

#include "qbase/qbase.h"

namespace drevix {

// Orders record A, or the key, and record B: negative, 0 or positive. Only the low 16 bits count,
// sign-extended. Records that are compared in a sort lie in the base's record data, so their addresses have the
// order of the data.
using QBaseCompareFunction = std::int32_t (*)(const void *a, std::int32_t lengthA, const void *b,
                                              std::int32_t lengthB);

// Sorts the index. The sort mode becomes `mode`, or 128 for a mode below 128; 0 when the comparison called
// CancelFastQSort ("qbase/fast_sort.h"), and the order is then undefined. Does nothing without a base or
// comparison.
void QBaseSort(QBaseHandle base, QBaseCompareFunction compare, std::int16_t mode);

// The number of a record equal to the key among the first `maximum` (all, for a maximum below 1 or above the
// count), or kNoRecord: none, or no base, comparison or key, or a key length below 1. The base must be sorted
// in the same order.
[[nodiscard]] RecordNumber QBaseSearchMax(QBaseHandle base, std::int32_t maximum,
                                          QBaseCompareFunction compare, const void *key,
                                          std::int32_t keyLength);
// QBaseSearchMax over all records.
[[nodiscard]] RecordNumber QBaseSearch(QBaseHandle base, QBaseCompareFunction compare, const void *key,
                                       std::int32_t keyLength);

// The adapters between element comparisons and record comparisons, for the base that is being sorted or
// searched: two index slots; the key and an index slot.
[[nodiscard]] std::int32_t QBaseCompareProc(const void *a, const void *b);
[[nodiscard]] std::int32_t QBaseSearchProc(const void *key, const void *slot);

} // namespace drevix
