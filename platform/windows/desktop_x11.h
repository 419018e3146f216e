// The desktop of an X server.
#pragma once

#include "platform/windows/desktop.h"

#include <memory>

namespace drevix {

// Connects to a display, $DISPLAY if null. Null if that cannot be reached. Keys and wheel need the server's
// test extension. A separate process releases keys that are down when the program is killed, so the program
// must have only one thread here. A window manager that supports _NET_ACTIVE_WINDOW tells the window in
// front. A request to that window succeeds without effect while there is none.
[[nodiscard]] std::unique_ptr<Desktop> OpenX11Desktop(const char *display);

} // namespace drevix
