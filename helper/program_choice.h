// Chooses the user's program for a purpose.
#pragma once

#include "device/action_plan.h"

#include <string>
#include <vector>

namespace drevix {

// The command of the user's program of a kind: the default application for its type, else the first of its
// entries that is installed, else the first by id that has its categories. Empty if there is none.
[[nodiscard]] std::vector<std::string> CommandOfKind(const ProgramKind &kind);

} // namespace drevix
