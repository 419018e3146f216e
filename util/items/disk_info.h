// The kind of disk a volume is on, and the disk icon.
#pragma once

#include "platform/base/block.h"
#include "platform/base/types.h"

#include <array>
#include <cstdint>

namespace drevix {

// The built-in disk icon as an 'ICN#' resource: 32 rows of 32 pixels, most significant bit leftmost, then its
// mask in the same form.
inline constexpr std::size_t kDiskIconSize = 256;
extern const std::array<std::uint8_t, kDiskIconSize> kDiskIcon;

// Sets the block to the built-in disk icon, the same for every volume. noErr, or memFullErr with the block
// unchanged.
[[nodiscard]] OSErr GetDiskIcon(std::int16_t volume, Block *icon);

// Values of GetDiskType.
inline constexpr std::int16_t kUnknownDisk = 0;
inline constexpr std::int16_t kLocalDisk = 1;
inline constexpr std::int16_t kServerDisk = 3;
inline constexpr std::int16_t kForeignDisk = 4; // local, with another system's format

// *kind, if given, gets the kind of the volume. noErr, or the status of PBHGetVInfoSync with kind
// kUnknownDisk.
[[nodiscard]] OSErr GetDiskType(std::int16_t volume, std::int16_t *kind);

} // namespace drevix
