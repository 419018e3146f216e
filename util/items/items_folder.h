// The items folder: alias files of the items that action slots open; the slots' text names them.
#pragma once

#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <string>
#include <string_view>

namespace drevix {

// The folder's name in the preferences folder.
inline constexpr auto kDrevixItemsFolderName = PascalLiteral("com.halcyra.drevix.stuff");

// Finds the folder of that name (63 characters at most) in the user's preferences folder, creating the latter
// if missing; kCreateFolder creates the folder itself too. The outputs are optional and set only on success:
// the folder's specification, its volume and its id. noErr; paramErr for a null or empty name; fnfErr if the
// folder is missing and not to be created; ioErr if a file has that name; the status of the step that failed.
[[nodiscard]] OSErr FindDrevixItemsFolder(ConstStringPtr name, FolderCreation creation, FSSpec *spec,
                                          std::int16_t *volume, std::int32_t *folder);

// Removes every alias file that no open-item slot in the base names (ignoring letter case, but not accents).
// Keeps other files, links and folders, and alias files that cannot be removed; stops at the first failed
// lookup. noErr, or the error finding or creating the folder. The base is not changed; null counts as empty.
// Linear in records plus files.
OSErr CleanupDrevixItems(ConstStringPtr name, QBaseHandle base);

// Removes what is left of alias files of that folder whose making or removal was cut short by a death: "._NAME" without
// "NAME", and the temporary files of its writing. Only regular files of this user that begin as we write them, and
// only while no program of ours makes an item. A failure leaves them for the next time.
void ClearHalfMadeItems(ConstStringPtr name);
// The lock that a program holds while it makes an item ("platform/files/user_lock.h").
inline constexpr std::string_view kItemsLockName = "items.lock";

// The target of an alias file in the items folder.
struct DrevixItem {
    std::string path; // absolute, raw file system bytes; empty: no such alias file
    bool exists;      // the target exists, following links
};
// Looks up a slot's text: the alias file of exactly that name, else one that differs only in letter case.
// Changes nothing; a failure counts as no alias file.
[[nodiscard]] DrevixItem ResolveDrevixItem(const Str31 &name);

// Creates an alias file in the items folder for the item at an absolute or relative path. *storedName gets
// the name to store in a slot: the item's name, cut to 31 characters. If Mac OS Roman cannot represent the
// name, or it is taken by anything but an alias file of this very item, a number distinguishes it
// (DistinctName), so that no slot's item is ever replaced by another. Clears half-made items first. An alias file that is already right is
// kept. If the path is an alias file in the items folder, its target is used. noErr; fnfErr if there is no
// such item, dirFulErr if no name was free, or the status of the step that failed, with *storedName
// unchanged.
[[nodiscard]] OSErr MakeDrevixItem(const std::string &path, Str31 *storedName);

} // namespace drevix
