// Alias records: an item's location as the platform's aliases store it. docs/items-folder.md has the layout.
#pragma once

#include "platform/base/block.h"
#include "platform/catalog/named_files.h"

#include <cstdint>

namespace drevix {

#pragma pack(push, 1)
// The fixed part, version 2. All numbers are big-endian; dates are unknown here and 0.
struct AliasRecordHeader {
    std::uint32_t userType; // 0
    std::uint16_t size;     // bytes of the whole record
    std::uint16_t version;  // 2
    std::uint16_t kind;     // 0 for a file, 1 for a folder or volume
    std::uint8_t volumeName[28];
    std::uint32_t volumeDate;
    std::uint16_t volumeSignature; // 'H+'
    std::uint16_t volumeKind;      // 0 for a local disk, 1 for any other
    std::uint32_t parentNumber;    // low half of the folder's inode number; 1 for a volume
    std::uint8_t name[64];
    std::uint32_t number; // low half of the item's inode number
    std::uint32_t date;
    std::uint32_t type; // Finder information
    std::uint32_t creator;
    std::uint16_t levelsUp; // 0xFFFF: no relative path
    std::uint16_t levelsDown;
    std::uint32_t volumeAttributes;
    std::uint16_t fileSystem; // as VolumeInfo::ioVFSID
    std::uint8_t reserved[10];
};
#pragma pack(pop)
static_assert(sizeof(AliasRecordHeader) == 150);

// Makes an absolute alias record of an item. noErr; the status of looking up the item, memFullErr, or
// bdNamErr for a path too long for a record, with *alias unchanged.
[[nodiscard]] OSErr NewAlias(const FSSpec &item, Block *alias);

} // namespace drevix
