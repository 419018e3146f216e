// The application that a new record is for.
#pragma once

#include "cli/outcome.h"
#include "settings/new_application.h"

#include <string>

namespace drevix {

// Describes an ".app" folder, a desktop entry ("platform/desktop/desktop_entries.h") or an executable file.
// `language` selects a desktop entry's translated name. Failed if the path is none of these.
Outcome DescribeApplication(const std::string &path, const std::string &language,
                            NewApplication *application);

} // namespace drevix
