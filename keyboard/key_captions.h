// The captions printed on the keys of a Linux keyboard: names of keystrokes for people.
// "keyboard/key_names.h" has the names for files and the command line.
#pragma once

#include "settings/app_prefs.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// Which key is the classic command key. The other of the two is then the classic control key.
enum class CommandOnKeyboard : std::uint8_t { Super, Ctrl };

// The captions of a keystroke's keys, the key last: {"Ctrl", "Shift", "S"}. Empty for kNoKeyCode. In English:
// words are to be translated, single characters come from the layout. "Num", before a keypad key, is a
// caption of its own. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::string> KeyCaptions(std::uint8_t keyCode, std::uint16_t modifiers,
                                                   CommandOnKeyboard command);
// The captions of modifiers alone, in the same order. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::string_view> ModifierCaptions(std::uint16_t modifiers,
                                                             CommandOnKeyboard command);

// Every word that a caption can be, for translation. Static storage.
[[nodiscard]] std::span<const std::string_view> CaptionWords();

} // namespace drevix
