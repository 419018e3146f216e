// The settings that a command works on.
#pragma once

#include "cli/commands.h"
#include "document/settings_document.h"

#include <string>
#include <vector>

namespace drevix {

// The folder of the factory settings for the current keyboard layout. Looking up the layout takes
// milliseconds.
[[nodiscard]] FSRef FactoryOfLayout(const Request &request);

// A settings document whose failures are messages. Uses the user's own file unless --prefs names another.
class Session {
  public:
    // The request must outlive the session.
    explicit Session(const Request &request);
    explicit Session(const Request &&) = delete;

    // Reads the settings without writing anything, not even a copy of a refused file. A missing file gives
    // the factory settings; so does a refused one, with a note on standard error. Failed if the file exists
    // but cannot be read, or the factory settings are missing too.
    Outcome OpenForReading();
    // The same, plus a copy of the record that --app names. Failed as OpenForReading or Find.
    Outcome OpenForReading(AppPrefs *record);
    // Like OpenForReading, but for a later Save: other programs that change settings wait until the session
    // ends. Copies a refused file aside; Failed if that is not possible.
    Outcome OpenForChanging();

    [[nodiscard]] QBaseHandle Base() const { return fDocument.Base(); }
    // Where the settings file is or would be; empty if there is no preferences folder.
    [[nodiscard]] const std::string &Path() const { return fDocument.Path(); }
    // Whether the file is the one that the panel uses, not another named by --prefs.
    [[nodiscard]] bool IsUsersOwn() const { return fDocument.Owner() == Ownership::UsersOwn; }

    // The number of the record that --app names ("settings/prefs_list.h": FindAppPrefsByText), or of the
    // global record. Failed if there is none.
    Outcome Find(RecordNumber *number) const;
    // A copy of that record.
    Outcome Find(RecordNumber *number, AppPrefs *record) const;
    // All settings records, in list order. Valid until the base changes.
    [[nodiscard]] std::vector<const AppPrefs *> Records() const;

    // Stores the record, or adds it for kNoRecord. Failed if out of memory.
    Outcome Store(const AppPrefs &record, RecordNumber number);
    // Removes the record. Failed if out of memory.
    Outcome Remove(RecordNumber number);
    // Take all records, or one, from earlier settings. Failed if out of memory.
    Outcome TakeAll(QBaseHandle earlier);
    Outcome Take(const AppPrefs &earlier);
    // Sorts the records and writes the file. The user's own settings are also written to the companion's
    // files: Failed, with the settings saved, if one of those could not be updated. Reports merged changes of
    // other programs, or a file damaged meanwhile, on standard error.
    Outcome Save();

  private:
    Outcome Open(Access access);
    void Note(const std::string &text) const;
    void SayWhatElseCame(const SaveResult &result) const;
    Outcome SaveFailure(const SaveResult &result, bool isAsItWas) const;

    const Request &fRequest;
    SettingsDocument fDocument;
};

// The settings file for a request: --prefs, or the user's. noErr, or the error finding the preferences
// folder.
[[nodiscard]] OSErr SettingsPath(const Request &request, std::string *path);
// The status of reading the file as a settings file: noErr, -1 or eofErr for a damaged one, or the read
// error.
[[nodiscard]] OSErr ReadAsSettings(const std::string &path);

} // namespace drevix
