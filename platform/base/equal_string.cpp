#include "platform/base/equal_string.h"

#include <algorithm>

namespace drevix {
namespace {

// The accented capitals of Mac OS Roman and their lower-case letters.
struct CasePair {
    std::uint8_t capital;
    std::uint8_t small;
};
// clang-format off
constexpr auto kCasePairs = std::to_array<CasePair>({
    {0x80, 0x8A}, {0x81, 0x8C}, {0x82, 0x8D}, {0x83, 0x8E}, {0x84, 0x96}, {0x85, 0x9A}, {0x86, 0x9F},
    {0xAE, 0xBE}, {0xAF, 0xBF}, {0xCB, 0x88}, {0xCC, 0x8B}, {0xCD, 0x9B}, {0xCE, 0xCF}, {0xD9, 0xD8},
    {0xE5, 0x89}, {0xE6, 0x90}, {0xE7, 0x87}, {0xE8, 0x91}, {0xE9, 0x8F}, {0xEA, 0x92}, {0xEB, 0x94},
    {0xEC, 0x95}, {0xED, 0x93}, {0xEE, 0x97}, {0xEF, 0x99}, {0xF1, 0x98}, {0xF2, 0x9C}, {0xF3, 0x9E},
    {0xF4, 0x9D},
});
// clang-format on

constexpr auto kSmallLetters = [] {
    std::array<std::uint8_t, 256> small{};
    for (int i = 0; i < 256; ++i) {
        small[static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(i >= 'A' && i <= 'Z' ? i + ('a' - 'A') : i);
    }
    for (const CasePair &pair : kCasePairs) {
        small[pair.capital] = pair.small;
    }
    return small;
}();

} // namespace

bool EqualString(ConstStringPtr a, ConstStringPtr b, LetterCase letterCase) {
    const auto areEqual = [letterCase](std::uint8_t x, std::uint8_t y) {
        return x == y || (letterCase == LetterCase::Ignored && kSmallLetters[x] == kSmallLetters[y]);
    };
    return a[0] == b[0] && std::equal(a + 1, a + 1 + a[0], b + 1, areEqual);
}

std::string FoldedString(std::string_view text) {
    std::string folded(text);
    std::ranges::transform(folded, folded.begin(), [](char character) {
        return static_cast<char>(kSmallLetters[static_cast<std::uint8_t>(character)]);
    });
    return folded;
}

} // namespace drevix
