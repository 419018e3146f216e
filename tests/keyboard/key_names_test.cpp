#include "keyboard/key_names.h"

#include "keyboard/key_codes.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace drevix {
namespace {

std::string TextOf(const Str255 &name) {
    return {name.begin() + 1, name.begin() + 1 + name[0]};
}

std::string KeyName(std::uint8_t keyCode, std::int16_t limit = 255) {
    Str255 name{};
    GetKeyName(keyCode, name.data(), limit);
    return TextOf(name);
}

std::string CombinationName(int keyCode, int modifiers, std::int16_t limit = 255, bool codes = false) {
    Str255 name{};
    GetKeyCombinationName(static_cast<std::uint16_t>(keyCode << 8), static_cast<std::uint16_t>(modifiers),
                          name.data(), limit, codes ? 1 : 0);
    return TextOf(name);
}

// Sets the table for a test and puts the old one back.
class KeyNames : public testing::Test {
  protected:
    void SetUp() override {
        KeyboardCharacters us{};
        ASSERT_TRUE(KeyboardCharactersOfLayout({"", "", "us", "", ""}, &us));
        gAsciiTable = KeyCharacters(us);
    }
    void TearDown() override { gAsciiTable = fBefore; }

  private:
    std::array<std::uint8_t, 128> fBefore = gAsciiTable;
};

TEST_F(KeyNames, EveryCharacterOfAKey_HasItsName) {
    const std::map<int, std::string> words = {
        {1, "home"},   {3, "enter"},   {4, "end"},     {5, "help"},   {8, "delete"},   {9, "tab"},
        {11, "pg up"}, {12, "pg dwn"}, {13, "return"}, {16, "Fx"},    {27, "clear"},   {28, "left"},
        {29, "right"}, {30, "up"},     {31, "down"},   {32, "space"}, {127, "fw del"},
    };
    for (int character = 0; character < 256; ++character) {
        gAsciiTable[0] = static_cast<std::uint8_t>(character);
        const auto word = words.find(character);
        const std::string wanted = word != words.end() ? word->second
                                   : character > 32    ? std::string(1, static_cast<char>(character))
                                                       : "\\" + std::to_string(character);
        EXPECT_EQ(KeyName(0), wanted) << character;
        EXPECT_EQ(KeyName(128), wanted) << "the table is looked up by the low seven bits";
    }
}

TEST_F(KeyNames, FunctionKeysAndEscape_AreNamedByTheWholeKeyCode) {
    const std::map<int, std::string> names = {{122, "F1"},  {120, "F2"},  {99, "F3"},   {118, "F4"},
                                              {96, "F5"},   {97, "F6"},   {98, "F7"},   {100, "F8"},
                                              {101, "F9"},  {109, "F10"}, {103, "F11"}, {111, "F12"},
                                              {105, "F13"}, {107, "F14"}, {113, "F15"}};
    gAsciiTable.fill(16);
    for (int keyCode = 0; keyCode < 256; ++keyCode) {
        const auto name = names.find(keyCode);
        EXPECT_EQ(KeyName(static_cast<std::uint8_t>(keyCode)), name != names.end() ? name->second : "Fx")
            << keyCode;
    }
    gAsciiTable.fill(27);
    EXPECT_EQ(KeyName(53), "esc");
    EXPECT_EQ(KeyName(53 + 128), "clear");
}

struct CombinationRow {
    int keyCode, modifiers;
    std::int16_t limit;
    bool codes;
    const char *text;
};

TEST_F(KeyNames, Combinations_AreModifiersInOrderThenTheKey) {
    const CombinationRow rows[] = {
        {0, 0x0300, 255, false, "cmd+shift+a"},
        {76, 0, 255, false, "num+enter"},
        {36, 0x1400, 255, false, "caps+ctrl+return"},
        {65, 0x1F00, 255, false, "cmd+shift+caps+opt+ctrl+num+."},
        {92, 0xE0FF, 255, false, "num+9"}, // bits that are no modifiers
        {93, 0, 255, false, "\\0"},        // a Japanese keyboard's key
        {255, 0, 255, false, "\\0"},
        {0, 0x0300, 5, false, "cmd+s"},
        {0, 0x1F00, 255, true, "\1\2\3\4 a"},
        {0, 0x0400, 255, true, "a"}, // caps lock has no symbol
        {65, 0, 255, true, "\5 ."},
        {65, 0x0100, 2, true, "\1\5"},
    };
    for (const CombinationRow &row : rows) {
        EXPECT_EQ(CombinationName(row.keyCode, row.modifiers, row.limit, row.codes), row.text);
    }
    Str255 name{};
    for (const auto &[key, modifiers] : {std::pair<std::uint16_t, std::uint16_t>{0xFFFF, 0}, {0, 0xFFFF}}) {
        GetKeyCombinationName(key, modifiers, name.data(), 5, 0);
        EXPECT_EQ(TextOf(name), "(none");
    }
}

TEST_F(KeyNames, Limits_CutWordsButNotACharacter) {
    EXPECT_EQ(KeyName(0, 0), "a");
    EXPECT_EQ(KeyName(49, 3), "spa");
    EXPECT_EQ(KeyName(127, 0), "\\");
    gAsciiTable[0] = 26;
    EXPECT_EQ(KeyName(0, 2), "\\2");
}

struct ParseRow {
    const char *text;
    int keyCode, modifiers;
};

TEST_F(KeyNames, Texts_AreReadAsPeopleWriteThem) {
    const ParseRow rows[] = {
        {"cmd+shift+s", 1, 0x0300},
        {"SHIFT+Command+S", 1, 0x0300},
        {"control + alt + F5", 96, 0x1800},
        {"caps+option+caps+a", 0, 0x0C00},
        {"num+5", 87, 0},
        {"cmd++", 69, 0x0100}, // no other key of the US layout is a plus sign
        {"+", 69, 0},
        {"escape", 53, 0},
        {"cmd+Page Up", 116, 0x0100},
        {" cmd+space ", 49, 0x0100},
    };
    for (const ParseRow &row : rows) {
        std::uint8_t keyCode = 0xEE;
        std::uint16_t modifiers = 0xEEEE;
        EXPECT_TRUE(ParseKeyCombination(row.text, &keyCode, &modifiers)) << row.text;
        EXPECT_EQ(keyCode, row.keyCode) << row.text;
        EXPECT_EQ(modifiers, row.modifiers) << row.text;
    }
    for (const char *text : {"", " ", "cmd", "cmd+", "+cmd", "a+b", "cmd+a+", "hyper+a", "ab", "num+a", "f99",
                             "\\0", "\u20AC", "\xFF", "?", "(none)"}) {
        std::uint8_t keyCode = 0xEE;
        std::uint16_t modifiers = 0xEEEE;
        EXPECT_FALSE(ParseKeyCombination(text, &keyCode, &modifiers)) << text;
        EXPECT_EQ(keyCode, 0xEE);
        EXPECT_EQ(modifiers, 0xEEEE);
    }
}

} // namespace
} // namespace drevix
