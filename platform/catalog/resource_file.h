// Resource forks: small pieces of data identified by type and id. A file's fork is in its AppleDouble file.
// docs/items-folder.md has the layout.
#pragma once

#include "platform/catalog/apple_double.h"
#include "platform/catalog/named_files.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace drevix {

// One resource.
struct Resource {
    OSType type;
    std::int16_t id;
    std::string name; // Mac OS Roman, at most 255 characters; may be empty
    std::string data;
};

// Parses a resource fork; an empty one has no resources. noErr, or mapReadErr with *resources unchanged for a
// damaged fork: a part beyond the end, or resources that share bytes (their total exceeds the fork). Drops
// resource attributes.
[[nodiscard]] OSErr ParseResourceFork(std::span<const std::byte> fork, std::vector<Resource> *resources);

// Builds a fork from the resources, grouped by type. addResFailed if they exceed its 24-bit offsets (data) or
// 16-bit offsets (types, ids and names); *fork is set only on success.
[[nodiscard]] OSErr ResourceForkBytes(std::span<const Resource> resources, std::string *fork);

// Creates the AppleDouble file of a file that does not exist yet, with type, creator and an empty resource
// fork. The file itself is created later, so that it appears complete. Replaces an orphaned AppleDouble file.
// dupFNErr if the file exists, or anything else has the AppleDouble file's name; else the error writing it,
// with nothing left behind. Ignores `script`.
[[nodiscard]] OSErr FSpCreateResFile(const FSSpec &spec, OSType creator, OSType type, std::int16_t script);

// An open resource fork, in memory between Open and Close.
class ResourceFile {
  public:
    // Reads the file's fork. fnfErr if it has no AppleDouble file, mapReadErr if that is damaged, permErr,
    // ...
    [[nodiscard]] OSErr Open(const FSSpec &spec, Permission permission);

    // Adds a resource, copying its bytes. addResFailed if the type and id exist or the fork is full,
    // wrPermErr if opened for reading; the resources are then unchanged.
    [[nodiscard]] OSErr AddResource(std::span<const std::byte> data, OSType type, std::int16_t id,
                                    ConstStringPtr name);

    // This file's resource with the type and id, or null. Valid until one is added.
    [[nodiscard]] const Resource *Get1Resource(OSType type, std::int16_t id) const;

    // Writes what was added. Without Close nothing is written. On failure the file is unchanged.
    [[nodiscard]] OSErr Close();

  private:
    std::string fPath;
    Permission fPermission = Permission::Read;
    std::vector<Resource> fResources;
    bool fIsChanged = false;
};

} // namespace drevix
