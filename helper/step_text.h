// The steps of actions in words, for whoever watches them.
#pragma once

#include "device/action_plan.h"

#include <string>

namespace drevix {

// "keys ctrl+KEY_Z", "scroll up", "close the window", "nothing: no key has been chosen"; "nothing" alone where nobody
// expects anything. Keys are named by their place as the kernel names it. May throw std::bad_alloc.
[[nodiscard]] std::string StepText(const ActionStep &step);

} // namespace drevix
