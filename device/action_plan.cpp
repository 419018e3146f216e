#include "device/action_plan.h"

#include "keyboard/key_codes.h"
#include "platform/base/ascii.h"
#include "platform/base/marked_text.h"
#include "platform/base/translation.h"
#include "settings/action_list.h"

#include <algorithm>
#include <linux/input-event-codes.h>

namespace drevix {
namespace {

constexpr std::uint16_t kCtrl = kControlModifier;
constexpr std::uint16_t kAlt = kOptionModifier;
constexpr std::uint16_t kShift = kShiftModifier;
constexpr std::uint16_t kSuper = kCommandModifier;

struct ModifierKey {
    std::uint16_t modifier;
    std::uint16_t scanCode;
};
constexpr auto kModifierKeys = std::to_array<ModifierKey>({
    {kCtrl, KEY_LEFTCTRL},
    {kAlt, KEY_LEFTALT},
    {kShift, KEY_LEFTSHIFT},
    {kSuper, KEY_LEFTMETA},
});

// The kinds of step in a row of the table.

// A key by scan code, whatever the layout.
struct Place {
    std::uint16_t scanCode;
    std::uint16_t modifiers = 0;
};
// A key by the character it types without modifiers in the layout.
struct Typed {
    char character;
    std::uint16_t modifiers = 0;
};
using Key = std::variant<Place, Typed>;
struct Window {
    WindowRequest request;
    std::optional<Key> otherwise = std::nullopt;
};
struct Player {
    PlayerRequest request;
    std::optional<Key> otherwise = std::nullopt;
};
struct SlotKeystroke {}; // the slot says which
struct SlotScroll {
    ScrollDirection direction;
};
struct SlotItem {};
using Recipe = std::variant<DoNothing, Place, Typed, Window, Player, SlotKeystroke, SlotScroll, SlotItem,
                            ProgramKind, AskSession, SwitchRingMode>;

struct PlanRow {
    ActionCommand code;
    Recipe recipe;
    Holding holding = Holding::Once; // unless the slot says otherwise
};

using enum ScrollDirection;
using Request = WindowRequest;
using Play = PlayerRequest;
using Session = SessionRequest;

// clang-format off
// One row per command. Open and save dialogs, undo and the like have the same key in nearly all programs;
// where desktops differ, the request that all of them understand comes first.
constexpr auto kPlans = std::to_array<PlanRow>({
    {0,   DoNothing{}},
    {4,   DoNothing{}}, // the global record's was already looked up
    {7,   SwitchRingMode{}},
    {32,  SlotKeystroke{}},
    {34,  DoNothing{Marked("Engine", "the companion does not accept menu commands")}},
    {35,  Typed{'['}},
    {36,  Typed{']'}},
    {37,  SlotScroll{Left}},
    {38,  SlotScroll{Right}},
    {39,  SlotScroll{Up}},
    {40,  SlotScroll{Down}},
    {41,  Typed{'-', kCtrl}},
    {42,  Typed{'+', kCtrl}},
    {43,  Typed{'0', kCtrl}},
    {64,  SlotItem{}},
    {67,  Window{Request::ShowDesktop}},
    {68,  Window{Request::ShowApplicationWindows}},
    {69,  Window{Request::ShowAllWindows}},
    {80,  ProgramKind{ToTranslate("file manager"), Marked("Engine", "no file manager is installed"), "inode/directory", "", "FileManager;"}},
    {81,  ProgramKind{ToTranslate("web browser"), Marked("Engine", "no web browser is installed"), "x-scheme-handler/https", "", "WebBrowser;"}},
    {82,  ProgramKind{ToTranslate("mail program"), Marked("Engine", "no mail program is installed"), "x-scheme-handler/mailto", "", "Email;"}},
    {83,  ProgramKind{ToTranslate("calendar"), Marked("Engine", "no calendar is installed"), "text/calendar", "", "Calendar;"}},
    {84,  ProgramKind{ToTranslate("contacts program"), Marked("Engine", "no contacts program is installed"), "text/vcard", "", "ContactManagement;"}},
    {85,  ProgramKind{ToTranslate("messages program"), Marked("Engine", "no messages program is installed"), "x-scheme-handler/xmpp", "", "InstantMessaging;"}},
    {86,  ProgramKind{ToTranslate("terminal"), Marked("Engine", "no terminal is installed"), "", "", "TerminalEmulator;"}},
    {87,  ProgramKind{ToTranslate("text editor"), Marked("Engine", "no text editor is installed"), "text/plain", "", "TextEditor;"}},
    {88,  ProgramKind{ToTranslate("calculator"), Marked("Engine", "no calculator is installed"), "", "", "Calculator;"}},
    {89,  ProgramKind{ToTranslate("image viewer"), Marked("Engine", "no image viewer is installed"), "image/jpeg", "", "Graphics;Viewer;"}},
    {90,  ProgramKind{ToTranslate("document viewer"), Marked("Engine", "no document viewer is installed"), "application/pdf", "", "Office;Viewer;"}},
    {91,  ProgramKind{ToTranslate("music player"), Marked("Engine", "no music player is installed"), "audio/mpeg", "", "Audio;Player;"}},
    {92,  ProgramKind{ToTranslate("video player"), Marked("Engine", "no video player is installed"), "video/mp4", "", "Video;Player;"}},
    {93,  ProgramKind{ToTranslate("screenshot tool"), Marked("Engine", "no screenshot tool is installed"), "", // no category is specific to these
                      "org.gnome.Screenshot;org.kde.spectacle;xfce4-screenshooter;mate-screenshot;"
                      "org.flameshot.Flameshot;lximage-qt-screenshot;", ""}},
    {94,  ProgramKind{ToTranslate("software manager"), Marked("Engine", "no software manager is installed"), "x-scheme-handler/appstream", "", "PackageManager;"}},
    {95,  ProgramKind{ToTranslate("system monitor"), Marked("Engine", "no system monitor is installed"), "", "", "System;Monitor;"}},
    {96,  ProgramKind{ToTranslate("settings program"), Marked("Engine", "no settings program is installed"), "", // the category also contains each settings page
                      "org.gnome.Settings;gnome-control-center;systemsettings;kdesystemsettings;"
                      "xfce-settings-manager;matecc;cinnamon-settings;lxqt-config;", "Settings;DesktopSettings;"}},
    {102, AskSession{Session::Lock}},
    {103, AskSession{Session::LogOut},   Holding::LongPress},
    {104, AskSession{Session::Suspend}},
    {105, AskSession{Session::Restart},  Holding::LongPress},
    {106, AskSession{Session::ShutDown}, Holding::LongPress},
    {128, Place{KEY_EJECTCD}},
    {129, Place{KEY_F20}}, // the microphone key is beyond kMostScanCode; layouts map this one to it too
    {130, Place{KEY_MUTE}},
    {131, Place{KEY_VOLUMEDOWN}},
    {132, Place{KEY_VOLUMEUP}},
    {133, Place{KEY_BRIGHTNESSDOWN}},
    {134, Place{KEY_BRIGHTNESSUP}},
    {144, Player{Play::PlayPause,  Place{KEY_PLAYPAUSE}}},
    {145, Player{Play::Next,       Place{KEY_NEXTSONG}}},
    {146, Player{Play::Previous,   Place{KEY_PREVIOUSSONG}}},
    {147, Player{Play::Stop,       Place{KEY_STOPCD}}},
    {151, Player{Play::VolumeUp}},
    {152, Player{Play::VolumeDown}},
    {160, Place{KEY_LEFT, kAlt}},
    {161, Place{KEY_RIGHT, kAlt}},
    {162, Place{KEY_F5}},
    {176, Typed{'n', kCtrl}},
    {177, Typed{'o', kCtrl}},
    {178, Typed{'s', kCtrl}},
    {179, Typed{'p', kCtrl}},
    {180, Window{Request::Close,      Place{KEY_F4, kAlt}}},
    {181, Window{Request::Minimize,   Typed{'h', kSuper}}},
    {182, Typed{'z', kCtrl}},
    {183, Typed{'x', kCtrl}},
    {184, Typed{'c', kCtrl}},
    {185, Typed{'v', kCtrl}},
    {186, Typed{'a', kCtrl}},
    {187, Typed{'f', kCtrl}},
    {188, Typed{'g', kCtrl}},
    {189, Place{KEY_TAB, kAlt}},
    {190, Window{Request::FullScreen, Place{KEY_F11}}},
    {208, Typed{'z', kCtrl | kShift}},
    {224, SlotScroll{Up}},
    {225, SlotScroll{Down}},
    {226, SlotScroll{Left}},
    {227, SlotScroll{Right}},
});
// clang-format on
static_assert(std::ranges::equal(kPlans, kActions, {}, &PlanRow::code, &ActionInfo::code),
              "a plan for every command, in their order");

constexpr ActionCommand kFirstUnlocked = 128; // special keys and player
constexpr ActionCommand kLastUnlocked = 152;

// Where to find a character that no key types without modifiers, such as digits in French layouts: its US
// key, with the modifiers that make it type the character in such layouts.
struct OtherPlace {
    char character;
    Place place;
};
// German and Nordic layouts have a plus key; US, British and French ones have the plus here.
constexpr auto kOtherPlaces = std::to_array<OtherPlace>({
    {'+', {KEY_EQUAL, kShift}},
    {'0', {KEY_0, kShift}},
});

// The key that types a character; nullopt if no key types it. Ignores the keypad, which types nothing without
// Num Lock.
std::optional<KeyChord> ChordOf(const Typed &typed, const KeyboardCharacters &layout) {
    const auto character = static_cast<std::uint8_t>(typed.character);
    for (std::uint16_t scanCode = KEY_1; scanCode <= KEY_102ND; ++scanCode) {
        const bool isOnKeypad = scanCode == KEY_KPASTERISK || (scanCode >= KEY_KP7 && scanCode <= KEY_KPDOT);
        if (!isOnKeypad && layout[scanCode] == character) {
            return KeyChord{scanCode, typed.modifiers};
        }
    }
    const auto *other = std::ranges::find(kOtherPlaces, typed.character, &OtherPlace::character);
    if (other == kOtherPlaces.end()) {
        return std::nullopt;
    }
    return KeyChord{other->place.scanCode,
                    static_cast<std::uint16_t>(typed.modifiers | other->place.modifiers)};
}

std::optional<KeyChord> ChordOf(const Place &place, const KeyboardCharacters & /*layout*/) {
    return KeyChord{place.scanCode, place.modifiers};
}

std::optional<KeyChord> ChordOf(const std::optional<Key> &key, const KeyboardCharacters &layout) {
    return key ? std::visit([&layout](const auto &way) { return ChordOf(way, layout); }, *key) : std::nullopt;
}

enum class TerminalKind : std::uint8_t { None, Usual, Old };
struct Terminal {
    std::string_view name; // last part of its id, class or program, lower case
    TerminalKind kind = TerminalKind::Usual;
};
// Old terminals have no shortcuts and ignore shift: ctrl+shift+c would interrupt the program inside.
// clang-format off
constexpr auto kTerminals = std::to_array<Terminal>({
    {"alacritty"}, {"com.raggesilver.blackbox"}, {"cool-retro-term"}, {"deepin-terminal"}, {"foot"},
    {"footclient"}, {"ghostty"}, {"gnome-terminal"}, {"gnome-terminal-server"}, {"guake"}, {"kgx"},
    {"kitty"}, {"konsole"}, {"lxterminal"}, {"mate-terminal"}, {"org.gnome.console"},
    {"org.gnome.terminal"}, {"ptyxis"}, {"qterminal"}, {"rio"}, {"sakura"}, {"terminator"}, {"terminology"},
    {"tilda"}, {"tilix"}, {"wezterm"}, {"wezterm-gui"}, {"xfce4-terminal"}, {"yakuake"},
    {"st", TerminalKind::Old}, {"st-256color", TerminalKind::Old}, {"urxvt", TerminalKind::Old},
    {"xterm", TerminalKind::Old}, {"uxterm", TerminalKind::Old},
});
// clang-format on

TerminalKind KindOfName(std::string_view name) {
    std::string small = WithSmallLetters(name.substr(name.rfind('/') + 1));
    if (small.ends_with(".desktop")) {
        small.resize(small.size() - std::string_view(".desktop").size());
    }
    const std::string_view last = std::string_view(small).substr(small.rfind('.') + 1);
    const auto *row = std::ranges::find_if(kTerminals, [&](const Terminal &terminal) {
        return terminal.name == small || terminal.name == last;
    });
    return row == kTerminals.end() ? TerminalKind::None : row->kind;
}

TerminalKind TerminalOf(const FrontWindow &front) {
    for (const std::string *name : {&front.entryId, &front.windowClass, &front.windowName, &front.program}) {
        if (const TerminalKind kind = KindOfName(*name); kind != TerminalKind::None) {
            return kind;
        }
    }
    return TerminalKind::None;
}

// Makes a row's step.
struct StepMaker {
    const ActionSlot &slot;
    const KeyboardCharacters &layout;
    const FrontWindow &front;

    ActionStep operator()(const DoNothing &nothing) const { return nothing; }
    ActionStep operator()(const SwitchRingMode &change) const { return change; }
    ActionStep operator()(const AskSession &request) const { return request; }
    ActionStep operator()(const ProgramKind &kind) const { return OpenProgram{&kind}; }
    ActionStep operator()(const Place &place) const { return SendKeys{{place.scanCode, place.modifiers}}; }
    ActionStep operator()(const Window &window) const {
        return AskWindow{window.request, ChordOf(window.otherwise, layout)};
    }
    ActionStep operator()(const Player &player) const {
        return AskPlayer{player.request, ChordOf(player.otherwise, layout)};
    }
    ActionStep operator()(const SlotScroll &scroll) const {
        const bool isScroll = IsScrolling(slot.command);
        return SendScroll{scroll.direction, isScroll ? slot.modifiers : std::uint16_t{0}};
    }
    ActionStep operator()(const SlotItem & /*item*/) const {
        return slot.data[0] != 0 ? ActionStep{OpenItem{slot.data}}
                                 : DoNothing{Marked("Engine", "no item has been chosen")};
    }
    ActionStep operator()(const SlotKeystroke & /*keystroke*/) const {
        if (slot.keyCode == kNoKeyCode) {
            return DoNothing{Marked("Engine", "no key has been chosen")};
        }
        const std::uint16_t scanCode = ScanCodeToSend(slot.keyCode);
        if (scanCode == 0 || scanCode > kMostScanCode) {
            return DoNothing{Marked("Engine", "this key cannot be sent")};
        }
        return SendKeys{{scanCode, slot.modifiers}};
    }
    ActionStep operator()(Typed typed) const {
        const bool isLetter = typed.character >= 'a' && typed.character <= 'z';
        const bool isForProgram = isLetter && (typed.modifiers & kCtrl) != 0;
        const TerminalKind terminal = isForProgram ? TerminalOf(front) : TerminalKind::None;
        if (terminal == TerminalKind::Old) {
            return typed.character == 'v' ? ActionStep{SendKeys{{KEY_INSERT, kShift}}}
                                          : DoNothing{Marked("Engine", "this terminal has no key for it")};
        }
        if (terminal == TerminalKind::Usual) {
            typed.modifiers |= kShift;
        }
        const std::optional<KeyChord> chord = ChordOf(typed, layout);
        return chord ? ActionStep{SendKeys{*chord}}
                     : DoNothing{Marked("Engine", "the keyboard layout has no key for it")};
    }
};

// Applies the delay of slots that use it.
void TakeDelay(const ActionSlot &slot, ActionPlan *plan) {
    const bool isKeystroke = slot.command == kActionKeystroke;
    if (slot.delay == 0 || !(isKeystroke || IsScrolling(slot.command))) {
        return;
    }
    plan->holding = IsHeldKeystroke(slot.command, slot.delay) ? Holding::Kept : Holding::Repeats;
    plan->ticks = plan->holding == Holding::Repeats ? slot.delay : std::uint16_t{0};
}

} // namespace

std::vector<std::uint16_t> ModifierScanCodes(std::uint16_t modifiers) {
    std::vector<std::uint16_t> scanCodes;
    for (const ModifierKey &key : kModifierKeys) {
        if ((modifiers & key.modifier) != 0) {
            scanCodes.push_back(key.scanCode);
        }
    }
    return scanCodes;
}

ActionPlan PlanAction(const ActionSlot &slot, const KeyboardCharacters &layout, const FrontWindow &front) {
    const auto *row = std::ranges::lower_bound(kPlans, slot.command, {}, &PlanRow::code);
    if (row == kPlans.end() || row->code != slot.command) {
        return {};
    }
    ActionPlan plan;
    plan.step = std::visit(StepMaker{slot, layout, front}, row->recipe);
    if (std::holds_alternative<DoNothing>(plan.step)) {
        return plan;
    }
    plan.holding = row->holding;
    plan.worksLocked = slot.command >= kFirstUnlocked && slot.command <= kLastUnlocked;
    TakeDelay(slot, &plan);
    return plan;
}

} // namespace drevix
