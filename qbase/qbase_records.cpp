// Records by number: adding, fetching, replacing, and their flags.
#include "platform/base/status.h"
#include "qbase/qbase_internal.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace drevix {
namespace {

// Whether index and record data have room for one more record of `size` bytes.
bool HasRoom(QBaseHandle base, std::size_t size) {
    return base->file.count < base->capacity && size <= base->records.Room() &&
           base->records.Size() + size <= kMaxRecordsSize;
}

// Grows the index. Reserves far ahead so that the index seldom moves: while it does not lie after the records
// in memory, they can grow without being copied. Adding 10,000 records takes 1.1 times a memcpy of the same bytes
// with it, 1.3 times without. Reserved pages take no memory until used.
OSErr GrowIndex(QBaseHandle base) {
    constexpr std::size_t kLeastReserve = std::size_t{64} << 10;
    constexpr std::size_t kFactor = 16;
    const std::int32_t slots = base->capacity + base->indexGrowth;
    if (static_cast<std::size_t>(base->indexGrowth) * sizeof(std::int32_t) > base->index.Room()) {
        // Best effort: the next step requests what is needed.
        std::ignore = base->index.Reserve(std::max(kLeastReserve, kFactor * base->index.Size()));
    }
    return ResizeIndex(base, slots);
}

// Makes room for a record and adds it. Kept out of QBaseAddRecord, whose fast path must stay short.
[[gnu::noinline]] RecordNumber AddWithMoreRoom(QBaseHandle base, const void *data, std::int32_t length) {
    const MemoryRequest request;
    const std::int32_t capacity = base->capacity;
    // The index first, or it would end up after the records in memory.
    if (base->file.count >= capacity && GrowIndex(base) != noErr) {
        return kNoRecord;
    }
    const bool isOwn = LiesIn(base->records, data); // and then moves along
    const auto place = isOwn ? static_cast<const std::byte *>(data) - base->records.Data() : 0;
    const std::size_t end = base->records.Size() + RecordSize(length);
    if (end > kMaxRecordsSize || base->records.Reserve(end) != noErr) {
        std::ignore = ResizeIndex(base, capacity); // shrinking cannot fail
        return kNoRecord;
    }
    return QBaseAddRecord(base, isOwn ? base->records.Data() + place : data, length);
}

void WriteRecord(QBaseRecord *record, std::size_t size, const void *data, std::int32_t length) {
    record->size = static_cast<std::uint32_t>(size);
    record->length = length;
    std::byte *const bytes = RecordData(record);
    std::memmove(bytes, data, static_cast<std::size_t>(length));
    if (length % 2 != 0) {
        bytes[length] = std::byte{0};
    }
}

// Replaces a record by data from the base itself, copied first because a resize would move them.
RecordNumber ReplaceByCopy(QBaseHandle base, RecordNumber number, const void *data, std::int32_t length) {
    Block copy;
    const auto size = static_cast<std::size_t>(length);
    if (copy.Resize(size) != noErr) {
        return kNoRecord;
    }
    std::memcpy(copy.Data(), data, size);
    return QBaseReplaceRecord(base, number, copy.Data(), length);
}

// Resizes the record at an offset, moving the data after it and updating their offsets.
bool ResizeRecordAt(QBaseHandle base, std::size_t offset, std::size_t oldSize, std::size_t newSize) {
    const std::size_t total = base->records.Size();
    const std::size_t oldEnd = offset + oldSize;
    const bool grows = newSize > oldSize;
    const std::size_t newTotal = total + newSize - oldSize;
    if (grows && (newTotal > kMaxRecordsSize || base->records.Resize(newTotal) != noErr)) {
        return false;
    }
    std::byte *const bytes = base->records.Data();
    std::memmove(bytes + offset + newSize, bytes + oldEnd, total - oldEnd);
    if (!grows) {
        std::ignore = base->records.Resize(newTotal); // shrinking cannot fail
    }
    const auto delta = static_cast<std::int64_t>(newSize) - static_cast<std::int64_t>(oldSize);
    QBaseUpdateOffsets(base, base->file.count, static_cast<std::int32_t>(oldEnd),
                       static_cast<std::int32_t>(delta));
    return true;
}

} // namespace

std::int32_t QBaseCountRecords(QBaseHandle base) {
    return base != nullptr ? base->file.count : 0;
}

RecordNumber QBaseAddRecord(QBaseHandle base, const void *data, std::int32_t length) {
    if (base == nullptr || data == nullptr || length < 0) {
        return kNoRecord;
    }
    const std::size_t size = RecordSize(length);
    if (!HasRoom(base, size)) {
        return AddWithMoreRoom(base, data, length);
    }
    const std::size_t end = base->records.Size();
    base->records.TakeRoom(size);
    const RecordNumber number = base->file.count++;
    IndexOffsets(base)[number] = static_cast<std::int32_t>(end);
    if (base->sortMode != kSortDataOrder) {
        base->sortMode = kSortNone;
    }
    base->recordsChanged = true;
    QBaseRecord *const record = RecordAt(base, end);
    record->flags = 0;
    WriteRecord(record, size, data, length);
    return number;
}

RecordNumber QBaseReplaceRecord(QBaseHandle base, RecordNumber number, const void *data,
                                std::int32_t length) {
    const QBaseRecord *const record = FindQBaseRecord(base, number);
    if (record == nullptr || data == nullptr || length < 0) {
        return kNoRecord;
    }
    const MemoryRequest request;
    const auto offset = static_cast<std::size_t>(IndexOffsets(base)[number]);
    const std::size_t oldSize = record->size;
    const std::size_t newSize = RecordSize(length);
    if (newSize != oldSize && length > 0 && LiesIn(base->records, data)) {
        return ReplaceByCopy(base, number, data, length);
    }
    if (newSize != oldSize && !ResizeRecordAt(base, offset, oldSize, newSize)) {
        return kNoRecord;
    }
    WriteRecord(RecordAt(base, offset), newSize, data, length);
    base->recordsChanged = true;
    return number;
}

void QBaseTruncate(QBaseHandle base, std::int32_t count) {
    if (base == nullptr || count < 0 || count >= SlotsInUse(base)) {
        return;
    }
    const MemoryRequest request;
    const auto end = static_cast<std::uint32_t>(IndexOffsets(base)[count]);
    if (end <= base->records.Size()) {
        std::ignore = base->records.Resize(end); // neither shrinking can fail
        std::ignore = ResizeIndex(base, count);
        base->file.count = count;
    }
}

void *QBaseFindLongHeader(QBaseHandle base, std::uint32_t value) {
    if (base == nullptr) {
        return nullptr;
    }
    RecordWalk walk(base);
    for (std::int32_t i = 0; i < base->file.count; ++i) {
        QBaseRecord *const record = walk.Next();
        if (record == nullptr) {
            break;
        }
        if (HoldsItsData(record) && static_cast<std::size_t>(record->length) >= sizeof value &&
            std::memcmp(RecordData(record), &value, sizeof value) == 0) {
            return RecordData(record);
        }
    }
    return nullptr;
}

std::int16_t QBaseGetRecordFlags(QBaseHandle base, RecordNumber number) {
    const QBaseRecord *const record = FindQBaseRecord(base, number);
    return record != nullptr ? static_cast<std::int16_t>(record->flags) : std::int16_t{0};
}

void QBaseSetRecordFlags(QBaseHandle base, RecordNumber number, std::uint16_t flags) {
    if (QBaseRecord *const record = FindQBaseRecord(base, number); record != nullptr) {
        record->flags = flags;
    }
}

RecordNumber QBaseFindRecordFlags(QBaseHandle base, std::uint16_t flags) {
    for (RecordNumber number = 0; number < QBaseCountRecords(base); ++number) {
        const QBaseRecord *const record = FindQBaseRecord(base, number);
        if (record != nullptr && record->flags == flags) {
            return number;
        }
    }
    return kNoRecord;
}

void QBaseSetAllRecordFlags(QBaseHandle base, std::uint16_t flags) {
    if (base == nullptr) {
        return;
    }
    RecordWalk walk(base);
    for (std::int32_t i = 0; i < base->file.count; ++i) {
        QBaseRecord *const record = walk.Next();
        if (record == nullptr) {
            break;
        }
        record->flags = flags;
    }
}

} // namespace drevix
