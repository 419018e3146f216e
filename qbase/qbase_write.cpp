// Writing a base: sets the file's final length, then writes header, user block, index and records in order.
#include "platform/base/status.h"
#include "qbase/qbase_file_internal.h"

namespace drevix {
namespace {

constexpr std::size_t kUserPartStart = offsetof(QBaseFileHeader, savedSortMode);
constexpr std::size_t kUserPartSize = sizeof(QBaseFileHeader) - kUserPartStart;

// The two parts of a base's file that can be written separately.
struct Parts {
    bool user;
    bool records;
};

std::size_t IndexSize(QBaseHandle base) {
    return static_cast<std::size_t>(base->file.count) * sizeof(std::int32_t);
}

std::int64_t IndexPlace(QBaseHandle base) {
    return static_cast<std::int64_t>(sizeof(QBaseFileHeader) + base->userBlock.Size());
}

std::int64_t RecordsPlace(QBaseHandle base) {
    return IndexPlace(base) + static_cast<std::int64_t>(IndexSize(base));
}

std::int64_t FileSize(QBaseHandle base) {
    return RecordsPlace(base) + static_cast<std::int64_t>(base->records.Size());
}

// Whether the file holds a base of the same type whose user block has the same size, so that one part can be
// written alone. False for a file that cannot be read.
bool HoldsBaseLike(QBaseHandle base, FileRef file) {
    QBaseFileHeader found = {};
    return ReadAt(file, 0, &found, sizeof found) == noErr && found.magic == kQBaseMagic &&
           found.version == kQBaseVersion && found.type == base->file.type &&
           found.typeVersion == base->file.typeVersion && found.userBlockSize == base->userBlock.Size();
}

OSErr WriteUserPart(QBaseHandle base, FileRef file) {
    const auto *const header = reinterpret_cast<const std::byte *>(&base->file);
    const OSErr status = WriteAt(file, kUserPartStart, header + kUserPartStart, kUserPartSize);
    return status == noErr
               ? WriteAt(file, sizeof(QBaseFileHeader), base->userBlock.Data(), base->userBlock.Size())
               : status;
}

OSErr WriteRecords(QBaseHandle base, FileRef file) {
    const OSErr status = WriteAt(file, IndexPlace(base), base->index.Data(), IndexSize(base));
    return status == noErr ? WriteAt(file, RecordsPlace(base), base->records.Data(), base->records.Size())
                           : status;
}

// Writes the requested parts and reports which were written completely.
OSErr WriteParts(QBaseHandle base, FileRef file, Parts wanted, Parts *whole) {
    OSErr status = noErr;
    if (wanted.records) {
        status = WriteAt(file, 0, &base->file, kUserPartStart);
    }
    if (status == noErr && wanted.user) {
        status = WriteUserPart(base, file);
        whole->user = status == noErr;
    }
    if (status == noErr && wanted.records) {
        status = WriteRecords(base, file);
        whole->records = status == noErr;
    }
    return status;
}

// Updates the header fields that describe what is about to be written.
void DescribeParts(QBaseHandle base, Parts wanted) {
    base->file.userBlockSize = static_cast<std::uint32_t>(base->userBlock.Size());
    if (wanted.records) {
        base->file.recordsSize = static_cast<std::uint32_t>(base->records.Size());
    }
    // The sort mode is in the user part but describes the records, so it is stored only when both are
    // written.
    if (wanted.records && wanted.user) {
        base->file.savedSortMode = base->sortMode;
    }
}

} // namespace

OSErr QBaseWrite(QBaseHandle base, FileRef file, bool writeUserPart, bool writeRecords) {
    if (base == nullptr || file == 0) {
        return paramErr;
    }
    if (base->readOnly) {
        return wrPermErr;
    }
    if (base->userBlock.Size() > kMaxTransfer || base->index.Size() < IndexSize(base)) {
        return paramErr;
    }
    const MemoryRequest request;
    Parts wanted = {writeUserPart, writeRecords};
    if (!(writeUserPart && writeRecords) && !HoldsBaseLike(base, file)) {
        wanted = {true, true};
    }
    DescribeParts(base, wanted);
    if (wanted.records) {
        const OSErr status = SetEOF(file, FileSize(base));
        if (status != noErr) {
            return status;
        }
    }
    Parts whole = {false, false};
    const OSErr status = WriteParts(base, file, wanted, &whole);
    const OSErr flushed = QBFlushSync(file);
    if (flushed == noErr) {
        // What may not be on the disk stays marked as changed, so that the caller can try again.
        base->userFieldsChanged = base->userFieldsChanged && !whole.user;
        base->recordsChanged = base->recordsChanged && !whole.records;
    }
    return status != noErr ? status : flushed;
}

} // namespace drevix
