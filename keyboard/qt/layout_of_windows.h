// The keyboard layout for a program with windows.
#pragma once

#include <functional>

class QObject;

namespace drevix {

// Builds gAsciiTable as GetKeyboardInformation does, asking first the window system that the application's
// windows are on. Of several layouts a Wayland compositor tells the one in force only to the client with the
// keyboard focus. Where the application does not have it yet, the table is built anew when it has it for the
// first time, and `rebuilt` is called if that changes a name. Later changes of the layout are not followed.
// `owner` must live as long as `rebuilt` may be called.
void GetKeyboardInformationOfWindows(QObject *owner, std::function<void()> rebuilt);

} // namespace drevix
