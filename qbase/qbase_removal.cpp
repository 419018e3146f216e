// Marking records for removal, and removing them in one pass.
#include "platform/base/status.h"
#include "qbase/qbase_internal.h"
#include "qbase/sort_range.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>
#include <span>
#include <tuple>

namespace drevix {
namespace {

const std::int32_t *gOffsets = nullptr; // the index that QBaseCompareOffsetsProc uses

// Orders slot numbers by the offsets in those slots.
struct OffsetOrder {
    using Key = std::int32_t;
    [[nodiscard]] Key KeyOf(const void *number) const {
        return offsets[*static_cast<const std::int32_t *>(number)];
    }
    [[nodiscard]] std::int32_t Compare(Key a, Key b) const {
        return a < b ? -1 : static_cast<std::int32_t>(a > b);
    }

    const std::int32_t *offsets;
};

// Moves the numbers from 0 on to the front, in their order, and returns how many these are. Does not branch on
// them: the processor cannot predict which are negative.
std::size_t MoveToFront(std::span<std::int32_t> numbers) {
    std::size_t kept = 0;
    for (const std::int32_t number : numbers) {
        numbers[kept] = number;
        kept += static_cast<std::size_t>(number >= 0);
    }
    return kept;
}

// Lists the first n index slots by offset with a bucket sort. A cell is as large as the mean record, rounded
// down to a power of two, so that records of one size each start in their own cell. Linear in the count:
// removing from 100 records in a sorted order takes 1.2 times a memmove of the same bytes with it, 1.4 times
// without. An empty block if two records start in one cell, an offset is out of range, or memory is out.
Block SpreadSlots(QBaseHandle base, std::int32_t n) {
    const std::size_t size = base->records.Size();
    const std::size_t meanRecord = size / static_cast<std::size_t>(base->file.count);
    const int cellBits = std::countr_zero(std::bit_floor(meanRecord | 1));
    Block cells;
    if (cells.Resize(((size >> cellBits) + 1) * sizeof(std::int32_t)) != noErr) {
        return {};
    }
    const std::span table(reinterpret_cast<std::int32_t *>(cells.Data()),
                          cells.Size() / sizeof(std::int32_t));
    std::ranges::fill(table, -1);
    const std::int32_t *const offsets = IndexOffsets(base);
    for (std::int32_t slot = 0; slot < n; ++slot) {
        const std::size_t cell = static_cast<std::uint32_t>(offsets[slot]) >> cellBits;
        if (cell >= table.size() || table[cell] >= 0) {
            return {};
        }
        table[cell] = slot;
    }
    std::ignore = MoveToFront(table);                                               // the n slots
    std::ignore = cells.Resize(static_cast<std::size_t>(n) * sizeof(std::int32_t)); // shrinking cannot fail
    return cells;
}

// The numbers 0 to n - 1; an empty block if memory is out.
Block NumberSlots(std::int32_t n) {
    Block list;
    if (list.Resize(static_cast<std::size_t>(n) * sizeof(std::int32_t)) == noErr) {
        auto *const numbers = reinterpret_cast<std::int32_t *>(list.Data());
        std::iota(numbers, numbers + n, 0);
    }
    return list;
}

// The same by comparison sort, for records of any size.
Block SortSlots(QBaseHandle base, std::int32_t n) {
    Block list = NumberSlots(n);
    // This comparison never cancels the sort.
    std::ignore =
        SortElements(list.Data(), list.Size() / kOffsetSize, kOffsetSize, OffsetOrder{IndexOffsets(base)});
    return list;
}

// Moves runs of kept records down over the gaps left by dropped ones.
class GapCloser {
  public:
    // `order` lists the index slots of the kept records in data order, or is empty if it could not be made.
    GapCloser(QBaseHandle base, std::span<const std::int32_t> order)
        : fBytes(base->records.Data()), fOffsets(IndexOffsets(base)), fOrder(order) {}

    // Counts one more record into the run; its slot gets the offset that the run will move it to.
    void Keep() {
        if (static_cast<std::size_t>(kept) < fOrder.size()) {
            fOffsets[fOrder[static_cast<std::size_t>(kept)]] -= static_cast<std::int32_t>(fRunStart - fEnd);
        }
        ++kept;
    }

    // Ends the run before a dropped record and starts the next one after it.
    void Drop(std::size_t start, std::size_t end) {
        MoveRun(start);
        fRunStart = end;
        ++dropped;
    }

    // Ends the last run. Returns the size of the remaining data.
    std::size_t Finish(std::size_t end) {
        MoveRun(end);
        return fEnd;
    }

    std::int32_t kept = 0;
    std::int32_t dropped = 0;

  private:
    void MoveRun(std::size_t runEnd) {
        if (fRunStart > fEnd) {
            std::memmove(fBytes + fEnd, fBytes + fRunStart, runEnd - fRunStart);
        }
        fEnd += runEnd - fRunStart;
    }

    std::byte *fBytes;
    std::int32_t *fOffsets;
    std::span<const std::int32_t> fOrder;
    std::size_t fEnd = 0;      // end of the data already in their final place
    std::size_t fRunStart = 0; // start of the current run of kept records
};

// Removes the data of all records marked by their length; returns how many.
std::int32_t DropMarkedData(QBaseHandle base, std::span<const std::int32_t> order) {
    GapCloser closer(base, order);
    RecordWalk walk(base);
    std::size_t end = 0;
    std::int32_t seen = 0;
    for (; seen < base->file.count; ++seen) {
        const std::size_t start = walk.Offset();
        const QBaseRecord *const record = walk.Next();
        if (record == nullptr) {
            // Past a damaged record the records cannot be told apart, so all the rest stays.
            end = base->records.Size();
            break;
        }
        end = walk.Offset();
        if (record->length < 0) {
            closer.Drop(start, end);
        } else {
            closer.Keep();
        }
    }
    for (; seen < base->file.count; ++seen) {
        closer.Keep();
    }
    const std::size_t left = closer.Finish(end);
    if (closer.dropped > 0) {
        std::ignore = base->records.Resize(left); // shrinking cannot fail
        base->file.count = closer.kept;
        base->recordsChanged = true;
    }
    return closer.dropped;
}

} // namespace

void QBaseMarkRecordForRemoval(QBaseHandle base, RecordNumber number) {
    if (QBaseRecord *const record = FindQBaseRecord(base, number); record != nullptr) {
        record->length = kRemovedLength;
        IndexOffsets(base)[number] = -1;
    }
}

std::int32_t QBaseRemoveInvalidOffsets(QBaseHandle base) {
    if (base == nullptr) {
        return 0;
    }
    const MemoryRequest request;
    const std::span offsets(IndexOffsets(base), static_cast<std::size_t>(SlotsInUse(base)));
    const std::span freed = offsets.subspan(MoveToFront(offsets));
    // The count still includes the freed slots: they must not lead to stale offsets.
    std::ranges::fill(freed, -1);
    const auto dropped = static_cast<std::int32_t>(freed.size());
    if (dropped > 0) {
        std::ignore = ResizeIndex(base, base->capacity - dropped); // shrinking cannot fail
    }
    return base->file.count - dropped;
}

Block QBaseCreateIndexOfOffsets(QBaseHandle base, std::int32_t n) {
    const std::int32_t slots = base != nullptr ? std::min(n, SlotsInUse(base)) : 0;
    if (slots < 1) {
        return {};
    }
    const MemoryRequest request;
    gOffsets = IndexOffsets(base);
    const bool isInDataOrder = std::is_sorted(gOffsets, gOffsets + slots);
    Block list = isInDataOrder ? NumberSlots(slots) : SpreadSlots(base, slots);
    if (list.Size() == 0) {
        list = SortSlots(base, slots);
    }
    return list;
}

std::int32_t QBaseCompareOffsetsProc(const void *a, const void *b) {
    const OffsetOrder order{gOffsets};
    return order.Compare(order.KeyOf(a), order.KeyOf(b));
}

void QBaseRemoveMarkedRecords(QBaseHandle base) {
    if (QBaseCountRecords(base) <= 0) {
        return;
    }
    const MemoryRequest request;
    const std::int32_t before = base->file.count;
    const std::int32_t expected = QBaseRemoveInvalidOffsets(base);
    // If no slot is marked, no slot has to move.
    const Block list = expected < before ? QBaseCreateIndexOfOffsets(base, expected) : Block();
    const std::span order(reinterpret_cast<const std::int32_t *>(list.Data()),
                          list.Size() / sizeof(std::int32_t));
    const std::int32_t dropped = DropMarkedData(base, order);
    const bool isAdjusted = dropped == 0 || order.size() == static_cast<std::size_t>(expected);
    if (!isAdjusted || expected != base->file.count) {
        // If memory is out the index keeps its slots, and the rebuild cuts the count to fit.
        std::ignore = ResizeIndex(base, base->file.count);
        QBaseRebuildIndex(base);
    }
    if (base->file.count == 0) {
        base->sortMode = kSortDataOrder;
    }
}

} // namespace drevix
