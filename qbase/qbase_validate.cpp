// Validation: whether index and record data match.
#include "platform/base/status.h"
#include "qbase/qbase_file_internal.h"

#include <algorithm>
#include <array>
#include <span>

namespace drevix {
namespace {

using Word = std::uint64_t;
constexpr std::size_t kWordBits = 8 * sizeof(Word);
// Each window costs a pass over the index, so their number is fixed; one bitmap for everything would cost
// more than the passes do.
constexpr std::size_t kWindows = 16;

// Tells whether an index holds an offset, for queries in ascending order. A bitmap with one bit per offset
// (only even ones, except in an odd file) covers a window of the record data; the window moves on when a
// query lies past it.
class OffsetSet {
  public:
    // `anyOffset` is the OR of all offsets.
    OffsetSet(std::span<const std::int32_t> offsets, std::uint32_t anyOffset, std::size_t recordsSize)
        : fOffsets(offsets), fShift(1 - anyOffset % 2) {
        const std::size_t all = (recordsSize >> fShift) / kWordBits + 1;
        const std::size_t words = all / kWindows + 1;
        if (words > fFew.size() && fMany.Resize(words * sizeof(Word)) == noErr) {
            fBits = {reinterpret_cast<Word *>(fMany.Data()), words};
        } else { // out of memory: use the built-in bits, with more windows
            fBits = std::span(fFew).first(std::min(all, fFew.size()));
        }
    }

    // Whether the index holds the offset, which must not be lower than in the last call.
    bool Holds(std::size_t offset) {
        const std::size_t bit = offset >> fShift;
        if (bit >= fEnd) {
            MoveTo(bit);
        }
        const bool isOdd = (offset >> fShift << fShift) != offset; // when only even ones are covered
        return !isOdd && (WordOf(bit - fStart) >> ((bit - fStart) % kWordBits) & 1) != 0;
    }

  private:
    Word &WordOf(std::size_t bit) { return fBits[bit / kWordBits]; }

    void MoveTo(std::size_t start) {
        fStart = start;
        fEnd = start + fBits.size() * kWordBits;
        std::ranges::fill(fBits, Word{0});
        for (const std::int32_t offset : fOffsets) {
            // Before the window this wraps around to a huge value.
            const std::size_t bit = (static_cast<std::uint32_t>(offset) >> fShift) - fStart;
            if (bit < fEnd - fStart) {
                WordOf(bit) |= Word{1} << (bit % kWordBits);
            }
        }
    }

    std::span<const std::int32_t> fOffsets;
    Block fMany;
    std::array<Word, 2048> fFew; // cleared as far as used when the first window is set up
    std::span<Word> fBits;
    std::size_t fStart = 0;
    std::size_t fEnd = 0;
    unsigned fShift;
};

} // namespace

std::optional<std::size_t> EndOfRecords(QBaseHandle base) {
    if (base == nullptr || base->file.count > SlotsInUse(base)) {
        return std::nullopt;
    }
    const std::span<const std::int32_t> offsets(IndexOffsets(base),
                                                static_cast<std::size_t>(SlotsInUse(base)));
    const std::size_t size = base->records.Size();
    std::uint32_t anyOffset = 0;
    bool allInside = true;
    for (const std::int32_t offset : offsets) {
        const auto place = static_cast<std::uint32_t>(offset); // past the end if negative
        anyOffset |= place;
        allInside = allInside && place + kQBaseRecordHeaderSize <= size;
    }
    if (!allInside) {
        return std::nullopt;
    }
    // The walk meets as many different offsets as there are slots. So if each is in the index, the index
    // holds nothing else and nothing twice.
    OffsetSet indexed(offsets, anyOffset, size);
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
