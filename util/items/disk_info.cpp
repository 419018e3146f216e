#include "util/items/disk_info.h"

#include "platform/base/status.h"
#include "platform/catalog/catalog.h"

#include <algorithm>
#include <span>

namespace drevix {
namespace {

struct IconRow {
    std::uint32_t image;
    std::uint32_t mask;
};

constexpr std::size_t kIconRows = 32;
constexpr std::size_t kFirstRow = 15; // those above are empty
constexpr auto kRows = std::to_array<IconRow>({
    {0x07FFFF00, 0x07FFFF00},
    {0x0C000180, 0x0FFFFF80},
    {0x180000C0, 0x1FFFFFC0},
    {0x30000060, 0x3FFFFFE0},
    {0x60000030, 0x7FFFFFF0},
    {0xC0000018, 0xFFFFFFF8},
    {0x80000008, 0xFFFFFFF8},
    {0x80000008, 0xFFFFFFF8},
    {0x957FFFF8, 0xFFFFFFF8},
    {0x8000000C, 0xFFFFFFFC},
    {0x8000000E, 0xFFFFFFFE},
    {0x8C00000F, 0xFFFFFFFF},
    {0x8C00000F, 0xFFFFFFFF},
    {0x8000000F, 0xFFFFFFFF},
    {0x8000000F, 0xFFFFFFFF},
    {0xFFFFFFFF, 0xFFFFFFFF},
    {0x3FFFFFFE, 0x3FFFFFFE},
});
static_assert(kFirstRow + kRows.size() == kIconRows);

constexpr void PutRow(std::array<std::uint8_t, kDiskIconSize> &icon, std::size_t row, std::uint32_t bits) {
    for (std::size_t i = 0; i < 4; ++i) {
        icon[row * 4 + i] = static_cast<std::uint8_t>(bits >> (24 - 8 * i));
    }
}

} // namespace

constexpr std::array<std::uint8_t, kDiskIconSize> kDiskIcon = [] {
    std::array<std::uint8_t, kDiskIconSize> icon{};
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        PutRow(icon, kFirstRow + i, kRows[i].image);
        PutRow(icon, kIconRows + kFirstRow + i, kRows[i].mask);
    }
    return icon;
}();

OSErr GetDiskIcon(std::int16_t /*volume*/, Block *icon) {
    if (const OSErr status = icon->Resize(kDiskIconSize); status != noErr) {
        return status;
    }
    std::ranges::copy(std::as_bytes(std::span(kDiskIcon)), icon->Data());
    return noErr;
}

OSErr GetDiskType(std::int16_t volume, std::int16_t *kind) {
    constexpr std::int16_t kLastServer = 0x4000;
    VolumeInfo info{};
    info.ioVRefNum = volume;
    const OSErr status = PBHGetVInfoSync(&info);
    std::int16_t found = kUnknownDisk;
    if (status == noErr) {
        found = info.ioVFSID == kLocalFileSystem ? kLocalDisk
                : info.ioVFSID > kLastServer     ? kForeignDisk
                                                 : kServerDisk;
    }
    if (kind != nullptr) {
        *kind = found;
    }
    return status;
}

} // namespace drevix
