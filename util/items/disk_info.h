// What kind of disk a volume is, and the picture of a disk.
#pragma once

#include "platform/base/block.h"
#include "platform/base/types.h"

#include <array>
#include <cstdint>

namespace drevix {

// The built-in disk icon as an 'ICN#' resource: 32 rows of 32 pixels, most significant bit leftmost, then as
// many of its mask.
inline constexpr std::size_t kDiskIconSize = 256;
extern const std::array<std::uint8_t, kDiskIconSize> kDiskIcon;

// Makes the block the built-in disk icon; every volume has the same. noErr, or memFullErr with the block
// unchanged.
[[nodiscard]] OSErr GetDiskIcon(std::int16_t volume, Block *icon);

// Values of GetDiskType.
inline constexpr std::int16_t kUnknownDisk = 0;
inline constexpr std::int16_t kLocalDisk = 1;
inline constexpr std::int16_t kServerDisk = 3;
inline constexpr std::int16_t kForeignDisk = 4; // local, in another system's format

// Tells the kind of a volume, if `kind` is given. The status is that of PBHGetVInfoSync, the kind then
// kUnknownDisk.
[[nodiscard]] OSErr GetDiskType(std::int16_t volume, std::int16_t *kind);

} // namespace drevix
