// The record base: variable-length records in memory, addressed through an index of offsets. The file form is
// in "qbase/qbase_file.h", exchange blocks in "qbase/qbase_exchange.h", order in "qbase/qbase_sort.h".
//
// A record is addressed by its number, 0 to count - 1, in index order. Every operation accepts a null base:
// it then does nothing and returns 0, null, -1 for a record number, or paramErr where documented. Not
// thread-safe.
#pragma once

#include "platform/base/block.h"
#include "platform/base/types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace drevix {

// The number of a record: its position in the index. -1 means none.
using RecordNumber = std::int32_t;
inline constexpr RecordNumber kNoRecord = -1;

inline constexpr std::uint32_t kQBaseMagic = FourCharCode("QBSE");
inline constexpr std::uint16_t kQBaseVersion = 2;
inline constexpr std::int32_t kRemovedLength = -1; // the length of a record marked for removal

// Sort modes; the caller numbers its own orders from 128.
inline constexpr std::int16_t kSortNone = 0;      // no known order
inline constexpr std::int16_t kSortDataOrder = 1; // index order is data order
inline constexpr std::int16_t kSortFirstCallerMode = 128;

#pragma pack(push, 1)
// The start of one record in the record data, at an even offset. The caller's data follow, with a pad byte if
// the length is odd. Packed, because in a damaged file or a foreign exchange block a record may start
// anywhere.
struct QBaseRecord {
    std::uint32_t size;  // bytes of the whole record: 10 + length, rounded up to even
    std::int32_t length; // bytes of caller data; kRemovedLength marks the record for removal
    std::uint16_t flags; // the caller's marks; 0 in a new record
};
#pragma pack(pop)

#pragma pack(push, 2)
// A rectangle among the user fields.
struct QBaseRect {
    std::int16_t top;
    std::int16_t left;
    std::int16_t bottom;
    std::int16_t right;
};

// The stored part of a base's header: the first 64 bytes of its file.
struct QBaseFileHeader {
    std::uint32_t magic; // kQBaseMagic
    OSType type;         // kind of the records
    std::uint16_t version;
    std::uint16_t typeVersion; // the caller's version of the record kind
    std::int32_t count;        // records
    std::uint32_t recordsSize; // bytes of record data when last written or read
    std::uint32_t reserved1;
    std::uint32_t reserved2;
    // The user part starts here; everything above is the record part.
    std::uint16_t savedSortMode;
    std::uint16_t reserved3;
    std::uint32_t userLong; // user fields: the library only keeps them
    std::uint32_t userData;
    std::uint32_t userFlags;
    std::uint16_t userWord;
    std::uint16_t userMode;
    QBaseRect userRect;
    std::uint32_t userBlockSize; // bytes of the user block when last written or read
    std::uint32_t reserved4;
};
#pragma pack(pop)

static_assert(offsetof(QBaseRecord, length) == 4 && offsetof(QBaseRecord, flags) == 8);
static_assert(sizeof(QBaseRecord) == 10 && std::has_unique_object_representations_v<QBaseRecord>);
static_assert(offsetof(QBaseFileHeader, type) == 4 && offsetof(QBaseFileHeader, version) == 8);
static_assert(offsetof(QBaseFileHeader, typeVersion) == 10 && offsetof(QBaseFileHeader, count) == 12);
static_assert(offsetof(QBaseFileHeader, recordsSize) == 16 && offsetof(QBaseFileHeader, savedSortMode) == 28);
static_assert(offsetof(QBaseFileHeader, userLong) == 32 && offsetof(QBaseFileHeader, userData) == 36);
static_assert(offsetof(QBaseFileHeader, userFlags) == 40 && offsetof(QBaseFileHeader, userWord) == 44);
static_assert(offsetof(QBaseFileHeader, userMode) == 46 && offsetof(QBaseFileHeader, userRect) == 48);
static_assert(offsetof(QBaseFileHeader, userBlockSize) == 56 && offsetof(QBaseFileHeader, reserved4) == 60);
static_assert(sizeof(QBaseFileHeader) == 64 && std::has_unique_object_representations_v<QBaseFileHeader>);

inline constexpr std::size_t kQBaseRecordHeaderSize = sizeof(QBaseRecord);

// Swaps the byte order of `count` bytes of record data or user block in place. Any status but noErr makes the
// read fail.
using QBaseFlipFunction = OSErr (*)(void *bytes, std::int32_t count);

// A base's fields, apart from its blocks.
struct QBaseState {
    QBaseFileHeader file = {};
    std::int32_t capacity = 0; // slots of the index, used or not
    bool recordsChanged = false;
    bool userFieldsChanged = false;
    std::uint16_t lockCount = 0;
    std::int16_t indexGrowth = 1; // slots added when the index is full
    bool readOnly = false;
    std::uint16_t sortMode = kSortDataOrder;
    std::uint32_t tempLong = 0;
    std::uint32_t tempData = 0;
    QBaseFlipFunction recordFlipProc = nullptr;
    QBaseFlipFunction userFlipProc = nullptr;
};

// A base. Callers use the functions; only the library's own files touch the fields.
struct QBaseHeader : QBaseState {
    Block index;   // `capacity` offsets into `records`, the first `file.count` in use; -1: marked for removal
    Block records; // the records back to back, in data order
    Block userBlock; // the caller's bytes
    Block self;      // the memory of this header
};
using QBaseHandle = QBaseHeader *;

// Whole bases

// Creates an empty base; null if out of memory. The caller owns it and frees it with QBaseDispose. An
// `indexGrowth` below 1 counts as 1.
[[nodiscard]] QBaseHandle QBaseNew(OSType type, std::uint16_t typeVersion, std::int16_t indexGrowth);
// Frees the base and everything in it.
void QBaseDispose(QBaseHandle base);

// Owns a base.
struct QBaseDeleter {
    void operator()(QBaseHandle base) const { QBaseDispose(base); }
};
using QBaseOwner = std::unique_ptr<QBaseHeader, QBaseDeleter>;

// Removes every record and unlocks the base completely. Keeps user fields and user block. An empty base is
// not touched, so its change flag stays as it is.
void QBaseEmpty(QBaseHandle base);
// Copies records, index and header fields from source to target; the target keeps its user block. paramErr,
// with the target unchanged, unless both are valid and have the same type and type version; memFullErr with
// the target emptied.
[[nodiscard]] OSErr QBaseDuplicate(QBaseHandle source, QBaseHandle target);
// Copies the six user fields and their change flag under the same conditions, and clears the target's
// `reserved4`.
[[nodiscard]] OSErr QBaseDuplicateUserFields(QBaseHandle source, QBaseHandle target);
// Bytes in use: record data, index as allocated, and header. *recordsSize, if given, gets the size of the
// record data alone.
[[nodiscard]] std::size_t QBaseGetSize(QBaseHandle base, std::size_t *recordsSize = nullptr);
// The type; for an invalid base 0, with *typeVersion unchanged.
[[nodiscard]] OSType QBaseGetType(QBaseHandle base, std::uint16_t *typeVersion = nullptr);
void QBaseSetType(QBaseHandle base, OSType type, std::uint16_t typeVersion);

// Lock counting. Blocks move only when they are resized, so a lock is just a count; balance lock and unlock.
// Unlocking an unlocked base does nothing.
void QBaseLock(QBaseHandle base);
void QBaseUnlock(QBaseHandle base, bool force = false);

// Locks a base while pointers into it are in use.
class LockedBase {
  public:
    explicit LockedBase(QBaseHandle base) : fBase(base) { QBaseLock(base); }
    ~LockedBase() { QBaseUnlock(fBase); }
    LockedBase(const LockedBase &) = delete;
    LockedBase &operator=(const LockedBase &) = delete;

  private:
    QBaseHandle fBase;
};

// Registers a caller's flag (null: none). It is 1 while an operation requests memory and then gets its old
// value back. Process-wide.
void QBaseUseWantsMemFull(std::int16_t *flag);
// The same for the caller's own memory requests: Begin returns the flag's old value (0 without a flag), End
// restores it.
[[nodiscard]] std::int16_t QBaseBeginMemoryRequest();
void QBaseEndMemoryRequest(std::int16_t saved);

// Sets the converters for files in the other byte order; null: none.
void QBaseSetFlipProc(QBaseHandle base, QBaseFlipFunction recordFlip, QBaseFlipFunction userFlip);

// Records

[[nodiscard]] std::int32_t QBaseCountRecords(QBaseHandle base);
// Appends a copy of the bytes and returns the new record's number. kNoRecord, with the base unchanged, for
// null data, a negative length, out of memory, or record data that would exceed 2^31 - 1 bytes. A sort mode
// other than 1 becomes 0. Amortized cost: one copy of the record.
[[nodiscard]] RecordNumber QBaseAddRecord(QBaseHandle base, const void *data, std::int32_t length);
// The record's data. The caller may change the bytes but not the length. Valid until the next operation that
// adds, replaces, removes or reads records; null and length 0 for an invalid number. Constant time.
[[nodiscard]] inline void *QBaseGetRecord(QBaseHandle base, RecordNumber number,
                                          std::int32_t *length = nullptr);
// Replaces the record's data and returns its number, or kNoRecord with the base unchanged, as QBaseAddRecord.
// Keeps number, flags and sort mode. If the size changes, the data after the record move.
[[nodiscard]] RecordNumber QBaseReplaceRecord(QBaseHandle base, RecordNumber number, const void *data,
                                              std::int32_t length);
// Cuts a base that is in data order to its first `count` records. Does nothing unless `count` is from 0 to
// the current count - 1.
void QBaseTruncate(QBaseHandle base, std::int32_t count);
// The data of the first record, in data order, that starts with the four bytes of the value in native order;
// null if none.
[[nodiscard]] void *QBaseFindLongHeader(QBaseHandle base, std::uint32_t value);

// Marks a record for removal. After this, only mark more records until QBaseRemoveMarkedRecords.
void QBaseMarkRecordForRemoval(QBaseHandle base, RecordNumber number);
// Removes the marked records in one pass over the data. The others keep their bytes and index order, and a
// sorted base stays sorted; only if there is no memory for a list of the kept records does the index fall
// back to data order (sort mode 1). Sorts, so do not call it from a comparison.
void QBaseRemoveMarkedRecords(QBaseHandle base);
// The two steps of the removal. The first drops negative offsets from the index and returns the new count
// without setting it. The second lists the first n index slots by offset; an empty block if n is 0 or memory
// is out.
std::int32_t QBaseRemoveInvalidOffsets(QBaseHandle base);
[[nodiscard]] Block QBaseCreateIndexOfOffsets(QBaseHandle base, std::int32_t n);
// Compares two entries of that list by offset.
[[nodiscard]] std::int32_t QBaseCompareOffsetsProc(const void *a, const void *b);

// Rebuilds the index in data order by walking the record data; sort mode 1. The walk stops, and the count
// with it, at the end of the data or at a damaged record: one that runs past the end or whose size is below
// 10. A damaged record is kept if it is the last one expected; QBaseValidate then rejects it.
void QBaseRebuildIndex(QBaseHandle base);
// Adds delta to each of the first n offsets that is at least the threshold.
void QBaseUpdateOffsets(QBaseHandle base, std::int32_t n, std::int32_t threshold, std::int32_t delta);

// Whether a record is selected; only the low 16 bits count. Must give the same answer each time for the same
// record.
using QBaseSelectFunction = std::int32_t (*)(const void *data, std::int32_t length, std::int16_t flags);
// Moves the selected records, in their order, to index position `target` (0 to the count, counted before the
// move). paramErr for a null base or function; memFullErr with the index unchanged; ioErr, with no record
// lost, if the selection changed its answers. The sort mode becomes 0 if anything is selected.
[[nodiscard]] OSErr QBaseMoveIndexes(QBaseHandle base, std::int32_t target, QBaseSelectFunction select);

// Record flags

[[nodiscard]] std::int16_t QBaseGetRecordFlags(QBaseHandle base, RecordNumber number);
void QBaseSetRecordFlags(QBaseHandle base, RecordNumber number, std::uint16_t flags);
// The first record with exactly these flags; kNoRecord if none.
[[nodiscard]] RecordNumber QBaseFindRecordFlags(QBaseHandle base, std::uint16_t flags);
void QBaseSetAllRecordFlags(QBaseHandle base, std::uint16_t flags);

// Header fields. Setters of user fields also set the user-field change flag.

void QBaseSetUserLong(QBaseHandle base, std::uint32_t value);
[[nodiscard]] std::uint32_t QBaseGetUserLong(QBaseHandle base);
void QBaseSetUserData(QBaseHandle base, std::uint32_t value);
[[nodiscard]] std::uint32_t QBaseGetUserData(QBaseHandle base);
void QBaseSetUserFlags(QBaseHandle base, std::uint32_t value);
[[nodiscard]] std::uint32_t QBaseGetUserFlags(QBaseHandle base);
void QBaseSetUserWord(QBaseHandle base, std::uint16_t value);
[[nodiscard]] std::int16_t QBaseGetUserWord(QBaseHandle base);
void QBaseSetUserMode(QBaseHandle base, std::uint16_t value);
[[nodiscard]] std::int16_t QBaseGetUserMode(QBaseHandle base);
void QBaseSetUserRect(QBaseHandle base, const QBaseRect &rect);
// Leaves *rect unchanged for a null base.
void QBaseGetUserRect(QBaseHandle base, QBaseRect *rect);

void QBaseSetRecordsChanged(QBaseHandle base, bool changed);
[[nodiscard]] bool QBaseGetRecordsChanged(QBaseHandle base);
void QBaseSetUserFieldsChanged(QBaseHandle base, bool changed);
[[nodiscard]] bool QBaseGetUserFieldsChanged(QBaseHandle base);
// A read-only base cannot be written to a file, but can be changed in memory.
void QBaseSetReadOnly(QBaseHandle base, bool readOnly);
[[nodiscard]] bool QBaseGetReadOnly(QBaseHandle base);
void QBaseSetSortMode(QBaseHandle base, std::uint16_t mode);
[[nodiscard]] std::int16_t QBaseGetSortMode(QBaseHandle base);
// Scratch fields for the caller, not stored.
void QBaseSetTempLong(QBaseHandle base, std::uint32_t value);
[[nodiscard]] std::uint32_t QBaseGetTempLong(QBaseHandle base);
void QBaseSetTempData(QBaseHandle base, std::uint32_t value);
[[nodiscard]] std::uint32_t QBaseGetTempData(QBaseHandle base);

// Replaces the user block; null data means size 0. Sets no change flag. paramErr for a null base; memFullErr
// with the old contents kept.
[[nodiscard]] OSErr QBaseSetUserBlock(QBaseHandle base, const void *data, std::uint32_t size);
// The user block's bytes, valid until it is set or read again; null and size 0 when it is empty.
[[nodiscard]] const void *QBaseGetUserBlock(QBaseHandle base, std::uint32_t *size = nullptr);

// Inline, because a call costs measurably next to copying a cached record.

// The record with a number; null for a null base, an invalid number, a slot marked for removal or a damaged
// record.
[[nodiscard]] inline QBaseRecord *FindQBaseRecord(QBaseHandle base, RecordNumber number) {
    if (base == nullptr || number < 0 || number >= base->file.count) {
        return nullptr;
    }
    const std::size_t slot = static_cast<std::size_t>(number) * sizeof(std::int32_t);
    const std::size_t size = base->records.Size();
    if (slot >= base->index.Size() || size < kQBaseRecordHeaderSize) {
        return nullptr;
    }
    // As unsigned, a negative offset lies past the end of any block; so does a size too small for a record
    // header.
    const std::uint32_t offset = *reinterpret_cast<const std::uint32_t *>(base->index.Data() + slot);
    if (offset > size - kQBaseRecordHeaderSize) {
        return nullptr;
    }
    auto *const record = reinterpret_cast<QBaseRecord *>(base->records.Data() + offset);
    const std::uint32_t room = record->size - std::uint32_t{kQBaseRecordHeaderSize};
    const bool isWhole =
        room <= size - kQBaseRecordHeaderSize - offset && static_cast<std::uint32_t>(record->length) <= room;
    return isWhole ? record : nullptr;
}

inline void *QBaseGetRecord(QBaseHandle base, RecordNumber number, std::int32_t *length) {
    QBaseRecord *const record = FindQBaseRecord(base, number);
    if (length != nullptr) {
        *length = record != nullptr ? record->length : 0;
    }
    return record != nullptr ? record + 1 : nullptr;
}

} // namespace drevix
