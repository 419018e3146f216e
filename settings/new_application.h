// The name and signature for a new record, read from the application's own files.
#pragma once

#include "platform/desktop/desktop_entries.h"
#include "settings/app_prefs.h"

#include <string>
#include <string_view>

namespace drevix {

// Texts are UTF-8.
struct NewApplication {
    OSType signature = kNoSignature;
    std::string fileName;  // empty: no record can be made
    std::string shownName; // empty: same as the file name
};

// The application of a desktop entry, or of a path: a desktop entry file, an application folder
// ("platform/desktop/app_folder.h", extension in any letter case), or a program. One that cannot be read has
// no signature and is named by the path's last component. May throw std::bad_alloc.
[[nodiscard]] NewApplication ApplicationOfEntry(const DesktopEntry &entry);
[[nodiscard]] NewApplication ApplicationOfPath(const std::string &path, std::string_view locale);

} // namespace drevix
