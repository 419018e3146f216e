#include "qbase/qbase_sort.h"

#include "platform/base/status.h"
#include "qbase/qbase_internal.h"
#include "qbase/sort_range.h"

#include <cstring>

namespace drevix {
namespace {

// What the adapters need to know about the base being sorted or searched.
struct SearchState {
    QBaseCompareFunction compare = nullptr;
    std::byte *records = nullptr;
    std::int32_t keyLength = 0;
};
SearchState gState;

// The record that an index slot points to.
QBaseRecord *RecordOfSlot(std::byte *records, const void *slot) {
    std::int32_t offset = 0;
    std::memcpy(&offset, slot, sizeof offset);
    return reinterpret_cast<QBaseRecord *>(records + offset);
}

// Orders index slots by the caller's comparison of their records.
struct RecordOrder {
    using Key = QBaseRecord *;
    [[nodiscard]] Key KeyOf(const void *slot) const { return RecordOfSlot(records, slot); }
    [[nodiscard]] std::int32_t Compare(Key a, Key b) const {
        return static_cast<std::int16_t>(compare(RecordData(a), a->length, RecordData(b), b->length));
    }

    QBaseCompareFunction compare;
    std::byte *records;
};

} // namespace

std::int32_t QBaseCompareProc(const void *a, const void *b) {
    const RecordOrder order{gState.compare, gState.records};
    return order.Compare(order.KeyOf(a), order.KeyOf(b));
}

std::int32_t QBaseSearchProc(const void *key, const void *slot) {
    QBaseRecord *const record = RecordOfSlot(gState.records, slot);
    return static_cast<std::int16_t>(
        gState.compare(key, gState.keyLength, RecordData(record), record->length));
}

void QBaseSort(QBaseHandle base, QBaseCompareFunction compare, std::int16_t mode) {
    if (base == nullptr || compare == nullptr) {
        return;
    }
    const MemoryRequest request;
    const LockedBase lock(base);
    gState = {.compare = compare, .records = base->records.Data()};
    const OSErr status = SortElements(base->index.Data(), static_cast<std::size_t>(SlotsInUse(base)),
                                      kOffsetSize, RecordOrder{compare, base->records.Data()});
    const std::int16_t sorted = mode >= kSortFirstCallerMode ? mode : kSortFirstCallerMode;
    base->sortMode = static_cast<std::uint16_t>(status == noErr ? sorted : kSortNone);
}

RecordNumber QBaseSearchMax(QBaseHandle base, std::int32_t maximum, QBaseCompareFunction compare,
                            const void *key, std::int32_t keyLength) {
    if (base == nullptr || compare == nullptr || key == nullptr || keyLength < 1) {
        return kNoRecord;
    }
    const LockedBase lock(base);
    gState = {.compare = compare, .records = base->records.Data(), .keyLength = keyLength};
    const std::int32_t count = SlotsInUse(base);
    const std::int32_t searched = maximum >= 1 && maximum <= count ? maximum : count;
    std::int32_t *const offsets = IndexOffsets(base);
    const void *const found = FastBSearch(key, offsets, searched, sizeof *offsets, QBaseSearchProc);
    return found != nullptr ? static_cast<RecordNumber>(static_cast<const std::int32_t *>(found) - offsets)
                            : kNoRecord;
}

RecordNumber QBaseSearch(QBaseHandle base, QBaseCompareFunction compare, const void *key,
                         std::int32_t keyLength) {
    return QBaseSearchMax(base, QBaseCountRecords(base), compare, key, keyLength);
}

} // namespace drevix
