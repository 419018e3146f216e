// Finds the keyboard layout for a program with windows.
#pragma once

#include "platform/desktop/keyboard_layout.h"

#include <functional>

class QObject;

namespace drevix {

// Begins to look for the layout on a thread of its own, where that can be done beside making windows: not with a Wayland
// compositor, which is asked over the connection of the windows. Needs the application object.
void LookForLayoutOfWindowsAhead();

// Builds gAsciiTable like GetKeyboardInformation, preferring the window system of the application's windows.
// If there are several layouts, a Wayland compositor reveals the current one only to the client with the
// keyboard focus. So the table is rebuilt when the application first gets the focus, and `rebuilt` is called
// if that changes a name. Does not follow later layout changes. `owner` must live as long as `rebuilt` may be
// called.
void GetKeyboardInformationOfWindows(QObject *owner, std::function<void()> rebuilt);

// The layout in force, from the window system of the application's windows. False, with the output unchanged, where
// that has none.
[[nodiscard]] bool CharactersOfWindows(KeyboardCharacters *characters);

} // namespace drevix
