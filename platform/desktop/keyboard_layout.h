// The characters that the keys of the current keyboard layout print, in Mac OS Roman.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// A layout by its XKB names, as in X11 and Wayland. An empty name means the default. Layouts and variants may
// be comma-separated lists.
struct KeyboardLayoutNames {
    std::string rules, model, layout, variant, options;
};

// The unmodified character of each key, by evdev scan code; 0 for a key that prints nothing. Never a control
// character.
//
// A dead key has its accent as a character if Mac OS Roman has it, and does not affect other keys. A
// non-Latin layout (Russian, Greek) is replaced by the first Latin one beside it, else by the US layout. In a
// Latin layout only keys whose characters Mac OS Roman lacks are replaced, and only by a character that no
// other key has; otherwise the key has 0: the Czech u with ring does not become a semicolon, which is
// elsewhere in that layout.
using KeyboardCharacters = std::array<std::uint8_t, 256>;

// A key of a Latin layout that prints something but has no character here.
struct UnnamedKey {
    std::uint16_t scanCode;
    std::string printed; // its own character, in UTF-8
};

// Which of the two to query first if a session has both.
enum class WindowSystem : std::uint8_t { Wayland, X11 };

// The characters of the current layout: that of the compositor in $WAYLAND_DISPLAY or the X server in
// $DISPLAY, with the group selected there; else the first of ConfiguredKeyboardLayout; else the US layout. A
// compositor reveals the selected group only to the client with the keyboard focus; here it is the first. A
// hung compositor costs 200 ms. The unnamed keys are optional. False, with the outputs unchanged, if there is
// no layout.
[[nodiscard]] bool CurrentKeyboardCharacters(KeyboardCharacters *characters,
                                             std::vector<UnnamedKey> *unnamed = nullptr,
                                             WindowSystem first = WindowSystem::Wayland);

// The same from the compositor only, over the program's own connection, a wl_display: with the selected group
// while the program has the keyboard focus. False, with the outputs unchanged, if it sends no keymap.
[[nodiscard]] bool KeyboardCharactersOfCompositor(void *connection, KeyboardCharacters *characters,
                                                  std::vector<UnnamedKey> *unnamed = nullptr);

// The same for the first of the named layouts. False, with the outputs unchanged, if there is no such layout.
[[nodiscard]] bool KeyboardCharactersOfLayout(const KeyboardLayoutNames &names,
                                              KeyboardCharacters *characters,
                                              std::vector<UnnamedKey> *unnamed = nullptr);

// The configured layout: $XKB_DEFAULT_LAYOUT and related variables, else the system's /etc/default/keyboard,
// else "us". May throw std::bad_alloc.
[[nodiscard]] KeyboardLayoutNames ConfiguredKeyboardLayout();

// Parses a keyboard file with lines such as XKBLAYOUT="de"; missing names are empty. May throw
// std::bad_alloc.
[[nodiscard]] KeyboardLayoutNames ParseKeyboardFile(std::string_view text);

} // namespace drevix
