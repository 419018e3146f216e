// What the helper would do: the action of each control for the application in front.
#pragma once

#include "platform/files/files.h"

#include <string>

namespace drevix {

// The settings that apply to the application of that file name (UTF-8, letter case ignored; empty for none) in
// lines: whose record it is, then "control: action" for each control that does something. A control that
// leaves it to the global record has that one's action. A settings file that is missing or empty stands for
// the factory's settings. False, with the reason in *text instead, for one that cannot be used.
[[nodiscard]] bool DescribeSettings(const std::string &path, const FSRef &resources, const std::string &front,
                                    std::string *text);

} // namespace drevix
