// Validation: whether index and record data belong together.
#include "platform/base/status.h"
#include "qbase/qbase_file_internal.h"

#include <algorithm>
#include <array>
#include <span>

namespace drevix {
namespace {

using Word = std::uint64_t;
constexpr std::size_t kWordBits = 8 * sizeof(Word);
// Each window costs a pass over the index, so there is a fixed number of them; a bitmap of the whole would be
// large enough to cost more than the passes do.
constexpr std::size_t kWindows = 16;

// Answers which offsets an index holds, for rising questions. One bit stands for an offset, of which only the
// even ones are used but in a strange file; the bits cover a window of the record data that moves on when a
// question lies behind it.
class OffsetSet {
  public:
    // `anyOffset` has every bit that some offset has.
    OffsetSet(std::span<const std::int32_t> offsets, std::uint32_t anyOffset, std::size_t recordsSize)
        : fOffsets(offsets), fShift(1 - anyOffset % 2) {
        const std::size_t all = (recordsSize >> fShift) / kWordBits + 1;
        const std::size_t words = all / kWindows + 1;
        if (words > fFew.size() && fMany.Resize(words * sizeof(Word)) == noErr) {
            fBits = {reinterpret_cast<Word *>(fMany.Data()), words};
        } else { // without memory the bits at hand do too, with more windows
            fBits = std::span(fFew).first(std::min(all, fFew.size()));
        }
    }

    // Whether the index holds the offset, which is not below the one of the last call.
    bool Holds(std::size_t offset) {
        const std::size_t bit = offset >> fShift;
        if (bit >= fEnd) {
            MoveTo(bit);
        }
        const bool isOdd = (offset >> fShift << fShift) != offset; // among even ones only
        return !isOdd && (WordOf(bit - fStart) >> ((bit - fStart) % kWordBits) & 1) != 0;
    }

  private:
    Word &WordOf(std::size_t bit) { return fBits[bit / kWordBits]; }

    void MoveTo(std::size_t start) {
        fStart = start;
        fEnd = start + fBits.size() * kWordBits;
        std::ranges::fill(fBits, Word{0});
        for (const std::int32_t offset : fOffsets) {
            // Huge before the window.
            const std::size_t bit = (static_cast<std::uint32_t>(offset) >> fShift) - fStart;
            if (bit < fEnd - fStart) {
                WordOf(bit) |= Word{1} << (bit % kWordBits);
            }
        }
    }

    std::span<const std::int32_t> fOffsets;
    Block fMany;
    std::array<Word, 2048> fFew; // what is used of it is cleared when the window moves to its first place
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
        const auto place = static_cast<std::uint32_t>(offset); // beyond everything when negative
        anyOffset |= place;
        allInside = allInside && place + kQBaseRecordHeaderSize <= size;
    }
    if (!allInside) {
        return std::nullopt;
    }
    // The walk meets as many different offsets as there are slots. So when each of them is in the index, the
    // index holds nothing else, and nothing twice.
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
