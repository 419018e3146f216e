// Copies actions from another record or another control. The source may come from anywhere; a command that
// the record must not hold is refused.
#pragma once

#include "settings/action_commands.h"
#include "settings/app_prefs.h"

#include <vector>

namespace drevix {

// A slot of the source that was left out, and why.
struct RefusedAction {
    SlotIndex slot;
    ActionRefusal refusal;
};

// Why the slot of this record must not hold the command. Unlike CheckAction, which tells what the editor
// offers, allows an application's commands on every control.
[[nodiscard]] ActionRefusal CheckHeldAction(const AppPrefs &prefs, SlotIndex slot, ActionCommand code);
// Stores an action in a control's slot, and applies the rules between the slots: opposites, commands that
// only one slot may hold, companion menu entries. A refusal changes nothing.
[[nodiscard]] ActionRefusal PasteAction(AppPrefs &prefs, SlotIndex slot, const ActionSlot &action);
// The same for all controls of a record. Refused slots stay as they are and are returned. May throw
// std::bad_alloc, with nothing changed.
[[nodiscard]] std::vector<RefusedAction> PasteAssignments(AppPrefs &prefs, const AppPrefs &source);

} // namespace drevix
