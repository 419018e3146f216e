// Starting other programs and opening documents with them, as a person's desktop does.
#pragma once

#include <QString>
#include <QUrl>

#include <string>

namespace drevix {

// The path of an application that comes with the panel, "NAME.app" in its resources; empty when it has no
// program for this system.
[[nodiscard]] std::string FindApplication(const std::string &resources, const char *name);

// Starts an application folder's program on its own: it outlives the panel. False when it cannot be started.
[[nodiscard]] bool LaunchApplication(const std::string &folder);

// Opens an item as a double click on it would: starts an application (a folder, a desktop entry or a program),
// shows anything else in the program that the user has for it. False when it cannot be opened.
[[nodiscard]] bool OpenItem(const QString &path);

// Opens a web page or a file in the program that the user has for it. False when there is none.
[[nodiscard]] bool OpenAddress(const QUrl &address);

} // namespace drevix
