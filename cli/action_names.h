// Actions in words, to a person and from one.
#pragma once

#include "cli/menu_titles.h"
#include "cli/outcome.h"
#include "platform/property_list.h"
#include "settings/action_commands.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// "Scroll up"; "Action 50" for a code that is in no table.
[[nodiscard]] std::string ActionTitle(ActionCommand code);
// What else a slot says beside its command: the keystroke, modifiers, the item to open, the companion's menu
// entry by its title if it is among `titles`, the repeat choice.
[[nodiscard]] std::string ActionDetails(const ActionSlot &slot, const MenuTitles &titles);

// A place where an action may stand.
struct RestrictionInfo {
    std::uint8_t bit;         // of ActionInfo::restrictions
    std::string_view key;     // in JSON
    std::string_view summary; // in a table
};
[[nodiscard]] std::vector<const RestrictionInfo *> RestrictionsOf(const ActionInfo &action);

// The action with this title, or whose title alone begins so; letter case ignored. Null when there is none,
// or when more than one title begins so; *several, if given, is set to true then.
enum class TitleMatch { Whole, Beginning };
[[nodiscard]] const ActionInfo *FindActionByTitle(std::string_view title, TitleMatch match,
                                                  bool *several = nullptr);

// Why an action cannot be chosen, as the end of a sentence.
[[nodiscard]] std::string_view RefusalText(ActionRefusal refusal);

} // namespace drevix
