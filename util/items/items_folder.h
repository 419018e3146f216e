// The items folder: the alias files of the items that action slots open, named by the slots' text.
#pragma once

#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <string>

namespace drevix {

// The folder's name in the preferences folder.
inline constexpr auto kDrevixItemsFolderName = PascalLiteral("com.halcyra.drevix.stuff");

// Finds the folder of that name (63 characters at most) in the user's preferences folder, which is made when
// missing; kCreateFolder makes the folder too. The outputs are optional and set only on success: the
// folder's own specification, the volume to name with its id, and its id. noErr; paramErr for a name that is
// null or empty; fnfErr when it is missing and not to be made; ioErr for a file of that name; the status of
// the step that failed.
[[nodiscard]] OSErr FindDrevixItemsFolder(ConstStringPtr name, FolderCreation creation, FSSpec *spec,
                                          std::int16_t *volume, std::int32_t *folder);

// Removes every alias file of the folder that no open-item slot of a record in the base names, letter case
// ignored, accents not. Other files, links and folders stay. An alias file that cannot be removed is left;
// the first look-up that fails ends it. noErr, or why the folder could not be found or made; the base is
// unchanged, and null counts as empty. Cost: one look at each record and one at each file.
OSErr CleanupDrevixItems(ConstStringPtr name, QBaseHandle base);

// Where an alias file of the items folder leads.
struct DrevixItem {
    std::string path; // absolute, bytes as the file system has them; empty when there is no such alias file
    bool exists;      // something is there, links followed
};
// By the text of a slot: the alias file of exactly that name, else one whose name differs in letter case
// alone. Nothing is made or changed; a failure counts as no alias file.
[[nodiscard]] DrevixItem ResolveDrevixItem(const Str31 &name);

// Makes an alias file in the items folder for the item at an absolute or relative path, and gives the name to
// store in a slot: the item's name, cut to 31 characters. A name that Mac OS Roman cannot hold, or that is
// taken by something else than an alias file of this very item, gets a number instead (DistinctName), so that
// no slot's item is ever exchanged for another. An alias file that is right already stays as it is. An alias
// file chosen in the items folder stands for the item that it leads to.
// noErr; fnfErr when there is no such item; dirFulErr when no name was free; the status of the step that
// failed, with *storedName unchanged.
[[nodiscard]] OSErr MakeDrevixItem(const std::string &path, Str31 *storedName);

} // namespace drevix
