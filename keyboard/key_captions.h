// What is written on the keys of a Linux keyboard: the names of keystrokes for people. Stored names, and those of the
// command line, are those of "keyboard/key_names.h".
#pragma once

#include "settings/app_prefs.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// Which key of the keyboard is the classic command key. The other of the two is then the classic control key.
enum class CommandOnKeyboard : std::uint8_t { Super, Ctrl };

// The captions of the keys of a keystroke in the order in which they are named, the key last: {"Ctrl", "Shift", "S"}.
// Nothing for kNoKeyCode. In English; words are to be translated, single characters are what the layout has. "Num",
// in front of a key of the keypad, is a caption of its own. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::string> KeyCaptions(std::uint8_t keyCode, std::uint16_t modifiers,
                                                   CommandOnKeyboard command);
// The captions of modifiers alone, in the same order. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::string_view> ModifierCaptions(std::uint16_t modifiers,
                                                             CommandOnKeyboard command);

// Every word that a caption can be, for who translates them. Static storage.
[[nodiscard]] std::span<const std::string_view> CaptionWords();

} // namespace drevix
