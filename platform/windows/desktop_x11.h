// The desktop of an X server.
#pragma once

#include "platform/windows/desktop.h"

#include <memory>

namespace drevix {

// Connects to a display, $DISPLAY when it is null. Null when that cannot be reached. Keys and wheel need the server's
// test extension. Keys that are down when the program is killed are let go by a process of their own, so the program
// must have one thread only here. A window manager that keeps _NET_ACTIVE_WINDOW tells the window in front. A request
// to that window does nothing, successfully, while there is none.
[[nodiscard]] std::unique_ptr<Desktop> OpenX11Desktop(const char *display);

} // namespace drevix
