// Compares Pascal strings as the platform compares names of files and processes.
#pragma once

#include "platform/base/types.h"

#include <string>
#include <string_view>

namespace drevix {

enum class LetterCase : bool { Counts, Ignored };

// Whether two Mac OS Roman strings are equal. LetterCase::Ignored also folds accented capitals; accents
// always count.
[[nodiscard]] bool EqualString(ConstStringPtr a, ConstStringPtr b, LetterCase letterCase);

// Folds the letter case of a Mac OS Roman text: two texts have the same result if EqualString with
// LetterCase::Ignored finds them equal. For looking up many names.
[[nodiscard]] std::string FoldedString(std::string_view text);

} // namespace drevix
