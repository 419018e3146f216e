// One settings file, as one program works with it: opens it, watches it, merges what other programs save
// meanwhile, and saves it under the user's lock. The panel, the command line and the helper all use this and
// access the file in no other way.
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
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace drevix {

// What a program may do to the file.
enum class Access : std::uint8_t {
    Read,   // never writes the file, not even a copy of a damaged one
    Change, // copies a damaged file aside at once, so that a save may replace it
};

// Whose file it is. Only the user's own is synchronized with the companion's hotkey files and the helper.
enum class Ownership : std::uint8_t { UsersOwn, Named };

// A record that both sides changed. The base has this side's.
struct RecordConflict {
    std::string name;               // the record's display name, UTF-8; empty for the global record
    std::optional<AppPrefs> ours;   // nullopt: removed here
    std::optional<AppPrefs> theirs; // nullopt: removed by the other program
};

// A record that differs from the last read or save.
struct UnsavedRecord {
    std::optional<AppPrefs> onDisk; // nullopt: added here
    std::optional<AppPrefs> here;   // nullopt: removed here
};

// The result of checking for changes by other programs.
struct OutsideChanges {
    bool cameIn = false;                   // the base has changed and is sorted; rebuild lists
    std::vector<RecordConflict> conflicts; // each is reported once
};

// The result of reading the file.
struct OpenResult {
    OSErr status = noErr; // noErr: the base holds settings; resNotFound, memFullErr, ...: unchanged
    // Of the file itself: noErr; fnfErr; -1 or eofErr if damaged; else the read error.
    OSErr fileStatus = noErr;
};

// The result of a save. SettingsDocument::IsSaved tells whether the file now matches the base.
struct SaveResult {
    OSErr status = noErr;  // of the lock (fBsyErr: another program holds it) or the file
    bool wasTried = false; // to write; if not, nothing changed except as `keptAside` says
    OutsideChanges outside;
    OSErr keptAside = noErr; // of copying aside a damaged file before replacing it
    bool replacedDamaged = false;
    OSErr history =
        noErr; // of keeping what the file held before ("document/history.h"); does not stop a save
};

class SettingsDocument {
  public:
    // For the user's own file, or any other by path. `resources` contains the factory settings.
    SettingsDocument(FSRef resources, std::uint32_t version);
    SettingsDocument(const SettingsDocument &) = delete;
    SettingsDocument &operator=(const SettingsDocument &) = delete;
    ~SettingsDocument();

    // Takes factory settings from here from the next read on, such as those for another keyboard layout.
    void UseFactory(FSRef resources) { fResources = std::move(resources); }

    // Uses another file than the user's own. Call before Open. A path to the user's own file still means the
    // user's own.
    void UseFile(std::string path);
    // The same, but treats any file as a named one, even the user's own.
    void UseFileAlone(std::string path);

    // Restores files whose in-place write a crash cut short ("platform/files/kept_bytes.h"), then
    // reads the file into a new base: repaired, sorted, a global record first, with missing factory records
    // added and, for the user's own file, the companion's menu entries. A missing or damaged file gives the
    // factory settings. On failure base, edits and stamp stay as they were, except that a first call leaves
    // an empty base. Opening again drops unsaved edits (Revert).
    OpenResult Open(Access access);

    // Null until an Open gets memory. Owned by the document. Each Open replaces it, and its records move when
    // outside changes come in. Change it only with the functions below.
    [[nodiscard]] QBaseHandle Base() const { return fBase.get(); }
    // Where the file is or would be; empty if there is no preferences folder.
    [[nodiscard]] const std::string &Path() const { return fPath; }
    [[nodiscard]] Ownership Owner() const;

    // Edits. Each remembers the record as last read or saved.

    // Stores the record at that number, or adds it for kNoRecord ("settings/prefs_list.h": StoreAppPrefs).
    // kNoRecord, with nothing changed, if out of memory.
    [[nodiscard]] RecordNumber Store(const AppPrefs &record, RecordNumber number);
    // Replaces record `number` by exactly the bytes of `record`; false, with nothing changed, if there is no
    // such record or memory is out.
    [[nodiscard]] bool Replace(RecordNumber number, const AppPrefs &record);
    // Removes the record; false if there is no such record or memory is out.
    [[nodiscard]] bool Remove(RecordNumber number);

    // Makes the records those of an earlier base, as edits: all of them, which removes records that it does
    // not have, or one. False, with nothing changed, if memory is out. May replace and sort Base().
    [[nodiscard]] bool TakeAll(QBaseHandle earlier);
    [[nodiscard]] bool TakeOne(const AppPrefs &earlier);

    // Whether this record (one that is or was in the base) differs from the last read or save, and how many
    // records do.
    [[nodiscard]] bool IsUnsaved(const AppPrefs &record) const;
    [[nodiscard]] int CountUnsaved() const;
    // Those records; none if out of memory.
    [[nodiscard]] std::vector<UnsavedRecord> Unsaved() const;
    // Whether the file matches the base. False after an edit, if reading added factory records, or until it is known what
    // a failed save has written.
    [[nodiscard]] bool IsSaved() const;
    // Whether the file must not be replaced: it could not be read, or is damaged and could not be copied
    // aside. A save checks again, and fails with the reason if that is still so.
    [[nodiscard]] bool IsReadOnly() const;

    // Checks the file's stamp and, if another program has changed the file, merges by record: a change by one
    // side is taken; if both changed a record, ours stays and the conflict is reported. Merges only from a
    // readable file with records; any other is ignored and checked again next time. Needs no lock. Does
    // nothing with Access::Read.
    OutsideChanges TakeOutsideChanges();

    // Copies the companion's menu entries into the records (the companion's are right when the panel comes to
    // the front). Not an edit.
    void TakeCompanionChanges();
    // Writes the companion's files from the base and notifies the companion, as a save does, but saves nothing.
    void WriteCompanionFiles();
    // The results of last reading or writing the companion's files for this document.
    [[nodiscard]] const KorvaneResults &Companion() const { return fCompanion; }

    // Takes the user's lock and holds it over reading, changing and saving, until the document is destroyed.
    // noErr, also if already held; fBsyErr after `wait`; or the error of the lock's file. One lock covers all
    // settings files.
    [[nodiscard]] OSErr Lock(std::chrono::milliseconds wait);

    // Under the lock (waits at most `wait` for it unless held): merges outside changes; for the user's own
    // file, writes the companion's files and notifies the companion; writes the file, keeping in the history what it
    // held; asks the helper to reload. Copies aside a file damaged meanwhile before replacing it. On failure keeps the base and its
    // edits for the next save. wrPermErr with Access::Read.
    SaveResult Save(std::chrono::milliseconds wait);

    // The records whose items must not be cleaned up: this document's, those of the file's history, and those of
    // every kept copy of it (only intact records of damaged ones). Null, meaning no cleanup at all, if one of them
    // cannot be read or memory is out.
    [[nodiscard]] QBaseOwner RecordsWithItems() const;
    // Calls `cleanUp` with them under the user's lock, after taking in what others have saved: so no program
    // can have made an item for settings that it has not saved yet. Does nothing without the lock (waits for
    // it at most `wait`), with unsaved edits, or without the records.
    void CleanUpItems(std::chrono::milliseconds wait, const std::function<void(QBaseHandle)> &cleanUp);

  private:
    // Identifies a record of a base while its contents change ("document/record_keys.h").
    using RecordKey = std::string;
    // The file as it was found.
    struct Reading;
    // fBeforeEdits in a base of its own.
    struct RecordsBeforeEdits;

    OSErr Locate();
    OSErr MakePlace();
    Reading Read(RefusedFile refused) const;
    [[nodiscard]] bool MayHaveChanged() const;
    bool Merge(Reading &theirs, OutsideChanges *outside);
    OSErr TrySave(std::chrono::milliseconds wait, SaveResult *result);
    OSErr LookBeforeSave(SaveResult *result);
    OSErr Write(SaveResult *result);
    void NoteAlike(const AppPrefs &record, bool isAdded);
    [[nodiscard]] RecordsBeforeEdits CopyBeforeEdits();

    FSRef fResources;
    std::uint32_t fVersion;
    std::optional<std::string> fNamedPath;
    bool fIsAlone = false; // set by UseFileAlone
    std::string fPath;
    Access fAccess = Access::Read;
    UserLock fLock;
    QBaseOwner fBase;
    QBaseOwner fAsOnDisk;       // the file's records as last read or written; for Access::Change only
    QBaseOwner fMayBeOnDisk;    // what a failed save may have written; null: none
    FileStamp fStamp;           // taken before the file was read
    bool fHeldSettings = false; // the file did when it was last read or written
    bool fIsSettled = false;    // any later change of the file will change fStamp
    bool fHasMore = false;      // reading added repairs or factory records that the file lacks
    KorvaneResults fCompanion = {};
    mutable std::optional<int> fCountUnsaved;                  // nullopt: count again
    std::map<RecordKey, std::optional<AppPrefs>> fBeforeEdits; // records before edits; nullopt: added here
};

} // namespace drevix
