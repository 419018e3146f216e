#include "cli/file_check.h"

#include "cli/outcome.h"
#include "cli/record_text.h"
#include "platform/base/translation.h"
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

// %1, %2 and %3 are the finding's numbers, %4 is the first as a type.
struct ProblemText {
    Problem problem;
    std::string_view text;
};
constexpr auto kProblemTexts = std::to_array<ProblemText>({
    {Problem::Empty, ToTranslate("the file is empty; factory settings are used")},
    {Problem::NoHeader, ToTranslate("the file has %1 bytes, fewer than its header")},
    {Problem::OtherByteOrder, ToTranslate("the file has the other byte order")},
    {Problem::OtherKind, ToTranslate("this is not a settings file")},
    {Problem::UnknownVersion, ToTranslate("unknown format version %1")},
    {Problem::OtherRecords, ToTranslate("the file has records of another kind: type %4 version %2")},
    {Problem::NegativeCount, ToTranslate("the record count in the header is negative")},
    {Problem::WrongLength, ToTranslate("the header announces %1 records in %2 bytes, but the file has %3")},
    {Problem::IndexOutside, ToTranslate("index entry %1 points outside the record data")},
    {Problem::IndexTwice, ToTranslate("index entries %1 and %2 point to the same record")},
    {Problem::DataEnd, ToTranslate("the record data end after %1 of %2 records")},
    {Problem::BadSize,
     ToTranslate("record %1 at byte %2 of the record data is damaged: its size is %3 bytes")},
    {Problem::BadLength,
     ToTranslate("record %1 at byte %2 of the record data is damaged: its length does not fit its size")},
    {Problem::NotInIndex,
     ToTranslate("record %1 at byte %2 of the record data is damaged, or it is not in the index")},
});

Text TextOf(const QBaseFileFinding &finding) {
    const auto *row = std::ranges::find(kProblemTexts, finding.problem, &ProblemText::problem);
    Text text{std::string(row->text), {}};
    for (const auto number : finding.numbers) {
        text.values.push_back(std::to_string(number));
    }
    text.values.push_back(QuotedText(SignatureText(static_cast<OSType>(finding.numbers[0]))));
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
    void Tell(std::string_view text, std::vector<std::string> values) {
        fFindings.problems.push_back({FileProblem::Kind::Oddity, {std::string(text), std::move(values)}});
    }
    void CheckCommands(const std::string &record, const AppPrefs &prefs);

    FileFindings &fFindings;
    std::vector<std::string> fGlobals; // numbers of the global records
};

void SettingsChecker::CheckGlobals() {
    if (fGlobals.empty()) {
        Tell(ToTranslate("there is no global record; the factory's is used"), {});
    }
    for (std::size_t i = 1; i < fGlobals.size(); ++i) {
        Tell(ToTranslate("record %1 is a second global record; the first, record %2, is used"),
             {fGlobals[i], fGlobals[0]});
    }
}

void SettingsChecker::CheckRecord(std::size_t number, std::string_view data) {
    std::string name = std::to_string(number);
    if (data.size() != sizeof(AppPrefs)) {
        Tell(ToTranslate("record %1 has %2 bytes instead of %3"),
             {name, std::to_string(data.size()), std::to_string(sizeof(AppPrefs))});
        return;
    }
    AppPrefs record{};
    std::memcpy(&record, data.data(), sizeof record);
    if (record.application == kGlobalSignature) {
        fGlobals.push_back(name);
    }
    if (record.appFileName[0] > kMaxFileNameLength || record.appName[0] > kMaxAppNameLength) {
        Tell(ToTranslate("record %1 has a name that is too long for its field"), {name});
        return;
    }
    name += " (" + RecordName(record) + ")";
    if (record.active > 1 || record.factory > 1 || record.device[0].click > 1) {
        Tell(ToTranslate("record %1 has a flag that is neither on nor off"), {name});
    }
    CheckCommands(name, record);
}

// A new application's record starts with the global one's actions, which may include companion menu entries
// that the application does not have.
bool IsCopiedMenuEntry(const ControlSlot &control, const ActionSlot &slot) {
    return slot.command == kActionToolMenu && IsToolMenuSlot(control.slot);
}

void SettingsChecker::CheckCommands(const std::string &record, const AppPrefs &prefs) {
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &slot = prefs.device[0].action[control.slot];
        const std::string key(control.key);
        const std::string action = std::to_string(slot.command);
        const ActionRefusal refusal = CheckAction(prefs, control.slot, slot.command);
        if (refusal == ActionRefusal::UnknownCommand) {
            Tell(ToTranslate("record %1, %2: unknown action %3"), {record, key, action});
        } else if (refusal != ActionRefusal::None && !IsCopiedMenuEntry(control, slot)) {
            Tell(ToTranslate("record %1, %2: action %3 does not belong there"), {record, key, action});
        }
        if (slot.data[0] > kMaxAppNameLength) {
            Tell(ToTranslate("record %1, %2: the text is too long for its field"), {record, key});
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
