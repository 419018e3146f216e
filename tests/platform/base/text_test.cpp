// Text of every encoding, and the words of files that people write.

#include "platform/base/equal_string.h"
#include "platform/base/field_words.h"
#include "platform/base/mac_roman.h"
#include "platform/base/plain_text.h"
#include "platform/base/utf8.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cwctype>

namespace drevix {
namespace {

TEST(Utf8, EveryCharacter_ComesBack) {
    std::size_t before = 1;
    for (char32_t character = 0; character <= 0x10FFFF; character += character == 0xD7FF ? 0x801 : 1) {
        std::string text;
        AppendUtf8(&text, character);
        ASSERT_TRUE(text.size() == before || text.size() == ++before) << "longer than it need be";
        std::string_view rest = text;
        ASSERT_EQ(TakeUtf8(&rest), character);
        ASSERT_TRUE(rest.empty());
    }
    EXPECT_EQ(before, 4U);
}

TEST(EqualString, Capitals_AreFoldedAsTheirCharactersAre) {
    const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    for (int value = 0; value < 256; ++value) {
        const std::uint8_t byte[] = {static_cast<std::uint8_t>(value)};
        const std::string text = Utf8FromMacRoman(byte);
        std::string_view rest = text;
        std::string lower;
        AppendUtf8(&lower,
                   static_cast<char32_t>(::towlower_l(static_cast<wint_t>(TakeUtf8(&rest)), unicode)));
        EXPECT_EQ(FoldedString(std::string(1, static_cast<char>(value))),
                  MacRomanFromUtf8(FitsMacRoman(lower) ? lower : text))
            << value;
    }
    ::freelocale(unicode);
    const std::uint8_t small[] = {2, 'a', 0x8A};
    const std::uint8_t capital[] = {2, 'A', 0x80};
    const std::uint8_t shorter[] = {1, 'a', 0x8A};
    EXPECT_TRUE(EqualString(small, capital, LetterCase::Ignored));
    EXPECT_FALSE(EqualString(small, capital, LetterCase::Counts));
    EXPECT_FALSE(EqualString(small, shorter, LetterCase::Ignored));
}

// U+009B starts terminal commands like escape does.
TEST(PlainText, ControlCharacters_AreReplaced) {
    EXPECT_EQ(PlainText("a\x1b[1m\n\x7f~ \u0080\u009b31m\u009f"), "a?[1m??~ ??31m?");
    for (const char *kept : {"", "\u00A0\u00BF", "\u00C0\u00DF", "\xC2", "a\xFF", "\xE2\x82\xAC"}) {
        EXPECT_EQ(PlainText(kept), kept);
    }
}

TEST(FieldWords, Lines_AreTakenWordByWord) {
    std::string_view text = "  a=1\tb=\"x = y\" c  d= e==\"f \r\n \t\nlast";
    std::string_view line = TakeTextLine(&text);
    std::string words;
    std::string problem;
    for (FieldWord word; !line.empty();) {
        ASSERT_TRUE(TakeFieldWord(&line, &word, &problem));
        words += "[" + std::string(word.name) + "|" + std::string(word.value.value_or("none")) + "]";
    }
    EXPECT_EQ(words, "[a|1][b|x = y][c|none][d|][e|=\"f]");
    EXPECT_EQ(TakeTextLine(&text), "");
    EXPECT_EQ(TakeTextLine(&text), "last");
    EXPECT_TRUE(text.empty());
    FieldWord word;
    std::string_view open = "name=\"x";
    EXPECT_FALSE(TakeFieldWord(&open, &word, &problem));
    EXPECT_EQ(problem, "the quote of name is not closed");
}

TEST(FieldWords, Numbers_AreWholeAndWithinTheirBounds) {
    const std::pair<const char *, int> rows[] = {{"7", 7},  {"-7", -7}, {"0x7", 7},  {"-0x7", -7},
                                                 {"8", 99}, {"-8", 99}, {"7x", 99},  {"0x", 99},
                                                 {"", 99},  {"-", 99},  {"--7", 99}, {"0x100000007", 99}};
    for (const auto &[text, number] : rows) {
        EXPECT_EQ(FieldNumber(text, -7, 7).value_or(99), number) << text;
    }
}

TEST(MacRoman, EveryByte_ComesBackUnchanged) {
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        const std::string text = Utf8FromMacRoman(std::span(&byte, 1));
        EXPECT_EQ(MacRomanFromUtf8(text), std::string(1, static_cast<char>(byte))) << value;
        EXPECT_TRUE(FitsMacRoman(text)) << value;
    }
    // Some have the published bytes.
    const std::uint8_t bytes[] = {0x80, 0x8A, 0xA7, 0xDB, 0xF0, 0xFF};
    EXPECT_EQ(Utf8FromMacRoman(bytes), "\u00C4\u00E4\u00DF\u20AC\uF8FF\u02C7");
}

TEST(MacRoman, TextItLacks_IsReplacedInItsPlace) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"a\u0416b", "a?b"},             // Cyrillic
        {"\U0001F600!", "?!"},           // four bytes, one character
        {"e\u0301t\u00E9", "\x8Et\x8E"}, // a combining accent and the ready letter
        {"\u0416\u0301", "??"},          // the accent must not join the replacement
        {"\xC3(", "?("},                 // the next character is kept
        {"\xED\xA0\x80", "???"},         // a surrogate
        {"\xC0\x80\xF5\x80", "????"},    // overlong, beyond Unicode
    };
    for (const auto &[text, expected] : rows) {
        EXPECT_EQ(MacRomanFromUtf8(text), expected);
        EXPECT_EQ(FitsMacRoman(text), expected.find('?') == std::string_view::npos) << expected;
    }
}

} // namespace
} // namespace drevix
