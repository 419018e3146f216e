// Taking over what controls do from another record, or from another control. The source may come from anywhere: what
// a record may not hold stays out.
#pragma once

#include "settings/action_commands.h"
#include "settings/app_prefs.h"

#include <vector>

namespace drevix {

// What a source's slot was left out for.
struct RefusedAction {
    SlotIndex slot;
    ActionRefusal refusal;
};

// Why the slot of this record may not hold the command. Unlike CheckAction, which says what is offered, it lets an
// application's commands stand on every control.
[[nodiscard]] ActionRefusal CheckHeldAction(const AppPrefs &prefs, SlotIndex slot, ActionCommand code);
// Stores an action in a control's slot, and applies the rules between the slots: opposites, commands that one slot
// only may hold, companion menu entries. Changes nothing when it gives a refusal.
[[nodiscard]] ActionRefusal PasteAction(AppPrefs &prefs, SlotIndex slot, const ActionSlot &action);
// The same with the actions of all controls of a record. Refused slots keep what they have, and are given back. May
// throw std::bad_alloc, with nothing changed.
[[nodiscard]] std::vector<RefusedAction> PasteAssignments(AppPrefs &prefs, const AppPrefs &source);

} // namespace drevix
