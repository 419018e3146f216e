// The settings file: reading, repairing, merging with the factory defaults, and saving without loss.
#pragma once

#include "platform/base/status.h"
#include "platform/files/files.h"
#include "qbase/qbase.h"

#include <cstdint>
#include <string>

namespace drevix {

// The settings file in the Preferences folder, its type and creator, and the type of its records.
inline constexpr auto kDrevixPrefsName = PascalLiteral("com.halcyra.drevix.prefs");
inline constexpr OSType kDrevixPrefsType = FourCharCode("pref");
inline constexpr OSType kDrevixPrefsCreator = FourCharCode("PLZW");
inline constexpr OSType kDrevixBaseType = FourCharCode("PLZB");
inline constexpr std::uint16_t kDrevixBaseTypeVersion = 2;
inline constexpr std::int16_t kDrevixBaseIndexGrowth = 4;

// The factory defaults in the resource folder.
inline constexpr const char *kDefaultsFileName = "Defaults.veltrana";

// The suffix for the kept copy of a refused settings file.
inline constexpr const char *kRefusedSuffix = ".refused";

// The project's version as stamped into files, in the platform's format: major version in the first byte,
// minor version and revision as one digit each in the second, release stage in the third (80: final).
constexpr std::uint32_t StampOfVersion(std::uint32_t major, std::uint32_t minor, std::uint32_t patch) {
    return major << 24 | minor << 20 | patch << 16 | 0x8000;
}
inline constexpr std::uint32_t kPanelVersion =
    StampOfVersion(DREVIX_VERSION_MAJOR, DREVIX_VERSION_MINOR, DREVIX_VERSION_PATCH);
static_assert((kPanelVersion & 0xFF000000) <= 0x09000000);

// Creates an empty base for settings records; null if out of memory.
[[nodiscard]] QBaseOwner NewDrevixBase();

// Empties the base, reads the settings file of that name from the Preferences folder and repairs it. If it is
// empty or its stamp is older than `version` (0: only if empty), adds the missing factory records, clears a
// file name of the global record, and sets the stamp to `version`. `fileName` is cut to 63 characters in
// place. noErr; paramErr for a null base; memFullErr; resNotFound if the base still has no records because
// both files are unusable. So a missing or refused file gives noErr and the factory records. A refused file
// is first copied aside under kRefusedSuffix. If that fails, or the file could not be read at all, the base
// becomes read-only so that no save can destroy the file; the next read that succeeds, or finds no file,
// clears that.
[[nodiscard]] OSErr GetDevicePrefs(QBaseHandle base, StringPtr fileName, const FSRef &resourceFolder,
                                   std::uint32_t version);

// Writes the base to the settings file of that name in the Preferences folder, creating the folder if
// missing, through "platform/files/file_update.h": after a failure or a kill at any point, either the old or
// the new file is intact. A new file may be read by the user only. `fileType` and `creator` are ignored: this disk does not store them. noErr, also
// for a null base or empty name (nothing is written then); wrPermErr for a read-only base; else the file's
// error.
[[nodiscard]] OSErr SaveDevicePrefs(QBaseHandle base, StringPtr fileName, OSType fileType, OSType creator);

// The same for a settings file at any path. *fileStatus, if given, gets the status of the file itself: noErr,
// fnfErr if missing, -1 if refused, or the read error.
[[nodiscard]] OSErr GetDevicePrefsFromPath(QBaseHandle base, const std::string &path,
                                           const FSRef &resourceFolder, std::uint32_t version,
                                           OSErr *fileStatus = nullptr);
// `keepOldAs`, if given, is the name under which to keep what the file held before; *oldKept, if given, gets
// the status of that ("platform/files/file_update.h": KeepOldAs).
[[nodiscard]] OSErr SaveDevicePrefsToPath(QBaseHandle base, const std::string &path,
                                          const std::string &keepOldAs = {}, OSErr *oldKept = nullptr);

// What to do with a refused file.
enum class RefusedFile : std::uint8_t {
    KeepAside,  // as GetDevicePrefs
    LeaveAlone, // write nothing and make the base read-only
};
// The result for the file itself.
struct DevicePrefsFile {
    OSErr status = noErr;     // as *fileStatus
    std::int32_t records = 0; // in the file, before factory records were added
    OSErr defaults = noErr;   // memFullErr: some factory records are missing, for want of memory
};
// As GetDevicePrefsFromPath.
[[nodiscard]] OSErr ReadDevicePrefs(QBaseHandle base, const std::string &path, const FSRef &resourceFolder,
                                    std::uint32_t version, RefusedFile refused, DevicePrefsFile *file);
// Whether the status means that the file was refused for its contents.
[[nodiscard]] bool IsDamaged(OSErr fileStatus);
// Copies a refused file aside under kRefusedSuffix. noErr, or the error ("platform/files/file_update.h").
[[nodiscard]] OSErr KeepRefusedFile(const std::string &path);

// The path of the settings file in the Preferences folder. noErr, or the error finding that folder; does not
// create it.
[[nodiscard]] OSErr FindDevicePrefsPath(std::string *path);

// Adds each record of a factory defaults file whose name and signature the base lacks. A wildcard record
// gives its signature to existing records of its name, which otherwise stay as they are. Always noErr: an
// unreadable file adds nothing.
OSErr GetDeviceDefaultPrefs(QBaseHandle base, const std::string &path);

// Ensures that record 0 is a global record; every program calls this after a read. A base without one gets
// the factory's, or gDefaultGlobalPrefs if that cannot be read; this marks the records changed but writes no
// file. Sorts the base unless record 0 is already global. noErr; paramErr for a null base; memFullErr with
// the base unchanged.
[[nodiscard]] OSErr EnsureGlobalPrefs(QBaseHandle base, const FSRef &resourceFolder);

// Repairs records written by older panels: renamed applications and commands that a record must not hold.
// Always noErr.
OSErr ValidateDevicePrefs(QBaseHandle base);

} // namespace drevix
