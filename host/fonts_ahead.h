// The desktop's fonts, looked for beside everything else that a start does.
#pragma once

#include <future>

namespace drevix {

// Looks for the fonts on a thread of its own, which takes a sixth of a start; whoever wants a font before waits for it. Call
// it when the application is made, and let go of what it returns, which waits for the thread, before the application goes or
// the process ends.
[[nodiscard]] std::future<void> LookForFontsAhead();

} // namespace drevix
