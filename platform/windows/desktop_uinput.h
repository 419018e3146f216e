// The desktop of a Wayland compositor that neither tells programs anything nor takes input from them.
#pragma once

#include "platform/files/owners.h"
#include "platform/windows/desktop.h"
#include "platform/windows/kernel_keyboard.h"

#include <memory>
#include <string>

namespace drevix {

// Sends through a kernel keyboard (KernelKeyboard::Make). Reports no window in front, takes no requests, and
// is lost when the compositor of $WAYLAND_DISPLAY goes. Null, with the reason for people in *problem, if that
// is impossible.
[[nodiscard]] std::unique_ptr<Desktop> OpenUinputDesktop(std::string *problem);

// The same with an existing keyboard. `compositor` is a connection that hangs up when the compositor goes;
// nothing is read from it.
[[nodiscard]] std::unique_ptr<Desktop> MakeUinputDesktop(std::unique_ptr<KernelKeyboard> keyboard,
                                                         SystemDescriptor compositor);

} // namespace drevix
