// Programs that the desktop starts when the user logs in: entries in the folder "autostart" of
// $XDG_CONFIG_HOME, after the Desktop Application Autostart Specification 0.5. An entry of ours carries the
// key "X-Drevix-LoginItem"; all others are left alone. Main thread only.
#pragma once

#include "platform/base/types.h"

#include <string>
#include <string_view>

namespace drevix {

// Makes the desktop start the program at an absolute path (UTF-8): writes "NAME.desktop", or the lines of our
// entry of that name that lead to the program. All its other lines stay, so an entry that the user switched
// off (Hidden, X-GNOME-Autostart-enabled) stays off. noErr, also when the entry is another program's and was
// left alone, or says all this already; bdNamErr for a name with a slash or an empty one; memFullErr; or the
// file's error.
[[nodiscard]] OSErr WriteAutostartEntry(std::string_view name, std::string_view program);

// Removes our entry of that name. noErr, also when there is none or it is another program's; else why it is
// still there.
[[nodiscard]] OSErr RemoveAutostartEntry(std::string_view name);

// The value of a desktop entry's key "Exec" that starts the program at a path with no argument: quoted, field
// codes and escapes as the Desktop Entry Specification 1.5 has them. May throw std::bad_alloc.
[[nodiscard]] std::string ExecOfProgram(std::string_view program);

} // namespace drevix
