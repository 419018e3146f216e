#include "device/front_record.h"

#include "platform/base/ascii.h"
#include "settings/action_commands.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <array>
#include <span>

namespace drevix {
namespace {

constexpr int kUsualSpeed = 100;

// A name for comparison: as a record would store it, lower case, without ".desktop" or ".exe".
std::string Comparable(std::string_view name) {
    std::string small = WithSmallLetters(name);
    for (const std::string_view suffix : {".desktop", ".exe"}) {
        if (small.size() > suffix.size() && small.ends_with(suffix)) {
            small.resize(small.size() - suffix.size());
        }
    }
    Str63 stored{};
    getPascalString(small, stored.data(), kMaxFileNameLength);
    return stringWithPascalString(stored.data());
}

std::string LeafOf(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1));
}

// The last part of a dotted name; empty if there is no dot.
std::string_view LastPart(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

// The program that a command starts: skips `env` and its settings; for a sandbox, the program in --command=.
std::string ProgramOf(std::span<const std::string> command) {
    if (!command.empty() && LeafOf(command.front()) == "env") {
        const auto isSetting = [](const std::string &word) {
            return word.starts_with('-') || word.find('=') != std::string::npos;
        };
        const auto program = std::find_if_not(command.begin() + 1, command.end(), isSetting);
        command = command.subspan(static_cast<std::size_t>(program - command.begin()));
    }
    constexpr std::string_view kInSandbox = "--command=";
    for (const std::string &word : command) {
        if (word.starts_with(kInSandbox)) {
            return LeafOf(word.substr(kInSandbox.size()));
        }
    }
    return command.empty() ? std::string() : LeafOf(command.front());
}

bool IsRingSlot(SlotIndex slot) {
    const ControlSlot *control = FindControlSlot(slot);
    return control != nullptr && control->group == ControlGroup::Ring;
}

} // namespace

FrontRecords::FrontRecords(QBaseHandle base, const EntryLookup &entryOf) {
    for (RecordNumber number = 1; number < QBaseCountRecords(base); ++number) {
        const AppPrefs *record = GetAppPrefs(base, number);
        const std::string name = record != nullptr ? stringWithPascalString(record->appFileName.data()) : "";
        if (name.empty()) {
            continue;
        }
        const RecordEntry entry = entryOf(name).value_or(RecordEntry{});
        fRows.push_back(
            {number, Comparable(name), Comparable(entry.startupClass), Comparable(ProgramOf(entry.command))});
    }
}

RecordNumber FrontRecords::Find(const FrontWindow &front) const {
    using Rule = bool (*)(const Row &row, const std::string &name);
    struct RuleRow {
        Rule fits;
        bool mustBeOne; // match only if no other record fits
    };
    static constexpr auto kRules = std::to_array<RuleRow>({
        {[](const Row &row, const std::string &name) { return row.name == name; }, false},
        {[](const Row &row, const std::string &name) { return row.startupClass == name; }, false},
        {[](const Row &row, const std::string &name) {
             return LastPart(row.name) == name || LastPart(name) == row.name;
         },
         true},
        {[](const Row &row, const std::string &name) { return row.program == name; }, false},
    });
    const std::array names = {Comparable(front.entryId), Comparable(front.windowClass),
                              Comparable(front.windowName)};
    const auto find = [this](const RuleRow &rule, const std::string &name) {
        const auto fits = [&](const Row &row) { return rule.fits(row, name); };
        const auto row = name.empty() ? fRows.end() : std::ranges::find_if(fRows, fits);
        const bool isFound = row != fRows.end() &&
                             !(rule.mustBeOne && std::find_if(row + 1, fRows.end(), fits) != fRows.end());
        return isFound ? row->number : RecordNumber{0};
    };
    for (const RuleRow &rule : kRules) {
        for (const std::string &name : names) {
            if (const RecordNumber number = find(rule, name); number != 0) {
                return number;
            }
        }
    }
    return find(kRules.front(), Comparable(LeafOf(front.program)));
}

RecordsInForce::RecordsInForce(QBaseHandle base, RecordNumber number)
    : fOwn(GetAppPrefs(base, number)), fGlobal(GetAppPrefs(base, 0)) {
    if (fOwn != nullptr && fOwn->active == 0) {
        fOwn = nullptr;
    }
}

const ActionSlot *RecordsInForce::SlotOf(SlotIndex slot, RingMode mode) const {
    if (fOwn == nullptr || FindControlSlot(slot) == nullptr) {
        return nullptr;
    }
    const ActionSlot *own = &fOwn->device[0].action[slot];
    const bool isOfGlobalRing =
        mode == RingMode::Global && IsRingSlot(slot) && own->command != kActionModeSwitch;
    if (own->command != kActionUseGlobal && !isOfGlobalRing) {
        return own;
    }
    const ActionSlot *global = fGlobal != nullptr ? &fGlobal->device[0].action[slot] : nullptr;
    return global != nullptr && global->command != kActionUseGlobal ? global : nullptr;
}

const DevicePrefs &RecordsInForce::RingPrefs(RingMode mode) const {
    const AppPrefs *record = mode == RingMode::Global && fGlobal != nullptr ? fGlobal : fOwn;
    return record != nullptr ? record->device[0] : gDefaultGlobalPrefs.device[0];
}

Sensitivities RecordsInForce::SensitivitiesOf(RingMode mode) const {
    const DevicePrefs &ring = RingPrefs(mode);
    const std::uint8_t tuner = RingPrefs(RingMode::Application).toolSensitivity;
    return ring.useSeparateNavSens != 0
               ? Sensitivities{ring.navSensitivityX, ring.navSensitivityY, ring.navSensitivityZ, tuner}
               : Sensitivities{ring.navSensitivity, ring.navSensitivity, ring.navSensitivity, tuner};
}

int RecordsInForce::SpeedOf(SlotIndex slot, RingMode mode) const {
    if (!IsRingSlot(slot)) {
        return kUsualSpeed;
    }
    const DevicePrefs &ring = RingPrefs(mode);
    if (ring.useSeparateNavSpeed == 0) {
        return ring.navSpeed;
    }
    const Axis axis = FindControlSlot(slot)->axis;
    return axis == Axis::X ? ring.navSpeedX : axis == Axis::Y ? ring.navSpeedY : ring.navSpeedZ;
}

} // namespace drevix
