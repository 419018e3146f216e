// ASCII letters: the only ones that byte-by-byte name comparisons fold.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace drevix {

[[nodiscard]] constexpr bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

// Lower-cases A to Z; leaves any other byte unchanged.
template <class Byte>
[[nodiscard]] constexpr Byte SmallLetter(Byte letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<Byte>(letter - 'A' + 'a') : letter;
}

// SmallLetter applied to every byte. May throw std::bad_alloc.
[[nodiscard]] inline std::string WithSmallLetters(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(), SmallLetter<char>);
    return small;
}

// Whether two texts are equal, ignoring the case of ASCII letters.
[[nodiscard]] constexpr bool IsEqualWithoutCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, SmallLetter<char>, SmallLetter<char>);
}

} // namespace drevix
