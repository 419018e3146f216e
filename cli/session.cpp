#include "cli/session.h"

#include "companion/korvane_sync.h"
#include "helperlink/driver_messages.h"
#include "platform/disk.h"
#include "platform/plain_text.h"
#include "qbase/qbase_file.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <tuple>

namespace drevix {
namespace {

constexpr OSErr kRefused = -1; // what reading a damaged settings file gives

constexpr std::string_view kUnchanged = "nothing was changed";

OSErr MakePreferencesFolder() {
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    return FindFolder(kOnSystemDisk, kPreferencesFolderType, kCreateFolder, &volume, &folder);
}

std::string PathForPeople(const std::string &path) {
    return path.empty() ? "the settings file" : path;
}

} // namespace

OSErr ReadAsSettings(const std::string &path) {
    FileRef file = 0;
    if (const OSErr status = OpenFile(path, fsRdPerm, &file); status != noErr) {
        return status;
    }
    const QBaseOwner base = NewDrevixBase();
    const OSErr status = base ? QBaseRead(base.get(), file, true, true, true, true) : memFullErr;
    FSClose(file);
    return status;
}

OSErr SettingsPath(const Request &request, std::string *path) {
    if (request.line.prefs) {
        *path = *request.line.prefs;
        return noErr;
    }
    return FindDevicePrefsPath(path);
}

bool AreSameFile(const std::string &a, const std::string &b) {
    std::string first;
    std::string second;
    if (FollowLinks(a, &first) != noErr || FollowLinks(b, &second) != noErr) {
        return false;
    }
    struct stat firstFound {};
    struct stat secondFound {};
    return first == second ||
           (CurrentDisk().StatusAt(first.c_str(), &firstFound) == 0 &&
            CurrentDisk().StatusAt(second.c_str(), &secondFound) == 0 &&
            firstFound.st_dev == secondFound.st_dev && firstFound.st_ino == secondFound.st_ino);
}

Outcome Session::OpenForReading() {
    // Without a preferences folder there is no settings file, and the path stays empty.
    std::ignore = SettingsPath(fRequest, &fPath);
    return Load(Purpose::Reading);
}

Outcome Session::OpenForReading(AppPrefs *record) {
    RecordNumber number = kNoRecord;
    Outcome outcome = OpenForReading();
    return outcome.IsDone() ? Find(&number, record) : outcome;
}

Outcome Session::OpenForChanging() {
    if (Outcome outcome = LocateAndLock(); !outcome.IsDone()) {
        return outcome;
    }
    return Load(Purpose::Changing);
}

Outcome Session::LocateAndLock() {
    if (!fRequest.line.prefs) {
        if (const OSErr status = MakePreferencesFolder(); status != noErr) {
            return FailedFile("cannot use", "the preferences folder", status, kUnchanged);
        }
    }
    std::string target;
    OSErr status = SettingsPath(fRequest, &fPath);
    if (status == noErr) {
        status = FollowLinks(fPath, &target);
    }
    if (status == noErr) {
        status = fLock.Acquire(FolderOfPath(target));
    }
    return status == noErr ? Done() : FailedFile("cannot change", PathForPeople(fPath), status, kUnchanged);
}

Outcome Session::Load(Purpose purpose) {
    fBase = NewDrevixBase();
    if (!fBase) {
        return Failed("there is not enough memory; nothing was changed");
    }
    const OSErr fileStatus = fPath.empty() ? fnfErr : ReadAsSettings(fPath);
    const bool isRefused = fileStatus == kRefused || fileStatus == eofErr;
    if (fileStatus != noErr && fileStatus != fnfErr && fileStatus != dirNFErr && !isRefused) {
        return FailedFile("cannot read", fPath, fileStatus, kUnchanged);
    }
    // Reading a refused file again would keep it aside, which only a command that is to overwrite it may do.
    const bool skipsFile = isRefused && purpose == Purpose::Reading;
    const OSErr status = GetDevicePrefsFromPath(fBase.get(), skipsFile ? std::string() : fPath,
                                                fRequest.surroundings.resources, kPanelVersion);
    if (status != noErr) {
        return FailedFile("cannot find settings in", PathForPeople(fPath), status, kUnchanged);
    }
    if (purpose == Purpose::Changing && QBaseGetReadOnly(fBase.get())) {
        return Failed("cannot keep the damaged " + fPath + " aside as " + fPath + kRefusedSuffix +
                      "; nothing was changed; move it away, or 'drevixctl recover' it");
    }
    if (isRefused) {
        SayRefused(purpose);
    }
    if (IsUsersOwn()) {
        SyncFromKorvane(fBase.get());
    }
    SortDrevixBase(fBase.get());
    return Done();
}

bool Session::IsUsersOwn() const {
    std::string own;
    return !fRequest.line.prefs || (FindDevicePrefsPath(&own) == noErr && AreSameFile(fPath, own));
}

void Session::SayRefused(Purpose purpose) const {
    std::string note =
        "drevixctl: note: " + fPath + " is damaged and the factory settings are used instead; ";
    note += purpose == Purpose::Reading ? "it was not changed; 'drevixctl check' says what is wrong"
                                        : "it is kept as " + fPath + kRefusedSuffix;
    fRequest.surroundings.err << PlainText(note) << '\n';
}

Outcome Session::Find(RecordNumber *number) const {
    if (fRequest.line.app) {
        Str63 name{};
        getPascalString(*fRequest.line.app, name.data(), kMaxFileNameLength);
        *number = FindAppPrefs(Base(), name.data());
        return *number != kNoRecord ? Done()
                                    : Failed("there is no record for " + QuotedText(*fRequest.line.app) +
                                             "; nothing was changed; 'drevixctl list' shows all records");
    }
    const AppPrefs *first = GetAppPrefs(Base(), 0);
    *number = 0;
    return first != nullptr && first->application == kGlobalSignature
               ? Done()
               : Failed(
                     "the settings have no global record; nothing was changed; name a record with --app, or "
                     "import a global record");
}

Outcome Session::Find(RecordNumber *number, AppPrefs *record) const {
    Outcome outcome = Find(number);
    if (outcome.IsDone()) {
        const AppPrefs *found = GetAppPrefs(Base(), *number);
        if (found == nullptr) {
            return Failed("the record is damaged; nothing was changed");
        }
        *record = *found;
    }
    return outcome;
}

std::vector<const AppPrefs *> Session::Records() const {
    std::vector<const AppPrefs *> records;
    for (RecordNumber number = 0; number < QBaseCountRecords(Base()); ++number) {
        if (const AppPrefs *record = GetAppPrefs(Base(), number)) {
            records.push_back(record);
        }
    }
    return records;
}

Outcome Session::Store(const AppPrefs &record, RecordNumber number) const {
    return StoreAppPrefs(Base(), record, number) != kNoRecord
               ? Done()
               : Failed("there is not enough memory; nothing was changed");
}

Outcome Session::Save() {
    SortDrevixBase(Base());
    std::string before;
    const OSErr readBefore = ReadWholeFile(fPath, &before);
    const OSErr status = SaveDevicePrefsToPath(Base(), fPath);
    if (status == noErr) {
        if (IsUsersOwn()) {
            SyncToKorvane(Base());
            std::ignore = RequestDriverPrefsUpdate(kDrevixHelperName.data()); // none need run
        }
        return Done();
    }
    // A folder that cannot be flushed is found out only after the new file has taken the old one's place.
    std::string after;
    const bool isAsItWas = ReadWholeFile(fPath, &after) == readBefore && after == before;
    return FailedFile("cannot write", fPath, status,
                      isAsItWas ? "the settings are as they were"
                                : "the file is whole, with the old settings or the new ones");
}

} // namespace drevix
