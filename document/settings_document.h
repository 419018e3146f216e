// The life of one settings file on behalf of one program: opened, watched, merged with what other programs have
// saved meanwhile, and saved under the user's lock. The panel, the command line and the helper share it; none of
// them reads or writes the file in another way.
#pragma once

#include "companion/korvane_sync.h"
#include "document/file_stamp.h"
#include "platform/base/status.h"
#include "platform/files/files.h"
#include "platform/files/user_lock.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"
#include "settings/device_prefs.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace drevix {

// What a program may do to the file.
enum class Access : std::uint8_t {
    Read,   // nothing is written at all, not even a damaged file's kept copy
    Change, // a damaged file is kept aside as soon as it is met, so that a save may replace it
};

// Whose file it is: the user's own goes hand in hand with the companion's hotkey files and the helper.
enum class Ownership : std::uint8_t { UsersOwn, Named };

// A record that both sides changed. This side's is in the base.
struct RecordConflict {
    std::string name;               // the record's shown name, UTF-8; empty for the global record
    std::optional<AppPrefs> ours;   // nothing: removed here
    std::optional<AppPrefs> theirs; // nothing: removed by the other program
};

// What came of looking whether another program has changed the file.
struct OutsideChanges {
    bool cameIn = false;                   // the base has changed: sort is done, lists are to be built anew
    std::vector<RecordConflict> conflicts; // each is told once
};

// What came of reading the file.
struct OpenResult {
    OSErr status = noErr; // noErr: the base holds settings; resNotFound, memFullErr, ...: it is as it was
    OSErr fileStatus =
        noErr; // of the file itself: noErr; fnfErr; -1 or eofErr when it is damaged; why it could
               // not be read
};

// What came of a save. Whether the file holds the base now is SettingsDocument::IsSaved.
struct SaveResult {
    OSErr status = noErr;  // of the lock (fBsyErr: another program holds it) or the file
    bool wasTried = false; // to write; when not, nothing was changed but what `keptAside` tells of
    OutsideChanges outside;
    OSErr keptAside = noErr; // what came of keeping aside a damaged file that the save was to replace
    bool replacedDamaged = false;
};

class SettingsDocument {
  public:
    // Of the user's own file, or of any other by its path. `resources` has the factory's settings.
    SettingsDocument(FSRef resources, std::uint32_t version);
    SettingsDocument(const SettingsDocument &) = delete;
    SettingsDocument &operator=(const SettingsDocument &) = delete;
    ~SettingsDocument();

    // Names another file than the user's own. Call it before Open. A path that leads to the user's own file
    // counts as that.
    void UseFile(std::string path);
    // The same for a program that goes by the file alone: it counts as a named one whatever it is.
    void UseFileAlone(std::string path);

    // Reads the file into a new base: repaired, with the factory's records that it lacks, a global record
    // first, sorted; the user's own with the companion's menu entries. A file that is missing or damaged stands
    // for the factory's settings. When it fails, the base, the edits and the stamp stay as they were, but for a
    // first call, which leaves an empty base. Opening again drops what was not saved (Revert).
    OpenResult Open(Access access);

    // Null before a first Open that found memory. Owned by the document; another one after each Open, and its
    // records move when outside changes come in. Change it with the functions below only.
    [[nodiscard]] QBaseHandle Base() const { return fBase.get(); }
    // Where the file is or would be; empty when there is no preferences folder.
    [[nodiscard]] const std::string &Path() const { return fPath; }
    [[nodiscard]] Ownership Owner() const;

    // Edits. Each remembers the record as it was before the first edit since it was read or saved.

    // Puts the record at that number, or adds it for kNoRecord ("settings/prefs_list.h": StoreAppPrefs).
    // kNoRecord, with nothing changed, without memory.
    [[nodiscard]] RecordNumber Store(const AppPrefs &record, RecordNumber number);
    // Replaces record `number` by the very bytes of `record`; false, with nothing changed, without memory or
    // such a record.
    [[nodiscard]] bool Replace(RecordNumber number, const AppPrefs &record);
    // Removes the record; false without one of that number, or without memory.
    [[nodiscard]] bool Remove(RecordNumber number);

    // Whether this record (one that is or was in the base) differs from what was read or saved last; how many
    // records do.
    [[nodiscard]] bool IsUnsaved(const AppPrefs &record) const;
    [[nodiscard]] int CountUnsaved() const;
    // Whether the file lacks something of the base: an edit, or factory records that came in on reading.
    [[nodiscard]] bool IsSaved() const;
    // Whether the file was found in a state in which it must not be replaced: it could not be read, or is damaged
    // and could not be kept aside. A save looks again, and fails with the reason if it still is.
    [[nodiscard]] bool IsReadOnly() const;

    // Looks at the file's stamp and, when another program has changed it, merges by record: what only one side
    // changed is taken from that side, what both changed stays as it is here and is told. Only from a file that
    // reads as noErr and holds records; from any other nothing is taken, and it is looked at again next time.
    // No lock is needed for this. Does nothing with Access::Read.
    OutsideChanges TakeOutsideChanges();

    // Brings the companion's menu entries into the records (the companion is right when the panel comes to the
    // front). Not an edit.
    void TakeCompanionChanges();
    // What came of the companion's files when they were last read or written for this document.
    [[nodiscard]] const KorvaneResults &Companion() const { return fCompanion; }

    // Takes the user's lock, to hold it over reading, changing and saving as long as the document lives; noErr
    // when it is held already. Else fBsyErr after `wait`, or why the lock's file cannot be used. One lock stands
    // for all settings files.
    [[nodiscard]] OSErr Lock(std::chrono::milliseconds wait);

    // Under the lock (taken for at most `wait` unless it is held): takes outside changes, then, for the user's
    // own file, writes the companion's files and tells the companion; writes the file; asks the helper to
    // reload. A damaged file that came up meanwhile is kept aside before it is replaced. After a failure the
    // base and its edits are kept for the next save. wrPermErr with Access::Read.
    SaveResult Save(std::chrono::milliseconds wait);

    // A base with this document's records and those of every kept copy of the file (damaged ones as far as their
    // records are whole): whose items must not be cleaned up. Null, for no cleanup at all, when a kept copy
    // cannot be read or there is no memory.
    [[nodiscard]] QBaseOwner RecordsWithItems() const;

  private:
    // What tells a record from the others of a base while its contents change ("document/record_keys.h").
    using RecordKey = std::string;
    // The file as it was found.
    struct Reading;

    OSErr Locate();
    OSErr MakePlace();
    Reading Read(RefusedFile refused) const;
    [[nodiscard]] bool MayHaveChanged() const;
    bool Merge(Reading &theirs, OutsideChanges *outside);
    OSErr LookBeforeSave(SaveResult *result);
    OSErr Write();
    void NoteAlike(const AppPrefs &record, bool isAdded);

    FSRef fResources;
    std::uint32_t fVersion;
    std::optional<std::string> fNamedPath;
    bool fIsAlone = false; // the file alone counts
    std::string fPath;
    Access fAccess = Access::Read;
    UserLock fLock;
    QBaseOwner fBase;
    QBaseOwner fAsOnDisk;    // the file's records as last read or written; for Access::Change only
    QBaseOwner fMayBeOnDisk; // what a save wrote that failed at last; null for none
    FileStamp fStamp;        // taken before that reading
    bool fIsSettled = false; // fStamp is sure to differ when the file does
    bool fHasMore = false;   // repairs or the factory's records came in on reading, which the file lacks
    KorvaneResults fCompanion = {};
    mutable std::optional<int> fCountUnsaved;                  // nothing: to be counted anew
    std::map<RecordKey, std::optional<AppPrefs>> fBeforeEdits; // records as they were; nothing: added here
};

} // namespace drevix
