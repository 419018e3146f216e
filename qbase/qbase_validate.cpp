// Validation: whether index and record data match.
#include "platform/base/status.h"
#include "qbase/qbase_file_internal.h"

#include <algorithm>
#include <new>
#include <span>
#include <vector>

namespace drevix {
namespace {

// Tells whether an index holds an offset: one bit for each byte of the record data, made when first asked for.
class OffsetSet {
  public:
    OffsetSet(std::span<const std::int32_t> offsets, std::size_t recordsSize)
        : fOffsets(offsets), fSize(recordsSize) {}

    // `offset` lies in the record data.
    bool Holds(std::size_t offset) {
        if (!fIsMade) {
            fIsMade = true;
            Make();
        }
        if (fBits.empty()) { // out of memory: slow for many records, but just as right
            return std::ranges::find(fOffsets, static_cast<std::int32_t>(offset)) != fOffsets.end();
        }
        return (ByteOf(offset) & BitOf(offset)) != std::byte{0};
    }

  private:
    void Make() try {
        fBits.resize(fSize / 8 + 1);
        for (const std::int32_t offset : fOffsets) {
            ByteOf(static_cast<std::size_t>(offset)) |= BitOf(static_cast<std::size_t>(offset));
        }
    } catch (const std::bad_alloc &) {
    }
    std::byte &ByteOf(std::size_t offset) { return fBits[offset / 8]; }
    static std::byte BitOf(std::size_t offset) { return std::byte{1} << (offset % 8); }

    std::span<const std::int32_t> fOffsets;
    std::size_t fSize;
    std::vector<std::byte> fBits;
    bool fIsMade = false;
};

} // namespace

std::optional<std::size_t> EndOfRecords(QBaseHandle base) {
    if (base == nullptr || base->file.count > SlotsInUse(base)) {
        return std::nullopt;
    }
    const std::span<const std::int32_t> offsets(IndexOffsets(base),
                                                static_cast<std::size_t>(SlotsInUse(base)));
    const std::size_t size = base->records.Size();
    bool allInside = true;
    for (const std::int32_t offset : offsets) {
        const auto place = static_cast<std::uint32_t>(offset); // past the end if negative
        allInside = allInside && place + kQBaseRecordHeaderSize <= size;
    }
    if (!allInside) {
        return std::nullopt;
    }
    // The walk meets as many different offsets as there are slots. So if each is in the index, the index
    // holds nothing else and nothing twice.
    OffsetSet indexed(offsets, size);
    RecordWalk walk(base);
    for (const std::int32_t slot : offsets) {
        const std::size_t offset = walk.Offset();
        const QBaseRecord *const record = walk.Next();
        if (record == nullptr || !HoldsItsData(record)) {
            return std::nullopt;
        }
        const bool isInPlace = static_cast<std::size_t>(slot) == offset; // as in a base in data order
        if (!isInPlace && !indexed.Holds(offset)) {
            return std::nullopt;
        }
    }
    return walk.Offset();
}

bool QBaseValidate(QBaseHandle base) {
    return EndOfRecords(base).has_value();
}

} // namespace drevix
