// The index: its size, rebuilding it from the record data, and moving its slots.
#include "platform/base/status.h"
#include "qbase/qbase_internal.h"

#include <algorithm>
#include <cstring>

namespace drevix {
namespace {

// A selection function's answers over the whole index.
struct Selection {
    std::int32_t count = 0;
    std::int32_t first = 0; // first and last selected position
    std::int32_t last = 0;
    std::int32_t before = 0; // selected positions before the target
};

Selection AskOnce(QBaseHandle base, std::int32_t target, QBaseSelectFunction select) {
    Selection result;
    for (RecordNumber number = 0; number < SlotsInUse(base); ++number) {
        if (!IsSelected(select, FindQBaseRecord(base, number))) {
            continue;
        }
        result.first = result.count == 0 ? number : result.first;
        result.last = number;
        result.before += number < target ? 1 : 0;
        ++result.count;
    }
    return result;
}

// Moves the unselected slots of the span to its start and the selected ones, by way of the list, after them.
// Returns the position of the first selected one, or -1 if the function changed its answers; even then the
// index keeps each offset exactly once.
std::int32_t GatherSelected(QBaseHandle base, const Selection &span, QBaseSelectFunction select,
                            std::int32_t *list) {
    std::int32_t *const offsets = IndexOffsets(base);
    std::int32_t unselected = span.first;
    std::int32_t selected = 0;
    bool answersAgree = true;
    for (RecordNumber number = span.first; number <= span.last && answersAgree; ++number) {
        const std::int32_t offset = offsets[number];
        if (!IsSelected(select, FindQBaseRecord(base, number))) {
            offsets[unselected++] = offset;
        } else if (selected < span.count) {
            list[selected++] = offset;
        } else {
            answersAgree = false; // more than the list has room for; leave it in place
        }
    }
    std::copy_n(list, selected, offsets + unselected);
    return answersAgree && selected == span.count ? unselected : -1;
}

// Moves `count` adjacent slots from one position to another.
void MoveSlots(std::int32_t *offsets, std::int32_t from, std::int32_t count, std::int32_t to) {
    if (to < from) {
        std::rotate(offsets + to, offsets + from, offsets + from + count);
    } else {
        std::rotate(offsets + from, offsets + from + count, offsets + to + count);
    }
}

} // namespace

OSErr ResizeIndex(QBaseHandle base, std::int32_t slots) {
    const OSErr status = base->index.Resize(static_cast<std::size_t>(slots) * sizeof(std::int32_t));
    if (status == noErr) {
        base->capacity = slots;
    }
    return status;
}

void QBaseRebuildIndex(QBaseHandle base) {
    if (base == nullptr) {
        return;
    }
    std::int32_t *const offsets = IndexOffsets(base);
    RecordWalk walk(base);
    const std::int32_t expected = SlotsInUse(base);
    base->file.count = expected;
    for (std::int32_t i = 0; i < expected; ++i) {
        offsets[i] = static_cast<std::int32_t>(walk.Offset());
        const bool isWhole = walk.Next() != nullptr;
        if (i + 1 < expected && (!isWhole || walk.Offset() == base->records.Size())) {
            base->file.count = isWhole ? i + 1 : i;
            break;
        }
    }
    base->sortMode = kSortDataOrder;
}

void QBaseUpdateOffsets(QBaseHandle base, std::int32_t n, std::int32_t threshold, std::int32_t delta) {
    if (base == nullptr) {
        return;
    }
    std::int32_t *const offsets = IndexOffsets(base);
    const std::int32_t slots = std::min(n, SlotsInUse(base));
    for (std::int32_t i = 0; i < slots; ++i) {
        // Unsigned, so that an absurd delta wraps around instead of overflowing.
        const std::uint32_t change = offsets[i] >= threshold ? static_cast<std::uint32_t>(delta) : 0;
        offsets[i] = static_cast<std::int32_t>(static_cast<std::uint32_t>(offsets[i]) + change);
    }
}

OSErr QBaseMoveIndexes(QBaseHandle base, std::int32_t target, QBaseSelectFunction select) {
    if (base == nullptr || select == nullptr) {
        return paramErr;
    }
    const MemoryRequest request;
    const std::int32_t place = std::clamp(target, 0, SlotsInUse(base));
    const Selection span = AskOnce(base, place, select);
    if (span.count == 0) {
        return noErr;
    }
    base->sortMode = kSortNone;
    Block list;
    const OSErr status = list.Resize(static_cast<std::size_t>(span.count) * sizeof(std::int32_t));
    if (status != noErr) {
        return status;
    }
    const std::int32_t from =
        GatherSelected(base, span, select, reinterpret_cast<std::int32_t *>(list.Data()));
    if (from < 0) {
        return ioErr;
    }
    MoveSlots(IndexOffsets(base), from, span.count, place - span.before);
    return noErr;
}

} // namespace drevix
