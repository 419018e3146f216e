// Exchange blocks: selected records on their way from one base to another of the same type.
// docs/exchange-block.md has the layout byte by byte.
#pragma once

#include "qbase/qbase.h"

namespace drevix {

// The header of an exchange block. Whole records follow, then one spare byte.
#pragma pack(push, 2)
struct QBaseExchangeHeader {
    std::uint32_t exchangeMagic; // kExchangeMagic
    std::uint32_t baseMagic;     // the source base's magic, type, version and type version
    OSType type;
    std::uint16_t version;
    std::uint16_t typeVersion;
    std::int32_t count; // records in the block
};
#pragma pack(pop)
static_assert(offsetof(QBaseExchangeHeader, type) == 8 && offsetof(QBaseExchangeHeader, count) == 16);
static_assert(sizeof(QBaseExchangeHeader) == 20 &&
              std::has_unique_object_representations_v<QBaseExchangeHeader>);

inline constexpr std::uint32_t kExchangeMagic = FourCharCode("QBX2");

// The bytes in memory; null means no block.
using QBaseExchange = Block *;

// Creates a block with the records that `select` selects, in index order. The caller owns it and frees it
// with QBaseDisposeExchange. Null for a null base or function, or if out of memory. Calls `select` twice per
// record.
[[nodiscard]] QBaseExchange QBaseGetExchange(QBaseHandle base, QBaseSelectFunction select);
// Inserts the block's records at index position `position` if that is from 0 to the count - 1, else at the
// end, and gives each the flags. Returns the number added: 0 for a block of another type or with a damaged
// header; fewer than the block holds if memory runs out or a record is damaged (those added stay). The bytes
// may lie in a record of the base itself; they are then copied first (0 if out of memory).
std::int32_t QBasePutExchange(QBaseHandle base, QBaseExchange exchange, std::int32_t position,
                              std::int16_t flags);
std::int32_t QBasePutExchangePtr(QBaseHandle base, const void *bytes, std::uint32_t size,
                                 std::int32_t position, std::uint16_t flags);
// The number of records; 0 for an invalid block, or one that holds fewer records than its header says.
[[nodiscard]] std::int32_t QBaseCountExchangeRecords(QBaseExchange exchange);
[[nodiscard]] std::int32_t QBaseCountExchangePtrRecords(const void *bytes, std::uint32_t size);
// The data of the record at a position in the block, valid as long as the block; null if there is none.
[[nodiscard]] void *QBaseGetExchangeRecord(QBaseExchange exchange, RecordNumber number,
                                           std::int32_t *length = nullptr);
// The block's bytes and size; null for a null block. Blocks do not move, so unlocking does nothing.
[[nodiscard]] void *QBaseLockExchange(QBaseExchange exchange, std::uint32_t *size = nullptr);
void QBaseUnlockExchange(QBaseExchange exchange);
void QBaseDisposeExchange(QBaseExchange exchange);

} // namespace drevix
