// Stand-ins for devices, as the command line describes them: a pipe, from which the kernel's events are read.
#pragma once

#include "platform/input/input_device.h"

#include <string>
#include <string_view>

namespace drevix {

struct StandIn {
    std::string path;
    InputDescription description;
};

// Reads words such as
//     file=/tmp/dial name="Test dial" vendor=0x1234 product=0x5678 axis=ABS_X,-127,127 dial=REL_WHEEL key=BTN_0
// of which file= must be there, and axis=, dial= and key= may come more than once. False, with the reason in *problem
// (the end of a sentence), for what is not valid.
[[nodiscard]] bool ParseStandIn(std::string_view text, StandIn *standIn, std::string *problem);

} // namespace drevix
