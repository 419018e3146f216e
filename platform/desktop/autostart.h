// Programs that the desktop starts when the user logs in: entries in the folder "autostart" of
// $XDG_CONFIG_HOME, per the Desktop Application Autostart Specification 0.5. Our entries have the key
// "X-Drevix-LoginItem"; others are left alone. Main thread only.
#pragma once

#include "platform/base/types.h"

#include <string>
#include <string_view>

namespace drevix {

// Makes the desktop start the program at an absolute path (UTF-8): writes "NAME.desktop", or updates our
// existing entry's lines for the program. Keeps all other lines, so an entry that the user switched off
// (Hidden, X-GNOME-Autostart-enabled) stays off. noErr, also if the entry is another program's and was left
// alone, or is already right; bdNamErr for an empty name or one with a slash; memFullErr; or the file's
// error.
[[nodiscard]] OSErr WriteAutostartEntry(std::string_view name, std::string_view program);

// Removes our entry of that name. noErr, also if there is none or it is another program's; else the error.
[[nodiscard]] OSErr RemoveAutostartEntry(std::string_view name);

// The value of a desktop entry's "Exec" key that starts the program at a path without arguments, quoted and
// escaped per the Desktop Entry Specification 1.5. May throw std::bad_alloc.
[[nodiscard]] std::string ExecOfProgram(std::string_view program);

} // namespace drevix
