#include "cli/action_names.h"

#include "platform/base/ascii.h"
#include "platform/base/translation.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

// clang-format off
// `drevixctl help actions` explains these.
constexpr auto kRestrictions = std::to_array<RestrictionInfo>({
    {kNotInGlobalRecord, "notInGlobalRecord",         ToTranslate("not global")},
    {kOneSlotOnly,       "oneControlOnly",            ToTranslate("once")},
    {kNavAppsOnly,       "companionAppsOnly",         ToTranslate("apps")},
    {kToolMenuRecords,   "companionAppsOrGlobalOnly", ToTranslate("apps or global")},
    {kToolMenuButtons,   "buttonsIToIIIOnly",         "I-III"},
    {kTunerOnly,         "tunerOnly",                 ToTranslate("tuner")},
    {kNotOnTuner,        "notOnTuner",                ToTranslate("no tuner")},
});

struct RefusalRow {
    ActionRefusal refusal;
    std::string_view text;
};
constexpr auto kRefusals = std::to_array<RefusalRow>({
    {ActionRefusal::UnknownCommand,    ToTranslate("unknown action")},
    {ActionRefusal::NoControl,         ToTranslate("unknown control")},
    {ActionRefusal::NotInGlobalRecord, ToTranslate("the global record cannot hold it; name an application with --app")},
    {ActionRefusal::NotInThisRecord,   ToTranslate("the application does not support it")},
    {ActionRefusal::NotOnThisControl,  ToTranslate("it does not work on this control")},
});
// clang-format on

} // namespace

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
    return row == kRefusals.end() ? ToTranslate("it is not offered here") : row->text;
}

} // namespace drevix
