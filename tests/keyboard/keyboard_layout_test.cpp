#include "platform/keyboard_layout.h"

#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "platform/mac_roman.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <span>
#include <string>

#include <linux/input-event-codes.h>

namespace drevix {
namespace {

std::array<std::uint8_t, 128> TableOf(const char *layout, const char *variant) {
    KeyboardCharacters characters{};
    EXPECT_TRUE(KeyboardCharactersOfLayout({"", "", layout, variant, ""}, &characters)) << layout;
    return KeyCharacters(characters);
}

// The keys' names as UTF-8; a key without a character is a blank.
std::string Row(const std::array<std::uint8_t, 128> &table, std::span<const std::uint8_t> keyCodes) {
    std::string text;
    for (const std::uint8_t keyCode : keyCodes) {
        text += table[keyCode] == 0 ? " " : Utf8FromMacRoman({&table[keyCode], 1});
    }
    return text;
}

// The four rows of an ISO keyboard from left to right.
constexpr std::uint8_t kDigitRow[] = {50, 18, 19, 20, 21, 23, 22, 26, 28, 25, 29, 27, 24};
constexpr std::uint8_t kTopRow[] = {12, 13, 14, 15, 17, 16, 32, 34, 31, 35, 33, 30};
constexpr std::uint8_t kHomeRow[] = {0, 1, 2, 3, 5, 4, 38, 40, 37, 41, 39, 42};
constexpr std::uint8_t kBottomRow[] = {10, 6, 7, 8, 9, 11, 45, 46, 43, 47, 44};

struct LayoutRow {
    const char *layout, *variant;
    const char *digits, *top, *home, *bottom;
    char decimal; // the keypad's
};

// As the layouts are drawn in their countries' standards. Of a dead key its accent; of a key whose character
// Mac OS Roman lacks (the French small 2, the Czech y with acute) the US one.
TEST(KeyboardLayout, Layouts_GiveWhatIsPrintedOnTheKeys) {
    const LayoutRow rows[] = {
        {"fr", "", "`&\u00E9\"'(-\u00E8_\u00E7\u00E0)=", "azertyuiop^$", "qsdfghjklm\u00F9*", "<wxcvbn,;:!",
         '.'},
        {"us", "dvorak", "`1234567890[]", "',.pyfgcrl/=", "aoeuidhtns-\\", "<;qjkxbmwvz", '.'},
        {"ru,de", "", "^1234567890\u00DF\u00B4", "qwertzuiop\u00FC+", "asdfghjkl\u00F6\u00E4#", "<yxcvbnm,.-",
         ','},
        {"gr", "", "`1234567890-=", "qwertyuiop[]", "asdfghjkl;'\\", "<zxcvbnm,./", '.'},
        {"cz", "", ";+234567\u00E1\u00ED\u00E9=\u00B4", "qwertzuiop\u00FA)", "asdfghjkl;\u00A7\u00A8",
         "\\yxcvbnm,.-", '.'},
    };
    for (const LayoutRow &row : rows) {
        SCOPED_TRACE(testing::Message() << row.layout << " " << row.variant);
        const std::array<std::uint8_t, 128> table = TableOf(row.layout, row.variant);
        EXPECT_EQ(Row(table, kDigitRow), row.digits);
        EXPECT_EQ(Row(table, kTopRow), row.top);
        EXPECT_EQ(Row(table, kHomeRow), row.home);
        EXPECT_EQ(Row(table, kBottomRow), row.bottom);
        EXPECT_EQ(table[65], row.decimal);
        EXPECT_EQ(table[87], '5') << "keypad digits are those of every layout";
    }
}

// A program's own table is that of the environment it runs in; a configured layout that does not exist is no
// reason to have none.
TEST(KeyboardLayout, GetKeyboardInformation_FollowsTheEnvironment) {
    ::unsetenv("DISPLAY");
    ::setenv("XKB_DEFAULT_LAYOUT", "de,us", 1);
    const std::array<std::uint8_t, 128> before = gAsciiTable;
    GetKeyboardInformation();
    EXPECT_EQ(GetKeyChar(6), 'y');
    EXPECT_EQ(GetKeyChar(127), 0);
    EXPECT_EQ(GetKeyChar(6 + 128), 'y');
    ::setenv("XKB_DEFAULT_LAYOUT", "nosuchlayout", 1);
    GetKeyboardInformation();
    EXPECT_EQ(GetKeyChar(6), 'z');
    ::unsetenv("XKB_DEFAULT_LAYOUT");
    gAsciiTable = before;
}

TEST(KeyboardFile, Lines_AreReadAsAShellReadsThem) {
    const KeyboardLayoutNames names = ParseKeyboardFile("# XKBLAYOUT=\"no\"\n\n"
                                                        "XKBMODEL=\"pc105\"\r\n"
                                                        "  XKBLAYOUT='de,us' # two\n"
                                                        "XKBLAYOUTS=x\n"
                                                        "XKBOPTIONS=\n"
                                                        "XKBVARIANT=nodeadkeys,  # unquoted");
    EXPECT_EQ(names.model, "pc105");
    EXPECT_EQ(names.layout, "de,us");
    EXPECT_EQ(names.variant, "nodeadkeys,");
    EXPECT_EQ(names.options, "");
    EXPECT_EQ(ParseKeyboardFile("XKBLAYOUT=\"de").layout, "de");
    EXPECT_EQ(ParseKeyboardFile("").layout, "");
}

// Every key that has a name is found by it again, on the keypad or off it as it was.
TEST(ParseKeyCombination, NamesOfEveryLayout_LeadBackToTheirKeys) {
    const std::array<std::uint8_t, 128> before = gAsciiTable;
    for (const char *layout : {"us", "de", "fr", "ch", "ru", "tr", "cz", "jp", "br"}) {
        gAsciiTable = TableOf(layout, "");
        int named = 0;
        for (int keyCode = 0; keyCode < 128; ++keyCode) {
            Str255 written{};
            GetKeyCombinationName(static_cast<std::uint16_t>(keyCode << 8), 0x1F00, written.data(), 255, 0);
            Str255 name{};
            GetKeyName(static_cast<std::uint8_t>(keyCode), name.data(), 255);
            if (name[0] > 1 && name[1] == '\\') {
                continue;
            }
            ++named;
            const std::string text = Utf8FromMacRoman(std::span(written).subspan(1, written[0]));
            std::uint8_t found = 0xFF;
            std::uint16_t modifiers = 0;
            ASSERT_TRUE(ParseKeyCombination(text, &found, &modifiers)) << layout << " " << text;
            EXPECT_EQ(modifiers, 0x1F00) << text;
            Str255 again{};
            GetKeyCombinationName(static_cast<std::uint16_t>(found << 8), modifiers, again.data(), 255, 0);
            EXPECT_EQ(again, written) << layout << " " << text;
        }
        EXPECT_GE(named, 100) << layout;
    }
    gAsciiTable = before;
}

struct ScanRow {
    std::uint16_t scanCode;
    std::uint8_t keyCode;
};

// The scan codes are typed into the table; here they come from the kernel's header.
TEST(KeyCodes, ScanCodes_AreTheKernels) {
    const ScanRow rows[] = {
        {KEY_A, 0},         {KEY_102ND, 10}, {KEY_6, 22},       {KEY_5, 23},
        {KEY_LEFTMETA, 55}, {KEY_KPDOT, 65}, {KEY_NUMLOCK, 71}, {KEY_KP9, 92},
        {KEY_F10, 109},     {KEY_F13, 105},  {KEY_HELP, 114},   {KEY_PAGEUP, 116},
        {KEY_END, 119},     {KEY_UP, 126},   {KEY_FN, 63},      {KEY_RIGHTALT, 61},
    };
    for (const ScanRow &row : rows) {
        EXPECT_EQ(KeyCodeFromScanCode(row.scanCode), row.keyCode);
        EXPECT_EQ(ScanCodeFromKeyCode(row.keyCode), row.scanCode);
    }
    const ScanRow aliases[] = {{KEY_SYSRQ, 105},          {KEY_SCROLLLOCK, 107}, {KEY_PAUSE, 113},
                               {KEY_INSERT, 114},         {KEY_CLEAR, 71},       {KEY_VOLUMEUP, kNoKeyCode},
                               {KEY_RESERVED, kNoKeyCode}};
    for (const ScanRow &row : aliases) {
        EXPECT_EQ(KeyCodeFromScanCode(row.scanCode), row.keyCode);
    }
    EXPECT_EQ(ScanCodeFromKeyCode(kNoKeyCode), kNoScanCode);
    EXPECT_EQ(ScanCodeFromKeyCode(52), kNoScanCode);
    EXPECT_TRUE(IsKeypadKey(65) && IsKeypadKey(92) && !IsKeypadKey(64) && !IsKeypadKey(93));
    EXPECT_TRUE(IsModifierKey(54) && IsModifierKey(63) && !IsModifierKey(53) && !IsModifierKey(64));
}

} // namespace
} // namespace drevix
