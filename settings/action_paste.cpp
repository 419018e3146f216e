#include "settings/action_paste.h"

#include <algorithm>

namespace drevix {
namespace {

// The action with its name no longer than its field, and nothing where the command has no use for it.
ActionSlot Cleaned(const ActionSlot &action) {
    ActionSlot cleaned = action;
    cleaned.data[0] = std::min<std::uint8_t>(cleaned.data[0], kMaxAppNameLength);
    cleaned.repeat = 0;
    cleaned.reserved2 = 0;
    return cleaned;
}

} // namespace

ActionRefusal CheckHeldAction(const AppPrefs &prefs, SlotIndex slot, ActionCommand code) {
    const ActionRefusal refusal = CheckAction(prefs, slot, code);
    return refusal == ActionRefusal::NotOnThisControl && IsAppCommand(code) ? ActionRefusal::None : refusal;
}

ActionRefusal PasteAction(AppPrefs &prefs, SlotIndex slot, const ActionSlot &action) {
    const ActionRefusal refusal = CheckHeldAction(prefs, slot, action.command);
    if (refusal != ActionRefusal::None) {
        return refusal;
    }
    prefs.device[0].action[slot] = Cleaned(action);
    UpdateOppositeAction(prefs, slot);
    if (action.command == kActionToolMenu) {
        UpdateToolMenuAction(prefs, slot);
    }
    return ActionRefusal::None;
}

std::vector<RefusedAction> PasteAssignments(AppPrefs &prefs, const AppPrefs &source) {
    std::vector<RefusedAction> refused;
    refused.reserve(kControlSlots.size());
    for (const ControlSlot &control : kControlSlots) {
        const ActionRefusal refusal = PasteAction(prefs, control.slot, source.device[0].action[control.slot]);
        if (refusal != ActionRefusal::None) {
            refused.push_back({control.slot, refusal});
        }
    }
    return refused;
}

} // namespace drevix
