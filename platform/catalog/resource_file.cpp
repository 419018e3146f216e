#include "platform/catalog/resource_file.h"

#include "platform/base/big_endian.h"
#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "platform/files/disk.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <tuple>

namespace drevix {
namespace {

using Bytes = std::span<const std::byte>;

constexpr std::size_t kForkHeaderSize = 16; // offset of the data, of the map, length of the data, of the map
constexpr std::size_t kDataStart = 256;     // where the data start; the space before is the Finder's
constexpr std::size_t kMapHeaderSize = 28;  // followed by the types
constexpr std::size_t kTypeListField = 24;  // position in the map of the types' offset
constexpr std::size_t kNameListField = 26;  // and of the names' offset
constexpr std::size_t kTypeSize = 8;        // type, count less one, offset of its references
constexpr std::size_t kReferenceSize = 12;  // id, offset of the name, attributes, offset of the data, 4 spare
constexpr std::size_t kLengthSize = 4;      // before a resource's data
constexpr std::uint16_t kNoName = 0xFFFF;
constexpr std::size_t kMostData = 0xFFFFFF; // 24 bits
constexpr std::size_t kMostMap = 0xFFFF;

// The part of `bytes` at an offset; false if it is not complete.
bool Part(Bytes bytes, std::size_t offset, std::size_t length, Bytes *part) {
    if (offset > bytes.size() || length > bytes.size() - offset) {
        return false;
    }
    *part = bytes.subspan(offset, length);
    return true;
}

std::string Text(Bytes bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

// Parses a fork, from the header down.
class Reader {
  public:
    explicit Reader(Bytes fork) : fFork(fork) {}

    bool Read(std::vector<Resource> *resources) {
        if (!ReadHeader()) {
            return false;
        }
        const auto count = static_cast<std::uint16_t>(Get16(fTypes, 0) + 1U); // 0xFFFF: none
        Bytes rows;
        if (!Part(fTypes, 2, count * kTypeSize, &rows)) {
            return false;
        }
        for (; !rows.empty(); rows = rows.subspan(kTypeSize)) {
            if (!ReadType(rows, resources)) {
                return false;
            }
        }
        return true;
    }

  private:
    bool ReadHeader() {
        Bytes map;
        if (fFork.size() < kForkHeaderSize || !Part(fFork, Get32(fFork, 0), Get32(fFork, 8), &fData) ||
            !Part(fFork, Get32(fFork, 4), Get32(fFork, 12), &map) || map.size() < kMapHeaderSize + 2) {
            return false;
        }
        const std::size_t types = Get16(map, kTypeListField);
        const std::size_t names = Get16(map, kNameListField);
        if (types > map.size() - 2 || names > map.size()) {
            return false;
        }
        fTypes = map.subspan(types);
        fNames = map.subspan(names);
        fLeft = fData.size();
        return true;
    }

    bool ReadType(Bytes row, std::vector<Resource> *resources) {
        const std::size_t count = Get16(row, 4) + std::size_t{1};
        Bytes references;
        if (!Part(fTypes, Get16(row, 6), count * kReferenceSize, &references)) {
            return false;
        }
        for (; !references.empty(); references = references.subspan(kReferenceSize)) {
            Resource resource = {Get32(row, 0), static_cast<std::int16_t>(Get16(references, 0)), {}, {}};
            if (!ReadName(Get16(references, 2), &resource) ||
                !ReadData(GetNumber(references, 5, 3), &resource)) {
                return false;
            }
            resources->push_back(std::move(resource));
        }
        return true;
    }

    bool ReadName(std::uint16_t offset, Resource *resource) const {
        if (offset == kNoName) {
            return true;
        }
        Bytes name;
        if (offset >= fNames.size() ||
            !Part(fNames, offset + std::size_t{1}, std::to_integer<std::size_t>(fNames[offset]), &name)) {
            return false;
        }
        resource->name = Text(name);
        return true;
    }

    bool ReadData(std::size_t offset, Resource *resource) {
        Bytes length;
        Bytes data;
        if (!Part(fData, offset, kLengthSize, &length) ||
            !Part(fData, offset + kLengthSize, Get32(length, 0), &data) ||
            data.size() + kLengthSize > fLeft) {
            return false;
        }
        // Otherwise resources that share bytes could require any amount of memory.
        fLeft -= data.size() + kLengthSize;
        resource->data = Text(data);
        return true;
    }

    Bytes fFork;
    Bytes fData;
    Bytes fTypes;
    Bytes fNames;
    std::size_t fLeft = 0; // data bytes not used by a resource yet
};

std::vector<OSType> TypesOf(std::span<const Resource> resources) {
    std::vector<OSType> types;
    for (const Resource &resource : resources) {
        if (std::ranges::find(types, resource.type) == types.end()) {
            types.push_back(resource.type);
        }
    }
    return types;
}

// The parts of a fork being written.
struct Parts {
    std::string data;
    std::string types; // the count and the rows
    std::string references;
    std::string names;
};

void PutResource(const Resource &resource, Parts &parts) {
    Put16(parts.references, static_cast<std::uint16_t>(resource.id));
    Put16(parts.references, resource.name.empty() ? kNoName : static_cast<std::uint32_t>(parts.names.size()));
    Put32(parts.references, static_cast<std::uint32_t>(parts.data.size())); // the high byte, attributes: none
    Put32(parts.references, 0);
    Put32(parts.data, static_cast<std::uint32_t>(resource.data.size()));
    parts.data += resource.data;
    if (!resource.name.empty()) {
        PutNumber(parts.names, static_cast<std::uint32_t>(resource.name.size()), 1);
        parts.names += resource.name;
    }
}

Parts PartsOf(std::span<const Resource> resources) {
    Parts parts;
    const std::vector<OSType> types = TypesOf(resources);
    const std::size_t typesSize = 2 + types.size() * kTypeSize;
    Put16(parts.types, static_cast<std::uint32_t>(types.size() - 1)); // 0xFFFF for none
    for (const OSType type : types) {
        Put32(parts.types, type);
        Put16(parts.types,
              static_cast<std::uint32_t>(std::ranges::count(resources, type, &Resource::type) - 1));
        Put16(parts.types, static_cast<std::uint32_t>(typesSize + parts.references.size()));
        for (const Resource &resource : resources) {
            if (resource.type == type) {
                PutResource(resource, parts);
            }
        }
    }
    return parts;
}

void PutHeader(std::string &fork, std::size_t dataSize, std::size_t mapSize) {
    Put32(fork, kDataStart);
    Put32(fork, static_cast<std::uint32_t>(kDataStart + dataSize));
    Put32(fork, static_cast<std::uint32_t>(dataSize));
    Put32(fork, static_cast<std::uint32_t>(mapSize));
}

} // namespace

OSErr ParseResourceFork(Bytes fork, std::vector<Resource> *resources) try {
    std::vector<Resource> found;
    if (!fork.empty() && !Reader(fork).Read(&found)) {
        return mapReadErr;
    }
    *resources = std::move(found);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr ResourceForkBytes(std::span<const Resource> resources, std::string *fork) try {
    const Parts parts = PartsOf(resources);
    const std::size_t names = kMapHeaderSize + parts.types.size() + parts.references.size();
    if (parts.data.size() > kMostData || names + parts.names.size() > kMostMap) {
        return addResFailed;
    }
    std::string bytes;
    PutHeader(bytes, parts.data.size(), names + parts.names.size());
    bytes.resize(kDataStart);
    bytes += parts.data;
    PutHeader(bytes, parts.data.size(), names + parts.names.size());
    bytes.append(8, '\0'); // used in memory only: next map, file, attributes
    Put16(bytes, kMapHeaderSize);
    Put16(bytes, static_cast<std::uint32_t>(names));
    *fork = bytes + parts.types + parts.references + parts.names;
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpCreateResFile(const FSSpec &spec, OSType creator, OSType type, std::int16_t /*script*/) try {
    const std::string path = PathFromSpec(spec);
    if (path.empty()) {
        return bdNamErr;
    }
    struct stat status {};
    if (CurrentDisk().StatusAt(path.c_str(), &status) == 0) {
        return dupFNErr;
    }
    if (errno != ENOENT) {
        return StatusFromErrno(errno);
    }
    AppleDouble file;
    const OSErr appleDouble = ReadAppleDouble(path, &file);
    if (appleDouble != noErr && appleDouble != fnfErr) {
        return appleDouble == mapReadErr ? dupFNErr : appleDouble;
    }
    file = {};
    SetFInfo(file, {type, creator, 0});
    const OSErr written = WriteAppleDouble(path, file);
    if (written != noErr) {
        std::ignore = RemoveAppleDouble(path); // it exists if only flushing the folder failed
    }
    return written;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr ResourceFile::Open(const FSSpec &spec, Permission permission) try {
    std::string path = PathFromSpec(spec);
    AppleDouble file;
    OSErr status = path.empty() ? bdNamErr : ReadAppleDouble(path, &file);
    if (status == noErr) {
        status = ParseResourceFork(std::as_bytes(std::span(file.resourceFork)), &fResources);
    }
    if (status == noErr) {
        fPath = std::move(path);
        fPermission = permission;
        fIsChanged = false;
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr ResourceFile::AddResource(Bytes data, OSType type, std::int16_t id, ConstStringPtr name) try {
    if (fPermission != Permission::ReadWrite) {
        return wrPermErr;
    }
    if (Get1Resource(type, id) != nullptr) {
        return addResFailed;
    }
    fResources.push_back({type, id, Text(std::as_bytes(std::span(name + 1, name[0]))), Text(data)});
    std::string ignored;
    if (const OSErr status = ResourceForkBytes(fResources, &ignored); status != noErr) {
        fResources.pop_back();
        return status;
    }
    fIsChanged = true;
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

const Resource *ResourceFile::Get1Resource(OSType type, std::int16_t id) const {
    const auto found = std::ranges::find_if(
        fResources, [=](const Resource &resource) { return resource.type == type && resource.id == id; });
    return found == fResources.end() ? nullptr : &*found;
}

OSErr ResourceFile::Close() try {
    if (!fIsChanged) {
        return noErr;
    }
    AppleDouble file;
    OSErr status = ReadAppleDouble(fPath, &file); // its Finder information may have changed meanwhile
    if (status == noErr) {
        status = ResourceForkBytes(fResources, &file.resourceFork);
    }
    if (status == noErr) {
        status = WriteAppleDouble(fPath, file);
    }
    fIsChanged = fIsChanged && status != noErr;
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
