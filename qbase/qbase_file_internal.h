// Shared by reading, writing and validating base files. Internal.
#pragma once

#include "qbase/qbase_file.h"
#include "qbase/qbase_internal.h"

#include <optional>

namespace drevix {

inline constexpr OSErr kRefused = -1; // not a valid base of this type
inline constexpr std::uint16_t kOldVersion = 1;

// A transfer's byte count is a signed 32-bit number.
inline constexpr std::size_t kMaxTransfer = std::numeric_limits<std::int32_t>::max();

// Transfer `count` bytes, at most kMaxTransfer, at a file position, bypassing the system's cache if possible.
// Do nothing for 0 bytes.
[[nodiscard]] OSErr ReadAt(FileRef file, std::int64_t place, void *bytes, std::size_t count);
[[nodiscard]] OSErr WriteAt(FileRef file, std::int64_t place, const void *bytes, std::size_t count);

// The end of the last record in the record data of a valid base; nullopt for an invalid base.
[[nodiscard]] std::optional<std::size_t> EndOfRecords(QBaseHandle base);

} // namespace drevix
