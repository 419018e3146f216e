// The user's login items: the property list "loginwindow.plist" in the Preferences folder, whose array
// "AutoLaunchedApplicationDictionary" has a dictionary with "Path" and "Hide" an item.
//
// An item that is an application folder with a program for this system ("platform/desktop/app_folder.h") has an
// autostart entry too ("platform/desktop/autostart.h"), so that the desktop really starts it; the functions here keep
// the two in step. Main thread only. Statuses are 16-bit errors in 32 bits.
#pragma once

#include "platform/catalog/named_files.h"

#include <cstdint>

namespace drevix {

// Makes sure that the item at an absolute path is registered. An item matches exactly when its path is the same
// but for ASCII letter case, loosely when its path ends with the last component of `path` or with `name`
// (optional, null for none). The new item takes the place of the first of at most 16 matches and the other
// matches go; it is appended when nothing matches, or when `replace` is 0 and nothing matches exactly. With one
// match that is exact nothing is written. `hide`: not 0 to start it hidden. *wasRegistered (optional) becomes 1
// when an item matched exactly, else 0, also when it could not be written then. Keys and items of others stay as they are.
// noErr; paramErr for no path; memFullErr for a text that is not ASCII, or without memory; resNotFound when the
// file cannot be read or holds something else than login items: it is then never written over; or the error of
// the Preferences folder, of the file or of the autostart entry.
[[nodiscard]] std::int32_t AddLoginItem(const char *path, const char *name, std::int16_t hide,
                                        std::int16_t replace, std::uint16_t *wasRegistered);

// Removes the first 16 items whose path ends with `name`; *removed (optional) becomes their number, also when they could not be
// removed. resNotFound
// when there is no list of items, too (a missing file is made, empty); else as AddLoginItem.
[[nodiscard]] std::int32_t RemoveLoginItem(const char *name, std::uint16_t *removed);

// Writes the path of a file into `path` as a C string in UTF-8: "/Applications/Tool.app", for a file of another
// volume than the root "/Volumes/NAME/..." under the volume's name. `size`, at least 128, is that of the buffer;
// names of folders that do not fit are left out. `escape` not 0: every byte of a folder's name but letters and
// '.' has a backslash before it. *length (optional) becomes the path's length, 0 when the buffer was not
// written. noErr; paramErr for a null or small argument, or an item whose own name does not fit; or the
// catalog's error: the path then begins at the folder that could not be looked up.
[[nodiscard]] std::int32_t GetLoginPath(const FSSpec *item, char *path, std::int16_t size,
                                        std::uint16_t escape, std::uint16_t *length);

} // namespace drevix
