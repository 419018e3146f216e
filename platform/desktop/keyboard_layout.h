// What the keys of the keyboard layout in force print, in Mac OS Roman.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// A layout by the names that X11 and Wayland know it by. An empty name stands for the usual one. Several
// layouts may stand side by side, separated by commas, as may their variants.
struct KeyboardLayoutNames {
    std::string rules, model, layout, variant, options;
};

// The character that each key gives without modifiers, by the key's evdev scan code; 0 for a key that prints
// nothing. There are no control characters among them.
//
// A dead key has its accent as a character of its own where Mac OS Roman has it. Every key is looked at by
// itself: a dead key changes nothing about another. A layout that does not write the Latin script (Russian,
// Greek) is replaced by the first that does of those that stand beside it, else by the US one; in a Latin
// layout only the keys whose characters Mac OS Roman lacks are, and only by a character that no other key
// has: the Czech u with ring is no semicolon, which is elsewhere in that layout. Such a key has 0.
using KeyboardCharacters = std::array<std::uint8_t, 256>;

// A key of a Latin layout that prints something and has no character all the same.
struct UnnamedKey {
    std::uint16_t scanCode;
    std::string printed; // its own character, in UTF-8
};

// Which of the two is asked first where a session has both.
enum class WindowSystem : std::uint8_t { Wayland, X11 };

// The characters of the layout in force: that of the compositor of $WAYLAND_DISPLAY or of the X server in
// $DISPLAY, with the group chosen there; where none can be reached the first of ConfiguredKeyboardLayout; where
// that is no layout the US one. Of several groups a compositor tells the chosen one only to the client with the
// keyboard focus: here it is the first. A compositor that hangs costs 200 ms. The unnamed keys are for who asks.
// False, with the outputs unchanged, when no layout can be had.
[[nodiscard]] bool CurrentKeyboardCharacters(KeyboardCharacters *characters,
                                             std::vector<UnnamedKey> *unnamed = nullptr,
                                             WindowSystem first = WindowSystem::Wayland);

// The same from the compositor alone over a connection that the program has, a wl_display: with the chosen
// group while the program has the keyboard focus. False, with the outputs unchanged, when it gives no keymap.
[[nodiscard]] bool KeyboardCharactersOfCompositor(void *connection, KeyboardCharacters *characters,
                                                  std::vector<UnnamedKey> *unnamed = nullptr);

// The same for the first of the named layouts. False, with the outputs unchanged, when there is no such
// layout.
[[nodiscard]] bool KeyboardCharactersOfLayout(const KeyboardLayoutNames &names,
                                              KeyboardCharacters *characters,
                                              std::vector<UnnamedKey> *unnamed = nullptr);

// The layout that the user, else the system, has set: $XKB_DEFAULT_LAYOUT and its companions, else that of
// the system's keyboard file, /etc/default/keyboard, else "us". May throw std::bad_alloc.
[[nodiscard]] KeyboardLayoutNames ConfiguredKeyboardLayout();

// What a keyboard file says, lines of XKBLAYOUT="de" and the like; what it does not name is empty. May throw
// std::bad_alloc.
[[nodiscard]] KeyboardLayoutNames ParseKeyboardFile(std::string_view text);

} // namespace drevix
