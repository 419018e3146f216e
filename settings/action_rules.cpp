#include "settings/action_commands.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

constexpr auto kNavApps =
    std::to_array<OSType>({kWildcardSignature, FourCharCode("8BIM"), FourCharCode("ART5"),
                           FourCharCode("InDn"), FourCharCode("8ELE")});

constexpr SlotIndex kFirstTuner = 6;
constexpr SlotIndex kLastPaired = 7; // slots 0 to 7 are four opposite pairs
constexpr SlotIndex kFirstToolMenuSlot = 18;
constexpr SlotIndex kLastToolMenuSlot = 20;

bool IsSlot(SlotIndex slot) {
    return slot >= 0 && slot < kActionSlots;
}

ActionSlot &SlotOf(AppPrefs &prefs, SlotIndex slot) {
    return prefs.device[0].action[slot];
}

// Whether the command's partner belongs on the opposite slot: size down and up on the tuner, the three pairs
// of directions on the ring.
bool IsPaired(ActionCommand code, SlotIndex slot) {
    return IsTunerSlot(slot) ? code >= kActionFirstAppTool && code < kActionFirstAppNav
                             : code >= kActionFirstAppNav && code < kActionFitWindow;
}

// The pairs start at odd codes: 35 and 36, 37 and 38, ...
ActionCommand Partner(ActionCommand code) {
    return static_cast<ActionCommand>(((code - kActionFirstAppTool) ^ 1) + kActionFirstAppTool);
}

bool IsHeldByOneSlot(ActionCommand code) {
    const ActionInfo *action = FindAction(code);
    return action != nullptr && (action->restrictions & kOneSlotOnly) != 0;
}

// Where a command with this restriction is allowed.
struct Restriction {
    std::uint8_t bit;
    ActionRefusal refusal;
    bool (*allows)(const AppPrefs &prefs, SlotIndex slot);
};

bool IsGlobal(const AppPrefs &prefs) {
    return prefs.application == kGlobalSignature;
}

// clang-format off
constexpr auto kRestrictions = std::to_array<Restriction>({
    {kNotInGlobalRecord, ActionRefusal::NotInGlobalRecord,
     [](const AppPrefs &prefs, SlotIndex) { return !IsGlobal(prefs); }},
    {kNavAppsOnly, ActionRefusal::NotInThisRecord,
     [](const AppPrefs &prefs, SlotIndex) { return HasAppCommands(prefs.application); }},
    {kToolMenuRecords, ActionRefusal::NotInThisRecord,
     [](const AppPrefs &prefs, SlotIndex) { return IsGlobal(prefs) || HasAppCommands(prefs.application); }},
    {kToolMenuButtons, ActionRefusal::NotOnThisControl,
     [](const AppPrefs &, SlotIndex slot) { return IsToolMenuSlot(slot); }},
    {kTunerOnly, ActionRefusal::NotOnThisControl,
     [](const AppPrefs &, SlotIndex slot) { return IsTunerSlot(slot); }},
    {kNotOnTuner, ActionRefusal::NotOnThisControl,
     [](const AppPrefs &, SlotIndex slot) { return !IsTunerSlot(slot); }},
});
// clang-format on

} // namespace

SlotIndex OppositeSlot(SlotIndex slot) {
    return slot < 0 || slot > kLastPaired ? kNoSlot : static_cast<SlotIndex>(slot ^ 1);
}

bool IsTunerSlot(SlotIndex slot) {
    return slot == kFirstTuner || slot == kLastPaired;
}

bool IsToolMenuSlot(SlotIndex slot) {
    return slot >= kFirstToolMenuSlot && slot <= kLastToolMenuSlot;
}

bool HasAppCommands(OSType application) {
    return std::ranges::find(kNavApps, application) != kNavApps.end();
}

bool IsAppCommand(ActionCommand code) {
    return code >= kActionFirstAppTool && code <= kActionFitWindow;
}

ActionRefusal CheckAction(const AppPrefs &prefs, SlotIndex slot, ActionCommand code) {
    const ActionInfo *action = FindAction(code);
    if (action == nullptr) {
        return ActionRefusal::UnknownCommand;
    }
    if (FindControlSlot(slot) == nullptr) {
        return ActionRefusal::NoControl;
    }
    const auto *broken = std::ranges::find_if(kRestrictions, [&](const Restriction &restriction) {
        return (action->restrictions & restriction.bit) != 0 && !restriction.allows(prefs, slot);
    });
    return broken == kRestrictions.end() ? ActionRefusal::None : broken->refusal;
}

void ResetActionSlot(ActionSlot &slot) {
    const ActionCommand command = slot.command;
    slot = {};
    slot.command = command;
    slot.keyCode = kNoKeyCode;
}

void UpdateOppositeAction(AppPrefs &prefs, SlotIndex slot) {
    if (!IsSlot(slot)) {
        return;
    }
    const ActionCommand command = SlotOf(prefs, slot).command;
    if (IsHeldByOneSlot(command)) {
        // All 32 slots: an imported record may hold commands in slots without a control.
        for (SlotIndex other = 0; other < kActionSlots; ++other) {
            if (other != slot && SlotOf(prefs, other).command == command) {
                SlotOf(prefs, other).command = kActionNone;
            }
        }
    }
    const SlotIndex opposite = OppositeSlot(slot);
    if (opposite == kNoSlot) {
        return;
    }
    ActionSlot &other = SlotOf(prefs, opposite);
    if (IsPaired(command, slot)) {
        other.command = Partner(command);
    } else if (IsPaired(other.command, slot)) {
        other.command = kActionNone; // its partner is gone
    }
}

void UpdateToolMenuAction(AppPrefs &prefs, SlotIndex slot) {
    if (!IsToolMenuSlot(slot)) {
        return;
    }
    for (SlotIndex other = kFirstToolMenuSlot; other <= kLastToolMenuSlot; ++other) {
        ActionSlot &action = SlotOf(prefs, other);
        if (other != slot && action.command == kActionToolMenu && action.crc == SlotOf(prefs, slot).crc) {
            action.command = kActionNone;
        }
    }
}

void ChooseAction(AppPrefs &prefs, SlotIndex slot, ActionCommand code) {
    if (!IsSlot(slot)) {
        return;
    }
    ActionSlot &action = SlotOf(prefs, slot);
    ResetActionSlot(action);
    action.command = code;
    UpdateOppositeAction(prefs, slot);
}

} // namespace drevix
