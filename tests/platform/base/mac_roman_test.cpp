#include "platform/base/mac_roman.h"

#include <gtest/gtest.h>

namespace drevix {
namespace {

TEST(MacRoman, EveryByte_ComesBackUnchanged) {
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        const std::string text = Utf8FromMacRoman(std::span(&byte, 1));
        EXPECT_EQ(MacRomanFromUtf8(text), std::string(1, static_cast<char>(byte))) << value;
        EXPECT_TRUE(FitsMacRoman(text)) << value;
    }
}

TEST(MacRoman, KnownCharacters_HaveTheirPublishedBytes) {
    const std::uint8_t bytes[] = {0x80, 0x8A, 0xA7, 0xDB, 0xF0, 0xFF};
    EXPECT_EQ(Utf8FromMacRoman(bytes), "\u00C4\u00E4\u00DF\u20AC\uF8FF\u02C7");
}

TEST(MacRoman, TextItLacks_IsReplacedInItsPlace) {
    struct Row {
        std::string_view text;
        std::string_view expected;
    };
    const Row rows[] = {
        {"a\u0416b", "a?b"},             // Cyrillic
        {"\U0001F600!", "?!"},           // four bytes, one character
        {"e\u0301t\u00E9", "\x8Et\x8E"}, // a combining accent and the ready letter
        {"\u0416\u0301", "??"},          // the accent must not join the replacement
        {"\xC3(", "?("},                 // the next character is kept
        {"\xED\xA0\x80", "???"},         // a surrogate
        {"\xC0\x80\xF5\x80", "????"},    // overlong, beyond Unicode
    };
    for (const Row &row : rows) {
        EXPECT_EQ(MacRomanFromUtf8(row.text), row.expected) << row.expected;
        EXPECT_EQ(FitsMacRoman(row.text), row.expected.find('?') == std::string_view::npos) << row.expected;
    }
}

} // namespace
} // namespace drevix
