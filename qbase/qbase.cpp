#include "qbase/qbase.h"

#include "platform/base/status.h"
#include "qbase/qbase_internal.h"

#include <cstring>
#include <memory>
#include <new>
#include <tuple>
#include <utility>

namespace drevix {

std::int16_t *gWantsMemory = nullptr;

namespace {

// Whether one can be copied to the other: both valid and of one type.
bool AreAlike(QBaseHandle a, QBaseHandle b) {
    return IsValidBase(a) && IsValidBase(b) && a->file.type == b->file.type &&
           a->file.typeVersion == b->file.typeVersion;
}

// Frees index and records; cannot fail.
void DropRecords(QBaseHandle base) {
    base->file.count = 0;
    base->capacity = 0;
    std::ignore = base->index.Resize(0);
    std::ignore = base->records.Resize(0);
}

OSErr CopyBlock(const Block &source, Block *target) {
    const OSErr status = target->Resize(source.Size());
    if (status == noErr && source.Size() > 0) {
        std::memcpy(target->Data(), source.Data(), source.Size());
    }
    return status;
}

} // namespace

QBaseHandle QBaseNew(OSType type, std::uint16_t typeVersion, std::int16_t indexGrowth) {
    const MemoryRequest request;
    // The header is in a block too, so that all memory of a base comes from one allocator. A new base's other
    // blocks are empty and need no memory.
    Block memory;
    if (memory.Resize(sizeof(QBaseHeader)) != noErr) {
        return nullptr;
    }
    auto *const base = new (memory.Data()) QBaseHeader;
    base->self = std::move(memory);
    base->file.magic = kQBaseMagic;
    base->file.type = type;
    base->file.version = kQBaseVersion;
    base->file.typeVersion = typeVersion;
    base->file.savedSortMode = kSortDataOrder;
    base->indexGrowth = indexGrowth > 0 ? indexGrowth : std::int16_t{1};
    return base;
}

void QBaseDispose(QBaseHandle base) {
    if (base != nullptr) {
        const Block memory = std::move(base->self);
        std::destroy_at(base);
    }
}

void QBaseEmpty(QBaseHandle base) {
    if (QBaseCountRecords(base) <= 0) {
        return;
    }
    const MemoryRequest request;
    QBaseUnlock(base, true);
    DropRecords(base);
    base->sortMode = kSortDataOrder;
    base->recordsChanged = true;
}

OSErr QBaseDuplicate(QBaseHandle source, QBaseHandle target) {
    if (!AreAlike(source, target)) {
        return paramErr;
    }
    if (source == target) {
        return noErr;
    }
    const MemoryRequest request;
    OSErr status = CopyBlock(source->records, &target->records);
    if (status == noErr) {
        status = CopyBlock(source->index, &target->index);
    }
    if (status != noErr) {
        QBaseEmpty(target);
        DropRecords(target); // the target may have received some data by now
        return status;
    }
    static_cast<QBaseState &>(*target) = *source;
    return noErr;
}

OSErr QBaseDuplicateUserFields(QBaseHandle source, QBaseHandle target) {
    if (!AreAlike(source, target)) {
        return paramErr;
    }
    target->file.userLong = source->file.userLong;
    target->file.userData = source->file.userData;
    target->file.userFlags = source->file.userFlags;
    target->file.userWord = source->file.userWord;
    target->file.userMode = source->file.userMode;
    target->file.userRect = source->file.userRect;
    target->userFieldsChanged = source->userFieldsChanged;
    target->file.reserved4 = 0;
    return noErr;
}

std::size_t QBaseGetSize(QBaseHandle base, std::size_t *recordsSize) {
    const std::size_t records = base != nullptr ? base->records.Size() : 0;
    if (recordsSize != nullptr) {
        *recordsSize = records;
    }
    return base != nullptr ? records + base->index.Size() + sizeof(QBaseHeader) : 0;
}

OSType QBaseGetType(QBaseHandle base, std::uint16_t *typeVersion) {
    if (!IsValidBase(base)) {
        return 0;
    }
    if (typeVersion != nullptr) {
        *typeVersion = base->file.typeVersion;
    }
    return base->file.type;
}

void QBaseSetType(QBaseHandle base, OSType type, std::uint16_t typeVersion) {
    if (IsValidBase(base)) {
        base->file.type = type;
        base->file.typeVersion = typeVersion;
    }
}

void QBaseLock(QBaseHandle base) {
    if (base != nullptr) {
        ++base->lockCount;
    }
}

void QBaseUnlock(QBaseHandle base, bool force) {
    if (base != nullptr && base->lockCount > 0) {
        base->lockCount = force ? std::uint16_t{0} : static_cast<std::uint16_t>(base->lockCount - 1);
    }
}

void QBaseUseWantsMemFull(std::int16_t *flag) {
    gWantsMemory = flag;
}

std::int16_t QBaseBeginMemoryRequest() {
    return MemoryRequest::Begin();
}

void QBaseEndMemoryRequest(std::int16_t saved) {
    MemoryRequest::End(saved);
}

void QBaseSetFlipProc(QBaseHandle base, QBaseFlipFunction recordFlip, QBaseFlipFunction userFlip) {
    if (base != nullptr) {
        base->recordFlipProc = recordFlip;
        base->userFlipProc = userFlip;
    }
}

} // namespace drevix
