#include "platform/base/mac_roman.h"

#include "platform/base/utf8.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

// clang-format off
// The characters for bytes 0x80 to 0xFF.
constexpr auto kHighHalf = std::to_array<char16_t>({
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1,  // 80
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8,  // 88
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,  // 90
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC,  // 98
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF,  // A0
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,  // A8
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211,  // B0
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8,  // B8
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,  // C0
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153,  // C8
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA,  // D0
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,  // D8
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,  // E0
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4,  // E8
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,  // F0
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,  // F8
});

// An ASCII letter, a combining accent, and their composed character.
struct Composition {
    char letter;
    char16_t accent;
    char16_t composed;
};
constexpr auto kCompositions = std::to_array<Composition>({
    {'A', 0x0308, 0x00C4}, {'A', 0x030A, 0x00C5}, {'C', 0x0327, 0x00C7}, {'E', 0x0301, 0x00C9},
    {'N', 0x0303, 0x00D1}, {'O', 0x0308, 0x00D6}, {'U', 0x0308, 0x00DC}, {'a', 0x0301, 0x00E1},
    {'a', 0x0300, 0x00E0}, {'a', 0x0302, 0x00E2}, {'a', 0x0308, 0x00E4}, {'a', 0x0303, 0x00E3},
    {'a', 0x030A, 0x00E5}, {'c', 0x0327, 0x00E7}, {'e', 0x0301, 0x00E9}, {'e', 0x0300, 0x00E8},
    {'e', 0x0302, 0x00EA}, {'e', 0x0308, 0x00EB}, {'i', 0x0301, 0x00ED}, {'i', 0x0300, 0x00EC},
    {'i', 0x0302, 0x00EE}, {'i', 0x0308, 0x00EF}, {'n', 0x0303, 0x00F1}, {'o', 0x0301, 0x00F3},
    {'o', 0x0300, 0x00F2}, {'o', 0x0302, 0x00F4}, {'o', 0x0308, 0x00F6}, {'o', 0x0303, 0x00F5},
    {'u', 0x0301, 0x00FA}, {'u', 0x0300, 0x00F9}, {'u', 0x0302, 0x00FB}, {'u', 0x0308, 0x00FC},
    {'=', 0x0338, 0x2260}, {'A', 0x0300, 0x00C0}, {'A', 0x0303, 0x00C3}, {'O', 0x0303, 0x00D5},
    {'y', 0x0308, 0x00FF}, {'Y', 0x0308, 0x0178}, {'A', 0x0302, 0x00C2}, {'E', 0x0302, 0x00CA},
    {'A', 0x0301, 0x00C1}, {'E', 0x0308, 0x00CB}, {'E', 0x0300, 0x00C8}, {'I', 0x0301, 0x00CD},
    {'I', 0x0302, 0x00CE}, {'I', 0x0308, 0x00CF}, {'I', 0x0300, 0x00CC}, {'O', 0x0301, 0x00D3},
    {'O', 0x0302, 0x00D4}, {'O', 0x0300, 0x00D2}, {'U', 0x0301, 0x00DA}, {'U', 0x0302, 0x00DB},
    {'U', 0x0300, 0x00D9},
});
// clang-format on
static_assert(kHighHalf.size() == 128);

struct Reverse {
    char16_t character;
    std::uint8_t byte;
};

// The high half sorted by character, for binary search.
constexpr auto kReverse = [] {
    std::array<Reverse, kHighHalf.size()> rows{};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        rows[i] = {kHighHalf[i], static_cast<std::uint8_t>(0x80 + i)};
    }
    std::ranges::sort(rows, {}, &Reverse::character);
    return rows;
}();

constexpr int kNoByte = -1;

int ByteOf(char32_t character) {
    if (character < 0x80) {
        return static_cast<int>(character);
    }
    if (character > 0xFFFF) {
        return kNoByte;
    }
    const auto wanted = static_cast<char16_t>(character);
    const auto *row = std::ranges::lower_bound(kReverse, wanted, {}, &Reverse::character);
    return row != kReverse.end() && row->character == wanted ? row->byte : kNoByte;
}

int ComposedByte(char letter, char32_t accent) {
    for (const Composition &row : kCompositions) {
        if (row.letter == letter && row.accent == accent) {
            return ByteOf(row.composed);
        }
    }
    return kNoByte;
}

// Converts; returns whether nothing had to be replaced.
bool Convert(std::string_view text, std::string &result) {
    bool exact = true;
    result.reserve(text.size());
    bool mayCompose = false;
    while (!text.empty()) {
        const char32_t character = TakeUtf8(&text);
        if (const int composed = mayCompose ? ComposedByte(result.back(), character) : kNoByte;
            composed != kNoByte) {
            result.back() = static_cast<char>(composed);
            mayCompose = false;
            continue;
        }
        const int byte = ByteOf(character);
        exact = exact && byte != kNoByte;
        result.push_back(byte == kNoByte ? '?' : static_cast<char>(byte));
        mayCompose = character < 0x80;
    }
    return exact;
}

} // namespace

std::string Utf8FromMacRoman(std::span<const std::uint8_t> text) {
    std::string result;
    result.reserve(text.size());
    for (const std::uint8_t byte : text) {
        AppendUtf8(&result, byte < 0x80 ? byte : char32_t{kHighHalf[byte - 0x80U]});
    }
    return result;
}

std::string MacRomanFromUtf8(std::string_view text) {
    std::string result;
    Convert(text, result);
    return result;
}

bool FitsMacRoman(std::string_view text) {
    std::string ignored;
    return Convert(text, ignored);
}

} // namespace drevix
