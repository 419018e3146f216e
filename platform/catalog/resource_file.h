// Resource forks: small pieces of data under a type and an id. A file's fork lies in its AppleDouble file.
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
    std::string name; // Mac OS Roman, at most 255 characters; empty for none
    std::string data;
};

// Takes a resource fork apart; one without bytes has no resources. noErr, or mapReadErr with *resources
// unchanged for a fork that is damaged: a part beyond the end, or resources that share bytes (their sum is
// more than the fork has). Attributes of resources are dropped.
[[nodiscard]] OSErr ParseResourceFork(std::span<const std::byte> fork, std::vector<Resource> *resources);

// The fork that holds the resources, those of one type together. addResFailed for more than its 24-bit
// offsets (data) and 16-bit offsets (types, ids and names) reach; *fork is set only on success.
[[nodiscard]] OSErr ResourceForkBytes(std::span<const Resource> resources, std::string *fork);

// Makes the AppleDouble file of a file that does not exist yet, with type and creator and an empty resource
// fork. The file itself is made later: until then nobody else sees one of that name. An AppleDouble file that
// was left alone there is replaced. dupFNErr when there is the file, or something else in the companion's
// place; else why it could not be written, with nothing left behind. `script` is not looked at.
[[nodiscard]] OSErr FSpCreateResFile(const FSSpec &spec, OSType creator, OSType type, std::int16_t script);

// An open resource fork, in memory between Open and Close.
class ResourceFile {
  public:
    // Reads the file's fork. fnfErr when it has no AppleDouble file, mapReadErr for a damaged one, permErr, ...
    [[nodiscard]] OSErr Open(const FSSpec &spec, Permission permission);

    // Adds a resource; its bytes are copied. addResFailed for a type and id that are there already and for a
    // fork that is full; wrPermErr when opened for reading. The resources are unchanged then.
    [[nodiscard]] OSErr AddResource(std::span<const std::byte> data, OSType type, std::int16_t id,
                                    ConstStringPtr name);

    // The resource of this file; null when it has none of the type and id. Valid until one is added.
    [[nodiscard]] const Resource *Get1Resource(OSType type, std::int16_t id) const;

    // Writes what was added; without it nothing is written. On failure the file holds what it held before.
    [[nodiscard]] OSErr Close();

  private:
    std::string fPath;
    Permission fPermission = Permission::Read;
    std::vector<Resource> fResources;
    bool fIsChanged = false;
};

} // namespace drevix
