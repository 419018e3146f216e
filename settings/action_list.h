// The table behind AllActions, for compile-time checks that code covers every command.
#pragma once

#include "platform/base/marked_text.h"
#include "settings/action_commands.h"

#include <array>

namespace drevix {

// clang-format off
// A title says what the user of any Linux desktop sees happen; the device helper decides which program or key
// does it.
inline constexpr auto kActions = std::to_array<ActionInfo>({
    {0,   ActionGroup::ActionNone,       0,                                    Marked("Engine", "No action")},
    {4,   ActionGroup::ActionUseGlobal,  kNotInGlobalRecord,                   Marked("Engine", "Same as Global Settings")},
    {7,   ActionGroup::ActionModeSwitch, kOneSlotOnly,                         Marked("Engine", "Switch ring mode")},
    {32,  ActionGroup::ActionKeystroke,  0,                                    Marked("Engine", "Keystroke")},
    {34,  ActionGroup::ActionToolMenu,   kToolMenuRecords | kToolMenuButtons,  Marked("Engine", "Companion menu item")},
    {35,  ActionGroup::ActionAppTool,    kNavAppsOnly | kTunerOnly,            Marked("Engine", "Tool size down")},
    {36,  ActionGroup::ActionAppTool,    kNavAppsOnly | kTunerOnly,            Marked("Engine", "Tool size up")},
    {37,  ActionGroup::ActionAppNav,     kNavAppsOnly | kNotOnTuner,           Marked("Engine", "Move left")},
    {38,  ActionGroup::ActionAppNav,     kNavAppsOnly | kNotOnTuner,           Marked("Engine", "Move right")},
    {39,  ActionGroup::ActionAppNav,     kNavAppsOnly | kNotOnTuner,           Marked("Engine", "Move up")},
    {40,  ActionGroup::ActionAppNav,     kNavAppsOnly | kNotOnTuner,           Marked("Engine", "Move down")},
    {41,  ActionGroup::ActionAppNav,     kNavAppsOnly | kNotOnTuner,           Marked("Engine", "Zoom out")},
    {42,  ActionGroup::ActionAppNav,     kNavAppsOnly | kNotOnTuner,           Marked("Engine", "Zoom in")},
    {43,  ActionGroup::ActionAppNav,     kNavAppsOnly | kNotOnTuner | kOneSlotOnly, Marked("Engine", "Fit to window")},
    {64,  ActionGroup::ActionOpenItem,   0,                                    Marked("Engine", "Open file or application")},
    {67,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Show desktop")},
    {68,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Show this application's windows")},
    {69,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Show all windows")},
    {80,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open file manager")},
    {81,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open web browser")},
    {82,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open mail")},
    {83,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open calendar")},
    {84,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open contacts")},
    {85,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open messages")},
    {86,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open terminal")},
    {87,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open text editor")},
    {88,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open calculator")},
    {89,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open image viewer")},
    {90,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open document viewer")},
    {91,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open music player")},
    {92,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open video player")},
    {93,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open screenshot tool")},
    {94,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open software manager")},
    {95,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open system monitor")},
    {96,  ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Open system settings")},
    {102, ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Lock screen")},
    {103, ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Log out")},
    {104, ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Suspend")},
    {105, ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Restart")},
    {106, ActionGroup::ActionPredefined, 0,                                    Marked("Engine", "Shut down")},
    {128, ActionGroup::ActionSpecialKey, 0,                                    Marked("Engine", "Eject disc")},
    {129, ActionGroup::ActionSpecialKey, 0,                                    Marked("Engine", "Mute microphone")},
    {130, ActionGroup::ActionSpecialKey, 0,                                    Marked("Engine", "Mute sound")},
    {131, ActionGroup::ActionSpecialKey, 0,                                    Marked("Engine", "Volume down")},
    {132, ActionGroup::ActionSpecialKey, 0,                                    Marked("Engine", "Volume up")},
    {133, ActionGroup::ActionSpecialKey, 0,                                    Marked("Engine", "Brightness down")},
    {134, ActionGroup::ActionSpecialKey, 0,                                    Marked("Engine", "Brightness up")},
    {144, ActionGroup::ActionITunes,     0,                                    Marked("Engine", "Play or pause")},
    {145, ActionGroup::ActionITunes,     0,                                    Marked("Engine", "Next track")},
    {146, ActionGroup::ActionITunes,     0,                                    Marked("Engine", "Previous track")},
    {147, ActionGroup::ActionITunes,     0,                                    Marked("Engine", "Stop playing")},
    {151, ActionGroup::ActionITunes,     0,                                    Marked("Engine", "Player volume up")},
    {152, ActionGroup::ActionITunes,     0,                                    Marked("Engine", "Player volume down")},
    {160, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Browser back")},
    {161, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Browser forward")},
    {162, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Browser reload")},
    {176, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "New")},
    {177, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Open")},
    {178, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Save")},
    {179, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Print")},
    {180, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Close window")},
    {181, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Minimize window")},
    {182, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Undo")},
    {183, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Cut")},
    {184, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Copy")},
    {185, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Paste")},
    {186, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Select all")},
    {187, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Find")},
    {188, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Find next")},
    {189, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Next window")},
    {190, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Full screen")},
    {208, ActionGroup::ActionShortcut,   0,                                    Marked("Engine", "Redo")},
    {224, ActionGroup::ActionScroll,     0,                                    Marked("Engine", "Scroll up")},
    {225, ActionGroup::ActionScroll,     0,                                    Marked("Engine", "Scroll down")},
    {226, ActionGroup::ActionScroll,     0,                                    Marked("Engine", "Scroll left")},
    {227, ActionGroup::ActionScroll,     0,                                    Marked("Engine", "Scroll right")},
});
// clang-format on

} // namespace drevix
