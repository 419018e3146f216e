// The user's login items: the property list "loginwindow.plist" in the Preferences folder, whose array
// "AutoLaunchedApplicationDictionary" has one dictionary with "Path" and "Hide" per item.
//
// An item that is an application folder with a program for this system ("platform/desktop/app_folder.h") also
// gets an autostart entry ("platform/desktop/autostart.h"), so that the desktop really starts it. These
// functions keep the two in sync. Main thread only. Statuses are 16-bit errors in 32 bits.
#pragma once

#include "platform/catalog/named_files.h"

#include <cstdint>

namespace drevix {

// Registers the item at an absolute path. An item matches exactly if its path is equal, ignoring ASCII letter
// case; loosely if its path ends with the last component of `path` or with `name` (null: none). The new item
// replaces the first of at most 16 matches, and the other matches are removed; it is appended if nothing
// matches, or if `replace` is 0 and nothing matches exactly. If the only match is exact, nothing is written.
// `hide`: nonzero to start it hidden. *wasRegistered (optional) gets 1 if an item matched exactly, else 0,
// even if the write then fails. Keys and items of others are kept. noErr; paramErr for a null path;
// memFullErr for non-ASCII text or if out of memory; resNotFound if the file cannot be read or holds anything
// but login items (it is then never overwritten); or the error of the Preferences folder, the file or the
// autostart entry.
[[nodiscard]] std::int32_t AddLoginItem(const char *path, const char *name, std::int16_t hide,
                                        std::int16_t replace, std::uint16_t *wasRegistered);

// Removes the first 16 items whose path ends with `name`; *removed (optional) gets their number, even if the
// write fails. Statuses as AddLoginItem; resNotFound also if there is no list of items (a missing file is
// created empty).
[[nodiscard]] std::int32_t RemoveLoginItem(const char *name, std::uint16_t *removed);

// Writes a file's path into `path` as a UTF-8 C string: "/Applications/Tool.app", or "/Volumes/NAME/..." on
// another volume than the root. `size` is the buffer's size, at least 128; folder names that do not fit are
// left out. If `escape` is nonzero, every byte of a folder's name except letters and '.' is preceded by a
// backslash. *length (optional) gets the path's length, 0 if the buffer was not written. noErr; paramErr for
// a null or too small argument, or if the item's own name does not fit; or the catalog's error, with the path
// starting at the folder that could not be looked up.
[[nodiscard]] std::int32_t GetLoginPath(const FSSpec *item, char *path, std::int16_t size,
                                        std::uint16_t escape, std::uint16_t *length);

} // namespace drevix
