// Starts other programs and opens documents with them, as the user's desktop does.
#pragma once

#include <QString>
#include <QUrl>

#include <string>

namespace drevix {

// The path of an application that comes with the panel, "NAME.app" in its resources; empty if it has no
// program for this system.
[[nodiscard]] std::string FindApplication(const std::string &resources, const char *name);

// Starts an application folder's program detached: it outlives the panel. False if it cannot be started.
[[nodiscard]] bool LaunchApplication(const std::string &folder);

// Opens an item as a double click would: starts an application (a folder, a desktop entry or a program), or
// shows anything else in the user's program for it. False if it cannot be opened.
[[nodiscard]] bool OpenItem(const QString &path);

// Opens a web page or a file in the user's program for it. False if there is none.
[[nodiscard]] bool OpenAddress(const QUrl &address);

} // namespace drevix
