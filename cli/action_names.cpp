#include "cli/action_names.h"

#include "keyboard/key_names.h"
#include "platform/base/ascii.h"
#include "settings/pascal_strings.h"
#include "util/items/items_folder.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

// clang-format off
// `drevixctl help actions` explains these.
constexpr auto kRestrictions = std::to_array<RestrictionInfo>({
    {kNotInGlobalRecord, "notInGlobalRecord",         "not global"},
    {kOneSlotOnly,       "oneControlOnly",            "once"},
    {kNavAppsOnly,       "companionAppsOnly",         "apps"},
    {kToolMenuRecords,   "companionAppsOrGlobalOnly", "apps or global"},
    {kToolMenuButtons,   "buttonsIToIIIOnly",         "I to III"},
    {kTunerOnly,         "tunerOnly",                 "tuner"},
    {kNotOnTuner,        "notOnTuner",                "no tuner"},
});

struct RefusalRow {
    ActionRefusal refusal;
    std::string_view text;
};
constexpr auto kRefusals = std::to_array<RefusalRow>({
    {ActionRefusal::UnknownCommand,    "unknown action"},
    {ActionRefusal::NoControl,         "unknown control"},
    {ActionRefusal::NotInGlobalRecord, "the global record cannot hold it; name an application with --app"},
    {ActionRefusal::NotInThisRecord,   "the application does not support it"},
    {ActionRefusal::NotOnThisControl,  "it does not work on this control"},
});
// clang-format on

// The path of the slot's item, marked when it no longer exists.
std::string ItemName(const Str31 &stored) {
    const DrevixItem item = ResolveDrevixItem(stored);
    if (!item.path.empty()) {
        return item.path + (item.exists ? "" : " (gone)");
    }
    Str31 name{};
    PStringCopy(stored.data(), name.data(), kMaxAppNameLength); // a damaged length must not overrun
    return stringWithPascalString(name.data()) + " (gone)";
}

std::string MainDetail(const ActionSlot &slot, const MenuTitles &titles, KeyNames names) {
    if (slot.command == kActionKeystroke) {
        return names == KeyNames::Own ? KeystrokeText(slot.keyCode, slot.modifiers)
                                      : LabelledKeystrokeText(slot.keyCode, slot.modifiers);
    }
    if (slot.command == kActionToolMenu) {
        const std::string *title = titles.Find(slot.crc); // records store no titles
        return title != nullptr ? QuotedText(*title) : "number " + std::to_string(slot.crc);
    }
    if (slot.command == kActionOpenItem) {
        return ItemName(slot.data);
    }
    const bool scrolls = IsScrolling(slot.command);
    const std::string modifiers = scrolls ? ModifiersText(slot.modifiers) : "";
    return modifiers.empty() ? "" : "with " + modifiers;
}

} // namespace

std::string ActionTitle(ActionCommand code) {
    const ActionInfo *action = FindAction(code);
    return action != nullptr ? std::string(action->title) : "Action " + std::to_string(code);
}

std::string ActionDetails(const ActionSlot &slot, const MenuTitles &titles, KeyNames names) {
    std::string details = MainDetail(slot, titles, names);
    if (slot.delay != 0) {
        const bool isHeld = IsHeldKeystroke(slot.command, slot.delay);
        const std::string repeat = isHeld ? "-1" : std::to_string(slot.delay);
        details += (details.empty() ? "repeat " : ", repeat ") + repeat;
    }
    return details;
}

std::vector<const RestrictionInfo *> RestrictionsOf(const ActionInfo &action) {
    std::vector<const RestrictionInfo *> found;
    for (const RestrictionInfo &row : kRestrictions) {
        if ((action.restrictions & row.bit) != 0) {
            found.push_back(&row);
        }
    }
    return found;
}

const ActionInfo *FindActionByTitle(std::string_view title, TitleMatch match, bool *several) {
    const ActionInfo *found = nullptr;
    for (const ActionInfo &action : AllActions()) {
        const std::size_t compared = match == TitleMatch::Beginning ? title.size() : title.npos;
        if (!IsEqualWithoutCase(action.title.substr(0, compared), title)) {
            continue;
        }
        if (found != nullptr) {
            if (several != nullptr) {
                *several = true;
            }
            return nullptr;
        }
        found = &action;
    }
    return found;
}

std::string_view RefusalText(ActionRefusal refusal) {
    const auto *row = std::ranges::find(kRefusals, refusal, &RefusalRow::refusal);
    return row == kRefusals.end() ? "it is not offered here" : row->text;
}

} // namespace drevix
