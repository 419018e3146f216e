// Converts this keyboard's key events to keystrokes of the classic keyboard.
#pragma once

#include <cstdint>
#include <optional>

class QKeyEvent;

namespace drevix {

// The classic keyboard has a command key beside control and option; a PC keyboard has Ctrl, Alt and Super
// (the key with the Windows sign). Alt is option, AltGr too, which is the right option key. By default Ctrl
// is control, because programs here expect Ctrl+S to be sent as control-S, and Super is command. The two can
// be swapped for settings made for command keys.
enum class CommandKey : std::uint8_t { Super, Control };

struct Keystroke {
    std::uint8_t keyCode;    // virtual key code
    std::uint16_t modifiers; // classic event modifiers, caps lock among them
    friend bool operator==(const Keystroke &, const Keystroke &) = default;
};

// Whether the event's key only modifies others in the current layout.
[[nodiscard]] bool IsModifierOnly(const QKeyEvent &event);

// The keystroke of a key-down; nullopt for a key that only modifies others or that the classic keyboard
// lacks.
//
// The scan code identifies a key, so its code is the same in every layout and with every modifier, and a
// keypad key is its digit or operator with or without Num Lock. If an event has no scan code or an
// implausible one (on-screen keyboards number their keys freely, and may send a letter with the code of
// Escape), the typed character decides, in the layout that GetKeyboardInformation found. A key that the
// layout makes a modifier is a modifier; a modifier key that it makes an ordinary key, such as Caps Lock as
// Escape, is that key.
[[nodiscard]] std::optional<Keystroke> KeystrokeOfEvent(const QKeyEvent &event, CommandKey commandKey);

} // namespace drevix
