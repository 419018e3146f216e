// The desktop of a Wayland compositor that shows its windows to other programs and takes keys from them.
#pragma once

#include "platform/windows/desktop.h"

#include <memory>
#include <string>

namespace drevix {

// Connects to the compositor of $WAYLAND_DISPLAY. Null when it cannot be reached, does not answer within a few seconds,
// or offers neither its windows (the protocol wlr-foreign-toplevel-management) nor a virtual keyboard.
// Keys go through that keyboard, in the session's own keymap, as soon as the session has a keyboard; in the layout in force
// where sway tells it (SwayLayout), else in the first. The compositor lets those of a killed program go. Where it offers no such keyboard or pointer, keys or wheel go through a keyboard of the
// kernel's; where that cannot be made either they cannot be sent, and the reason for people is in *problem.
// A request to the window in front does nothing, successfully, while there is none.
[[nodiscard]] std::unique_ptr<Desktop> OpenWlrootsDesktop(std::string *problem);

} // namespace drevix
