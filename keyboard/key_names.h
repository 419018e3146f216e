// Readable names of keys and modifier combinations ("cmd+shift+a"), and parsing of such names. Names are
// Pascal strings, cut to the caller's limit in characters. Main thread only.
#pragma once

#include "platform/base/types.h"
#include "platform/desktop/keyboard_layout.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace drevix {

// The unmodified character, in Mac OS Roman, of each virtual key code. All 0 until built; always 0 for key
// code 127. Keys without a character have the platform's control character for their kind (16: a function
// key).
extern std::array<std::uint8_t, 128> gAsciiTable;

// Builds gAsciiTable from the current keyboard layout, preferring that of window system `first`; leaves it
// unchanged if there is none. Does not follow later layout changes.
void GetKeyboardInformation(WindowSystem first = WindowSystem::Wayland);
// Begins to look for that layout on a thread of its own; the next GetKeyboardInformation takes what it finds. A program
// with windows calls it before it makes them, which takes longer. The thread does `before` first.
void LookForLayoutAhead(WindowSystem first, std::function<void()> before);
// The same from a Wayland compositor over the connection of the program's windows, a wl_display. False, with
// the table unchanged, if the compositor sends no keymap.
[[nodiscard]] bool GetKeyboardInformationOver(void *waylandConnection);

// The table's entry for the low seven bits of the key code.
[[nodiscard]] std::uint8_t GetKeyChar(std::uint8_t keyCode);

// A key's modifiers as symbol bytes (command 1, shift 2, option 3, control 4, keypad 5, and a trailing blank
// unless empty), or as words ("cmd+", "shift+", "caps+", "opt+", "ctrl+", and "num+" for a keypad key).
// `modifiers` is the high byte of ActionSlot::modifiers.
void GetModifiersCode(std::uint8_t keyCode, std::uint8_t modifiers, StringPtr name, std::int16_t limit);
void GetModifiersName(std::uint8_t keyCode, std::uint8_t modifiers, StringPtr name, std::int16_t limit);
// The name of one key: its character, or "esc", "F5", "pg up", ...; otherwise a backslash and the character's
// number.
void GetKeyName(std::uint8_t keyCode, StringPtr name, std::int16_t limit);
// The whole text of a keystroke: `key` is the key code times 256, `modifiers` an ActionSlot's. "(none)" if
// either is 0xFFFF. Nonzero `useCodes` selects the symbol bytes.
void GetKeyCombinationName(std::uint16_t key, std::uint16_t modifiers, StringPtr name, std::int16_t limit,
                           std::uint16_t useCodes);

// For display, in UTF-8: the name of a key as above, or, if the table has nothing for it, the character
// printed on it. May throw std::bad_alloc.
[[nodiscard]] std::string KeyCaption(std::uint8_t keyCode);
// From the fields of an ActionSlot: a whole keystroke with the key's caption, "cmd+shift+a", or "(none)" for
// kNoKeyCode; and the modifiers alone, "cmd+shift", or empty. May throw std::bad_alloc.
[[nodiscard]] std::string KeystrokeText(std::uint8_t keyCode, std::uint16_t modifiers);
[[nodiscard]] std::string ModifiersText(std::uint16_t modifiers);

// KeystrokeText for the terminal: if a key's name means another key, or nothing, to a Linux user, its label
// on a Linux keyboard follows, as in "cmd+delete (backspace)" and "enter (num+enter)". May throw
// std::bad_alloc.
[[nodiscard]] std::string LabelledKeystrokeText(std::uint8_t keyCode, std::uint16_t modifiers);

// Parses a keystroke as GetKeyCombinationName writes it (UTF-8; modifiers in any order, any letter case), or
// with the labels of a Linux keyboard ("backspace", "insert", "print", "menu", "page up", ...; "super",
// "meta", "alt", ...). Without "num+", a name means a keypad key only if no other key has it. False, with the
// outputs unchanged, if the text names no key of the layout or is ambiguous.
[[nodiscard]] bool ParseKeyCombination(std::string_view text, std::uint8_t *keyCode,
                                       std::uint16_t *modifiers);

// A name that Linux keyboards and this system use for different keys, and an unambiguous name for each of the
// two.
struct AmbiguousKeyName {
    std::string_view name, ours, onKeyboard;
};
// The ambiguous name at the end of a keystroke's text, or null. Static storage. May throw std::bad_alloc.
[[nodiscard]] const AmbiguousKeyName *FindAmbiguousKeyName(std::string_view text);

// Parses modifiers alone, with or without a leading '+': as ModifiersText writes them, or in the other words
// above. False, with the output unchanged, for an unknown word.
[[nodiscard]] bool ParseModifiers(std::string_view text, std::uint16_t *modifiers);

} // namespace drevix
