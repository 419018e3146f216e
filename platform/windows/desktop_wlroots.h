// The desktop of a Wayland compositor that shows its windows to programs and takes keys from them.
#pragma once

#include "platform/windows/desktop.h"

#include <memory>
#include <string>

namespace drevix {

// Connects to the compositor of $WAYLAND_DISPLAY. Null if it cannot be reached, does not answer within a few
// seconds, or offers neither its windows (the protocol wlr-foreign-toplevel-management) nor a virtual
// keyboard. Keys go through that keyboard, in the session's own keymap, as soon as the session has a
// keyboard; in the current layout if sway reports it (SwayLayout), else in the first. The compositor releases
// the keys of a killed program. If it offers no such keyboard or pointer, keys or wheel go through a kernel
// keyboard; if that cannot be made either, they cannot be sent, and *problem has the reason for people. A
// request to the window in front succeeds without effect while there is none.
[[nodiscard]] std::unique_ptr<Desktop> OpenWlrootsDesktop(std::string *problem);

} // namespace drevix
