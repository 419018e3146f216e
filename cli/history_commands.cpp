// The commands for earlier settings: history, restore.

#include "cli/commands.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "document/history.h"
#include "document/record_changes.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/plist/json.h"
#include "settings/prefs_list.h"

#include <array>
#include <charconv>
#include <ctime>
#include <utility>

namespace drevix {
namespace {

using Time = std::chrono::system_clock::time_point;

constexpr const char *kTimeForPeople = "%Y-%m-%d %H:%M:%S"; // local time
constexpr const char *kTimeForPrograms = "%Y-%m-%dT%H:%M:%S%z";

std::string TimeText(Time time, const char *format) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    std::array<char, 64> text{};
    ::localtime_r(&seconds, &local);
    std::strftime(text.data(), text.size(), format, &local);
    return text.data();
}

struct KindText {
    ChangeKind kind;
    std::string_view word;
};
constexpr auto kKindTexts = std::to_array<KindText>({
    {ChangeKind::Added, ToTranslate("added")},
    {ChangeKind::Removed, ToTranslate("deleted")},
    {ChangeKind::Changed, ToTranslate("changed")},
});

std::string_view WordFor(ChangeKind kind) {
    return kKindTexts[static_cast<std::size_t>(kind)].word;
}

// "GIMP: buttonII, ringSpeed"
std::string TextOf(const RecordChange &change) {
    std::string text = change.fileName.empty() ? Translated("Global Settings") : change.name;
    text += ": ";
    if (change.keys.empty()) {
        return text.append(Translated(WordFor(change.kind)));
    }
    for (const std::string_view key : change.keys) {
        text.append(key == change.keys[0] ? "" : ", ").append(key);
    }
    return text;
}

std::string TextOf(const std::vector<RecordChange> &changes) {
    std::string text;
    for (const RecordChange &change : changes) {
        text.append(text.empty() ? "" : "; ").append(TextOf(change));
    }
    return text.empty() ? Translated("no record") : text;
}

PropertyListArray EntriesOf(const std::vector<RecordChange> &changes) {
    PropertyListArray entries;
    for (const RecordChange &change : changes) {
        PropertyListDictionary entry;
        entry.Add("name", change.name);
        entry.Add("fileName", change.fileName);
        entry.Add("change", std::string(WordFor(change.kind)));
        PropertyListArray keys;
        for (const std::string_view key : change.keys) {
            keys.emplace_back(std::string(key));
        }
        entry.Add("keys", std::move(keys));
        entries.emplace_back(std::move(entry));
    }
    return entries;
}

// One row of the list: earlier settings, and what the save that replaced them changed.
struct HistoryRow {
    EarlierSettings earlier;
    bool isWhole = false;
    std::vector<RecordChange> changes;
};

Outcome ListOf(const std::string &path, std::vector<EarlierSettings> *history) {
    const OSErr status = ListHistory(path, history);
    return status == noErr ? Done()
                           : FailedFile("cannot read %1", Translated("the history"), status, kUnchanged);
}

// Compares each with its successor: the next newer one, or the current file.
std::vector<HistoryRow> RowsOf(const std::vector<EarlierSettings> &history, const std::string &path) {
    std::vector<HistoryRow> rows;
    rows.reserve(history.size());
    QBaseOwner newer = ReadEarlierSettings({path, {}});
    for (const EarlierSettings &earlier : history) {
        QBaseOwner base = ReadEarlierSettings(earlier);
        HistoryRow row{earlier, base != nullptr, {}};
        if (base != nullptr && newer != nullptr) {
            row.changes = ChangesBetween(base.get(), newer.get());
        }
        rows.push_back(std::move(row));
        newer = std::move(base);
    }
    return rows;
}

void PrintEntries(const Request &request, const std::vector<HistoryRow> &rows) {
    PropertyListArray entries;
    for (const HistoryRow &row : rows) {
        PropertyListDictionary entry;
        entry.Add("number", static_cast<std::int64_t>(entries.size()) + 1);
        entry.Add("replaced", TimeText(row.earlier.replaced, kTimeForPrograms));
        entry.Add("intact", row.isWhole);
        entry.Add("changes", EntriesOf(row.changes));
        entries.emplace_back(std::move(entry));
    }
    request.Out() << JsonText(entries) << "\n";
}

// The N-th of the history, from 1.
Outcome Choose(const std::string &text, const std::vector<EarlierSettings> &history,
               EarlierSettings *chosen) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number == 0) {
        return WrongUsage(
            Translated("N must be a number that 'drevixctl history' shows, not %1", QuotedText(text)));
    }
    if (number > history.size()) {
        return Failed(TranslatedCount(
            "the history has %1 earlier settings; nothing was changed; 'drevixctl history' shows them",
            "the history has %1 earlier settings; nothing was changed; 'drevixctl history' shows them",
            history.size()));
    }
    *chosen = history[number - 1];
    return Done();
}

Outcome RestoreOne(const Request &request, Session &session, QBaseHandle earlier, AppPrefs *record) {
    SortDrevixBase(earlier);
    const RecordNumber number = FindAppPrefsByText(earlier, *request.line.app);
    const AppPrefs *found = GetAppPrefs(earlier, number);
    if (found == nullptr) {
        return Failed(Translated("those settings have no record for %1; nothing was changed",
                                 QuotedText(*request.line.app)));
    }
    *record = *found;
    return session.Take(*record);
}

void SayWhatWasRestored(const Request &request, const EarlierSettings &chosen, const AppPrefs &record) {
    if (request.line.app) {
        SayWhatWasDone(request, ToTranslate("%1 restored"), record);
        return;
    }
    if (request.line.json) {
        PropertyListDictionary entry;
        entry.Add("replaced", TimeText(chosen.replaced, kTimeForPrograms));
        request.Out() << JsonText(std::move(entry)) << "\n";
        return;
    }
    request.Out() << Translated(
                         "restored all settings as they were until %1; 'drevixctl restore 1' takes this back",
                         TimeText(chosen.replaced, kTimeForPeople))
                  << "\n";
}

} // namespace

Outcome ShowHistory(const Request &request) {
    std::string path;
    if (const OSErr status = SettingsPath(request, &path); status != noErr && status != fnfErr) {
        return FailedFile("cannot find %1", Translated("the preferences folder"), status, kUnchanged);
    }
    std::vector<EarlierSettings> history;
    if (Outcome outcome = ListOf(path, &history); !outcome.IsDone()) {
        return outcome;
    }
    const std::vector<HistoryRow> rows = RowsOf(history, path);
    if (request.line.json) {
        PrintEntries(request, rows);
        return Done();
    }
    if (rows.empty()) {
        request.Out() << Translated("no earlier settings are kept yet; each save keeps what it replaces")
                      << "\n";
        return Done();
    }
    std::vector<TableRow> table;
    table.reserve(rows.size());
    for (const HistoryRow &row : rows) {
        table.push_back(
            {std::to_string(table.size() + 1), TimeText(row.earlier.replaced, kTimeForPeople),
             PlainText(row.isWhole ? TextOf(row.changes) : Translated("damaged; cannot be restored"))});
    }
    request.Out() << request.Table({"N", Translated("REPLACED"), Translated("WHAT CHANGED THEN")}, table);
    return Done();
}

Outcome RestoreEarlier(const Request &request) {
    Session session(request);
    std::vector<EarlierSettings> history;
    EarlierSettings chosen;
    AppPrefs record{};
    Outcome outcome = session.OpenForChanging();
    if (outcome.IsDone()) {
        outcome = ListOf(session.Path(), &history);
    }
    if (outcome.IsDone()) {
        outcome = Choose(request.arguments[0], history, &chosen);
    }
    if (!outcome.IsDone()) {
        return outcome;
    }
    const QBaseOwner earlier = ReadEarlierSettings(chosen);
    if (earlier == nullptr) {
        return Failed(Translated("those earlier settings are damaged; nothing was changed; choose others"));
    }
    outcome = request.line.app ? RestoreOne(request, session, earlier.get(), &record)
                               : session.TakeAll(earlier.get());
    if (outcome.IsDone()) {
        outcome = session.Save();
    }
    if (outcome.IsDone()) {
        SayWhatWasRestored(request, chosen, record);
    }
    return outcome;
}

} // namespace drevix
