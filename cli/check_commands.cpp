// The commands for settings files that may be damaged: check, recover.

#include "cli/commands.h"
#include "cli/file_check.h"
#include "cli/session.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "platform/plist/json.h"
#include "qbase/qbase_file.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"
#include "settings/salvage.h"

#include <algorithm>

namespace drevix {
namespace {

constexpr std::size_t kShownProblems = 20; // the rest is left out; JSON has them all

bool IsDamage(const FileProblem &problem) {
    return problem.kind == FileProblem::Kind::Damage;
}

PropertyListDictionary FindingsEntry(const std::string &path, const FileFindings &findings) {
    PropertyListArray problems;
    for (const FileProblem &problem : findings.problems) {
        PropertyListDictionary entry;
        entry.Add("text", EnglishText(problem.text));
        entry.Add("damage", IsDamage(problem));
        problems.emplace_back(std::move(entry));
    }
    PropertyListDictionary result;
    result.Add("file", path);
    result.Add("valid", findings.status == noErr);
    result.Add("status", std::int64_t{findings.status});
    result.Add("records", std::int64_t{findings.records});
    result.Add("problems", std::move(problems));
    return result;
}

void SayFindings(const Request &request, const std::string &path, const FileFindings &findings) {
    std::ostream &out = request.Out();
    if (request.line.json) {
        out << JsonText(FindingsEntry(path, findings)) << "\n";
        return;
    }
    const auto records = static_cast<std::size_t>(std::max(findings.records, 0));
    out << PlainText(
               findings.status == noErr
                   ? TranslatedCount("%2: valid, %1 record", "%2: valid, %1 records", records, {path})
                   : TranslatedCount("%2: damaged, %1 record", "%2: damaged, %1 records", records, {path}))
        << "\n";
    const std::size_t shown = std::min(findings.problems.size(), kShownProblems);
    for (const FileProblem &problem : std::span(findings.problems).first(shown)) {
        const std::string text = Translated(problem.text);
        out << PlainText(IsDamage(problem) ? Translated("damage: %1", text) : Translated("note: %1", text))
            << "\n";
    }
    if (shown < findings.problems.size()) {
        out << Translated("and %1 more", findings.problems.size() - shown) << "\n";
    }
}

// The stamp of the version before this one: the next read then restores lost factory records, without the
// repairs for much older files.
constexpr std::uint32_t kStampAfterLoss = kPanelVersion - 1;

// Fills the base with the intact records among the bytes, and with the file's user part if its header can be
// read.
OSErr Salvage(QBaseHandle base, const std::string &path, const std::string &bytes, std::int32_t announced) {
    OwnedFile file;
    if (const OSErr status = OpenFile(path, fsRdPerm, file.Out()); status != noErr) {
        return status;
    }
    const OSErr head = QBaseReadRebuild(base, file.Get(), true, false, false, true, false, true, nullptr);
    if (const OSErr status = AddWholeRecords(base, bytes); status != noErr) {
        return status;
    }
    if (head != noErr || QBaseCountRecords(base) < announced) {
        QBaseSetUserLong(base,
                         head == noErr ? std::min(QBaseGetUserLong(base), kStampAfterLoss) : kStampAfterLoss);
    }
    SortDrevixBase(base);
    return noErr;
}

bool Exists(const std::string &path) {
    struct stat found {};
    return CurrentDisk().StatusAt(path.c_str(), &found) == 0;
}

void SayRecovered(const Request &request, std::int32_t saved, std::int32_t announced) {
    if (request.line.json) {
        PropertyListDictionary result;
        result.Add("saved", std::int64_t{saved});
        result.Add("announced", std::int64_t{announced});
        request.Out() << JsonText(std::move(result)) << "\n";
        return;
    }
    const std::string &to = *request.line.to;
    request.Out() << PlainText(announced > saved
                                   ? Translated("%1 of %2 records saved in %3", saved, announced, to)
                                   : TranslatedCount("%1 record saved in %2", "%1 records saved in %2",
                                                     static_cast<std::size_t>(saved), {to}))
                  << "\n";
}

} // namespace

Outcome CheckSettingsFile(const Request &request) {
    std::string path;
    OSErr status = noErr;
    if (!request.arguments.empty()) {
        path = request.arguments[0];
    } else {
        status = SettingsPath(request, &path);
    }
    std::string bytes;
    if (status == noErr) {
        status = ReadWholeFile(path, &bytes);
    }
    if (status != noErr) {
        const bool isNamed = !request.arguments.empty() || !path.empty();
        return FailedFile("cannot check %1", isNamed ? path : Translated("the settings file"), status,
                          kUnchanged);
    }
    const FileFindings findings = CheckFileBytes(bytes, ReadAsSettings(path));
    SayFindings(request, path, findings);
    return findings.status == noErr
               ? Done()
               : Failed(Translated(
                     "%1 is damaged; it was not changed; 'drevixctl recover' saves the intact records",
                     path));
}

Outcome RecoverSettingsFile(const Request &request) {
    const std::string &path = request.arguments[0];
    const std::string &to = *request.line.to;
    if (Exists(to)) {
        return Failed(Translated(
            "cannot recover to %1: it already exists; nothing was changed; name another file", to));
    }
    std::string bytes;
    const QBaseOwner base = NewDrevixBase();
    OSErr status = base ? ReadWholeFile(path, &bytes) : memFullErr;
    const std::int32_t announced = CheckFileBytes(bytes, status).records;
    if (status == noErr) {
        status = Salvage(base.get(), path, bytes, announced);
    }
    if (status != noErr) {
        return FailedFile("cannot recover %1", path, status, ToTranslate("nothing was written"));
    }
    const std::int32_t saved = QBaseCountRecords(base.get());
    if (saved == 0) {
        return Failed(Translated("cannot recover %1: it has no intact record; nothing was written", path));
    }
    if (const OSErr written = SaveDevicePrefsToPath(base.get(), to); written != noErr) {
        return FailedNewFile(to, written, "nothing was written");
    }
    SayRecovered(request, saved, announced);
    return Done();
}

} // namespace drevix
