// What is known of an application that is to have a record of its own.
#pragma once

#include "cli/outcome.h"
#include "platform/types.h"

#include <string>

namespace drevix {

struct NewApplication {
    OSType signature = 0;  // 0: none
    std::string fileName;  // UTF-8, not empty
    std::string shownName; // empty: the file name
};

// Looks at an ".app" folder, a desktop entry ("platform/desktop_entries.h"), or an
// executable file. `language` picks a desktop entry's translated name. Failed when the path leads to none of
// these.
Outcome DescribeApplication(const std::string &path, const std::string &language,
                            NewApplication *application);

} // namespace drevix
