// The settings file: read, repaired, merged with the factory defaults, and written so that nothing is lost.
#pragma once

#include "platform/base/status.h"
#include "platform/files/files.h"
#include "qbase/qbase.h"

#include <cstdint>
#include <string>

namespace drevix {

// The settings file in the Preferences folder, its type and creator, and what its records are.
inline constexpr auto kDrevixPrefsName = PascalLiteral("com.halcyra.drevix.prefs");
inline constexpr OSType kDrevixPrefsType = FourCharCode("pref");
inline constexpr OSType kDrevixPrefsCreator = FourCharCode("PLZW");
inline constexpr OSType kDrevixBaseType = FourCharCode("PLZB");
inline constexpr std::uint16_t kDrevixBaseTypeVersion = 2;
inline constexpr std::int16_t kDrevixBaseIndexGrowth = 4;

// The factory defaults in the resource folder.
inline constexpr const char *kDefaultsFileName = "Defaults.veltrana";

// What a refused settings file's kept copy is called: its name with this behind it.
inline constexpr const char *kRefusedSuffix = ".refused";

// The project's version as a file's stamp holds it, in the platform's numbering: major version in the first
// byte, minor version and revision as one digit each in the second, release stage in the third: 80 for final.
inline constexpr std::uint32_t kPanelVersion =
    DREVIX_VERSION_MAJOR << 24 | DREVIX_VERSION_MINOR << 20 | DREVIX_VERSION_PATCH << 16 | 0x8000;
static_assert(DREVIX_VERSION_MAJOR < 10 && DREVIX_VERSION_MINOR < 10 && DREVIX_VERSION_PATCH < 10);

// A new empty base for settings records; null without memory.
[[nodiscard]] QBaseOwner NewDrevixBase();

// Fills the base, emptied first, from the settings file of that name in the Preferences folder, repairs it,
// and adds the factory records that it lacks when it is empty or its stamp is older than `version` (0: only
// when empty), which becomes its stamp; its global record loses a file name then. `fileName` is cut to 63 characters in place. noErr; paramErr for a
// null base; memFullErr; resNotFound when the base holds no record at the end, for want of both files; so a
// file that is missing or refused gives noErr and the factory records. A refused file is kept aside first
// under kRefusedSuffix. If it cannot be, or if the file could not be read at all, the base is made read-only,
// so that no save can destroy what is there; the next read that succeeds, or finds no file, undoes that.
[[nodiscard]] OSErr GetDevicePrefs(QBaseHandle base, StringPtr fileName, const FSRef &resourceFolder,
                                   std::uint32_t version);

// Writes the base to the settings file of that name in the Preferences folder, which is made if it is
// missing, through "platform/files/file_update.h": after a failure, or killed at any point, the old or the new file
// is there whole. `fileType` and `creator` have no counterpart on this disk. noErr, also for a null base or
// empty name, with nothing written; wrPermErr for a read-only base; else the file's error.
[[nodiscard]] OSErr SaveDevicePrefs(QBaseHandle base, StringPtr fileName, OSType fileType, OSType creator);

// The same for a settings file at any path. *fileStatus, if given, gets what came of the file itself: noErr,
// fnfErr when it is not there, -1 when it was refused, or why it could not be read.
[[nodiscard]] OSErr GetDevicePrefsFromPath(QBaseHandle base, const std::string &path,
                                           const FSRef &resourceFolder, std::uint32_t version,
                                           OSErr *fileStatus = nullptr);
[[nodiscard]] OSErr SaveDevicePrefsToPath(QBaseHandle base, const std::string &path);

// What becomes of a file that is refused.
enum class RefusedFile : std::uint8_t {
    KeepAside,  // as GetDevicePrefs
    LeaveAlone, // nothing is written, and the base is made read-only
};
// What came of the file itself.
struct DevicePrefsFile {
    OSErr status = noErr;     // as *fileStatus
    std::int32_t records = 0; // that it held, before the factory's came in
};
// As GetDevicePrefsFromPath.
[[nodiscard]] OSErr ReadDevicePrefs(QBaseHandle base, const std::string &path, const FSRef &resourceFolder,
                                    std::uint32_t version, RefusedFile refused, DevicePrefsFile *file);
// Whether that is the status of a file that was refused for its contents.
[[nodiscard]] bool IsDamaged(OSErr fileStatus);
// Keeps a refused file aside under kRefusedSuffix. noErr, or why not ("platform/files/file_update.h").
[[nodiscard]] OSErr KeepRefusedFile(const std::string &path);

// The path of the settings file, in the Preferences folder. noErr, or why that folder cannot be found; it is
// not made.
[[nodiscard]] OSErr FindDevicePrefsPath(std::string *path);

// Adds each record of a factory defaults file whose name (and signature) the base has not; a wildcard record
// gives its signature to records of its name. Records that are there keep everything else. Always noErr: an
// unreadable file adds none.
OSErr GetDeviceDefaultPrefs(QBaseHandle base, const std::string &path);

// Makes sure that record 0 is a global record, as every program expects after one of the reads above. A base
// without one gets the factory's, or gDefaultGlobalPrefs when that cannot be read; this counts as a change of the
// records and writes no file. Sorts the base unless its record 0 is global already. noErr; paramErr for a null
// base; memFullErr with the base unchanged.
[[nodiscard]] OSErr EnsureGlobalPrefs(QBaseHandle base, const FSRef &resourceFolder);

// Repairs what older panels wrote: renames, and commands that a record must not hold. Always noErr.
OSErr ValidateDevicePrefs(QBaseHandle base);

} // namespace drevix
