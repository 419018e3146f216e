// Sorting and searching a base through its index; record data never move. One sort or search at a time per
// process: a comparison must not start another or remove records.
#pragma once

#include "qbase/qbase.h"

namespace drevix {

// Compares record A, or the key, with record B: negative, 0 or positive. Only the low 16 bits count,
// sign-extended. During a sort the records lie in the base's record data, so their addresses are in data
// order.
using QBaseCompareFunction = std::int32_t (*)(const void *a, std::int32_t lengthA, const void *b,
                                              std::int32_t lengthB);

// Sorts the index. The sort mode becomes `mode`, or 128 for a mode below 128. If the comparison called
// CancelFastQSort ("qbase/fast_sort.h"), it becomes 0 and the order is undefined. Does nothing for a null
// base or comparison.
void QBaseSort(QBaseHandle base, QBaseCompareFunction compare, std::int16_t mode);

// Finds a record equal to the key among the first `maximum` records (all, if `maximum` is below 1 or above
// the count). kNoRecord if there is none, for a null base, comparison or key, and for a key length below 1.
// The base must be sorted by the same comparison.
[[nodiscard]] RecordNumber QBaseSearchMax(QBaseHandle base, std::int32_t maximum,
                                          QBaseCompareFunction compare, const void *key,
                                          std::int32_t keyLength);
// QBaseSearchMax over all records.
[[nodiscard]] RecordNumber QBaseSearch(QBaseHandle base, QBaseCompareFunction compare, const void *key,
                                       std::int32_t keyLength);

// Turn a comparison of two index slots, or of the key and an index slot, into one of records of the base
// being sorted or searched.
[[nodiscard]] std::int32_t QBaseCompareProc(const void *a, const void *b);
[[nodiscard]] std::int32_t QBaseSearchProc(const void *key, const void *slot);

} // namespace drevix
