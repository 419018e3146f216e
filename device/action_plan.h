// What an action is, step for step: from a slot of a record to keys, wheel and requests.
#pragma once

#include "platform/desktop/keyboard_layout.h"
#include "platform/windows/desktop_requests.h"
#include "platform/windows/front_window.h"
#include "settings/action_commands.h"
#include "settings/app_prefs.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace drevix {

// The last scan code that every desktop can send: X11 has no key codes beyond 255.
inline constexpr std::uint16_t kMostScanCode = 247;

// A key by its place, with the modifiers that are held around it.
struct KeyChord {
    std::uint16_t scanCode;
    std::uint16_t modifiers; // classic event modifiers; caps lock is none of them
    friend bool operator==(const KeyChord &, const KeyChord &) = default;
};

// The scan codes of modifiers, in the order in which they go down: ctrl, alt (option), shift, super (command), each of
// them the left key. Caps lock is left out.
[[nodiscard]] std::vector<std::uint16_t> ModifierScanCodes(std::uint16_t modifiers);

// A kind of program that is opened by what it is for. All texts are in static storage.
struct ProgramKind {
    std::string_view name; // for people: "mail program"
    std::string_view type; // open the default application of this MIME type; empty: there is no such type
    std::string_view
        entries; // else the first of these desktop entries that is installed; "a;b;", may be empty
    std::string_view categories; // else the first entry that has all these categories; "A;B;", may be empty
};

// The steps that a plan can be.
struct DoNothing {
    std::string_view reason; // for people, static storage; empty where no one expects anything
    friend bool operator==(const DoNothing &, const DoNothing &) = default;
};
struct SendKeys {
    KeyChord chord;
    friend bool operator==(const SendKeys &, const SendKeys &) = default;
};
struct SendScroll {
    ScrollDirection direction;
    std::uint16_t modifiers; // classic, held around the wheel's movement
    friend bool operator==(const SendScroll &, const SendScroll &) = default;
};
struct OpenItem {
    Str31 name; // of the alias file in the items folder
    friend bool operator==(const OpenItem &, const OpenItem &) = default;
};
struct OpenProgram {
    const ProgramKind *kind; // static storage
    friend bool operator==(const OpenProgram &, const OpenProgram &) = default;
};
struct AskWindow {
    WindowRequest request;
    std::optional<KeyChord> otherwise; // to be sent where this desktop takes no such request
    friend bool operator==(const AskWindow &, const AskWindow &) = default;
};
struct AskSession {
    SessionRequest request;
    friend bool operator==(const AskSession &, const AskSession &) = default;
};
struct AskPlayer {
    PlayerRequest request;
    std::optional<KeyChord> otherwise; // to be sent when no player can be asked
    friend bool operator==(const AskPlayer &, const AskPlayer &) = default;
};
struct SwitchRingMode {
    friend bool operator==(const SwitchRingMode &, const SwitchRingMode &) = default;
};
using ActionStep = std::variant<DoNothing, SendKeys, SendScroll, OpenItem, OpenProgram, AskWindow, AskSession,
                                AskPlayer, SwitchRingMode>;

// What becomes of an action while its control is down.
enum class Holding : std::uint8_t {
    Once,
    Repeats,   // at the press, then every `ticks` ("device/repeat.h")
    Kept,      // the keys stay down until the control goes up
    LongPress, // nothing before the control has been down for a second: no one logs out by brushing a button
};

struct ActionPlan {
    ActionStep step;
    Holding holding = Holding::Once;
    std::uint16_t ticks = 0;  // of Holding::Repeats, 1/60 s, before the ring's speed is counted in
    bool worksLocked = false; // sound, brightness and player, which may act while the session is locked
    friend bool operator==(const ActionPlan &, const ActionPlan &) = default;
};

// The plan for a slot, as RecordsInForce gives it, in the keyboard layout and for the window in front. A key that is
// named by what it types ("ctrl+z") is looked up in the layout; in a terminal those with ctrl get shift as well, since
// ctrl and a letter alone is for the program inside. A slot with a command that is unknown, or that is left to the
// global record, does nothing.
[[nodiscard]] ActionPlan PlanAction(const ActionSlot &slot, const KeyboardCharacters &layout,
                                    const FrontWindow &front);

} // namespace drevix
