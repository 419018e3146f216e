// Actions by their titles, and where each may go.
#pragma once

#include "cli/outcome.h"
#include "platform/plist/property_list.h"
#include "settings/action_commands.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// A restriction on where an action can be assigned.
struct RestrictionInfo {
    std::uint8_t bit;         // bit of ActionInfo::restrictions
    std::string_view key;     // in JSON
    std::string_view summary; // in a table
};
[[nodiscard]] std::vector<const RestrictionInfo *> RestrictionsOf(const ActionInfo &action);

// The action with this title, or the only one whose title begins with it; case is ignored. Null if there is
// none, or if there are several; *several, if given, is then set to true.
enum class TitleMatch { Whole, Beginning };
[[nodiscard]] const ActionInfo *FindActionByTitle(std::string_view title, TitleMatch match,
                                                  bool *several = nullptr);

// Why an action cannot be chosen, as the end of a sentence.
[[nodiscard]] std::string_view RefusalText(ActionRefusal refusal);

} // namespace drevix
