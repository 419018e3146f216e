// The desktop of a Wayland compositor that shows its windows to other programs and takes keys from them.
#pragma once

#include "platform/windows/desktop.h"

#include <memory>

namespace drevix {

// Connects to the compositor of $WAYLAND_DISPLAY. Null when it cannot be reached, does not answer within a few seconds,
// or offers neither its windows (the protocol wlr-foreign-toplevel-management) nor a virtual keyboard. Keys need that
// keyboard and go through the first group of the session's own keymap; they can be sent as soon as the session has a
// keyboard. A killed program's keys are let go by the compositor. A request to the window in front does nothing,
// successfully, while there is none.
[[nodiscard]] std::unique_ptr<Desktop> OpenWlrootsDesktop();

} // namespace drevix
