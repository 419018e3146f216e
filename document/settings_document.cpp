#include "document/settings_document.h"

#include "companion/korvane_sync.h"
#include "document/history.h"
#include "document/merge.h"
#include "helperlink/driver_messages.h"
#include "platform/base/log.h"
#include "platform/catalog/named_files.h"
#include "platform/files/kept_bytes.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <ctime>
#include <new>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

constexpr std::string_view kLockName = "settings.lock";

// File system timestamps may be this coarse; two writes within one step may have the same stamp.
constexpr std::int64_t kClockStep = 3'000'000'000; // nanoseconds

bool IsOld(const FileStamp &stamp) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return stamp == FileStamp{} ||
           std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec - stamp.changed > kClockStep;
}

bool IsMissing(OSErr fileStatus) {
    return fileStatus == fnfErr || fileStatus == dirNFErr;
}

} // namespace

struct SettingsDocument::Reading {
    OSErr status = noErr; // noErr: the base holds settings
    QBaseOwner base;
    DevicePrefsFile file;
    FileStamp stamp;
    bool isSettled = false;

    // Whether the base's contents come from the file.
    [[nodiscard]] bool IsUsable() const {
        return status == noErr && file.status == noErr && file.records > 0;
    }
    // The error if the file's contents are unknown; noErr also for a missing or empty file.
    [[nodiscard]] OSErr WhyUnknown() const {
        return status == memFullErr ? memFullErr : IsMissing(file.status) ? noErr : file.status;
    }
};

struct SettingsDocument::RecordsBeforeEdits {
    QBaseOwner base; // null: none, or no memory
    // Each in fBeforeEdits, with its number in the base.
    std::vector<std::pair<AppPrefs *, RecordNumber>> records;
};

SettingsDocument::SettingsDocument(FSRef resources, std::uint32_t version)
    : fResources(std::move(resources)), fVersion(version) {}

SettingsDocument::~SettingsDocument() = default;

void SettingsDocument::UseFile(std::string path) {
    fNamedPath = std::move(path);
}

void SettingsDocument::UseFileAlone(std::string path) {
    UseFile(std::move(path));
    fIsAlone = true;
}

Ownership SettingsDocument::Owner() const {
    std::string own;
    const bool isOwn =
        !fIsAlone && (!fNamedPath || (FindDevicePrefsPath(&own) == noErr && AreSameFile(*fNamedPath, own)));
    return isOwn ? Ownership::UsersOwn : Ownership::Named;
}

// The path can change with the preferences folder, which may be missing at first.
OSErr SettingsDocument::Locate() {
    if (fNamedPath) {
        fPath = *fNamedPath;
        return noErr;
    }
    const OSErr status = FindDevicePrefsPath(&fPath);
    return status == noErr && fPath.empty() ? dirNFErr
                                            : status; // a save to no path would succeed and keep nothing
}

OSErr SettingsDocument::MakePlace() {
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    const OSErr status =
        fNamedPath ? noErr
                   : FindFolder(kOnSystemDisk, kPreferencesFolderType, kCreateFolder, &volume, &folder);
    return status == noErr ? Locate() : status;
}

// The stamp is taken first, so that a change during the read is noticed later.
SettingsDocument::Reading SettingsDocument::Read(RefusedFile refused) const {
    Reading reading;
    reading.stamp = StampOfFile(fPath);
    reading.isSettled = IsOld(reading.stamp);
    reading.base = NewDrevixBase();
    reading.status = reading.base == nullptr ? memFullErr
                                             : ReadDevicePrefs(reading.base.get(), fPath, fResources,
                                                               fVersion, refused, &reading.file);
    if (reading.status == noErr) {
        reading.status = reading.file.defaults; // else a save would store the base without them for good
    }
    if (reading.status == noErr) {
        reading.status = EnsureGlobalPrefs(reading.base.get(), fResources);
    }
    return reading;
}

OpenResult SettingsDocument::Open(Access access) try {
    MendFilesCutShort();
    const OSErr found = Locate();
    Reading reading = Read(access == Access::Change ? RefusedFile::KeepAside : RefusedFile::LeaveAlone);
    if (found != noErr && !IsMissing(found)) {
        reading.file.status = found;
        QBaseSetReadOnly(reading.base.get(), true); // it is unknown what a save would destroy
    }
    OpenResult result = {reading.status, fPath.empty() ? found : reading.file.status};
    QBaseOwner asOnDisk;
    if (result.status == noErr && access == Access::Change) {
        asOnDisk = CopyBase(reading.base.get());
        result.status = asOnDisk != nullptr ? noErr : memFullErr;
    }
    if (result.status != noErr) {
        if (fBase == nullptr) {
            fAccess = access;
            fBase = std::move(reading.base);
            QBaseEmpty(fBase.get());
            fAsOnDisk = NewDrevixBase();
        } else if (reading.base != nullptr) {
            QBaseSetReadOnly(fBase.get(), QBaseGetReadOnly(reading.base.get()));
        }
        return result;
    }
    fAccess = access;
    fHasMore = QBaseGetRecordsChanged(reading.base.get());
    fBase = std::move(reading.base);
    fAsOnDisk = std::move(asOnDisk);
    fMayBeOnDisk = nullptr;
    fStamp = reading.stamp;
    fHeldSettings = reading.IsUsable();
    fIsSettled = reading.isSettled;
    fBeforeEdits.clear();
    TakeCompanionChanges();
    SortDrevixBase(fBase.get());
    LogStep("document", "opened", fPath, result.fileStatus);
    return result;
} catch (const std::bad_alloc &) {
    return {memFullErr, memFullErr};
}

RecordNumber SettingsDocument::Store(const AppPrefs &record, RecordNumber number) try {
    fCountUnsaved.reset();
    const AppPrefs *old = GetAppPrefs(fBase.get(), number);
    const std::string name = NameInKey(record);
    const bool isAdded = old == nullptr || !IsNamed(*old, name);
    if (old != nullptr) {
        NoteAlike(*old, false);
    }
    if (isAdded) {
        NoteAlike(record, true);
    }
    return StoreAppPrefs(fBase.get(), record, number);
} catch (const std::bad_alloc &) {
    return kNoRecord;
}

bool SettingsDocument::Replace(RecordNumber number, const AppPrefs &record) try {
    fCountUnsaved.reset();
    const AppPrefs *old = GetAppPrefs(fBase.get(), number);
    if (old == nullptr) {
        return false;
    }
    NoteAlike(*old, false);
    if (!IsNamed(*old, NameInKey(record))) {
        NoteAlike(record, true);
    }
    return QBaseReplaceRecord(fBase.get(), number, &record, sizeof record) != kNoRecord;
} catch (const std::bad_alloc &) {
    return false;
}

bool SettingsDocument::Remove(RecordNumber number) try {
    fCountUnsaved.reset();
    const AppPrefs *old = GetAppPrefs(fBase.get(), number);
    if (old == nullptr) {
        return false;
    }
    NoteAlike(*old, false);
    QBaseMarkRecordForRemoval(fBase.get(), number);
    QBaseRemoveMarkedRecords(fBase.get());
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

// Editing one of several alike records can renumber the others, so note all of them. Noting an unchanged one
// does no harm.
void SettingsDocument::NoteAlike(const AppPrefs &record, bool isAdded) {
    const std::string name = NameInKey(record);
    const std::vector<RecordNumber> alike = RecordsAlike(fBase.get(), name);
    for (std::size_t i = 0; i < alike.size(); ++i) {
        fBeforeEdits.try_emplace(KeyOfNth(name, i), *GetAppPrefs(fBase.get(), alike[i]));
    }
    if (isAdded) {
        fBeforeEdits.try_emplace(KeyOfNth(name, alike.size()), std::nullopt);
    }
}

bool SettingsDocument::TakeAll(QBaseHandle earlier) try {
    const KeyedRecords ours = RecordsByKey(fBase.get());
    const KeyedRecords theirs = RecordsByKey(earlier);
    QBaseOwner base = CopyBase(fBase.get());
    if (base == nullptr || !CopyRecords({earlier, theirs}, {base.get(), ours})) {
        return false;
    }
    auto before = fBeforeEdits;
    for (const auto &[key, number] : ours) {
        if (const AppPrefs *record = GetAppPrefs(fBase.get(), number)) {
            before.try_emplace(key, *record);
        }
    }
    for (const auto &[key, number] : theirs) {
        before.try_emplace(key, std::nullopt);
    }
    SortDrevixBase(base.get());
    fBase = std::move(base);
    fBeforeEdits = std::move(before);
    fCountUnsaved.reset();
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

bool SettingsDocument::TakeOne(const AppPrefs &earlier) try {
    const std::vector<RecordNumber> alike = RecordsAlike(fBase.get(), NameInKey(earlier));
    const bool isDone = alike.empty() ? Store(earlier, kNoRecord) != kNoRecord : Replace(alike[0], earlier);
    if (isDone) {
        SortDrevixBase(fBase.get());
    }
    return isDone;
} catch (const std::bad_alloc &) {
    return false;
}

// Alike records cannot be told apart here, so one stands for all.
bool SettingsDocument::IsUnsaved(const AppPrefs &record) const try {
    const std::string name = NameInKey(record);
    const auto isOfName = [&](const RecordKey &key) { return key.starts_with(name + '\0'); };
    auto noted = fBeforeEdits.lower_bound(name);
    if (noted == fBeforeEdits.end() || !isOfName(noted->first)) {
        return false; // fast path for nearly all records
    }
    KeyedRecords records;
    const std::vector<RecordNumber> alike = RecordsAlike(fBase.get(), name);
    for (std::size_t i = 0; i < alike.size(); ++i) {
        records.emplace(KeyOfNth(name, i), alike[i]);
    }
    for (; noted != fBeforeEdits.end() && isOfName(noted->first); ++noted) {
        if (IsChangedHere(fBeforeEdits, fBase.get(), records, noted->first)) {
            return true;
        }
    }
    return false;
} catch (const std::bad_alloc &) {
    return true; // asking once too often loses nothing
}

int SettingsDocument::CountUnsaved() const try {
    if (fBeforeEdits.empty()) {
        return 0;
    }
    if (!fCountUnsaved) {
        const KeyedRecords records = RecordsByKey(fBase.get());
        fCountUnsaved = static_cast<int>(std::ranges::count_if(fBeforeEdits, [&](const auto &noted) {
            return IsChangedHere(fBeforeEdits, fBase.get(), records, noted.first);
        }));
    }
    return *fCountUnsaved;
} catch (const std::bad_alloc &) {
    return static_cast<int>(fBeforeEdits.size());
}

std::vector<UnsavedRecord> SettingsDocument::Unsaved() const try {
    std::vector<UnsavedRecord> unsaved;
    const KeyedRecords records = RecordsByKey(fBase.get());
    for (const auto &[key, before] : fBeforeEdits) {
        if (IsChangedHere(fBeforeEdits, fBase.get(), records, key)) {
            const auto found = records.find(key);
            const AppPrefs *here = found == records.end() ? nullptr : GetAppPrefs(fBase.get(), found->second);
            unsaved.push_back({before, here == nullptr ? std::nullopt : std::optional(*here)});
        }
    }
    return unsaved;
} catch (const std::bad_alloc &) {
    return {};
}

bool SettingsDocument::IsSaved() const {
    return !fHasMore && fMayBeOnDisk == nullptr && CountUnsaved() == 0;
}

bool SettingsDocument::IsReadOnly() const {
    return QBaseGetReadOnly(fBase.get());
}

bool SettingsDocument::MayHaveChanged() const {
    return !fIsSettled || QBaseGetReadOnly(fBase.get()) || StampOfFile(fPath) != fStamp;
}

OutsideChanges SettingsDocument::TakeOutsideChanges() try {
    OutsideChanges outside;
    if (fBase == nullptr || fAccess != Access::Change) {
        return outside;
    }
    std::ignore = Locate(); // on failure keep the old path
    if (MayHaveChanged()) {
        Reading theirs = Read(RefusedFile::LeaveAlone);
        fIsSettled = false; // check it again unless its changes are merged now
        if (theirs.IsUsable()) {
            std::ignore = Merge(theirs, &outside);
        }
    }
    return outside;
} catch (const std::bad_alloc &) {
    return {};
}

// Merges another program's changes from a usable file. False, with nothing changed, if out of memory.
bool SettingsDocument::Merge(Reading &theirs, OutsideChanges *outside) {
    QBaseOwner theirsHere = CopyBase(theirs.base.get());
    KorvaneResults companion = {};
    if (theirsHere != nullptr && Owner() == Ownership::UsersOwn) {
        SyncFromKorvane(theirsHere.get(), &companion);
    }
    const bool isRead =
        std::ranges::find(companion, KorvaneFileState::NotRead, &KorvaneFileResult::state) == companion.end();
    if (theirsHere == nullptr || !isRead) {
        return false;
    }
    const MergeSides sides = {fBase.get(),        fBeforeEdits,      fAsOnDisk.get(),
                              fMayBeOnDisk.get(), theirs.base.get(), theirsHere.get()};
    std::optional<MergeResult> merged = MergeRecords(sides);
    if (!merged) {
        return false;
    }
    if (!TakeUserFields(theirs.base.get(), merged->base != nullptr ? merged->base.get() : fBase.get())) {
        return false;
    }
    if (merged->base != nullptr) {
        fBase = std::move(merged->base);
    }
    fHasMore = QBaseGetRecordsChanged(theirs.base.get());
    fAsOnDisk = std::move(theirs.base);
    fMayBeOnDisk = nullptr;
    fBeforeEdits = std::move(merged->before);
    fCountUnsaved.reset();
    fStamp = theirs.stamp;
    fHeldSettings = true;
    fIsSettled = theirs.isSettled;
    QBaseSetReadOnly(fBase.get(), false);
    AdoptSeenFiles(fBase.get(), std::move(companion), &fCompanion);
    *outside = std::move(merged->outside);
    LogStep("document", outside->conflicts.empty() ? "merged" : "merged with conflicts", fPath, noErr);
    return true;
}

// What the companion changes is no edit: the records as they were before the edits get it too.
void SettingsDocument::TakeCompanionChanges() {
    fCountUnsaved.reset();
    if (Owner() != Ownership::UsersOwn) {
        return;
    }
    const RecordsBeforeEdits before = CopyBeforeEdits();
    SyncFromKorvane(fBase.get(), &fCompanion, before.base.get());
    for (const auto &[record, number] : before.records) {
        if (const AppPrefs *synced = GetAppPrefs(before.base.get(), number)) {
            *record = *synced;
        }
    }
}

// Looks for them where those of the base are. Without memory they stay, and too much counts as unsaved.
SettingsDocument::RecordsBeforeEdits SettingsDocument::CopyBeforeEdits() try {
    RecordsBeforeEdits before = {fBeforeEdits.empty() ? nullptr : CopyBase(fBase.get()), {}};
    if (before.base == nullptr) {
        return before;
    }
    const KeyedRecords records = RecordsByKey(before.base.get());
    for (auto &[key, record] : fBeforeEdits) {
        if (record) {
            const auto here = records.find(key);
            const RecordNumber number =
                here == records.end()
                    ? QBaseAddRecord(before.base.get(), &*record, sizeof *record)
                    : QBaseReplaceRecord(before.base.get(), here->second, &*record, sizeof *record);
            before.records.emplace_back(&*record, number);
        }
    }
    return before;
} catch (const std::bad_alloc &) {
    return {};
}

void SettingsDocument::WriteCompanionFiles() {
    std::ignore = SyncToKorvane(fBase.get(), &fCompanion); // the companion may not be installed
}

OSErr SettingsDocument::Lock(std::chrono::milliseconds wait) {
    return fLock.Acquire(kLockName, wait);
}

SaveResult SettingsDocument::Save(std::chrono::milliseconds wait) {
    SaveResult result;
    result.status = TrySave(wait, &result);
    result.replacedDamaged = result.replacedDamaged && result.status == noErr;
    return result;
}

// Even where memory is out, the result says what was done before that.
OSErr SettingsDocument::TrySave(std::chrono::milliseconds wait, SaveResult *result) try {
    if (fBase == nullptr || fAccess != Access::Change) {
        return fBase == nullptr ? memFullErr : wrPermErr;
    }
    const LockForNow lock(fLock);
    OSErr status = Lock(wait);
    if (status == noErr) {
        status = MakePlace();
    }
    if (status == noErr) {
        status = LookBeforeSave(result);
    }
    if (status == noErr) {
        status = Write(result);
    }
    LogStep("document", "saved", fPath, status);
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

// Merges outside changes and makes sure that the file may be replaced.
OSErr SettingsDocument::LookBeforeSave(SaveResult *result) {
    if (!MayHaveChanged()) {
        return noErr;
    }
    Reading theirs = Read(RefusedFile::LeaveAlone);
    if (theirs.IsUsable()) {
        return Merge(theirs, &result->outside) ? noErr : memFullErr;
    }
    OSErr status = theirs.WhyUnknown();
    fHeldSettings = false;
    if (IsDamaged(status)) {
        status = result->keptAside = KeepRefusedFile(fPath);
        result->replacedDamaged = theirs.stamp != fStamp; // else it was reported on opening
    }
    QBaseSetReadOnly(fBase.get(), status != noErr);
    return status;
}

// After a failure the new file may still be in place but not flushed. It then is our own write, not another
// program's change.
OSErr SettingsDocument::Write(SaveResult *result) {
    QBaseOwner written = CopyBase(fBase.get());
    if (written == nullptr) {
        return memFullErr;
    }
    ValidateDevicePrefs(written.get()); // as a read will return it
    result->wasTried = true;
    const bool isOwn = Owner() == Ownership::UsersOwn;
    if (isOwn) {
        WriteCompanionFiles();
    }
    Forerunner forerunner;
    const OSErr prepared = fHeldSettings ? forerunner.Prepare(fPath) : OSErr{noErr};
    const OSErr status = SaveDevicePrefsToPath(fBase.get(), fPath, forerunner.Path(), &result->history);
    result->history = prepared != noErr ? prepared : result->history;
    forerunner.Finish();
    fIsSettled = false; // the file may already be another program's
    if (status != noErr) {
        fMayBeOnDisk = std::move(written);
        return status;
    }
    fMayBeOnDisk = nullptr;
    fAsOnDisk = std::move(written);
    fHeldSettings = true;
    fBeforeEdits.clear();
    fHasMore = false;
    if (isOwn) {
        std::ignore = RequestDriverPrefsUpdate(kDrevixHelperName.data()); // the helper may not run
    }
    return noErr;
}

} // namespace drevix
