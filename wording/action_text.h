// What a slot of a settings record does, in words, for the programs that write text: terminal and helper.
#pragma once

#include "platform/base/translation.h"
#include "settings/action_commands.h"

#include <string>

namespace drevix {

// "Scroll up", as it is typed in every language; "Action 50" for an unknown code.
[[nodiscard]] std::string ActionTitle(ActionCommand code);

enum class KeyNames {
    Own,
    Labelled
}; // the system's own ("ctrl+s"), or with the labels of a keyboard beside them

// What a slot holds besides its command: the keystroke, the modifiers of a scroll, the path of the item to open, "(gone)"
// behind one that no longer exists, the companion's menu entry, the repeat choice as the command line takes it. Empty when
// there is nothing. `menuTitle`: the title of the slot's menu entry where it is known, else null; records store a number
// alone. Control characters in names stay: the caller writes plain text. May throw std::bad_alloc.
[[nodiscard]] std::string ActionDetails(const ActionSlot &slot, const std::string *menuTitle = nullptr,
                                        KeyNames names = KeyNames::Labelled, Reader reader = Reader::Person);

} // namespace drevix
