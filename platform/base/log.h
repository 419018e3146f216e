// Logs what the programs do to standard error, for debugging. Off by default.
#pragma once

#include "platform/base/types.h"

#include <string_view>

namespace drevix {

// The environment variable that turns it on, also in programs started from here: "1" for all categories, or a
// comma-separated list ("document,companion").
inline constexpr const char *kVerboseVariable = "DREVIX_VERBOSE";

// Turns on all categories, as --verbose does. Call before the first Log.
void BeVerbose();

// Writes a line "SECONDS category: text" if the category is on. A category is a folder's name. Control
// characters in the text become '?'. May throw std::bad_alloc, but only if it is on.
void Log(std::string_view category, std::string_view text);

// The same for a step with a status: "STEP OBJECT: status text".
void LogStep(std::string_view category, std::string_view step, std::string_view object, OSErr status);

// Whether Log would write, to avoid building expensive texts.
[[nodiscard]] bool IsLogged(std::string_view category);

} // namespace drevix
