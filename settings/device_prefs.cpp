#include "settings/device_prefs.h"

#include "platform/base/log.h"
#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "qbase/qbase_file.h"
#include "settings/action_commands.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <new>
#include <tuple>

namespace drevix {
namespace {

constexpr OSErr kDamaged = -1; // QBaseRead's status for invalid contents

// The last version whose global record could have the mode switch on button P by default rather than by the
// user's choice.
constexpr std::uint32_t kLastVersionWithModeSwitchDefault = 0x120;
constexpr SlotIndex kButtonP = 17;

constexpr auto kOldIllustratorName = PascalLiteral("Adobe Illustrator");
constexpr auto kIllustratorName = PascalLiteral("Adobe Illustrator CS2");

// The path of the named file in the Preferences folder; empty for an empty name. Cuts the name in place.
OSErr FindNamedFile(StringPtr fileName, FolderCreation creation, std::string *path) {
    FSSpec spec = {};
    const OSErr status =
        FindFolder(kOnSystemDisk, kPreferencesFolderType, creation, &spec.vRefNum, &spec.parID);
    if (status != noErr || fileName == nullptr) {
        return status;
    }
    fileName[0] = std::min<std::uint8_t>(fileName[0], kMaxFileNameLength);
    PStringCopy(fileName, spec.name.data(), kMaxFileNameLength);
    *path = PathFromSpec(spec);
    return noErr;
}

// Reads the file into the empty base. The user part is read before the records are checked, so if they are
// refused the base gets its own user fields back. Otherwise the refused file's stamp would claim that the
// factory records were already merged.
OSErr ReadRecords(QBaseHandle base, const std::string &path) {
    OwnedFile file;
    if (const OSErr status = OpenFile(path, fsRdPerm, file.Out()); status != noErr) {
        return status;
    }
    const QBaseOwner before = NewDrevixBase();
    OSErr status = before != nullptr ? QBaseDuplicateUserFields(base, before.get()) : memFullErr;
    if (status == noErr) {
        status = QBaseRead(base, file.Get(), true, true, true, true);
        if (status != noErr) {
            std::ignore = QBaseDuplicateUserFields(before.get(), base); // it worked the other way round
            std::ignore = QBaseSetUserBlock(base, nullptr, 0);          // needs no memory
        }
    }
    return status;
}

// Whether a save may replace the file, given the status of reading it. A refused file is copied aside first.
// One that could not be read may be intact, so it must not be replaced.
bool MayBeReplaced(const std::string &path, OSErr status, RefusedFile refused) {
    if (IsDamaged(status)) {
        return refused == RefusedFile::KeepAside && KeepRefusedFile(path) == noErr;
    }
    return status == noErr || status == fnfErr || status == dirNFErr;
}

// Older programs stored an imported global record with a file name. The factory's global record would not
// match it and would be added as a second one.
void ClearGlobalNames(QBaseHandle base) {
    for (RecordNumber i = 0; i < QBaseCountRecords(base); ++i) {
        if (AppPrefs *prefs = GetAppPrefs(base, i); IsGlobalPrefs(prefs) && prefs->appFileName[0] != 0) {
            prefs->appFileName = {};
            QBaseSetRecordsChanged(base, true);
        }
    }
}

// Whether the base already has the factory record. Gives records of its name the wildcard signature.
bool MatchFactoryRecord(QBaseHandle base, const AppPrefs &factory) {
    bool matched = false;
    for (RecordNumber i = 0; i < QBaseCountRecords(base); ++i) {
        AppPrefs *prefs = GetAppPrefs(base, i);
        if (prefs == nullptr || PStringCmp(prefs->appFileName.data(), factory.appFileName.data()) != 0) {
            continue;
        }
        const bool same = prefs->application == factory.application;
        if (!same && factory.application == kWildcardSignature) {
            prefs->application = kWildcardSignature;
            QBaseSetRecordsChanged(base, true);
        }
        matched = matched || prefs->application == factory.application;
    }
    return matched;
}

// As GetDeviceDefaultPrefs, but memFullErr if memory was out for one of the records.
OSErr AddDefaults(QBaseHandle base, const std::string &path) {
    std::size_t skipped = 0;
    const auto add = [base](const AppPrefs &factory) {
        if (!MatchFactoryRecord(base, factory) &&
            QBaseAddRecord(base, &factory, sizeof factory) == kNoRecord) {
            throw std::bad_alloc();
        }
    };
    const OSErr status = ReadAppPrefsFile(path, add, nullptr, &skipped);
    return status == memFullErr || skipped != 0 ? memFullErr : noErr;
}

// Adds the factory records to a base that has none, or only those of an older version. noErr, or memFullErr if
// memory was out for one of them.
OSErr MergeDefaults(QBaseHandle base, const FSRef &resourceFolder, std::uint32_t version) {
    if (QBaseCountRecords(base) != 0 && version <= QBaseGetUserLong(base)) {
        return noErr;
    }
    ClearGlobalNames(base);
    OSErr status = noErr;
    if (!resourceFolder.path.empty()) {
        status = AddDefaults(base, resourceFolder.path + '/' + kDefaultsFileName);
    }
    if (version != 0) {
        QBaseSetUserLong(base, version);
    }
    return status;
}

// Everything but finding the file: `status` is the result of that; an empty path means no file to read.
OSErr LoadDevicePrefs(QBaseHandle base, OSErr status, const std::string &path, const FSRef &resourceFolder,
                      std::uint32_t version, RefusedFile refused, DevicePrefsFile *file) {
    QBaseEmpty(base);
    QBaseSetReadOnly(base, true); // until a save is known to be safe
    if (status == noErr && !path.empty()) {
        status = ReadRecords(base, path);
    }
    *file = {.status = status, .records = QBaseCountRecords(base)};
    ValidateDevicePrefs(base);
    QBaseSetReadOnly(base, !MayBeReplaced(path, status, refused));
    file->defaults = MergeDefaults(base, resourceFolder, version);
    return QBaseCountRecords(base) == 0 ? resNotFound : noErr;
}

// The repairs of one record, in order. Each returns whether it changed the record.

bool RenameIllustrator(AppPrefs &prefs) {
    if (PStringCmp(prefs.appFileName.data(), kOldIllustratorName.data()) != 0) {
        return false;
    }
    PStringCopy(kIllustratorName.data(), prefs.appFileName.data(), kMaxFileNameLength);
    PStringCopy(kIllustratorName.data(), prefs.appName.data(), kMaxAppNameLength);
    return true;
}

bool ClearModeSwitchDefault(AppPrefs &prefs, std::uint32_t stamp) {
    ActionSlot &slot = prefs.device[0].action[kButtonP];
    if (stamp > kLastVersionWithModeSwitchDefault || !IsGlobalPrefs(&prefs) ||
        slot.command != kActionModeSwitch) {
        return false;
    }
    slot.command = kActionNone;
    return true;
}

bool ClearAppCommands(AppPrefs &prefs) {
    bool changed = false;
    for (ActionSlot &slot : prefs.device[0].action) {
        if (IsAppCommand(slot.command) && !HasAppCommands(prefs.application)) {
            slot.command = kActionNone;
            changed = true;
        }
    }
    return changed;
}

} // namespace

QBaseOwner NewDrevixBase() {
    return QBaseOwner(QBaseNew(kDrevixBaseType, kDrevixBaseTypeVersion, kDrevixBaseIndexGrowth));
}

OSErr GetDevicePrefs(QBaseHandle base, StringPtr fileName, const FSRef &resourceFolder,
                     std::uint32_t version) try {
    if (base == nullptr) {
        return paramErr;
    }
    std::string path;
    const OSErr found = FindNamedFile(fileName, kDontCreateFolder, &path);
    DevicePrefsFile file;
    return LoadDevicePrefs(base, found, path, resourceFolder, version, RefusedFile::KeepAside, &file);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr GetDevicePrefsFromPath(QBaseHandle base, const std::string &path, const FSRef &resourceFolder,
                             std::uint32_t version, OSErr *fileStatus) {
    DevicePrefsFile file;
    const OSErr status = ReadDevicePrefs(base, path, resourceFolder, version, RefusedFile::KeepAside, &file);
    if (fileStatus != nullptr && base != nullptr) {
        *fileStatus = file.status;
    }
    return status;
}

OSErr ReadDevicePrefs(QBaseHandle base, const std::string &path, const FSRef &resourceFolder,
                      std::uint32_t version, RefusedFile refused, DevicePrefsFile *file) try {
    return base == nullptr ? paramErr
                           : LoadDevicePrefs(base, noErr, path, resourceFolder, version, refused, file);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

bool IsDamaged(OSErr fileStatus) {
    return fileStatus == kDamaged || fileStatus == eofErr;
}

OSErr KeepRefusedFile(const std::string &path) try {
    const OSErr status = KeepFileAside(path, path + kRefusedSuffix);
    LogStep("settings", "kept the damaged file aside", path, status);
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr SaveDevicePrefs(QBaseHandle base, StringPtr fileName, OSType /*fileType*/, OSType /*creator*/) try {
    if (base == nullptr || fileName == nullptr || fileName[0] == 0) {
        return noErr;
    }
    std::string path;
    const OSErr status = FindNamedFile(fileName, kCreateFolder, &path);
    return status == noErr ? SaveDevicePrefsToPath(base, path) : status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr SaveDevicePrefsToPath(QBaseHandle base, const std::string &path, const std::string &keepOldAs,
                            OSErr *oldKept) try {
    if (base == nullptr || path.empty()) {
        return noErr;
    }
    if (QBaseGetReadOnly(base)) { // check before an in-place update empties the file
        return wrPermErr;
    }
    const bool recordsChanged = QBaseGetRecordsChanged(base);
    const bool userFieldsChanged = QBaseGetUserFieldsChanged(base);
    FileUpdate update;
    OSErr status = update.Open(path, UpdateMethod::Replace, kPrivateFile);
    if (status == noErr) {
        update.KeepOldAs(keepOldAs); // the last that may throw, before anything is marked as written
        status = QBaseWrite(base, update.File(), true, true);
    }
    if (status == noErr) {
        status = update.Commit();
    }
    if (oldKept != nullptr) {
        *oldKept = update.OldKept();
    }
    if (status != noErr) { // the new file was discarded
        QBaseSetRecordsChanged(base, recordsChanged);
        QBaseSetUserFieldsChanged(base, userFieldsChanged);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FindDevicePrefsPath(std::string *path) try {
    auto name = kDrevixPrefsName;
    return FindNamedFile(name.data(), kDontCreateFolder, path);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr GetDeviceDefaultPrefs(QBaseHandle base, const std::string &path) {
    std::ignore = AddDefaults(base, path);
    return noErr;
}

OSErr EnsureGlobalPrefs(QBaseHandle base, const FSRef &resourceFolder) {
    if (base == nullptr) {
        return paramErr;
    }
    if (IsGlobalPrefs(GetAppPrefs(base, 0))) {
        return noErr;
    }
    SortDrevixBase(base); // moves a global record to the front
    if (IsGlobalPrefs(GetAppPrefs(base, 0))) {
        return noErr;
    }
    AppPrefs global = gDefaultGlobalPrefs;
    std::ignore = LoadDefaultPrefs(resourceFolder, gDefaultGlobalPrefs, &global); // else the built-in one
    if (StoreAppPrefs(base, global, kNoRecord) == kNoRecord) {
        return memFullErr;
    }
    SortDrevixBase(base);
    return noErr;
}

OSErr ValidateDevicePrefs(QBaseHandle base) {
    const std::uint32_t stamp = QBaseGetUserLong(base);
    for (RecordNumber i = 0; i < QBaseCountRecords(base); ++i) {
        AppPrefs *prefs = GetAppPrefs(base, i);
        if (prefs == nullptr) {
            continue;
        }
        const bool renamed = RenameIllustrator(*prefs);
        const bool switched = ClearModeSwitchDefault(*prefs, stamp);
        const bool cleared = ClearAppCommands(*prefs);
        if (renamed || switched || cleared) {
            QBaseSetRecordsChanged(base, true);
        }
    }
    return noErr;
}

} // namespace drevix
