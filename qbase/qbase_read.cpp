// Reading a base. The sizes in a file are checked against its real length before any memory is allocated, and
// the base changes only once everything has been read.
#include "platform/base/status.h"
#include "qbase/qbase_file_internal.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

constexpr std::uint32_t kFlippedMagic = FourCharCode("ESBQ");
// The most records that fit into the largest record data.
constexpr std::size_t kMaxCount = kMaxRecordsSize / kQBaseRecordHeaderSize;
// Bytes read along with the header: for a few hundred records this covers user block and index too. Beyond
// that, copying costs more than another transfer.
constexpr std::size_t kStartSize = 2048;

#pragma pack(push, 2)
// The version 1 header. The index follows it; there is no user block.
struct OldFileHeader {
    std::uint32_t magic;
    OSType type;
    std::uint16_t version;
    std::uint16_t typeVersion;
    std::uint32_t userData;
    std::uint32_t userFlags;
    std::uint16_t savedSortMode;
    std::uint16_t userWord;
    std::uint32_t reserved1;
    std::int32_t count;
    std::uint32_t recordsSize;
    std::uint32_t reserved2[3];
};
#pragma pack(pop)
static_assert(offsetof(OldFileHeader, userData) == 12 && offsetof(OldFileHeader, userFlags) == 16);
static_assert(offsetof(OldFileHeader, savedSortMode) == 20 && offsetof(OldFileHeader, userWord) == 22);
static_assert(offsetof(OldFileHeader, count) == 28 && offsetof(OldFileHeader, recordsSize) == 32);
static_assert(sizeof(OldFileHeader) == 48 && std::has_unique_object_representations_v<OldFileHeader>);

// What the caller wants to read.
struct Wish {
    bool userPart;
    bool records;
    bool emptyFirst;
    bool rebuildIndex;
    bool allowRecovery;
};

// An open file with a valid header.
struct Source {
    FileRef file = 0;
    std::int64_t length = 0;                 // of the file
    std::array<std::byte, kStartSize> start; // its first bytes, once read
    std::size_t startSize = 0;
    QBaseFileHeader header = {}; // as version 2, in native byte order
    std::int64_t headerSize = sizeof(QBaseFileHeader);
    std::int64_t recordsSize = 0; // actual size
    bool isFlipped = false;       // of the other byte order
    bool isSalvaged = false;      // the length differs from the header's
};

// Reads `count` bytes at a file position, using what came with the header.
OSErr ReadPart(const Source &source, std::int64_t place, std::byte *bytes, std::size_t count) {
    const auto first = static_cast<std::size_t>(place);
    const std::size_t known = first < source.startSize ? std::min(count, source.startSize - first) : 0;
    if (known > 0) {
        std::memcpy(bytes, source.start.data() + first, known);
    }
    return ReadAt(source.file, place + static_cast<std::int64_t>(known), bytes + known, count - known);
}

// Moves the fields of a version 1 header to their version 2 offsets, in either byte order. Keeps the version
// number.
void UpgradeHeader(QBaseFileHeader *header) {
    OldFileHeader old = {};
    std::memcpy(&old, header, sizeof old);
    *header = {};
    header->magic = old.magic;
    header->type = old.type;
    header->version = old.version;
    header->typeVersion = old.typeVersion;
    header->count = old.count;
    header->recordsSize = old.recordsSize;
    header->savedSortMode = old.savedSortMode;
    header->userData = old.userData;
    header->userFlags = old.userFlags;
    header->userWord = old.userWord;
}

bool IsOld(const Source &source) {
    return source.headerSize == sizeof(OldFileHeader);
}

// Reads the header and rejects one of another type.
OSErr ReadHeader(QBaseHandle base, Source *source) {
    QBaseFileHeader &header = source->header;
    source->startSize = static_cast<std::size_t>(
        std::clamp(source->length, std::int64_t{sizeof header}, std::int64_t{kStartSize}));
    if (const OSErr status = ReadAt(source->file, 0, source->start.data(), source->startSize);
        status != noErr) {
        return status;
    }
    std::memcpy(&header, source->start.data(), sizeof header);
    source->isFlipped = header.magic == kFlippedMagic && base->recordFlipProc != nullptr;
    std::uint16_t version = header.version;
    if (source->isFlipped) {
        QBFlipInt16(&version);
    }
    // Old fields are moved before they are flipped, because field widths differ in two places: at 20, version
    // 1 has two 16-bit fields where version 2 has a 32-bit one; at 28, it has the 32-bit count where version
    // 2 has two 16-bit fields.
    if (version == kOldVersion) {
        UpgradeHeader(&header);
        source->headerSize = sizeof(OldFileHeader);
    }
    if (source->isFlipped) {
        QBaseFlipHeader(&header);
    }
    const bool isOurs = header.magic == kQBaseMagic && (IsOld(*source) || version == kQBaseVersion) &&
                        header.type == base->file.type && header.typeVersion == base->file.typeVersion;
    return isOurs ? noErr : kRefused;
}

// The offset of the file's index.
std::int64_t IndexPlace(const Source &source) {
    return source.headerSize + source.header.userBlockSize;
}

std::int64_t RecordsPlace(const Source &source) {
    return IndexPlace(source) + std::int64_t{source.header.count} * std::int64_t{sizeof(std::int32_t)};
}

// Checks the header's sizes against the file's length, in 64 bits so that no sum overflows.
OSErr CheckLength(Source *source, bool allowRecovery) {
    if (source->header.count < 0) {
        return kRefused;
    }
    source->recordsSize = source->length - RecordsPlace(*source);
    if (source->recordsSize == source->header.recordsSize) {
        return noErr;
    }
    // A file that ends before its record data has nothing to salvage.
    if (!allowRecovery || source->recordsSize < 0) {
        return kRefused;
    }
    source->isSalvaged = true;
    return noErr;
}

// Reads the user block, which follows the header. One in the other byte order is dropped if there is no
// converter.
OSErr ReadUserBlock(QBaseHandle base, const Source &source, Block *block) {
    const std::size_t size = source.header.userBlockSize;
    if (size == 0 || (source.isFlipped && base->userFlipProc == nullptr)) {
        return noErr;
    }
    if (size > kMaxTransfer) {
        return memFullErr;
    }
    OSErr status = block->Resize(size);
    if (status == noErr) {
        status = ReadPart(source, source.headerSize, block->Data(), size);
    }
    if (status == noErr && source.isFlipped) {
        status = base->userFlipProc(block->Data(), static_cast<std::int32_t>(size));
    }
    return status;
}

// The file's offsets count from its own record data, which now follows that of the base. Unsigned, so that an
// absurd offset wraps around to one that validation rejects.
void AdjustOffsets(std::span<std::int32_t> offsets, const Source &source, std::size_t distance) {
    for (std::int32_t &offset : offsets) {
        if (source.isFlipped) {
            QBFlipInt32(&offset);
        }
        offset = static_cast<std::int32_t>(static_cast<std::uint32_t>(offset) +
                                           static_cast<std::uint32_t>(distance));
    }
}

// Converts records from a file in the other byte order. Stops without an error at a damaged one; validation
// rejects it later.
OSErr FlipRecords(std::span<std::byte> bytes, std::int32_t count, QBaseFlipFunction flip) {
    RecordWalk walk(bytes.data(), bytes.size());
    for (; count > 0 && bytes.size() - walk.Offset() >= kQBaseRecordHeaderSize; --count) {
        auto *const head = reinterpret_cast<QBaseRecord *>(bytes.data() + walk.Offset());
        QBFlipInt32(&head->size);
        QBFlipInt32(&head->length);
        QBFlipInt16(&head->flags);
        QBaseRecord *const record = walk.Next();
        if (record == nullptr || !HoldsItsData(record)) {
            return noErr;
        }
        if (const OSErr status = flip(RecordData(record), record->length); status != noErr) {
            return status;
        }
    }
    return noErr;
}

// Appends the file's index and record data to the base's, without changing its count.
OSErr ReadBehind(QBaseHandle base, const Source &source) {
    const std::size_t oldSize = base->records.Size();
    const auto oldSlots = static_cast<std::size_t>(base->file.count);
    const auto slots = static_cast<std::size_t>(source.header.count);
    const auto size = static_cast<std::size_t>(source.recordsSize);
    if (oldSlots + slots > kMaxCount || size > kMaxRecordsSize - oldSize) {
        return memFullErr;
    }
    OSErr status = ResizeIndex(base, static_cast<std::int32_t>(oldSlots + slots));
    if (status == noErr) {
        status = base->records.Resize(oldSize + size);
    }
    if (status != noErr) {
        return status;
    }
    const std::span offsets(IndexOffsets(base) + oldSlots, slots);
    const std::span bytes(base->records.Data() + oldSize, size);
    status =
        ReadPart(source, IndexPlace(source), std::as_writable_bytes(offsets).data(), offsets.size_bytes());
    if (status == noErr) {
        status = ReadPart(source, RecordsPlace(source), bytes.data(), bytes.size());
    }
    if (status != noErr) {
        return status;
    }
    AdjustOffsets(offsets, source, oldSize);
    return source.isFlipped ? FlipRecords(bytes, source.header.count, base->recordFlipProc) : noErr;
}

// ReadBehind, but on failure index and records are unchanged.
OSErr ReadRecords(QBaseHandle base, const Source &source) {
    const std::size_t oldSize = base->records.Size();
    const OSErr status = ReadBehind(base, source);
    if (status != noErr) {
        // Shrinking cannot fail.
        std::ignore = ResizeIndex(base, base->file.count);
        std::ignore = base->records.Resize(oldSize);
    }
    return status;
}

void TakeUserPart(QBaseHandle base, const Source &source, Block userBlock) {
    constexpr std::size_t kUserPart = offsetof(QBaseFileHeader, savedSortMode);
    std::memcpy(reinterpret_cast<std::byte *>(&base->file) + kUserPart,
                reinterpret_cast<const std::byte *>(&source.header) + kUserPart,
                sizeof(QBaseFileHeader) - kUserPart);
    base->userBlock = std::move(userBlock);
    base->userFieldsChanged = false;
    base->sortMode = base->file.savedSortMode;
}

void TakeRecords(QBaseHandle base, const Source &source, const Wish &wish) {
    base->file.count += source.header.count;
    base->file.recordsSize = static_cast<std::uint32_t>(base->records.Size());
    base->recordsChanged = IsOld(source) || !wish.emptyFirst || source.isSalvaged;
    if (source.isSalvaged || wish.rebuildIndex) {
        QBaseRebuildIndex(base);
    }
}

// Reads the requested parts. The base keeps its contents until all of them have been read.
OSErr ReadParts(QBaseHandle base, const Wish &wish, Source *source) {
    OSErr status = ReadHeader(base, source);
    if (status == noErr) {
        status = CheckLength(source, wish.allowRecovery);
    }
    Block userBlock;
    if (status == noErr && wish.userPart) {
        status = ReadUserBlock(base, *source, &userBlock);
    }
    if (status == noErr && wish.records) {
        status = ReadRecords(base, *source);
    }
    if (status == noErr && wish.userPart) {
        TakeUserPart(base, *source, std::move(userBlock));
    }
    if (status == noErr && wish.records) {
        TakeRecords(base, *source, wish);
    }
    return status;
}

// No read leaves an invalid base. Validation allows bytes after the last record, but they are dropped: the
// walk could not reach a record added after them, and the next read of the file would fail.
OSErr Settle(QBaseHandle base, OSErr status) {
    const std::optional<std::size_t> end = EndOfRecords(base);
    if (!end) {
        QBaseEmpty(base);
        return status != noErr ? status : kRefused;
    }
    std::ignore = base->records.Resize(*end); // shrinking cannot fail
    return status;
}

} // namespace

OSErr QBaseReadRebuild(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                       bool emptyFileIsFine, bool emptyFirst, bool rebuildIndex, bool allowRecovery,
                       bool *salvaged) {
    if (salvaged != nullptr) {
        *salvaged = false;
    }
    if (base == nullptr || file == 0) {
        return paramErr;
    }
    if (emptyFirst) {
        QBaseEmpty(base);
    }
    Source source;
    source.file = file;
    if (const OSErr status = GetEOF(file, &source.length); status != noErr) {
        return status;
    }
    if (source.length == 0) {
        return emptyFileIsFine ? noErr : eofErr;
    }
    const MemoryRequest request;
    QBaseUnlock(base, true);
    const Wish wish = {readUserPart, readRecords, emptyFirst, rebuildIndex, allowRecovery};
    const OSErr status = Settle(base, ReadParts(base, wish, &source));
    if (salvaged != nullptr) {
        *salvaged = source.isSalvaged;
    }
    return status;
}

OSErr QBaseReadRecover(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                       bool emptyFileIsFine, bool emptyFirst, bool allowRecovery, bool *salvaged) {
    return QBaseReadRebuild(base, file, readUserPart, readRecords, emptyFileIsFine, emptyFirst, false,
                            allowRecovery, salvaged);
}

OSErr QBaseRead(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords, bool emptyFileIsFine,
                bool emptyFirst) {
    return QBaseReadRebuild(base, file, readUserPart, readRecords, emptyFileIsFine, emptyFirst, false, false,
                            nullptr);
}

} // namespace drevix
