// Exchange blocks: a selection of whole records on its way from one base to another of the same type.
// docs/exchange-block.md has the layout byte by byte.
#pragma once

#include "qbase/qbase.h"

namespace drevix {

// The head of an exchange block; whole records follow, and one spare byte.
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

// A block of memory with the bytes; null stands for no block.
using QBaseExchange = Block *;

// A block with the records that the function selects, in index order, owned by the caller, who frees it with
// QBaseDisposeExchange; null without a base, a function or memory. The function is called twice for every
// record.
[[nodiscard]] QBaseExchange QBaseGetExchange(QBaseHandle base, QBaseSelectFunction select);
// Adds the block's records to the base, at index position `position` if that is from 0 to the count - 1, else
// at the end, each with the given flags. Gives the number added: 0 for a block of another type or a damaged
// head; fewer than the block holds, and kept, when memory runs out or a record in it is damaged. The bytes may
// lie in a record of the base itself, and are then copied first: 0 without memory for that.
std::int32_t QBasePutExchange(QBaseHandle base, QBaseExchange exchange, std::int32_t position,
                              std::int16_t flags);
std::int32_t QBasePutExchangePtr(QBaseHandle base, const void *bytes, std::uint32_t size,
                                 std::int32_t position, std::uint16_t flags);
// The number of records; 0 for a block that is none, or that does not hold as many as it says.
[[nodiscard]] std::int32_t QBaseCountExchangeRecords(QBaseExchange exchange);
[[nodiscard]] std::int32_t QBaseCountExchangePtrRecords(const void *bytes, std::uint32_t size);
// The data of a record by its place in the block, valid as long as the block; null if there is none.
[[nodiscard]] void *QBaseGetExchangeRecord(QBaseExchange exchange, RecordNumber number,
                                           std::int32_t *length = nullptr);
// The block's bytes and size; null for no block. Blocks do not move here, so unlocking does nothing.
[[nodiscard]] void *QBaseLockExchange(QBaseExchange exchange, std::uint32_t *size = nullptr);
void QBaseUnlockExchange(QBaseExchange exchange);
void QBaseDisposeExchange(QBaseExchange exchange);

} // namespace drevix
