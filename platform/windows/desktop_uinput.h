// The desktop of a Wayland compositor that takes no keys from programs: a keyboard that the kernel makes for us.
#pragma once

#include "platform/files/owners.h"
#include "platform/windows/desktop.h"

#include <memory>
#include <string>

namespace drevix {

// Makes a keyboard with a wheel, named kOwnInputDeviceName, by /dev/uinput, which the user must be let write to. It tells
// no window in front, takes no requests, and is lost when the compositor of $WAYLAND_DISPLAY goes. Keys of a killed
// program are let go by the kernel. Null, with the reason for people in *problem, where that cannot be.
[[nodiscard]] std::unique_ptr<Desktop> OpenUinputDesktop(std::string *problem);

// The same over a keyboard that is made already, or a pipe that stands in for it: struct input_event is written.
// `compositor` is a connection that hangs up when the compositor goes; nothing is read from it.
[[nodiscard]] std::unique_ptr<Desktop> MakeUinputDesktop(SystemDescriptor keyboard,
                                                         SystemDescriptor compositor);

} // namespace drevix
