#include "qbase/qbase_exchange.h"

#include "platform/base/status.h"
#include "qbase/qbase_internal.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <tuple>

namespace drevix {
namespace {

constexpr std::size_t kSpareSize = 1; // after the last record

QBaseExchangeHeader HeaderFor(QBaseHandle base, std::int32_t count) {
    return {.exchangeMagic = kExchangeMagic,
            .baseMagic = base->file.magic,
            .type = base->file.type,
            .version = base->file.version,
            .typeVersion = base->file.typeVersion,
            .count = count};
}

// Reads an exchange block: its header, then its records one by one.
class ExchangeReader {
  public:
    // The bytes may have any alignment and are not changed.
    ExchangeReader(const void *bytes, std::size_t size)
        : fBytes(static_cast<std::byte *>(const_cast<void *>(bytes))), fSize(bytes != nullptr ? size : 0),
          fWalk(fBytes, 0) {
        if (fSize >= sizeof(QBaseExchangeHeader) + kSpareSize) {
            std::memcpy(&header, fBytes, sizeof header);
            fWalk = RecordWalk(fBytes + sizeof header, fSize - sizeof header - kSpareSize);
        }
    }
    explicit ExchangeReader(QBaseExchange exchange)
        : ExchangeReader(exchange != nullptr ? exchange->Data() : nullptr,
                         exchange != nullptr ? exchange->Size() : 0) {}

    [[nodiscard]] bool IsExchange() const { return header.exchangeMagic == kExchangeMagic; }

    // The next record; null at the end or before a damaged one.
    QBaseRecord *Next() {
        QBaseRecord *const record = fWalk.Next();
        return record != nullptr && HoldsItsData(record) ? record : nullptr;
    }

    QBaseExchangeHeader header = {}; // zeros if there are too few bytes

  private:
    std::byte *fBytes;
    std::size_t fSize;
    RecordWalk fWalk;
};

// The number of readable records if it matches the header, else 0.
std::int32_t CountRecords(ExchangeReader reader) {
    if (!reader.IsExchange()) {
        return 0;
    }
    std::int32_t walked = 0;
    while (reader.Next() != nullptr) {
        ++walked;
    }
    return walked == reader.header.count ? walked : 0;
}

std::size_t SelectedSize(QBaseHandle base, QBaseSelectFunction select) {
    std::size_t size = 0;
    for (RecordNumber number = 0; number < base->file.count; ++number) {
        QBaseRecord *const record = FindQBaseRecord(base, number);
        size += IsSelected(select, record) ? record->size : 0;
    }
    return size;
}

// Copies the selected records to a block sized for those selected the first time; returns the size used. A
// different selection now does no harm.
std::size_t FillExchange(QBaseHandle base, QBaseSelectFunction select, Block *exchange) {
    QBaseExchangeHeader header = HeaderFor(base, 0);
    std::byte *const bytes = exchange->Data();
    std::size_t end = sizeof header;
    for (RecordNumber number = 0; number < base->file.count; ++number) {
        QBaseRecord *const record = FindQBaseRecord(base, number);
        if (IsSelected(select, record) && record->size <= exchange->Size() - kSpareSize - end) {
            std::memcpy(bytes + end, record, record->size);
            end += record->size;
            ++header.count;
        }
    }
    std::memcpy(bytes, &header, sizeof header);
    bytes[end] = std::byte{0};
    return end + kSpareSize;
}

// Appends the records and returns how many.
std::int32_t AddAll(QBaseHandle base, ExchangeReader reader, std::uint16_t flags) {
    std::int32_t added = 0;
    while (QBaseRecord *const record = reader.Next()) {
        const RecordNumber number = QBaseAddRecord(base, RecordData(record), record->length);
        if (number == kNoRecord) {
            break;
        }
        QBaseSetRecordFlags(base, number, flags);
        ++added;
    }
    return added;
}

// Imports a block that lies in a record of the base itself, and would move while records are added.
std::int32_t PutCopy(QBaseHandle base, const void *bytes, std::uint32_t size, std::int32_t position,
                     std::uint16_t flags) {
    Block copy;
    if (size == 0 || copy.Resize(size) != noErr) {
        return 0;
    }
    std::memcpy(copy.Data(), bytes, size);
    return QBasePutExchangePtr(base, copy.Data(), size, position, flags);
}

} // namespace

QBaseExchange QBaseGetExchange(QBaseHandle base, QBaseSelectFunction select) {
    if (base == nullptr || select == nullptr) {
        return nullptr;
    }
    const MemoryRequest request;
    const LockedBase lock(base);
    std::unique_ptr<Block> exchange(new (std::nothrow) Block);
    const std::size_t size = sizeof(QBaseExchangeHeader) + SelectedSize(base, select) + kSpareSize;
    if (exchange == nullptr || exchange->Resize(size) != noErr) {
        return nullptr;
    }
    std::ignore = exchange->Resize(FillExchange(base, select, exchange.get())); // shrinking cannot fail
    return exchange.release();
}

std::int32_t QBasePutExchangePtr(QBaseHandle base, const void *bytes, std::uint32_t size,
                                 std::int32_t position, std::uint16_t flags) {
    if (base == nullptr) {
        return 0;
    }
    const MemoryRequest request;
    if (LiesIn(base->records, bytes)) {
        return PutCopy(base, bytes, size, position, flags);
    }
    const ExchangeReader reader(bytes, size);
    const QBaseExchangeHeader own = HeaderFor(base, reader.header.count);
    if (std::memcmp(&own, &reader.header, sizeof own) != 0) {
        return 0;
    }
    const std::int32_t before = base->file.count;
    const std::int32_t added = AddAll(base, reader, flags);
    if (added == 0) {
        return 0;
    }
    base->sortMode = static_cast<std::uint16_t>(before == 0 ? kSortDataOrder : kSortNone);
    if (position >= 0 && position < before) {
        std::int32_t *const offsets = IndexOffsets(base);
        std::rotate(offsets + position, offsets + before, offsets + before + added);
    }
    return added;
}

std::int32_t QBasePutExchange(QBaseHandle base, QBaseExchange exchange, std::int32_t position,
                              std::int16_t flags) {
    std::uint32_t size = 0;
    const void *const bytes = QBaseLockExchange(exchange, &size);
    const std::int32_t added =
        QBasePutExchangePtr(base, bytes, size, position, static_cast<std::uint16_t>(flags));
    QBaseUnlockExchange(exchange);
    return added;
}

std::int32_t QBaseCountExchangePtrRecords(const void *bytes, std::uint32_t size) {
    return CountRecords(ExchangeReader(bytes, size));
}

std::int32_t QBaseCountExchangeRecords(QBaseExchange exchange) {
    return CountRecords(ExchangeReader(exchange));
}

void *QBaseGetExchangeRecord(QBaseExchange exchange, RecordNumber number, std::int32_t *length) {
    ExchangeReader reader(exchange);
    QBaseRecord *record = reader.IsExchange() && number >= 0 ? reader.Next() : nullptr;
    for (RecordNumber i = 0; i < number && record != nullptr; ++i) {
        record = reader.Next();
    }
    if (length != nullptr) {
        *length = record != nullptr ? record->length : 0;
    }
    return record != nullptr ? RecordData(record) : nullptr;
}

void *QBaseLockExchange(QBaseExchange exchange, std::uint32_t *size) {
    if (size != nullptr) {
        *size = exchange != nullptr ? static_cast<std::uint32_t>(exchange->Size()) : 0;
    }
    return exchange != nullptr ? exchange->Data() : nullptr;
}

void QBaseUnlockExchange(QBaseExchange /*exchange*/) {}

void QBaseDisposeExchange(QBaseExchange exchange) {
    delete exchange;
}

} // namespace drevix
