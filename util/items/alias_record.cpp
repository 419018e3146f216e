#include "util/items/alias_record.h"

#include "platform/base/big_endian.h"
#include "platform/base/status.h"
#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"
#include "util/items/file_references.h"

#include <algorithm>
#include <new>
#include <string>

namespace drevix {
namespace {

constexpr std::uint16_t kVersion = 2;
constexpr std::uint32_t kHfsPlusSignature = 0x482B;
constexpr std::uint32_t kNoBase = 0xFFFF;
constexpr std::size_t kMostBytes = 0xFFFF;
constexpr std::size_t kSizeField = offsetof(AliasRecordHeader, size);

// Tags of the parts after the header.
constexpr std::uint16_t kFolderNameTag = 0;
constexpr std::uint16_t kPathTag = 18;       // of the item from its volume's root
constexpr std::uint16_t kMountPointTag = 19; // of the volume
constexpr std::uint16_t kEndTag = 0xFFFF;

// The data for a record.
struct Facts {
    CatalogInfo item{};
    CatalogInfo folder{}; // its folder; only name and number
    VolumeInfo volume{};
    std::string path;
    bool isFolder = false;
};

OSErr LookUp(const FSSpec &item, Facts *facts) {
    OSErr status = DrevixGetCatInfo(item, 0, &facts->item, &facts->isFolder);
    if (status != noErr) {
        return status;
    }
    facts->path = PathFromSpec(item);
    facts->volume.ioVRefNum = item.vRefNum;
    status = PBHGetVInfoSync(&facts->volume);
    if (status == noErr && item.parID == kRootParentFolder) {
        facts->folder.ioNode = kRootParentFolder;
    } else if (status == noErr) {
        status = DrevixGetCatInfo(item, -1, &facts->folder, nullptr);
    }
    return status;
}

// A Pascal string in a field of `size` bytes, cut and filled up with zeros.
void PutName(std::string &bytes, const Str63 &name, std::size_t size) {
    const std::string_view characters = PascalCharacters(name).substr(0, size - 1);
    PutNumber(bytes, static_cast<std::uint32_t>(characters.size()), 1);
    bytes.append(characters).append(size - 1 - characters.size(), '\0');
}

void PutPart(std::string &bytes, std::uint16_t tag, std::string_view text) {
    Put16(bytes, tag);
    Put16(bytes, static_cast<std::uint32_t>(text.size()));
    bytes.append(text).append(text.size() % 2, '\0');
}

std::string HeaderBytes(const Facts &facts) {
    std::string bytes;
    Put32(bytes, 0);
    Put16(bytes, 0); // the size, filled in later
    Put16(bytes, kVersion);
    Put16(bytes, facts.isFolder ? 1 : 0);
    PutName(bytes, facts.volume.ioName, sizeof AliasRecordHeader::volumeName);
    Put32(bytes, 0);
    Put16(bytes, kHfsPlusSignature);
    Put16(bytes, facts.volume.ioVFSID == kLocalFileSystem ? 0 : 1);
    Put32(bytes, static_cast<std::uint32_t>(facts.folder.ioNode));
    PutName(bytes, facts.item.ioName, sizeof AliasRecordHeader::name);
    Put32(bytes, static_cast<std::uint32_t>(facts.item.ioNode));
    Put32(bytes, 0);
    Put32(bytes, facts.item.ioFlFndrInfo.fdType);
    Put32(bytes, facts.item.ioFlFndrInfo.fdCreator);
    Put16(bytes, kNoBase);
    Put16(bytes, kNoBase);
    Put32(bytes, 0);
    Put16(bytes, static_cast<std::uint16_t>(facts.volume.ioVFSID));
    bytes.append(sizeof AliasRecordHeader::reserved, '\0');
    return bytes;
}

std::string RecordBytes(const Facts &facts) {
    std::string bytes = HeaderBytes(facts);
    if (facts.folder.ioName[0] > 0) {
        PutPart(bytes, kFolderNameTag, PascalCharacters(facts.folder.ioName));
    }
    const std::string &root = facts.volume.mountPoint;
    const bool isBelow = root != "/" && facts.path.starts_with(root);
    const std::string below = isBelow ? facts.path.substr(root.size()) : facts.path;
    PutPart(bytes, kPathTag, below.empty() ? "/" : below);
    PutPart(bytes, kMountPointTag, root);
    Put16(bytes, kEndTag);
    Put16(bytes, 0);
    return bytes;
}

} // namespace

OSErr NewAlias(const FSSpec &item, Block *alias) try {
    Facts facts;
    if (const OSErr status = LookUp(item, &facts); status != noErr) {
        return status;
    }
    std::string bytes = RecordBytes(facts);
    if (bytes.size() > kMostBytes) {
        return bdNamErr;
    }
    std::string size;
    Put16(size, static_cast<std::uint32_t>(bytes.size()));
    bytes.replace(kSizeField, size.size(), size);
    if (const OSErr status = alias->Resize(bytes.size()); status != noErr) {
        return status;
    }
    std::ranges::copy(std::as_bytes(std::span(bytes)), alias->Data());
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
