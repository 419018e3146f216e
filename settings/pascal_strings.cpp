#include "settings/pascal_strings.h"

#include "platform/base/ascii.h"
#include "platform/base/mac_roman.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

namespace drevix {
namespace {

constexpr int kLongestPascalString = 255; // the most a length byte can hold

// An invalid limit must not become a length byte that overruns the buffer.
int Bounded(std::int32_t limit) {
    return std::clamp<std::int32_t>(limit, 0, kLongestPascalString);
}

// Folds ASCII only: names that differ in an accented capital are different, for the helper too.
int Counted(std::uint8_t character) {
    return SmallLetter(character);
}

// Appends `count` characters, cut to the limit, and returns the number appended. The strings may be the same
// one, hence memmove.
int Append(const void *characters, std::size_t count, StringPtr destination, std::int32_t limit) {
    const int length = destination[0];
    const int room = std::max(Bounded(limit) - length, 0);
    const int appended = static_cast<int>(std::min(count, static_cast<std::size_t>(room)));
    std::memmove(destination + 1 + length, characters, static_cast<std::size_t>(appended));
    destination[0] = static_cast<std::uint8_t>(length + appended);
    return appended;
}

std::size_t BoundedLength(const char *text, std::int16_t limit) {
    return ::strnlen(text, static_cast<std::size_t>(std::max<std::int16_t>(limit, 0)));
}

} // namespace

std::int16_t PStringCopy(ConstStringPtr source, StringPtr destination, std::int16_t limit) {
    const std::size_t length = source[0]; // read first: both strings may be the same
    destination[0] = 0;
    return static_cast<std::int16_t>(Append(source + 1, length, destination, limit));
}

std::int16_t PStringCat(ConstStringPtr source, StringPtr destination, std::int16_t limit) {
    return static_cast<std::int16_t>(Append(source + 1, source[0], destination, limit));
}

std::int16_t PStringCmp(ConstStringPtr a, ConstStringPtr b) {
    const int common = std::min(a[0], b[0]);
    for (int i = 1; i <= common; ++i) {
        if (const int difference = Counted(a[i]) - Counted(b[i]); difference != 0) {
            return static_cast<std::int16_t>(difference);
        }
    }
    return static_cast<std::int16_t>(a[0] - b[0]);
}

StringPtr CStringPCopy(const char *source, StringPtr destination, std::int16_t limit) {
    destination[0] = 0;
    return CStringPCat(source, destination, limit);
}

StringPtr CStringPCat(const char *source, StringPtr destination, std::int16_t limit) {
    Append(source, BoundedLength(source, limit), destination, limit);
    return destination;
}

std::int16_t CStringCopy(const char *source, char *destination, std::int16_t limit) {
    const std::size_t length = BoundedLength(source, limit);
    std::memmove(destination, source, length);
    destination[length] = '\0';
    return static_cast<std::int16_t>(length);
}

std::int16_t CStringCat(const char *source, char *destination, std::int16_t limit) {
    const std::size_t length = BoundedLength(destination, limit);
    const auto room = static_cast<std::int16_t>(std::max<std::int16_t>(limit, 0) - static_cast<int>(length));
    return static_cast<std::int16_t>(
        length + static_cast<std::size_t>(CStringCopy(source, destination + length, room)));
}

std::int16_t CStringCmp(const char *a, const char *b) {
    for (;; ++a, ++b) {
        const int difference =
            Counted(static_cast<std::uint8_t>(*a)) - Counted(static_cast<std::uint8_t>(*b));
        if (difference != 0 || *a == '\0') {
            return static_cast<std::int16_t>(difference);
        }
    }
}

std::string stringWithPascalString(ConstStringPtr source) {
    return Utf8FromMacRoman(std::span(source + 1, source[0]));
}

void getPascalString(std::string_view text, StringPtr destination, std::int32_t maxLength) {
    // Convert before cutting: several characters of the text may become one.
    const std::string characters = MacRomanFromUtf8(text);
    destination[0] = 0;
    Append(characters.data(), characters.size(), destination, maxLength);
}

StyledText getHyperlink(std::string text, LinkLook look) {
    constexpr StyledText::Color kBlue = {0.1, 0.1, 1.0, 1.0};
    constexpr StyledText::Color kRed = {1.0, 0.1, 0.1, 1.0};
    constexpr int kSingleUnderline = 1;
    std::string link = text;
    return {std::move(text), look == LinkLook::Alternate ? kRed : kBlue, std::move(link), kSingleUnderline};
}

} // namespace drevix
