// ASCII, and its letters: the only ones whose case does not count where names are compared byte by byte.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace drevix {

[[nodiscard]] constexpr bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

// A to Z as a to z, any other byte as it is.
template <class Byte>
[[nodiscard]] constexpr Byte SmallLetter(Byte letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<Byte>(letter - 'A' + 'a') : letter;
}

// The text with SmallLetter of every byte. May throw std::bad_alloc.
[[nodiscard]] inline std::string WithSmallLetters(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(), SmallLetter<char>);
    return small;
}

// Whether two texts are equal but for the case of ASCII letters.
[[nodiscard]] constexpr bool IsEqualWithoutCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, SmallLetter<char>, SmallLetter<char>);
}

} // namespace drevix
