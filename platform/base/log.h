// What the programs do, told on standard error to who looks for a fault. Off unless asked for.
#pragma once

#include "platform/base/types.h"

#include <string_view>

namespace drevix {

// The environment variable that asks for it, here and in the programs that are started from here: "1" for all
// categories, or their names with commas between ("document,companion").
inline constexpr const char *kVerboseVariable = "DREVIX_VERBOSE";

// Asks for all categories, as --verbose does. Before the first Log.
void BeVerbose();

// Writes a line, "SECONDS category: text", when its category is asked for. A category is a folder's name.
// Control characters of the text become '?'. May throw std::bad_alloc, but only when asked for.
void Log(std::string_view category, std::string_view text);

// The same for a step on something that has a status: "STEP OBJECT: what the status says".
void LogStep(std::string_view category, std::string_view step, std::string_view object, OSErr status);

// Whether Log would write, for texts that cost something to make.
[[nodiscard]] bool IsLogged(std::string_view category);

} // namespace drevix
