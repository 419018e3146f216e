// Alias records: where an item is, as the platform's aliases keep it. docs/items-folder.md has the layout.
#pragma once

#include "platform/base/block.h"
#include "platform/catalog/named_files.h"

#include <cstdint>

namespace drevix {

#pragma pack(push, 1)
// The fixed part, version 2. All numbers are big endian; dates are not known here and 0.
struct AliasRecordHeader {
    std::uint32_t userType; // 0
    std::uint16_t size;     // bytes of the whole record
    std::uint16_t version;  // 2
    std::uint16_t kind;     // 0 for a file, 1 for a folder or volume
    std::uint8_t volumeName[28];
    std::uint32_t volumeDate;
    std::uint16_t volumeSignature; // 'H+'
    std::uint16_t volumeKind;      // 0 for a local disk, 1 for any other
    std::uint32_t parentNumber;    // inode number of the item's folder, its low half; 1 for a volume
    std::uint8_t name[64];
    std::uint32_t number; // inode number of the item, its low half
    std::uint32_t date;
    std::uint32_t type; // Finder information
    std::uint32_t creator;
    std::uint16_t levelsUp; // 0xFFFF: made without a base
    std::uint16_t levelsDown;
    std::uint32_t volumeAttributes;
    std::uint16_t fileSystem; // as VolumeInfo::ioVFSID
    std::uint8_t reserved[10];
};
#pragma pack(pop)
static_assert(sizeof(AliasRecordHeader) == 150);

// Makes the alias record of an item, without a base. noErr; the status of looking the item up; memFullErr;
// bdNamErr for an item whose path is too long for a record. *alias is unchanged then.
[[nodiscard]] OSErr NewAlias(const FSSpec &item, Block *alias);

} // namespace drevix
