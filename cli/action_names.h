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

// The code of the action with this title, letter case ignored.
enum class TitleMatch { Whole, Beginning };
// Null when there is none, or with TitleMatch::Beginning when more than one title begins so; *several, if
// given, then tells which.
[[nodiscard]] const ActionInfo *FindActionByTitle(std::string_view title, TitleMatch match,
                                                  bool *several = nullptr);

// Whether two texts are equal but for the case of ASCII letters.
[[nodiscard]] bool IsEqualWithoutCase(std::string_view a, std::string_view b);

// Why an action cannot be chosen, as the end of a sentence.
[[nodiscard]] std::string_view RefusalText(ActionRefusal refusal);

// Modifier bits as "cmd+shift", and from such words, letter case ignored, with or without a '+' in front.
// False, with the output unchanged, for a word that names no modifier.
[[nodiscard]] std::string ModifierNames(std::uint16_t modifiers);
[[nodiscard]] bool ParseModifiers(std::string_view text, std::uint16_t *modifiers);

} // namespace drevix
