// Keystrokes of the classic keyboard from the key events of this one.
#pragma once

#include <cstdint>
#include <optional>

class QKeyEvent;

namespace drevix {

// The classic keyboard has a command key beside control and option; a PC keyboard has Ctrl, Alt and Super
// (the key with the Windows sign). Alt is option, AltGr too, which is the right option key. Of the other two
// each is stored as itself by default: Ctrl+S is control-S, as the programs here expect it to be sent, and
// Super is command. A user of settings made for command keys may have the two exchanged.
enum class CommandKey : std::uint8_t { Super, Control };

struct Keystroke {
    std::uint8_t keyCode;    // virtual key code
    std::uint16_t modifiers; // classic event modifiers, caps lock among them
    friend bool operator==(const Keystroke &, const Keystroke &) = default;
};

// Whether the key of the event only modifies others, in the layout in force.
[[nodiscard]] bool IsModifierOnly(const QKeyEvent &event);

// The keystroke of a key-down; nothing for a key that only modifies others or that the classic keyboard
// lacks.
//
// A key is known by its scan code, so it has the same code in every layout and with every modifier, and a
// key of the keypad is one of its digits and operators whether Num Lock is on or not. Where an event has no
// scan code, or one that cannot be right, as those of on-screen keyboards, which number their keys as they
// like, what the key types decides, in the layout that GetKeyboardInformation found: so for a letter with the
// code of Escape. A key that the layout makes a modifier is one, and a modifier
// key that it makes an ordinary key, as Caps Lock to Escape, is that key.
[[nodiscard]] std::optional<Keystroke> KeystrokeOfEvent(const QKeyEvent &event, CommandKey commandKey);

} // namespace drevix
