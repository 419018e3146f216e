// The commands that exchange records with property lists: export, import.

#include "cli/commands.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "document/file_stamp.h"
#include "platform/base/plain_text.h"
#include "platform/files/kept_bytes.h"
#include "platform/plist/json.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"

#include <algorithm>

namespace drevix {
namespace {

std::string CountOfRecords(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " record" : " records");
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
        counts->left.push_back(RecordName(record));
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
    out << CountOfRecords(counts.added) << " added, " << counts.replaced << " replaced, "
        << counts.left.size() << " left unchanged\n";
    for (const std::string &name : counts.left) {
        out << "left: " << PlainText(name) << "\n";
    }
}

// After an export that failed.
std::string WhatIsLeft(const std::string &path) {
    const std::string kept = FindKeptCopy(path);
    return kept.empty() ? "the file was not changed"
                        : "what it held before is kept in " + kept +
                              " and comes back with the next drevixctl command that can write it";
}

} // namespace

Outcome ExportRecords(const Request &request) {
    const std::string &path = request.arguments[0];
    if (request.line.all && request.line.app) {
        return WrongUsage("export takes --app or --all, not both");
    }
    if (path == kStandardOutput && request.line.json) {
        return WrongUsage("export - prints a property list and does not take --json");
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
        return Failed("cannot export to " + path +
                      ": it is the settings file; nothing was changed; name another file");
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
        request.Out() << CountOfRecords(records.size()) << " written to " << PlainText(path) << "\n";
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
        const std::string line = problem.line > 0 ? "line " + std::to_string(problem.line) + ": " : "";
        return Failed("cannot import " + path + ": " + line + problem.text + "; nothing was changed");
    }
    if (status != noErr) {
        return FailedFile("cannot import", path, status, "nothing was changed");
    }
    if (counts.added + counts.replaced > 0) {
        if (Outcome saved = session.Save(); !saved.IsDone()) {
            return saved;
        }
    }
    SayImported(request, counts);
    return counts.skipped == 0 ? Done()
                               : Failed("not enough memory for " + CountOfRecords(counts.skipped) + " of " +
                                        path + "; the others were imported; import it again");
}

} // namespace drevix
