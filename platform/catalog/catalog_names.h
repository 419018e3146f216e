// The names behind folder ids and Pascal names; for the catalog's own sources.
#pragma once

#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"

#include <string>
#include <string_view>

namespace drevix {

// A mounted file system.
struct Volume {
    std::int16_t number;
    std::int16_t fileSystem; // as VolumeInfo::ioVFSID
    std::string root;        // path of its mount point
};

// The volumes in the order of the mount table. noErr, or why it could not be read.
[[nodiscard]] OSErr ListVolumes(std::vector<Volume> *volumes);
// The volume on which a path without links lies; null only for an empty list.
[[nodiscard]] const Volume *VolumeOfPath(const std::vector<Volume> &volumes, std::string_view path);
// The volume of a number; null for one that is not mounted.
[[nodiscard]] const Volume *FindVolume(const std::vector<Volume> &volumes, std::int16_t number);
// The name that the volume shows, in Mac OS Roman and at most 27 characters.
[[nodiscard]] Str63 NameOfVolume(const Volume &volume);
// The same number for the same mount point as long as the process lives.
[[nodiscard]] std::int16_t NumberOfVolume(const std::string &root);
// Where the volume of a number is or was mounted; empty for a number that was never given. 0 and
// kOnSystemDisk mean the root volume.
[[nodiscard]] std::string RootOfVolume(std::int16_t number);

// The path of a folder id; empty for one that was never given.
[[nodiscard]] std::string FolderPath(std::int16_t volume, std::int32_t folder);
// The Pascal name of an entry of a folder, remembered where it differs from the entry's own name.
[[nodiscard]] Str63 NameOfEntry(const std::string &folder, std::string_view name);
// The name of the entry with a Pascal name; empty for a name that no entry can have.
[[nodiscard]] std::string EntryOfName(const std::string &folder, const Str63 &name);

// A string of Mac OS Roman as a Pascal string, cut to 63 characters.
[[nodiscard]] Str63 Str63FromMacRoman(std::string_view text);

} // namespace drevix
