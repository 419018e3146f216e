// Bounded copying and comparing of Pascal and C strings, and conversion to and from UTF-8. A limit counts
// characters. The caller ensures that it fits the destination (at most 255 for a Pascal string) and that the
// destination's current length is within it. Nothing here fails: text is cut to the limit; only the UTF-8
// functions may throw std::bad_alloc.
#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace drevix {

// Copies the source, cut to the limit; returns the number of characters copied.
std::int16_t PStringCopy(ConstStringPtr source, StringPtr destination, std::int16_t limit);
// Appends as much of the source as fits within the limit; returns the number of characters appended.
std::int16_t PStringCat(ConstStringPtr source, StringPtr destination, std::int16_t limit);
// Compares byte by byte, ignoring the case of A to Z only (accented letters are case-sensitive): negative, 0
// or positive. A prefix sorts before the longer string.
[[nodiscard]] std::int16_t PStringCmp(ConstStringPtr a, ConstStringPtr b);

// The same from a C string into a Pascal string; both return the destination.
StringPtr CStringPCopy(const char *source, StringPtr destination, std::int16_t limit);
StringPtr CStringPCat(const char *source, StringPtr destination, std::int16_t limit);

// C strings. The destination needs room for the limit plus a zero byte, which is always written. CStringCopy
// returns the number of characters copied, CStringCat the resulting length; it cuts a destination longer than
// the limit.
std::int16_t CStringCopy(const char *source, char *destination, std::int16_t limit);
std::int16_t CStringCat(const char *source, char *destination, std::int16_t limit);
// PStringCmp for C strings.
[[nodiscard]] std::int16_t CStringCmp(const char *a, const char *b);

// Converts a Pascal string (Mac OS Roman) to UTF-8; every byte value has a character.
[[nodiscard]] std::string stringWithPascalString(ConstStringPtr source);
// Stores UTF-8 text as a Pascal string of at most `maxLength` bytes of Mac OS Roman; unsupported characters
// become '?'.
void getPascalString(std::string_view text, StringPtr destination, std::int32_t maxLength = 255);

// Text styled as a link, as a plain value for a window to show.
struct StyledText {
    struct Color { // calibrated RGB, 0.0 to 1.0
        double red, green, blue, alpha;
    };
    std::string text; // UTF-8
    Color foreground;
    std::string link;   // the link's target: the text itself
    int underlineStyle; // 1: single
};

// The text as a link in the system font and default paragraph style: blue, or red while pressed (Alternate).
enum class LinkLook : std::uint8_t { Normal, Alternate };
[[nodiscard]] StyledText getHyperlink(std::string text, LinkLook look);

} // namespace drevix
