// Converts paths to the platform's file references.
#pragma once

#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"

namespace drevix {

// A reference to the item at a path; for a symbolic link, to the link itself. noErr; paramErr for a null
// argument; fnfErr, dirNFErr, ... *ref is set only on success.
[[nodiscard]] OSErr GetFSRefFromNSString(const char *path, FSRef *ref);

enum class MissingItem : bool { Refused = false, Allowed = true };

// A specification of the item at a path. noErr; paramErr for a null argument; the status of
// GetFSRefFromNSString. If a missing item is allowed, fnfErr also means that *spec was set for an item that
// does not exist yet in a folder that does: its name is the path's last component, cut to 63 characters.
// ioErr if that name has characters that Mac OS Roman lacks. Otherwise *spec is set only on success.
[[nodiscard]] OSErr GetFSSpecFromNSString(const char *path, FSSpec *spec, MissingItem missing);

// PBGetCatInfoSync for a specification; index 0 means the item itself, any other as there. `info` and
// `isFolder` are optional; *isFolder is set only on success.
[[nodiscard]] OSErr DrevixGetCatInfo(const FSSpec &spec, std::int16_t index, CatalogInfo *info,
                                     bool *isFolder);

} // namespace drevix
