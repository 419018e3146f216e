// What the helper tells of an action that did nothing, where its watchers must know the reason.
#pragma once

#include <string_view>

namespace drevix {

// Begins such a text; the reason follows, in English.
inline constexpr std::string_view kNothingBecause = "nothing: ";

// Reasons that are no failure: nothing was to be done.
inline constexpr std::string_view kPanelIsInFront = "the settings panel is in front";
inline constexpr std::string_view kIsSwitchedOff = "the device is switched off here";
inline constexpr std::string_view kIsLocked = "the session is locked";

} // namespace drevix
