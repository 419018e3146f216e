// The settings that a command works on.
#pragma once

#include "cli/commands.h"
#include "platform/file_update.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <string>
#include <vector>

namespace drevix {

// A settings file, read as the panel reads it: repaired, with the factory records that it lacks, sorted.
// The user's own has its companion menu entries from the companion's files.
class Session {
  public:
    // The request must outlive the session.
    explicit Session(const Request &request) : fRequest(request) {}
    explicit Session(const Request &&) = delete;

    // Reads the settings and writes nothing at all, not even a refused file's kept copy. A file that is
    // missing stands for the factory settings; so does one that is refused, which a line on standard error
    // then says. Failed when the file is there but cannot be read, or there are no factory settings either.
    Outcome OpenForReading();
    // The same, and a copy of the record that --app names. Failed as OpenForReading or Find.
    Outcome OpenForReading(AppPrefs *record);
    // As the first, to Save later: other programs that do this wait until the session ends. A refused file is
    // kept aside; Failed when that is not possible.
    Outcome OpenForChanging();

    [[nodiscard]] QBaseHandle Base() const { return fBase.get(); }
    // Where the settings file is or would be; empty when there is no preferences folder.
    [[nodiscard]] const std::string &Path() const { return fPath; }
    // Whether the file is the one that the panel uses, and not another that --prefs names.
    [[nodiscard]] bool IsUsersOwn() const;

    // The number of the record that --app names, or of the global record. Failed when there is none.
    Outcome Find(RecordNumber *number) const;
    // A copy of that record.
    Outcome Find(RecordNumber *number, AppPrefs *record) const;
    // All settings records, in list order. Valid until the base is changed.
    [[nodiscard]] std::vector<const AppPrefs *> Records() const;

    // Puts the record back, or adds it for kNoRecord. Failed without memory.
    Outcome Store(const AppPrefs &record, RecordNumber number) const;
    // Sorts the records and writes the file. The user's own goes to the companion's files too.
    Outcome Save();

  private:
    enum class Purpose { Reading, Changing };
    Outcome LocateAndLock();
    Outcome Load(Purpose purpose);
    void SayRefused(Purpose purpose) const;

    const Request &fRequest;
    std::string fPath;
    FolderLock fLock;
    QBaseOwner fBase;
};

// The settings file that a request means: --prefs, or the user's. noErr, or why there is no preferences
// folder.
[[nodiscard]] OSErr SettingsPath(const Request &request, std::string *path);
// What reading the file as a settings file gives: noErr, -1 or eofErr for a damaged one, or why it cannot be
// read.
[[nodiscard]] OSErr ReadAsSettings(const std::string &path);
// Whether two paths lead to one file.
[[nodiscard]] bool AreSameFile(const std::string &a, const std::string &b);

} // namespace drevix
