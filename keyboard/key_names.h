// Readable names of keys and modifier combinations ("cmd+shift+a"), and keystrokes read from such names.
// Names are Pascal strings, cut at the caller's limit of characters. Main thread only.
#pragma once

#include "platform/base/types.h"
#include "platform/desktop/keyboard_layout.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace drevix {

// The character, in Mac OS Roman, that each virtual key code gives without modifiers; all 0 until it is
// built, and 0 for key code 127 always. Keys without a character have the platform's control character for
// their kind (16: a function key).
extern std::array<std::uint8_t, 128> gAsciiTable;

// Builds gAsciiTable from the keyboard layout in force, that of this window system where there are both;
// leaves it unchanged when there is none. Later changes of the layout are not followed.
void GetKeyboardInformation(WindowSystem first = WindowSystem::Wayland);
// The same from a Wayland compositor, over the connection, a wl_display, that the program's windows have. False,
// with the table unchanged, when it gives no keymap.
[[nodiscard]] bool GetKeyboardInformationOver(void *waylandConnection);

// The table's entry for the low seven bits of the key code.
[[nodiscard]] std::uint8_t GetKeyChar(std::uint8_t keyCode);

// The modifiers of a key as symbol bytes (command 1, shift 2, option 3, control 4, keypad 5, and a blank at
// the end of a non-empty result), or as words ("cmd+", "shift+", "caps+", "opt+", "ctrl+", and "num+" for a
// keypad key). `modifiers` is the high byte of ActionSlot::modifiers.
void GetModifiersCode(std::uint8_t keyCode, std::uint8_t modifiers, StringPtr name, std::int16_t limit);
void GetModifiersName(std::uint8_t keyCode, std::uint8_t modifiers, StringPtr name, std::int16_t limit);
// The name of one key: its character, or "esc", "F5", "pg up", ...; a backslash and the character's number
// for any other.
void GetKeyName(std::uint8_t keyCode, StringPtr name, std::int16_t limit);
// The whole text of a keystroke: `key` is the key code times 256, `modifiers` an ActionSlot's. "(none)" when
// either is 0xFFFF. `useCodes` not 0 takes the symbol bytes.
void GetKeyCombinationName(std::uint16_t key, std::uint16_t modifiers, StringPtr name, std::int16_t limit,
                           std::uint16_t useCodes);

// For people, in UTF-8: the name of a key as above, or for one that the table has nothing for the character
// that is printed on it. May throw std::bad_alloc.
[[nodiscard]] std::string KeyCaption(std::uint8_t keyCode);
// A whole keystroke with the key's caption, from the fields of an ActionSlot: "cmd+shift+a", "(none)" for kNoKeyCode; and "cmd+shift", empty
// without a modifier. May throw std::bad_alloc.
[[nodiscard]] std::string KeystrokeText(std::uint8_t keyCode, std::uint16_t modifiers);
[[nodiscard]] std::string ModifiersText(std::uint16_t modifiers);

// KeystrokeText for the terminal: a key whose name means another one to a Linux user, or nothing, is followed by its
// label on a Linux keyboard, as in "cmd+delete (backspace)" and "enter (num+enter)". May throw std::bad_alloc.
[[nodiscard]] std::string LabelledKeystrokeText(std::uint8_t keyCode, std::uint16_t modifiers);

// Reads a keystroke written as GetKeyCombinationName writes it (UTF-8; modifiers in any order, letter case
// ignored), or with the labels of a Linux keyboard ("backspace", "insert", "print", "menu", "page up", ...;
// "super", "meta", "alt", ...). Without "num+" a key of the keypad is meant only where no other key has the
// name. False, with the outputs unchanged, for text that names no key of the layout, or may mean two.
[[nodiscard]] bool ParseKeyCombination(std::string_view text, std::uint8_t *keyCode,
                                       std::uint16_t *modifiers);

// A name that a Linux keyboard has on another key than the system, and what each of the two can be called instead.
struct AmbiguousKeyName {
    std::string_view name, ours, onKeyboard;
};
// The ambiguous name that the text of a keystroke ends in, null for any other text. Static storage. May throw
// std::bad_alloc.
[[nodiscard]] const AmbiguousKeyName *FindAmbiguousKeyName(std::string_view text);

// Reads modifiers alone, with or without a '+' in front: as ModifiersText writes them, or in the other words
// above. False, with the output unchanged, when a word names no modifier.
[[nodiscard]] bool ParseModifiers(std::string_view text, std::uint16_t *modifiers);

} // namespace drevix
