// Comparing Pascal strings as the platform compares names of files and processes.
#pragma once

#include "platform/base/types.h"

#include <string>
#include <string_view>

namespace drevix {

enum class LetterCase : bool { Counts, Ignored };

// Whether two strings in Mac OS Roman are the same text. With LetterCase::Ignored an accented capital is its
// small letter too; a letter with an accent is never the one without.
[[nodiscard]] bool EqualString(ConstStringPtr a, ConstStringPtr b, LetterCase letterCase);

// A text in Mac OS Roman with its letter case taken away: those of two texts are the same where EqualString
// with LetterCase::Ignored finds the texts the same. For looking many names up at once.
[[nodiscard]] std::string FoldedString(std::string_view text);

} // namespace drevix
