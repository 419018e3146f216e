// Loads the desktop's fonts in parallel with the rest of the start.
#pragma once

#include <future>

namespace drevix {

// Looks up the fonts on a thread of its own, which takes a sixth of a start; whoever needs a font earlier
// waits for it. Call it when the application object exists. Destroy the returned value, which waits for the
// thread, before the application object goes or the process ends.
[[nodiscard]] std::future<void> LookForFontsAhead();

} // namespace drevix
