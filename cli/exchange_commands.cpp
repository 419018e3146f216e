// The commands that exchange records with property lists: export, import.

#include "cli/commands.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "document/file_stamp.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/files/kept_bytes.h"
#include "platform/plist/json.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"

#include <algorithm>

namespace drevix {
namespace {

std::string CountOfRecords(std::size_t count) {
    return TranslatedCount("%1 record", "%1 records", count);
}

Outcome ChooseRecords(const Request &request, const Session &session,
                      std::vector<const AppPrefs *> *records) {
    if (request.line.all) {
        *records = session.Records();
        return Done();
    }
    RecordNumber number = kNoRecord;
    Outcome outcome = session.Find(&number);
    if (outcome.IsDone()) {
        records->push_back(GetAppPrefs(session.Base(), number));
    }
    return outcome;
}

constexpr std::string_view kStandardOutput = "-";

void PrintRecords(const Request &request, const std::vector<const AppPrefs *> &records) {
    PropertyListArray elements;
    for (const AppPrefs *record : records) {
        elements.emplace_back(GetAppPrefsDictionary(*record));
    }
    request.Out() << PropertyListArrayText(elements);
}

// What an import did.
struct ImportCounts {
    std::size_t added = 0;
    std::size_t replaced = 0;
    std::size_t skipped = 0;       // out of memory
    std::vector<std::string> left; // names of records that were left unchanged
};

void ImportRecord(const Request &request, Session &session, const AppPrefs &record, ImportCounts *counts) {
    const RecordNumber existing = FindReplacedAppPrefs(session.Base(), record);
    if (existing != kNoRecord && !request.line.replace) {
        counts->left.push_back(request.line.json ? RecordName(record) : ShownName(record));
    } else if (!session.Store(record, existing).IsDone()) {
        ++counts->skipped;
    } else {
        ++(existing == kNoRecord ? counts->added : counts->replaced);
    }
}

void SayImported(const Request &request, const ImportCounts &counts) {
    std::ostream &out = request.Out();
    if (request.line.json) {
        PropertyListArray left;
        std::ranges::for_each(counts.left, [&](const std::string &name) { left.emplace_back(name); });
        PropertyListDictionary result;
        result.Add("added", static_cast<std::int64_t>(counts.added));
        result.Add("replaced", static_cast<std::int64_t>(counts.replaced));
        result.Add("left", std::move(left));
        out << JsonText(std::move(result)) << "\n";
        return;
    }
    out << Translated("%1 added, %2 replaced, %3 left unchanged", CountOfRecords(counts.added),
                      counts.replaced, counts.left.size())
        << "\n";
    for (const std::string &name : counts.left) {
        out << PlainText(Translated("left: %1", name)) << "\n";
    }
}

// After an export that failed.
std::string WhatIsLeft(const std::string &path) {
    const std::string kept = FindKeptCopy(path);
    return kept.empty()
               ? Translated("the file was not changed")
               : Translated("what it held before is kept in %1 and comes back with the next drevixctl "
                            "command that can write it",
                            kept);
}

} // namespace

Outcome ExportRecords(const Request &request) {
    const std::string &path = request.arguments[0];
    if (request.line.all && request.line.app) {
        return WrongUsage(Translated("export takes --app or --all, not both"));
    }
    if (path == kStandardOutput && request.line.json) {
        return WrongUsage(Translated("export - prints a property list and does not take --json"));
    }
    Session session(request);
    std::vector<const AppPrefs *> records;
    Outcome outcome = session.OpenForReading();
    if (outcome.IsDone()) {
        outcome = ChooseRecords(request, session, &records);
    }
    if (!outcome.IsDone()) {
        return outcome;
    }
    if (path == kStandardOutput) {
        PrintRecords(request, records);
        return Done();
    }
    if (AreSameFile(path, session.Path())) {
        return Failed(Translated(
            "cannot export to %1: it is the settings file; nothing was changed; name another file", path));
    }
    auto next = records.begin();
    const OSErr status = WriteAppPrefsFile(path, [&] { return next == records.end() ? nullptr : *next++; });
    if (status != noErr) {
        return FailedNewFile(path, status, WhatIsLeft(path));
    }
    if (request.line.json) {
        PropertyListDictionary result;
        result.Add("records", static_cast<std::int64_t>(records.size()));
        request.Out() << JsonText(std::move(result)) << "\n";
    } else {
        request.Out() << PlainText(Translated("%1 written to %2", CountOfRecords(records.size()), path))
                      << "\n";
    }
    return Done();
}

Outcome ImportRecords(const Request &request) {
    const std::string &path = request.arguments[0];
    Session session(request);
    if (Outcome outcome = session.OpenForChanging(); !outcome.IsDone()) {
        return outcome;
    }
    ImportCounts counts;
    PropertyListProblem problem;
    std::size_t unread = 0;
    const OSErr status = ReadAppPrefsFile(
        path, [&](const AppPrefs &record) { ImportRecord(request, session, record, &counts); }, &problem,
        &unread);
    counts.skipped += unread;
    if (status == -1) {
        const std::string text = Translated(problem.text);
        return Failed(Translated("cannot import %1: %2; nothing was changed", path,
                                 problem.line > 0 ? Translated("line %1: %2", problem.line, text) : text));
    }
    if (status != noErr) {
        return FailedFile("cannot import %1", path, status, kUnchanged);
    }
    if (counts.added + counts.replaced > 0) {
        if (Outcome saved = session.Save(); !saved.IsDone()) {
            return saved;
        }
    }
    SayImported(request, counts);
    return counts.skipped == 0
               ? Done()
               : Failed(
                     Translated("not enough memory for %1 of %2; the others were imported; import it again",
                                CountOfRecords(counts.skipped), path));
}

} // namespace drevix
