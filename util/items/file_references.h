// From a path to the platform's file references.
#pragma once

#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"

namespace drevix {

// A reference to what the path names: to a symbolic link itself, not to what it leads to. noErr; paramErr for
// a null argument; fnfErr, dirNFErr, ... *ref is set only on success.
[[nodiscard]] OSErr GetFSRefFromNSString(const char *path, FSRef *ref);

enum class MissingItem : bool { Refused = false, Allowed = true };

// A specification of what the path names. noErr; paramErr for a null argument; the status of
// GetFSRefFromNSString. Where a missing item is allowed, fnfErr also means that *spec was made for an item
// that is not there yet in a folder that is: then its name is the path's last part, cut to 63 characters;
// ioErr when the name has characters that Mac OS Roman lacks. Otherwise *spec is set only on success.
[[nodiscard]] OSErr GetFSSpecFromNSString(const char *path, FSSpec *spec, MissingItem missing);

// PBGetCatInfoSync for a specification; with an index of 0 for the item itself, else as there. `info` and
// `isFolder` are optional; *isFolder is set only on success.
[[nodiscard]] OSErr DrevixGetCatInfo(const FSSpec &spec, std::int16_t index, CatalogInfo *info,
                                     bool *isFolder);

} // namespace drevix
