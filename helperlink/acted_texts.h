// What the helper tells of an action that did nothing, where its watchers must know the reason.
#pragma once

#include "platform/base/translation.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace drevix {

// Begins such a text; the reason follows, in English.
inline constexpr std::string_view kNothingBecause = "nothing: ";

// What the helper tells, in the person's language: it tells the rest in the helper's.
[[nodiscard]] std::string TranslatedActed(std::string_view what);
// "buttonII: keys ctrl+s, 3 times"
[[nodiscard]] std::string ActedLine(const std::string &control, std::string_view what, std::uint32_t times);

// Reasons that are no failure: nothing was to be done.
inline constexpr std::string_view kPanelIsInFront = ToTranslate("the settings panel is in front");
inline constexpr std::string_view kIsSwitchedOff = ToTranslate("the device is switched off here");
inline constexpr std::string_view kIsLocked = ToTranslate("the session is locked");

} // namespace drevix
