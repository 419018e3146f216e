#include "platform/catalog/apple_double.h"

#include "platform/base/big_endian.h"
#include "platform/base/status.h"
#include "platform/catalog/catalog_names.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>

namespace drevix {
namespace {

constexpr std::uint32_t kMagic = 0x00051607;
constexpr std::uint32_t kVersion = 0x00020000;
constexpr std::size_t kHeaderSize = 26; // magic, version, 16 bytes of zero, number of entries
constexpr std::size_t kEntrySize = 12;  // kind, offset, length
constexpr std::uint32_t kResourceForkEntry = 2;
constexpr std::uint32_t kFinderInfoEntry = 9;
constexpr std::size_t kFinderInfoSize = sizeof(AppleDouble::finderInfo);

bool HasMagic(std::span<const std::byte> bytes) {
    return bytes.size() >= kHeaderSize && Get32(bytes, 0) == kMagic && Get32(bytes, 4) == kVersion;
}

// Finds the bytes of the entry of a kind. noErr with *entry empty if there is none.
OSErr FindEntry(std::span<const std::byte> bytes, std::uint32_t kind, std::span<const std::byte> *entry) {
    const std::size_t count = Get16(bytes, kHeaderSize - 2);
    const std::size_t end = kHeaderSize + count * kEntrySize;
    if (end > bytes.size()) {
        return mapReadErr;
    }
    bool found = false;
    for (std::size_t place = kHeaderSize; place < end; place += kEntrySize) {
        const std::size_t offset = Get32(bytes, place + 4);
        const std::size_t length = Get32(bytes, place + 8);
        if (offset > bytes.size() || length > bytes.size() - offset || (length > 0 && offset < end)) {
            return mapReadErr;
        }
        if (Get32(bytes, place) == kind) {
            if (found) {
                return mapReadErr;
            }
            found = true;
            *entry = bytes.subspan(offset, length);
        }
    }
    return noErr;
}

// Reads an AppleDouble file, or its first bytes, only if it is a regular file: a pipe must not block us, nor
// a link lead elsewhere.
OSErr ReadBytes(const std::string &appleDouble, std::size_t most, std::string *bytes) {
    struct stat status {};
    if (CurrentDisk().StatusAt(appleDouble.c_str(), &status) != 0) {
        return LastError();
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (!S_ISREG(status.st_mode) || size > kAppleDoubleMaxBytes) {
        return mapReadErr;
    }
    const int descriptor =
        CurrentDisk().Open(appleDouble.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0);
    OwnedFile file;
    OSErr result = descriptor < 0 ? LastError() : AdoptDescriptor(descriptor, fsRdPerm, file.Out());
    if (result != noErr) {
        return result;
    }
    auto count = static_cast<std::int32_t>(std::min<std::uint64_t>(size, most));
    bytes->resize(static_cast<std::size_t>(count));
    result = FSRead(file.Get(), &count, bytes->data());
    bytes->resize(static_cast<std::size_t>(count)); // another program may have truncated it meanwhile
    return result == eofErr ? noErr : result;
}

} // namespace

FInfo GetFInfo(const AppleDouble &file) {
    return {Get32(file.finderInfo, 0), Get32(file.finderInfo, 4), Get16(file.finderInfo, 8)};
}

void SetFInfo(AppleDouble &file, const FInfo &info) {
    std::string bytes;
    Put32(bytes, info.fdType);
    Put32(bytes, info.fdCreator);
    Put16(bytes, info.fdFlags);
    std::ranges::copy(std::as_bytes(std::span(bytes)), file.finderInfo.begin());
}

OSErr ParseAppleDouble(std::span<const std::byte> bytes, AppleDouble *file) {
    std::span<const std::byte> finderInfo;
    std::span<const std::byte> fork;
    if (!HasMagic(bytes) || FindEntry(bytes, kFinderInfoEntry, &finderInfo) != noErr ||
        FindEntry(bytes, kResourceForkEntry, &fork) != noErr) {
        return mapReadErr;
    }
    // Finder information is often longer than ours: other systems append attributes.
    if (!finderInfo.empty() && finderInfo.size() < kFinderInfoSize) {
        return mapReadErr;
    }
    *file = {};
    std::ranges::copy(finderInfo.first(std::min(finderInfo.size(), kFinderInfoSize)),
                      file->finderInfo.begin());
    file->resourceFork.assign(reinterpret_cast<const char *>(fork.data()), fork.size());
    return noErr;
}

std::string AppleDoubleBytes(const AppleDouble &file) {
    constexpr std::size_t kStart = kHeaderSize + 2 * kEntrySize;
    std::string bytes;
    Put32(bytes, kMagic);
    Put32(bytes, kVersion);
    bytes.append(16, '\0');
    Put16(bytes, 2);
    const auto putEntry = [&bytes](std::uint32_t kind, std::size_t offset, std::size_t length) {
        Put32(bytes, kind);
        Put32(bytes, static_cast<std::uint32_t>(offset));
        Put32(bytes, static_cast<std::uint32_t>(length));
    };
    putEntry(kFinderInfoEntry, kStart, kFinderInfoSize);
    putEntry(kResourceForkEntry, kStart + kFinderInfoSize, file.resourceFork.size());
    bytes.append(reinterpret_cast<const char *>(file.finderInfo.data()), kFinderInfoSize);
    return bytes + file.resourceFork;
}

std::string AppleDoublePath(const std::string &path) {
    return JoinPath(FolderOfPath(path), "._" + LeafOfPath(path));
}

OSErr ReadAppleDouble(const std::string &path, AppleDouble *file) try {
    std::string bytes;
    const OSErr status = ReadBytes(AppleDoublePath(path), kAppleDoubleMaxBytes, &bytes);
    return status == noErr ? ParseAppleDouble(std::as_bytes(std::span(bytes)), file) : status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr WriteAppleDouble(const std::string &path, const AppleDouble &file) try {
    return ReplaceWholeFile(AppleDoublePath(path), AppleDoubleBytes(file), kPrivateFile);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr RemoveAppleDouble(const std::string &path) try {
    const std::string appleDouble = AppleDoublePath(path);
    std::string start;
    const OSErr status = ReadBytes(appleDouble, kHeaderSize, &start);
    if (status == fnfErr || status == mapReadErr) {
        return noErr;
    }
    if (status != noErr) {
        return status;
    }
    const bool isOurs = HasMagic(std::as_bytes(std::span(start)));
    return !isOurs || CurrentDisk().Remove(appleDouble.c_str()) == 0 ? noErr : LastError();
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
