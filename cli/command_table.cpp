#include "cli/commands.h"
#include "platform/base/translation.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

using enum ArgumentKind;

// clang-format off
constexpr auto kCommands = std::to_array<Command>({
    {"list", "", ToTranslate("show all records"),
     ToTranslate("Shows the records in the order of the panel's list: the global record, those\n"
                 "that came with the panel, and your own. --app takes their file names (case is\n"
                 "ignored); where two have the same, NAME:SIGNATURE or the number.\n"),
     0, 0, 0, 0, {None, None}, ListRecords},
    {"show", "", ToTranslate("show one record"),
     ToTranslate("Shows what the controls do in one application or, without --app, in the global\n"
                 "record. With --json, prints the record as export writes it.\n"),
     0, 0, kAppOption, 0, {None, None}, ShowRecord},
    {"assign", "CONTROL ACTION", ToTranslate("choose what a control does"),
     ToTranslate("CONTROL is ringLeft, ringRight, ringUp, ringDown, ringXYRest, ringCCW, ringCW,\n"
                 "ringZRest, tunerCCW, tunerCW, buttonV, buttonP, buttonI, buttonII or buttonIII.\n"
                 "ACTION is one of:\n"
                 "  none                     nothing\n"
                 "  keystroke cmd+shift+s    a key with modifiers: cmd (or super), shift, caps,\n"
                 "                           opt (or alt), ctrl\n"
                 "  scroll up +shift         scrolling, with modifiers held if any are named\n"
                 "  menu TITLE               an entry of the companion dial's menu\n"
                 "  a name or number         as 'drevixctl actions' lists them; the beginning of a\n"
                 "                           name is enough if it is unique\n"
                 "  open PATH                a file, folder, application or disk\n"
                 "Other controls whose actions change too are shown. --repeat is for keystrokes\n"
                 "and scrolling on the ring and the buttons; -1 keeps a key pressed.\n"
                 "Write backspace or 'fw del', not delete; return or num+enter, not enter: a\n"
                 "Linux keyboard has these names on other keys than the settings do.\n"),
     2, kAnyNumber, kAppOption | kRepeatOption, 0, {Control, Action}, AssignAction},
    {"set", "KEY VALUE", ToTranslate("change a value"),
     ToTranslate("KEY is one of: configName (the name shown); active, clickEnabled (true\n"
                 "or false); ringSensitivity, ringSpeed, tunerSensitivity (0 to 255);\n"
                 "ringSensitivitySeparate, ringSpeedSeparate (true or false; both change\n"
                 "together); ringSensitivityX, ringSensitivityY, ringSensitivityZ, ringSpeedX,\n"
                 "ringSpeedY, ringSpeedZ (0 to 255; used while the axes are separate).\n"),
     2, 2, kAppOption, 0, {Key, Value}, SetValue},
    {"add", "PATH", ToTranslate("add a record for an application"),
     ToTranslate("PATH is an \".app\" folder, a desktop entry, or a program. The new record starts\n"
                 "with the global settings.\n"),
     1, 1, 0, 0, {File, None}, AddApplication},
    {"delete", "", ToTranslate("delete an application's record"),
     ToTranslate("Records that came with the panel cannot be deleted; 'drevixctl set active false'\n"
                 "turns the device off in their application.\n"),
     0, 0, kAppOption, kAppOption, {None, None}, DeleteApplication},
    {"defaults", "ring|tuner|buttons", ToTranslate("restore factory defaults"),
     ToTranslate("Restores the factory defaults of the ring: actions, sensitivities and speeds;\n"
                 "of the tuner: actions, sensitivity and click sound; or of the buttons: actions.\n"),
     1, 1, kAppOption, 0, {Group, None}, RestoreDefaults},
    {"history", "", ToTranslate("list earlier settings"),
     ToTranslate("Lists what saves have replaced, the newest first: when, and what the save\n"
                 "changed. Kept are the last ten that differ, and the first of each day for a\n"
                 "month.\n"),
     0, 0, 0, 0, {None, None}, ShowHistory},
    {"restore", "N", ToTranslate("bring earlier settings back"),
     ToTranslate("Restores the settings that 'drevixctl history' shows as number N; 1 is what the\n"
                 "last save replaced. With --app, restores one application's record only. What\n"
                 "this replaces is kept in the history too: 'drevixctl restore 1' takes it back.\n"),
     1, 1, kAppOption, 0, {None, None}, RestoreEarlier},
    {"export", "FILE", ToTranslate("write records to a property list"),
     ToTranslate("Writes the global record, the record that --app names, or with --all every\n"
                 "record. FILE - is standard output.\n"),
     1, 1, kAppOption | kAllOption, 0, {File, None}, ExportRecords},
    {"import", "FILE", ToTranslate("read records from a property list"),
     ToTranslate("Adds the records of an exported file. Existing records are left unchanged and\n"
                 "listed, unless --replace is given. A damaged file changes nothing.\n"),
     1, 1, kReplaceOption, 0, {File, None}, ImportRecords},
    {"actions", "", ToTranslate("list every action"),
     ToTranslate("Lists the actions by code: name, group, and restrictions:\n"
                 "  not global       not in the global record\n"
                 "  once             on one control of a record only\n"
                 "  apps             in records of the companion's graphics applications only\n"
                 "  apps or global   in these and in the global record only\n"
                 "  I to III         on buttons I, II and III only\n"
                 "  tuner, no tuner  on the tuner only, not on the tuner\n"),
     0, 0, 0, 0, {None, None}, ListActions},
    {"menu", "", ToTranslate("list the companion dial's menu entries"),
     ToTranslate("Lists the entries that 'drevixctl assign buttonI menu TITLE' accepts for one\n"
                 "application or, without --app, for every application, and which of buttons I,\n"
                 "II and III runs each.\n"),
     0, 0, kAppOption, 0, {None, None}, ListMenu},
    {"check", "[FILE]", ToTranslate("check a settings file for damage"),
     ToTranslate("Checks FILE, or your settings file, without changing it. The exit status is 1 if\n"
                 "the file is damaged.\n"),
     0, 1, 0, 0, {File, None}, CheckSettingsFile},
    {"recover", "FILE", ToTranslate("save the intact records of a damaged settings file"),
     ToTranslate("Copies the intact records to a new file. FILE is not changed.\n"),
     1, 1, kToOption, kToOption, {File, None}, RecoverSettingsFile},
    {"devices", "", ToTranslate("show the connected devices"),
     ToTranslate("Asks the device helper which devices are connected, and waits up to two seconds\n"
                 "for its answer.\n"),
     0, 0, 0, 0, {None, None}, ListDevices},
    {"press", "CONTROL", ToTranslate("press a control, as if by hand"),
     ToTranslate("Has the device helper do what CONTROL does in the window in front, and shows\n"
                 "what that was. The controls are those of 'drevixctl help assign'.\n"),
     1, 1, 0, 0, {Control, None}, PressControl},
    {"hold", "CONTROL", ToTranslate("press a control and keep it down"),
     ToTranslate("The control stays down until 'drevixctl release', until another window comes to\n"
                 "the front, or until the settings change.\n"),
     1, 1, 0, 0, {Control, None}, HoldControl},
    {"release", "CONTROL", ToTranslate("let a held control go"),
     ToTranslate("Lets a control go that 'drevixctl hold' has pressed.\n"),
     1, 1, 0, 0, {Control, None}, ReleaseControl},
    {"turn", "CONTROL [+STEPS]", ToTranslate("turn the tuner or the ring"),
     ToTranslate("Turns by so many steps, 1 to 50: 'drevixctl turn tunerCW +3', and\n"
                 "'drevixctl turn tunerCCW +3' to turn back.\n"),
     1, 2, 0, 0, {Control, None}, TurnControl},
    {"watch", "", ToTranslate("show what the controls do"),
     ToTranslate("Shows each action, a line each, until the device helper ends or you press\n"
                 "ctrl+c. With --raw, shows what each device sends that you may read, in the words\n"
                 "of a map; one that the device helper has taken shows nothing while it runs.\n"),
     0, 0, kRawOption, 0, {None, None}, WatchControls},
    {"front", "", ToTranslate("show which window is in front"),
     ToTranslate("Shows what the device helper knows of the window in front, whose settings are in\n"
                 "force there, and whether the desktop can be reached.\n"),
     0, 0, 0, 0, {None, None}, ShowFront},
    {"maps", "FILE", ToTranslate("check a map of a device"),
     ToTranslate("Checks a file that says which input of a device is which control. The exit\n"
                 "status is 1 if a line is not valid.\n"),
     1, 1, 0, 0, {File, None}, CheckMaps},
    {"help", "[COMMAND]", ToTranslate("explain a command"),
     ToTranslate("Explains a command, or lists them all.\n"),
     0, 1, 0, 0, {CommandName, None}, PrintHelp},
});
// clang-format on

} // namespace

std::span<const Command> AllCommands() {
    return kCommands;
}

const Command *FindCommand(std::string_view name) {
    const auto *command = std::ranges::find(kCommands, name, &Command::name);
    return command == kCommands.end() ? nullptr : command;
}

} // namespace drevix
