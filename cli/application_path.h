// The application that a new record is for.
#pragma once

#include "cli/outcome.h"
#include "settings/new_application.h"

#include <string>

namespace drevix {

// Looks at an ".app" folder, a desktop entry ("platform/desktop/desktop_entries.h"), or an
// executable file. `language` picks a desktop entry's translated name. Failed when the path leads to none of
// these.
Outcome DescribeApplication(const std::string &path, const std::string &language,
                            NewApplication *application);

} // namespace drevix
