// What a record for an application is made of, as the application's own files tell.
#pragma once

#include "platform/desktop/desktop_entries.h"
#include "settings/app_prefs.h"

#include <string>
#include <string_view>

namespace drevix {

// Texts are UTF-8.
struct NewApplication {
    OSType signature = kNoSignature;
    std::string fileName;  // empty: nothing to make a record of
    std::string shownName; // empty: as the file name
};

// The application of a desktop entry, and of a path: an entry's file, an application folder
// ("platform/desktop/app_folder.h") in any letter case, or a program. What cannot be read has no signature and goes by
// the path's last component. May throw std::bad_alloc.
[[nodiscard]] NewApplication ApplicationOfEntry(const DesktopEntry &entry);
[[nodiscard]] NewApplication ApplicationOfPath(const std::string &path, std::string_view locale);

} // namespace drevix
