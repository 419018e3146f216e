#include "cli/session.h"

#include "cli/companion_notes.h"
#include "keyboard/key_names.h"
#include "keyboard/layout_family.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "qbase/qbase_file.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"

namespace drevix {
namespace {

// For another program that is changing settings.
constexpr std::chrono::seconds kLongestWait{5};

std::string PathForPeople(const std::string &path) {
    return path.empty() ? Translated("the settings file") : path;
}

} // namespace

OSErr ReadAsSettings(const std::string &path) {
    const QBaseOwner base = NewDrevixBase();
    DevicePrefsFile file;
    const OSErr status =
        base ? ReadDevicePrefs(base.get(), path, {}, 0, RefusedFile::LeaveAlone, &file) : memFullErr;
    return status == memFullErr ? status : file.status;
}

OSErr SettingsPath(const Request &request, std::string *path) {
    if (request.line.prefs) {
        *path = *request.line.prefs;
        return noErr;
    }
    return FindDevicePrefsPath(path);
}

namespace {

// Whether factory records will be added: only then is the layout asked for, which takes longer than all the rest.
bool NeedsFactory(const std::string &path) {
    const QBaseOwner base = NewDrevixBase();
    OwnedFile file;
    return base == nullptr || OpenFile(path, fsRdPerm, file.Out()) != noErr ||
           QBaseRead(base.get(), file.Get(), true, false, true, true) != noErr ||
           QBaseGetUserLong(base.get()) < kPanelVersion;
}

} // namespace

FSRef FactoryOfLayout(const Request &request) {
    GetKeyboardInformation();
    return FactoryFolder(request.surroundings.resources);
}

Session::Session(const Request &request)
    : fRequest(request), fDocument(request.surroundings.resources, kPanelVersion) {
    if (request.line.prefs) {
        fDocument.UseFile(*request.line.prefs);
    }
    std::string path;
    if (SettingsPath(request, &path) != noErr || NeedsFactory(path)) {
        fDocument.UseFactory(FactoryOfLayout(request));
    }
}

Outcome Session::OpenForReading() {
    return Open(Access::Read);
}

Outcome Session::OpenForReading(AppPrefs *record) {
    RecordNumber number = kNoRecord;
    Outcome outcome = OpenForReading();
    return outcome.IsDone() ? Find(&number, record) : outcome;
}

Outcome Session::OpenForChanging() {
    const OSErr status = fDocument.Lock(kLongestWait);
    if (status == fBsyErr) {
        return Failed(Translated("another program is changing settings; nothing was changed; try again"));
    }
    if (status != noErr) {
        return FailedFile("cannot use %1",
                          Translated("the lock that keeps programs from changing settings at once"), status,
                          kUnchanged);
    }
    return Open(Access::Change);
}

Outcome Session::Open(Access access) {
    const OpenResult result = fDocument.Open(access);
    const OSErr fileStatus = result.fileStatus;
    const bool isMissing = fileStatus == fnfErr || fileStatus == dirNFErr;
    if (result.status == memFullErr) {
        return Failed(Translated("there is not enough memory; nothing was changed"));
    }
    if (fileStatus != noErr && !isMissing && !IsDamaged(fileStatus)) {
        return FailedFile("cannot read %1", PathForPeople(Path()), fileStatus, kUnchanged);
    }
    if (result.status != noErr) {
        return FailedFile("cannot find settings in %1", PathForPeople(Path()), result.status, kUnchanged);
    }
    if (access == Access::Change && fDocument.IsReadOnly()) {
        return Failed(
            Translated("cannot keep the damaged %1 aside as %2; nothing was changed; move it away, or "
                       "'drevixctl recover' it",
                       Path(), Path() + kRefusedSuffix));
    }
    if (IsDamaged(fileStatus)) {
        Note(access == Access::Read
                 ? Translated("%1 is damaged and the factory settings are used instead; it was not changed; "
                              "'drevixctl check' says what is wrong",
                              Path())
                 : Translated("%1 is damaged and the factory settings are used instead; it is kept as %2",
                              Path(), Path() + kRefusedSuffix));
    }
    NoteKorvaneReading(fDocument.Companion(), fRequest.surroundings.err);
    return Done();
}

void Session::Note(const std::string &text) const {
    fRequest.surroundings.err << PlainText("drevixctl: " + Translated("note: %1", text)) << '\n';
}

Outcome Session::Find(RecordNumber *number) const {
    if (fRequest.line.app) {
        *number = FindAppPrefsByText(Base(), *fRequest.line.app);
        return *number != kNoRecord ? Done()
                                    : Failed(Translated("there is no record for %1; nothing was changed; "
                                                        "'drevixctl list' shows all records",
                                                        QuotedText(*fRequest.line.app)));
    }
    const AppPrefs *first = GetAppPrefs(Base(), 0);
    *number = 0;
    return first != nullptr && first->application == kGlobalSignature
               ? Done()
               : Failed(Translated(
                     "the settings have no global record; nothing was changed; name a record with --app, or "
                     "import a global record"));
}

Outcome Session::Find(RecordNumber *number, AppPrefs *record) const {
    Outcome outcome = Find(number);
    if (outcome.IsDone()) {
        const AppPrefs *found = GetAppPrefs(Base(), *number);
        if (found == nullptr) {
            return Failed(Translated("the record is damaged; nothing was changed"));
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

Outcome Session::Store(const AppPrefs &record, RecordNumber number) {
    return fDocument.Store(record, number) != kNoRecord
               ? Done()
               : Failed(Translated("there is not enough memory; nothing was changed"));
}

Outcome Session::Remove(RecordNumber number) {
    return fDocument.Remove(number) ? Done()
                                    : Failed(Translated("there is not enough memory; nothing was changed"));
}

Outcome Session::TakeAll(QBaseHandle earlier) {
    return fDocument.TakeAll(earlier) ? Done()
                                      : Failed(Translated("there is not enough memory; nothing was changed"));
}

Outcome Session::Take(const AppPrefs &earlier) {
    return fDocument.TakeOne(earlier) ? Done()
                                      : Failed(Translated("there is not enough memory; nothing was changed"));
}

Outcome Session::Save() {
    SortDrevixBase(Base());
    const FileStamp before = StampOfFile(Path());
    const SaveResult result = fDocument.Save(kLongestWait);
    SayWhatElseCame(result);
    return result.status == noErr ? OutcomeOfKorvaneWriting(fDocument.Companion())
                                  : SaveFailure(result, StampOfFile(Path()) == before);
}

// The lock keeps our programs away, but any program can change the file.
void Session::SayWhatElseCame(const SaveResult &result) const {
    const bool isSaved = result.status == noErr;
    if (result.outside.cameIn) {
        Note(Translated("another program changed %1 meanwhile; its changes are kept", Path()));
    }
    for (const RecordConflict &conflict : result.outside.conflicts) {
        const std::string name =
            conflict.name.empty() ? Translated("all applications") : QuotedText(conflict.name);
        Note(isSaved && result.history == noErr
                 ? Translated(
                       "another program changed the settings for %1 meanwhile; this command's took their "
                       "place; 'drevixctl history' lists the others",
                       name)
                 : Translated(
                       "another program changed the settings for %1 meanwhile; this command's took their "
                       "place",
                       name));
    }
    if (isSaved && result.history != noErr) {
        Note(Translated("what %1 held before could not be kept in the history: %2", Path(),
                        Translated(StatusText(result.history))));
    }
    if (result.wasTried) {
        NoteKorvaneReplacing(fDocument.Companion(), fRequest.surroundings.err);
    }
    if (result.replacedDamaged) {
        Note(Translated("%1 was damaged meanwhile; what it held is kept as %2", Path(),
                        Path() + kRefusedSuffix));
    }
}

Outcome Session::SaveFailure(const SaveResult &result, bool isAsItWas) const {
    if (result.keptAside != noErr) {
        return FailedFile("cannot keep aside the damaged %1", Path(), result.keptAside,
                          ToTranslate("it was not changed"));
    }
    // When creating a file, only its folder can be missing.
    const OSErr status = result.status == fnfErr ? dirNFErr : result.status;
    if (!result.wasTried) {
        return FailedFile("cannot write %1", PathForPeople(Path()), status, kUnchanged);
    }
    // A failure to flush the folder comes after the new file has replaced the old one. The companion's files
    // are written before that.
    std::string unchanged =
        isAsItWas ? Translated("the settings file is as it was")
                  : Translated("the settings file is intact, with the old settings or the new ones");
    if (IsUsersOwn()) {
        unchanged.append("; ").append(Translated("menu entries of the companion may have changed"));
        unchanged.append(KeptHotKeys());
    }
    return FailedFile("cannot write %1", PathForPeople(Path()), status, unchanged);
}

} // namespace drevix
