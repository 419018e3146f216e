// The names behind folder ids and Pascal names. Internal to the catalog.
#pragma once

#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"

#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// A mounted file system.
struct Volume {
    std::int16_t number;
    std::int16_t fileSystem; // as VolumeInfo::ioVFSID
    std::string root;        // mount point
};

// The mounts of a table as proc(5) describes it, without numbers; of several at one place the last. Skips lines that make
// no sense.
[[nodiscard]] std::vector<Volume> ParseMountTable(const std::string &table);
// The volumes in mount table order. noErr, or the error reading the table.
[[nodiscard]] OSErr ListVolumes(std::vector<Volume> *volumes);
// The volume of a path without links; null only for an empty list.
[[nodiscard]] const Volume *VolumeOfPath(const std::vector<Volume> &volumes, std::string_view path);
// The volume with a number; null if it is not mounted.
[[nodiscard]] const Volume *FindVolume(const std::vector<Volume> &volumes, std::int16_t number);
// The volume's display name in Mac OS Roman, at most 27 characters.
[[nodiscard]] Str63 NameOfVolume(const Volume &volume);
// The number of a mount point, stable for the life of the process.
[[nodiscard]] std::int16_t NumberOfVolume(const std::string &root);
// Where a volume is or was mounted; empty for an unknown number. 0 and kOnSystemDisk mean the root volume.
[[nodiscard]] std::string RootOfVolume(std::int16_t number);

// The path of a folder id; empty for an unknown id.
[[nodiscard]] std::string FolderPath(std::int16_t volume, std::int32_t folder);
// The Pascal name of a folder's entry, remembered if it differs from the entry's own name.
[[nodiscard]] Str63 NameOfEntry(const std::string &folder, std::string_view name);
// The name of the entry with a Pascal name; empty if no entry can have it.
[[nodiscard]] std::string EntryOfName(const std::string &folder, const Str63 &name);

// A Mac OS Roman string as a Pascal string, cut to 63 characters.
[[nodiscard]] Str63 Str63FromMacRoman(std::string_view text);

} // namespace drevix
