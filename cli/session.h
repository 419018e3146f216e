// The settings that a command works on.
#pragma once

#include "cli/commands.h"
#include "document/settings_document.h"

#include <string>
#include <vector>

namespace drevix {

// A settings document with its failures in words. The one of the user's own file unless --prefs names another.
class Session {
  public:
    // The request must outlive the session.
    explicit Session(const Request &request);
    explicit Session(const Request &&) = delete;

    // Reads the settings and writes nothing at all, not even a refused file's kept copy. A file that is
    // missing stands for the factory settings; so does one that is refused, which a line on standard error
    // then says. Failed when the file is there but cannot be read, or there are no factory settings either.
    Outcome OpenForReading();
    // The same, and a copy of the record that --app names. Failed as OpenForReading or Find.
    Outcome OpenForReading(AppPrefs *record);
    // As the first, to Save later: other programs that change settings wait until the session ends. A refused
    // file is kept aside; Failed when that is not possible.
    Outcome OpenForChanging();

    [[nodiscard]] QBaseHandle Base() const { return fDocument.Base(); }
    // Where the settings file is or would be; empty when there is no preferences folder.
    [[nodiscard]] const std::string &Path() const { return fDocument.Path(); }
    // Whether the file is the one that the panel uses, and not another that --prefs names.
    [[nodiscard]] bool IsUsersOwn() const { return fDocument.Owner() == Ownership::UsersOwn; }

    // The number of the record that --app names ("settings/prefs_list.h": FindAppPrefsByText), or of the global
    // record. Failed when there is none.
    Outcome Find(RecordNumber *number) const;
    // A copy of that record.
    Outcome Find(RecordNumber *number, AppPrefs *record) const;
    // All settings records, in list order. Valid until the base is changed.
    [[nodiscard]] std::vector<const AppPrefs *> Records() const;

    // Puts the record back, or adds it for kNoRecord. Failed without memory.
    Outcome Store(const AppPrefs &record, RecordNumber number);
    // Takes the record away. Failed without memory.
    Outcome Remove(RecordNumber number);
    // Sorts the records and writes the file. The user's own goes to the companion's files too: Failed, with the
    // settings saved, when one of those was to change and could not be written. What came of
    // another program's changes, or of a damaged file, meanwhile is said on standard error.
    Outcome Save();

  private:
    Outcome Open(Access access);
    void Note(const std::string &text) const;
    void SayWhatElseCame(const SaveResult &result) const;
    Outcome SaveFailure(const SaveResult &result, bool isAsItWas) const;

    const Request &fRequest;
    SettingsDocument fDocument;
};

// The settings file that a request means: --prefs, or the user's. noErr, or why there is no preferences
// folder.
[[nodiscard]] OSErr SettingsPath(const Request &request, std::string *path);
// What reading the file as a settings file gives: noErr, -1 or eofErr for a damaged one, or why it cannot be
// read.
[[nodiscard]] OSErr ReadAsSettings(const std::string &path);

} // namespace drevix
