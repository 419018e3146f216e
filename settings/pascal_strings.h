// Bounded copying and comparing of Pascal and C strings, and their way to and from UTF-8 text. A limit is a
// count of characters; the caller keeps it within the destination (255 at most for a Pascal string) and the
// destination's present length within the limit. Nothing here fails: text is cut to the limit; only what
// makes or reads UTF-8 text may throw std::bad_alloc.
#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace drevix {

// The destination becomes the first characters of the source, as many as the limit lets in; gives their
// number.
std::int16_t PStringCopy(ConstStringPtr source, StringPtr destination, std::int16_t limit);
// Appends as much of the source as keeps the destination within the limit; gives the number of characters
// appended.
std::int16_t PStringCat(ConstStringPtr source, StringPtr destination, std::int16_t limit);
// Orders two strings byte by byte with A to Z counted as a to z: negative, 0 or positive. Other bytes,
// accented letters among them, count as they are; of a string and a longer one that starts with it, the
// shorter comes first.
[[nodiscard]] std::int16_t PStringCmp(ConstStringPtr a, ConstStringPtr b);

// The same from a C string into a Pascal string; both give the destination.
StringPtr CStringPCopy(const char *source, StringPtr destination, std::int16_t limit);
StringPtr CStringPCat(const char *source, StringPtr destination, std::int16_t limit);

// C strings. The destination needs room for the limit and a zero byte, which is always written. CStringCopy
// gives the number of characters copied, CStringCat the length of the result; a destination longer than the
// limit is cut.
std::int16_t CStringCopy(const char *source, char *destination, std::int16_t limit);
std::int16_t CStringCat(const char *source, char *destination, std::int16_t limit);
// Orders two C strings as PStringCmp does.
[[nodiscard]] std::int16_t CStringCmp(const char *a, const char *b);

// The text of a Pascal string (Mac OS Roman) as UTF-8; every byte value has a character.
[[nodiscard]] std::string stringWithPascalString(ConstStringPtr source);
// Stores UTF-8 text as a Pascal string of at most `maxLength` bytes of Mac OS Roman; characters that it lacks
// become '?'.
void getPascalString(std::string_view text, StringPtr destination, std::int32_t maxLength = 255);

// Text in the look of a link, as a plain value that a window shows.
struct StyledText {
    struct Color { // calibrated RGB, 0.0 to 1.0
        double red, green, blue, alpha;
    };
    std::string text; // UTF-8
    Color foreground;
    std::string link;   // what the link leads to: the text itself
    int underlineStyle; // 1: single
};

// The text as a link: blue, or red in the alternate look that it has while pressed. In the system font and
// the default paragraph style.
enum class LinkLook : std::uint8_t { Normal, Alternate };
[[nodiscard]] StyledText getHyperlink(std::string text, LinkLook look);

} // namespace drevix
