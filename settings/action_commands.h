// The vocabulary of actions: every command code, where the menus list it, and the rules between the slots of
// a record.
#pragma once

#include "settings/app_prefs.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace drevix {

// A command code, as stored in ActionSlot::command. Files and the helper use these codes: never renumber
// them.
using ActionCommand = std::uint16_t;

inline constexpr ActionCommand kActionNone = 0;
inline constexpr ActionCommand kActionUseGlobal = 4;  // same as the global record
inline constexpr ActionCommand kActionModeSwitch = 7; // one slot of a record only
inline constexpr ActionCommand kActionKeystroke = 32;
inline constexpr ActionCommand kActionToolMenu = 34; // a companion menu entry, identified by its title's CRC
inline constexpr ActionCommand kActionFirstAppTool = 35;
inline constexpr ActionCommand kActionFirstAppNav = 37;
inline constexpr ActionCommand kActionFitWindow = 43; // one slot of a record only
inline constexpr ActionCommand kActionOpenItem = 64;
inline constexpr ActionCommand kActionFirstScroll = 224;
inline constexpr ActionCommand kActionLastScroll = 231; // 228 to 231 are shown as scrolling but not offered

// A keystroke's delay that means: hold the keys as long as the control is held. For scrolling it is just a
// number of ticks.
inline constexpr std::uint16_t kHeldDelay = 0xFFFF;
[[nodiscard]] constexpr bool IsHeldKeystroke(ActionCommand command, std::uint16_t delay) {
    return command == kActionKeystroke && delay == kHeldDelay;
}
[[nodiscard]] constexpr bool IsScrolling(ActionCommand command) {
    return command >= kActionFirstScroll && command <= kActionLastScroll;
}

// The kinds of action.
enum class ActionGroup : std::uint8_t {
    ActionNone,
    ActionUseGlobal,
    ActionModeSwitch,
    ActionKeystroke,
    ActionToolMenu,
    ActionAppTool,
    ActionAppNav,
    ActionOpenItem,
    ActionPredefined,
    ActionSpecialKey,
    ActionITunes,
    ActionShortcut,
    ActionScroll,
};

// Where a command is allowed; bits of ActionInfo::restrictions.
inline constexpr std::uint8_t kNotInGlobalRecord = 0x01;
inline constexpr std::uint8_t kOneSlotOnly = 0x02;     // choosing it elsewhere clears it here
inline constexpr std::uint8_t kNavAppsOnly = 0x04;     // only records whose signature HasAppCommands accepts
inline constexpr std::uint8_t kToolMenuRecords = 0x08; // those records and the global record
inline constexpr std::uint8_t kToolMenuButtons = 0x10; // buttons I, II and III only
inline constexpr std::uint8_t kTunerOnly = 0x20;
inline constexpr std::uint8_t kNotOnTuner = 0x40;

// One command.
struct ActionInfo {
    ActionCommand code;
    ActionGroup group;
    std::uint8_t restrictions; // bits above
    std::string_view title;    // English, for display; the caller translates it
};

// All commands in ascending order of their codes. Static storage.
[[nodiscard]] std::span<const ActionInfo> AllActions();
// The row of a code; null for an unknown code.
[[nodiscard]] const ActionInfo *FindAction(ActionCommand code);
// The group's display name ("Standard command"). Static storage.
[[nodiscard]] std::string_view ActionGroupTitle(ActionGroup group);

// Menus. A menu lists its commands by position; these two values are not commands.
inline constexpr std::int16_t kMenuSeparator = -2;
inline constexpr std::int16_t kMenuNotFound = -1;

// The entries of the action menu, by position.
enum class ActionMenuEntry : std::uint8_t {
    None,
    UseGlobal,
    Application,
    ToolMenu,
    ModeSwitch,
    Separator1,
    Keystroke,
    Shortcut,
    SpecialKey,
    Separator2,
    ScrollFirst,
    Separator3 = ScrollFirst + 4,
    Predefined,
    OpenItem,
    Separator4,
    ITunes,
    Count,
};
inline constexpr int kActionMenuPositions = static_cast<int>(ActionMenuEntry::Count);
static_assert(kActionMenuPositions == 19);

// The entry's title, empty for a separator. Static storage.
[[nodiscard]] std::string_view ActionMenuTitle(int position);
// The command to store in a slot when a position is chosen: for a group entry the group's first code (for the
// application entry it depends on the slot); 0 for a separator or an invalid position.
[[nodiscard]] ActionCommand CommandForActionMenu(int position, SlotIndex slot);

// The detail tabs, by index.
enum class DetailTab : std::uint8_t {
    Empty,
    Keystroke,
    AppNav,
    AppTool,
    ToolMenu,
    Shortcuts,
    SpecialKeys,
    Predefined,
    OpenItem,
    ITunes,
    Scroll,
    Count,
};

// The menu of one group of commands.
struct GroupMenu {
    std::string_view outlet; // name of its pop-up menu
    ActionGroup group;
    DetailTab tab;                       // the tab it is on
    ActionMenuEntry entry;               // the group's entry of the action menu
    std::span<const std::int16_t> codes; // by position; kMenuSeparator for a separator
};

// The six group menus, in lookup order. Static storage.
[[nodiscard]] std::span<const GroupMenu> GroupMenus();
// The menu with this outlet name, null if there is none.
[[nodiscard]] const GroupMenu *FindGroupMenu(std::string_view outlet);
// The command at a position of a group menu; 0 for a separator or an invalid position.
[[nodiscard]] ActionCommand CommandForGroupMenu(const GroupMenu &menu, int position);

// Where the editor shows a command.
struct ActionPlace {
    int actionMenuPosition; // 0 for an unknown code
    DetailTab tab;
    const GroupMenu *menu; // the group menu with the code, or null
    int menuPosition;      // in that menu, or kMenuNotFound
};
[[nodiscard]] ActionPlace ClassifyAction(ActionCommand code);

// Rules between the slots of a record

// The other slot of an opposite pair (ring 0-1, 2-3, 4-5, tuner 6-7); kNoSlot if the slot has no opposite.
[[nodiscard]] SlotIndex OppositeSlot(SlotIndex slot);
[[nodiscard]] bool IsTunerSlot(SlotIndex slot);
// Buttons I, II and III: slots 18 to 20.
[[nodiscard]] bool IsToolMenuSlot(SlotIndex slot);
// Whether records with this signature may hold the application commands 35 to 43: the wildcard and the four
// companion applications '8BIM', 'ART5', 'InDn' and '8ELE'.
[[nodiscard]] bool HasAppCommands(OSType application);
[[nodiscard]] bool IsAppCommand(ActionCommand code);

// Why a command cannot be chosen for a slot.
enum class ActionRefusal : std::uint8_t {
    None,
    UnknownCommand,
    NoControl,
    NotInGlobalRecord,
    NotInThisRecord,
    NotOnThisControl
};
// Whether the editor offers the command for this slot of this record. Application commands are offered by
// control: tool sizes on the tuner, navigation elsewhere. A record may still hold them in other slots, and
// they are shown there.
[[nodiscard]] ActionRefusal CheckAction(const AppPrefs &prefs, SlotIndex slot, ActionCommand code);

// Clears all the slot's fields except the command: modifiers, key, delay, CRC and text.
void ResetActionSlot(ActionSlot &slot);
// Call after storing a command in `slot`. Clears a command that only one slot may hold from the others, and
// makes the opposite slot hold the partner of an application command. Changes `command` fields only.
void UpdateOppositeAction(AppPrefs &prefs, SlotIndex slot);
// Call after storing a companion menu entry in `slot`. Clears the same entry from the other two buttons.
void UpdateToolMenuAction(AppPrefs &prefs, SlotIndex slot);
// Performs a choice in the action menu: resets the slot, stores the command and applies UpdateOppositeAction.
// Does nothing for a slot outside 0 to 31.
void ChooseAction(AppPrefs &prefs, SlotIndex slot, ActionCommand code);

} // namespace drevix
