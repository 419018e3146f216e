// The record base: variable-length records in memory behind an index of offsets.
// The file form is in "qbase/qbase_file.h", exchange blocks in "qbase/qbase_exchange.h", order in
// "qbase/qbase_sort.h".
//
// A record is addressed by its number, 0 to count - 1, in index order. Every operation accepts a null base:
// it then does nothing and gives 0, null, -1 for a record number, or paramErr where a comment says so. One
// thread.
#pragma once

#include "platform/base/block.h"
#include "platform/base/types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace drevix {

// The number of a record: its position in the index. -1 stands for none.
using RecordNumber = std::int32_t;
inline constexpr RecordNumber kNoRecord = -1;

inline constexpr std::uint32_t kQBaseMagic = FourCharCode("QBSE");
inline constexpr std::uint16_t kQBaseVersion = 2;
inline constexpr std::int32_t kRemovedLength = -1; // the length of a record marked for removal

// Values of the sort mode; 128 and above are orders that the caller numbered.
inline constexpr std::int16_t kSortNone = 0;      // no known order
inline constexpr std::int16_t kSortDataOrder = 1; // index order is data order
inline constexpr std::int16_t kSortFirstCallerMode = 128;

#pragma pack(push, 1)
// The start of one record in the record data, at an even offset; the caller's data follow, and a pad byte
// after data of odd length. Packed without alignment, since a damaged file or a foreign exchange block may
// hold one anywhere.
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

// The part of a base's header that is stored: the first 64 bytes of its file.
struct QBaseFileHeader {
    std::uint32_t magic; // kQBaseMagic
    OSType type;         // kind of the records
    std::uint16_t version;
    std::uint16_t typeVersion; // the caller's version of the record kind
    std::int32_t count;        // records
    std::uint32_t recordsSize; // bytes of record data when last written or read
    std::uint32_t reserved1;
    std::uint32_t reserved2;
    // The bytes from here on are the user part; those before are the record part.
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

// Reverses the byte order of `count` bytes of record data, or of the user block, in place. noErr, or a status
// that refuses the read.
using QBaseFlipFunction = OSErr (*)(void *bytes, std::int32_t count);

// What a base holds beside its blocks.
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

// A base. Callers go through the functions; the library's own files use the fields.
struct QBaseHeader : QBaseState {
    Block index; // `capacity` offsets into `records`, the first `file.count` in use; -1 marks one for removal
    Block records;   // the records back to back, in data order
    Block userBlock; // the caller's bytes
    Block self;      // the memory that this header lies in
};
using QBaseHandle = QBaseHeader *;

// Whole bases

// A new empty base, owned by the caller, who frees it with QBaseDispose; null when there is no memory. An
// `indexGrowth` below 1 counts as 1.
[[nodiscard]] QBaseHandle QBaseNew(OSType type, std::uint16_t typeVersion, std::int16_t indexGrowth);
// Frees the base and all it holds.
void QBaseDispose(QBaseHandle base);

// Owns a base.
struct QBaseDeleter {
    void operator()(QBaseHandle base) const { QBaseDispose(base); }
};
using QBaseOwner = std::unique_ptr<QBaseHeader, QBaseDeleter>;

// Removes every record and unlocks the base completely. User fields and user block stay. A base without
// records is not touched, so its change flag stays as it was.
void QBaseEmpty(QBaseHandle base);
// Makes the target's records, index and header fields those of the source; the target's user block keeps its
// contents. paramErr, with the target unchanged, unless both are valid and of one type and type version;
// memFullErr with the target emptied.
[[nodiscard]] OSErr QBaseDuplicate(QBaseHandle source, QBaseHandle target);
// Copies the six user fields and their change flag, under the same conditions, and clears the target's
// `reserved4`.
[[nodiscard]] OSErr QBaseDuplicateUserFields(QBaseHandle source, QBaseHandle target);
// Bytes in use: record data, index as allocated, and header. `recordsSize`, if given, gets the record data
// alone.
[[nodiscard]] std::size_t QBaseGetSize(QBaseHandle base, std::size_t *recordsSize = nullptr);
// The type, 0 with `typeVersion` untouched for a base that is not valid.
[[nodiscard]] OSType QBaseGetType(QBaseHandle base, std::uint16_t *typeVersion = nullptr);
void QBaseSetType(QBaseHandle base, OSType type, std::uint16_t typeVersion);

// Pins the blocks while the count of locks is above 0. Blocks here move only when they are resized, so this
// is the count alone; keep lock and unlock balanced. Unlocking a base that is not locked does nothing.
void QBaseLock(QBaseHandle base);
void QBaseUnlock(QBaseHandle base, bool force = false);

// Keeps a base locked while pointers into it are in use.
class LockedBase {
  public:
    explicit LockedBase(QBaseHandle base) : fBase(base) { QBaseLock(base); }
    ~LockedBase() { QBaseUnlock(fBase); }
    LockedBase(const LockedBase &) = delete;
    LockedBase &operator=(const LockedBase &) = delete;

  private:
    QBaseHandle fBase;
};

// Registers a flag of the caller's, null for none, that is 1 while an operation asks for memory and has its
// old value back afterwards. Process-wide.
void QBaseUseWantsMemFull(std::int16_t *flag);
// The same bracket for the caller's own requests: Begin gives the flag's old value (0 without a flag), End
// puts it back.
[[nodiscard]] std::int16_t QBaseBeginMemoryRequest();
void QBaseEndMemoryRequest(std::int16_t saved);

// Sets the byte-order converters for files of the other byte order; null for none.
void QBaseSetFlipProc(QBaseHandle base, QBaseFlipFunction recordFlip, QBaseFlipFunction userFlip);

// Records

[[nodiscard]] std::int32_t QBaseCountRecords(QBaseHandle base);
// Appends a copy of the bytes and gives the new record's number, or kNoRecord with the base unchanged: no
// data, a negative length, no memory, or a base whose record data would pass 2^31 - 1 bytes. A sort mode
// other than 1 becomes 0. Amortized cost: one copy of the record.
[[nodiscard]] RecordNumber QBaseAddRecord(QBaseHandle base, const void *data, std::int32_t length);
// The record's data, to be changed in place but not in length, valid until the next operation that adds,
// replaces, removes or reads records; null and length 0 for an invalid number. Constant time.
[[nodiscard]] inline void *QBaseGetRecord(QBaseHandle base, RecordNumber number,
                                          std::int32_t *length = nullptr);
// Replaces the record's data and gives its number, or kNoRecord with the base unchanged, as QBaseAddRecord.
// Number, flags and sort mode stay. Costs a move of the data behind the record when the size changes.
[[nodiscard]] RecordNumber QBaseReplaceRecord(QBaseHandle base, RecordNumber number, const void *data,
                                              std::int32_t length);
// Cuts a base in data order to its first `count` records; other counts than 0 to the present count - 1 do
// nothing.
void QBaseTruncate(QBaseHandle base, std::int32_t count);
// The data of the first record, in data order, whose first four bytes are the value in native order; null if
// none.
[[nodiscard]] void *QBaseFindLongHeader(QBaseHandle base, std::uint32_t value);

// Marks a record for removal. Until the marked ones are removed, nothing but further marking is allowed on
// the base.
void QBaseMarkRecordForRemoval(QBaseHandle base, RecordNumber number);
// Removes the marked records in one pass over the data. The others keep their bytes and their index order,
// and a sorted base its sort mode; only without memory for a list of the kept records does the index fall
// back to data order (sort mode 1). Sorts, so it must not be called from a comparison.
void QBaseRemoveMarkedRecords(QBaseHandle base);
// The two steps of the removal: drops negative offsets from the index and gives the expected new count (the
// count itself stays); and lists the first n index slots in the order of their offsets, an empty block when n
// is 0 or there is no memory.
std::int32_t QBaseRemoveInvalidOffsets(QBaseHandle base);
[[nodiscard]] Block QBaseCreateIndexOfOffsets(QBaseHandle base, std::int32_t n);
// Orders two entries of that list by the offsets that they designate.
[[nodiscard]] std::int32_t QBaseCompareOffsetsProc(const void *a, const void *b);

// Makes index order data order by walking the record data; sort mode 1. The walk ends, and the count with it,
// at the end of the data and at a record that runs past it or whose size is below 10, which leads nowhere. Such
// a record stays if it is the last that is expected; QBaseValidate then refuses it.
void QBaseRebuildIndex(QBaseHandle base);
// Adds delta to each of the first n offsets that is at least the threshold.
void QBaseUpdateOffsets(QBaseHandle base, std::int32_t n, std::int32_t threshold, std::int32_t delta);

// Tells whether a record is selected; only the low 16 bits count. Must answer the same each time for the same
// record.
using QBaseSelectFunction = std::int32_t (*)(const void *data, std::int32_t length, std::int16_t flags);
// Moves the selected records, in their order, to start at `target` (0 to the count) as the index stands
// before the move. paramErr for a null base or function; memFullErr with the index unchanged; ioErr, with no
// record lost, when the selection answered differently the second time. The sort mode becomes 0 as soon as
// anything is selected.
[[nodiscard]] OSErr QBaseMoveIndexes(QBaseHandle base, std::int32_t target, QBaseSelectFunction select);

// Record flags

[[nodiscard]] std::int16_t QBaseGetRecordFlags(QBaseHandle base, RecordNumber number);
void QBaseSetRecordFlags(QBaseHandle base, RecordNumber number, std::uint16_t flags);
// The lowest number whose flags equal the value, kNoRecord if none.
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
// Leaves `rect` untouched for a null base.
void QBaseGetUserRect(QBaseHandle base, QBaseRect *rect);

void QBaseSetRecordsChanged(QBaseHandle base, bool changed);
[[nodiscard]] bool QBaseGetRecordsChanged(QBaseHandle base);
void QBaseSetUserFieldsChanged(QBaseHandle base, bool changed);
[[nodiscard]] bool QBaseGetUserFieldsChanged(QBaseHandle base);
// A read-only base refuses to be written; it can still be changed in memory.
void QBaseSetReadOnly(QBaseHandle base, bool readOnly);
[[nodiscard]] bool QBaseGetReadOnly(QBaseHandle base);
void QBaseSetSortMode(QBaseHandle base, std::uint16_t mode);
[[nodiscard]] std::int16_t QBaseGetSortMode(QBaseHandle base);
// Scratch fields for the caller; never stored.
void QBaseSetTempLong(QBaseHandle base, std::uint32_t value);
[[nodiscard]] std::uint32_t QBaseGetTempLong(QBaseHandle base);
void QBaseSetTempData(QBaseHandle base, std::uint32_t value);
[[nodiscard]] std::uint32_t QBaseGetTempData(QBaseHandle base);

// Replaces the user block; null data means size 0. No change flag is set. paramErr for a null base;
// memFullErr with the old contents kept.
[[nodiscard]] OSErr QBaseSetUserBlock(QBaseHandle base, const void *data, std::uint32_t size);
// The user block's bytes, valid until it is set or read again; null and size 0 when it is empty.
[[nodiscard]] const void *QBaseGetUserBlock(QBaseHandle base, std::uint32_t *size = nullptr);

// Fetching is inline: beside a copy of a record from memory that is at hand, a call can be felt.

// A record by its number, or null: no base, no such number, a slot marked for removal, or a damaged record.
[[nodiscard]] inline QBaseRecord *FindQBaseRecord(QBaseHandle base, RecordNumber number) {
    if (base == nullptr || number < 0 || number >= base->file.count) {
        return nullptr;
    }
    const std::size_t slot = static_cast<std::size_t>(number) * sizeof(std::int32_t);
    const std::size_t size = base->records.Size();
    if (slot >= base->index.Size() || size < kQBaseRecordHeaderSize) {
        return nullptr;
    }
    // A negative offset becomes one beyond any block, and so does a size that has no room for a head.
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
