// Turns an action slot into steps to carry out: keys, wheel movement and requests.
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

// A key by scan code, with the modifiers held around it.
struct KeyChord {
    std::uint16_t scanCode;
    std::uint16_t modifiers; // classic event modifiers, without caps lock
    friend bool operator==(const KeyChord &, const KeyChord &) = default;
};

// The scan codes of modifiers, in pressing order: ctrl, alt (option), shift, super (command), always the left
// key. Caps lock is left out.
[[nodiscard]] std::vector<std::uint16_t> ModifierScanCodes(std::uint16_t modifiers);

// A kind of program, opened by its purpose. All texts are in static storage.
struct ProgramKind {
    std::string_view name;       // display name: "mail program"
    std::string_view missing;    // what to say when there is none: "no mail program is installed"
    std::string_view type;       // open the default application for this MIME type; may be empty
    std::string_view entries;    // else the first installed of these desktop entries; "a;b;", may be empty
    std::string_view categories; // else the first entry that has all these categories; "A;B;", may be empty
};

// The possible steps of a plan.
struct DoNothing {
    std::string_view reason; // for display, static storage; empty if nothing was expected
    friend bool operator==(const DoNothing &, const DoNothing &) = default;
};
struct SendKeys {
    KeyChord chord;
    friend bool operator==(const SendKeys &, const SendKeys &) = default;
};
struct SendScroll {
    ScrollDirection direction;
    std::uint16_t modifiers; // classic modifiers, held during the wheel movement
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
    std::optional<KeyChord> otherwise; // sent if the desktop does not accept the request
    friend bool operator==(const AskWindow &, const AskWindow &) = default;
};
struct AskSession {
    SessionRequest request;
    friend bool operator==(const AskSession &, const AskSession &) = default;
};
struct AskPlayer {
    PlayerRequest request;
    std::optional<KeyChord> otherwise; // sent if there is no player to ask
    friend bool operator==(const AskPlayer &, const AskPlayer &) = default;
};
struct SwitchRingMode {
    friend bool operator==(const SwitchRingMode &, const SwitchRingMode &) = default;
};
using ActionStep = std::variant<DoNothing, SendKeys, SendScroll, OpenItem, OpenProgram, AskWindow, AskSession,
                                AskPlayer, SwitchRingMode>;

// What an action does while its control is down.
enum class Holding : std::uint8_t {
    Once,
    Repeats,   // acts when pressed, then every `ticks` ("device/repeat.h")
    Kept,      // holds the keys until the control goes up
    LongPress, // acts after one second: a touch must not log the user out
};

struct ActionPlan {
    ActionStep step;
    Holding holding = Holding::Once;
    std::uint16_t ticks = 0;  // for Holding::Repeats, in 1/60 s, before applying the ring's speed
    bool worksLocked = false; // sound, brightness and player may act while the session is locked
    friend bool operator==(const ActionPlan &, const ActionPlan &) = default;
};

// The plan for a slot from RecordsInForce, in this keyboard layout and for the window in front. A shortcut
// that names a character ("ctrl+z") is looked up in the layout; in a terminal, one with ctrl also gets shift,
// because ctrl plus a letter goes to the program inside. A slot with an unknown command, or one left to the
// global record, does nothing.
[[nodiscard]] ActionPlan PlanAction(const ActionSlot &slot, const KeyboardCharacters &layout,
                                    const FrontWindow &front);

} // namespace drevix
