#include "cli/file_check.h"

#include "cli/outcome.h"
#include "cli/record_text.h"
#include "qbase/qbase_file_check.h"
#include "settings/action_commands.h"
#include "settings/app_prefs.h"
#include "settings/device_prefs.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace drevix {
namespace {

using Problem = QBaseFileProblem;

// %1, %2 and %3 are the finding's numbers, %t is the first as a type.
struct ProblemText {
    Problem problem;
    std::string_view text;
};
constexpr auto kProblemTexts = std::to_array<ProblemText>({
    {Problem::Empty, "the file is empty; factory settings are used"},
    {Problem::NoHeader, "the file has %1 bytes, fewer than its header"},
    {Problem::OtherByteOrder, "the file has the other byte order"},
    {Problem::OtherKind, "this is not a settings file"},
    {Problem::UnknownVersion, "unknown format version %1"},
    {Problem::OtherRecords, "the file has records of another kind: type %t version %2"},
    {Problem::NegativeCount, "the record count in the header is negative"},
    {Problem::WrongLength, "the header announces %1 records in %2 bytes, but the file has %3"},
    {Problem::IndexOutside, "index entry %1 points outside the record data"},
    {Problem::IndexTwice, "index entries %1 and %2 point to the same record"},
    {Problem::DataEnd, "the record data end after %1 of %2 records"},
    {Problem::BadSize, "record %1 at byte %2 of the record data is damaged: its size is %3 bytes"},
    {Problem::BadLength,
     "record %1 at byte %2 of the record data is damaged: its length does not fit its size"},
    {Problem::NotInIndex, "record %1 at byte %2 of the record data is damaged, or it is not in the index"},
});

std::string TextOf(const QBaseFileFinding &finding) {
    const auto *row = std::ranges::find(kProblemTexts, finding.problem, &ProblemText::problem);
    std::string text;
    for (std::size_t i = 0; i < row->text.size(); ++i) {
        if (row->text[i] != '%') {
            text += row->text[i];
        } else if (const char which = row->text[++i]; which == 't') {
            text += QuotedText(SignatureText(static_cast<OSType>(finding.numbers[0])));
        } else {
            text += std::to_string(finding.numbers[static_cast<std::size_t>(which - '1')]);
        }
    }
    return text;
}

// Checks the settings in a file's records.
class SettingsChecker {
  public:
    explicit SettingsChecker(FileFindings &findings) : fFindings(findings) {}

    // Records are numbered in data order, from 0.
    void CheckRecord(std::size_t number, std::string_view data);
    // Call after the last record.
    void CheckGlobals();

  private:
    void Tell(std::string text) {
        fFindings.problems.push_back({FileProblem::Kind::Oddity, std::move(text)});
    }
    void CheckCommands(const std::string &name, const AppPrefs &record);

    FileFindings &fFindings;
    std::vector<std::string> fGlobals; // numbers of the global records
};

void SettingsChecker::CheckGlobals() {
    if (fGlobals.empty()) {
        Tell("there is no global record; the factory's is used");
    }
    for (std::size_t i = 1; i < fGlobals.size(); ++i) {
        Tell("record " + fGlobals[i] + " is a second global record; the first, record " + fGlobals[0] +
             ", is used");
    }
}

void SettingsChecker::CheckRecord(std::size_t number, std::string_view data) {
    std::string name = "record " + std::to_string(number);
    if (data.size() != sizeof(AppPrefs)) {
        Tell(name + " has " + std::to_string(data.size()) + " bytes instead of " +
             std::to_string(sizeof(AppPrefs)));
        return;
    }
    AppPrefs record{};
    std::memcpy(&record, data.data(), sizeof record);
    if (record.application == kGlobalSignature) {
        fGlobals.push_back(std::to_string(number));
    }
    if (record.appFileName[0] > kMaxFileNameLength || record.appName[0] > kMaxAppNameLength) {
        Tell(name + " has a name that is too long for its field");
        return;
    }
    name += " (" + RecordName(record) + ")";
    if (record.active > 1 || record.factory > 1 || record.device[0].click > 1) {
        Tell(name + " has a flag that is neither on nor off");
    }
    CheckCommands(name, record);
}

// A new application's record starts with the global one's actions, which may include companion menu entries
// that the application does not have.
bool IsCopiedMenuEntry(const ControlSlot &control, const ActionSlot &slot) {
    return slot.command == kActionToolMenu && IsToolMenuSlot(control.slot);
}

void SettingsChecker::CheckCommands(const std::string &name, const AppPrefs &record) {
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &slot = record.device[0].action[control.slot];
        const std::string place = name + ", " + std::string(control.key) + ": ";
        const ActionRefusal refusal = CheckAction(record, control.slot, slot.command);
        if (refusal == ActionRefusal::UnknownCommand) {
            Tell(place + "unknown action " + std::to_string(slot.command));
        } else if (refusal != ActionRefusal::None && !IsCopiedMenuEntry(control, slot)) {
            Tell(place + "action " + std::to_string(slot.command) + " does not belong there");
        }
        if (slot.data[0] > kMaxAppNameLength) {
            Tell(place + "the text is too long for its field");
        }
    }
}

} // namespace

FileFindings CheckFileBytes(std::string_view bytes, OSErr status) {
    const QBaseFileFindings file = CheckQBaseFile(bytes, kDrevixBaseType, kDrevixBaseTypeVersion);
    FileFindings findings = {status, file.announced, {}};
    for (const QBaseFileFinding &finding : file.problems) {
        const bool isDamage = finding.problem != Problem::Empty;
        findings.problems.push_back(
            {isDamage ? FileProblem::Kind::Damage : FileProblem::Kind::Oddity, TextOf(finding)});
    }
    SettingsChecker settings(findings);
    for (std::size_t i = 0; i < file.records.size(); ++i) {
        settings.CheckRecord(i, file.records[i]);
    }
    if (file.isSound && file.announced > 0) {
        settings.CheckGlobals();
    }
    return findings;
}

} // namespace drevix
