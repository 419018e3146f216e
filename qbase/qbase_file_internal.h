// What reading, writing and validation of base files share. Not for callers.
#pragma once

#include "qbase/qbase_file.h"
#include "qbase/qbase_internal.h"

#include <optional>

namespace drevix {

inline constexpr OSErr kRefused = -1; // the contents are not those of such a base

// One transfer counts its bytes in a signed 32-bit number.
inline constexpr std::size_t kMaxTransfer = std::numeric_limits<std::int32_t>::max();

// Transfers of `count` bytes, at most kMaxTransfer, from a place in the file on, past the system's cache where
// there is a way. No bytes mean no transfer.
[[nodiscard]] OSErr ReadAt(FileRef file, std::int64_t place, void *bytes, std::size_t count);
[[nodiscard]] OSErr WriteAt(FileRef file, std::int64_t place, const void *bytes, std::size_t count);

// Where the last record of a valid base ends in its record data; nothing for a base that is not valid.
[[nodiscard]] std::optional<std::size_t> EndOfRecords(QBaseHandle base);

} // namespace drevix
