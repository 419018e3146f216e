// Alias files: small files that point to an item. Here an alias file is a symbolic link, which any program
// follows, plus an AppleDouble file beside it with the Finder's data: type, creator, flags, alias record and
// the item's icons.
#pragma once

#include "platform/base/block.h"
#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"

#include <array>
#include <cstdint>

namespace drevix {

// A folder type and the type of an alias to that folder.
struct AFFolderType {
    OSType folder;
    OSType alias;
};
// Searched in this order; a pair of zeros ends it.
inline constexpr auto gAFFolderTypes = std::to_array<AFFolderType>({
    {FourCharCode("macs"), FourCharCode("fasy")},
    {kTrashFolderType, FourCharCode("trsh")},
    {FourCharCode("empt"), FourCharCode("trsh")}, // where the Trash is emptied
    {kAppleMenuFolderType, FourCharCode("faam")},
    {FourCharCode("ctrl"), FourCharCode("fact")},
    {FourCharCode("extn"), FourCharCode("faex")},
    {kPreferencesFolderType, FourCharCode("fapf")},
    {FourCharCode("prnt"), FourCharCode("fapn")},
    {kStartupFolderType, FourCharCode("fast")},
    {0, 0},
});

// The resource types of a custom icon, and the file that holds it for a folder or volume.
inline constexpr auto gAFCustomIconTypes =
    std::to_array<OSType>({FourCharCode("ICN#"), FourCharCode("icl4"), FourCharCode("icl8"),
                           FourCharCode("ics#"), FourCharCode("ics4"), FourCharCode("ics8")});
inline constexpr auto gAFCustomIconFileName = PascalLiteral("Icon\r");
inline constexpr std::int16_t kCustomIconID = -16455; // of the item's icons
inline constexpr std::int16_t kAliasIconID = -16496;  // of an alias file's
inline constexpr std::int16_t kAliasID = 0;

inline constexpr OSType kAliasResourceType = FourCharCode("alis");
inline constexpr OSType kApplicationAliasType = FourCharCode("adrp");
inline constexpr OSType kFolderAliasType = FourCharCode("fdrp");
inline constexpr OSType kDiskAliasType = FourCharCode("hdsk");
inline constexpr OSType kServerAliasType = FourCharCode("srvr");
inline constexpr OSType kFinderCreator = FourCharCode("MACS");

// Icons by position in gAFCustomIconTypes; empty if the item has none.
using IconHandles = std::array<Block, gAFCustomIconTypes.size()>;

// AliasesAvailable's result: 1 or 0; -1 before its first call.
extern std::int16_t gAFAliasAndFSSAvailable;
// 1 if the system has aliases and FSSpec calls, else 0.
[[nodiscard]] std::int16_t AliasesAvailable();

// The type and creator for an alias file of the item, both optional, and the item's custom icons; a volume
// without one gets the built-in disk icon. Leaves out icons that cannot be read. noErr, or the status of the
// lookup with all icons empty.
[[nodiscard]] OSErr GetSourceInfo(const FSSpec &item, OSType *type, OSType *creator, IconHandles &icons);

// Creates the alias file of an item atomically: the link comes last. A failure leaves nothing behind. Leaves
// out an icon that does not fit. noErr; gestaltUndefSelectorErr without aliases; dupFNErr if the name is
// taken; the status of the step that failed.
[[nodiscard]] OSErr CreateAliasFile(const FSSpec &item, const FSSpec &aliasSpec);

} // namespace drevix
