// Keys by their codes, characters and names, in the layouts of several countries.
#include "keyboard/key_captions.h"
#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "platform/base/mac_roman.h"
#include "tests/support/testing.h"

#include <linux/input-event-codes.h>

#include <span>

namespace drevix {
namespace {

using KeyTable = std::array<std::uint8_t, 128>;

KeyTable TableOf(const char *layout, const char *variant = "") {
    KeyboardCharacters characters{};
    EXPECT_TRUE(KeyboardCharactersOfLayout({"", "", layout, variant, ""}, &characters)) << layout;
    return KeyCharacters(characters);
}

std::string TextOf(const Str255 &name) {
    return {name.begin() + 1, name.begin() + 1 + name[0]};
}

std::string KeyName(int keyCode, std::int16_t limit = 255) {
    Str255 name{};
    GetKeyName(static_cast<std::uint8_t>(keyCode), name.data(), limit);
    return TextOf(name);
}

Str255 CombinationName(int keyCode, int modifiers, std::int16_t limit = 255, bool codes = false) {
    Str255 name{};
    GetKeyCombinationName(static_cast<std::uint16_t>(keyCode << 8), static_cast<std::uint16_t>(modifiers),
                          name.data(), limit, codes ? 1 : 0);
    return name;
}

// The key and the modifiers that a text is; where it is none, what is given for them stays.
std::optional<std::pair<int, int>> Parsed(const std::string &text) {
    std::uint8_t keyCode = 0xEE;
    std::uint16_t modifiers = 0xEEEE;
    const bool isParsed = ParseKeyCombination(text, &keyCode, &modifiers);
    EXPECT_TRUE(isParsed || (keyCode == 0xEE && modifiers == 0xEEEE)) << text;
    return isParsed ? std::optional(std::pair<int, int>(keyCode, modifiers)) : std::nullopt;
}

// Tests in the US layout; the program's own table is put back.
class Keys : public testing::Test {
  protected:
    ~Keys() override { gAsciiTable = fBefore; }

    const KeyTable fBefore = std::exchange(gAsciiTable, TableOf("us"));
};

// The scan codes are typed into the product's table; here they come from the kernel's header.
TEST_F(Keys, EachHasTheKernelsScanCodeAndItsName) {
    static constexpr std::tuple<std::uint16_t, std::uint8_t, const char *> kRows[] = {
        // clang-format off
        {KEY_A, 0, "a"},              {KEY_102ND, 10, "<"},         {KEY_6, 22, "6"},
        {KEY_5, 23, "5"},             {KEY_ENTER, 36, "return"},    {KEY_TAB, 48, "tab"},
        {KEY_SPACE, 49, "space"},     {KEY_BACKSPACE, 51, "delete"}, {KEY_ESC, 53, "esc"},
        {KEY_RIGHTALT, 61, "\\0"},    {KEY_FN, 63, "\\0"},          {KEY_KPDOT, 65, "."},
        {KEY_NUMLOCK, 71, "clear"},   {KEY_KPENTER, 76, "enter"},   {KEY_F18, 79, "Fx"},
        {KEY_KP9, 92, "9"},           {KEY_YEN, 93, "\\0"},         {KEY_HELP, 114, "help"},
        {KEY_HOME, 115, "home"},      {KEY_PAGEUP, 116, "pg up"},   {KEY_DELETE, 117, "fw del"},
        {KEY_END, 119, "end"},        {KEY_PAGEDOWN, 121, "pg dwn"}, {KEY_LEFT, 123, "left"},
        {KEY_RIGHT, 124, "right"},    {KEY_DOWN, 125, "down"},      {KEY_UP, 126, "up"},
        // clang-format on
    };
    for (const auto &[scanCode, keyCode, name] : kRows) {
        EXPECT_EQ(KeyCodeFromScanCode(scanCode), keyCode) << name;
        EXPECT_EQ(KeyName(keyCode), name);
    }
    static constexpr std::uint16_t kFunctionKeys[] = {KEY_F1,  KEY_F2,  KEY_F3,  KEY_F4,  KEY_F5,
                                                      KEY_F6,  KEY_F7,  KEY_F8,  KEY_F9,  KEY_F10,
                                                      KEY_F11, KEY_F12, KEY_F13, KEY_F14, KEY_F15};
    int number = 0;
    for (const std::uint16_t scanCode : kFunctionKeys) {
        EXPECT_EQ(KeyName(KeyCodeFromScanCode(scanCode)), "F" + std::to_string(++number));
    }
    EXPECT_EQ(KeyName(0 + 128), "a") << "the table is looked up by the low seven bits";
    EXPECT_EQ(KeyName(53 + 128), "clear") << "but the escape key and function keys by all";
    EXPECT_EQ(KeyName(122 + 128), "Fx");
    static constexpr std::pair<std::uint16_t, std::uint8_t> kAliases[] = {
        {KEY_SYSRQ, 105}, {KEY_SCROLLLOCK, 107},      {KEY_PAUSE, 113},          {KEY_INSERT, 114},
        {KEY_CLEAR, 71},  {KEY_VOLUMEUP, kNoKeyCode}, {KEY_RESERVED, kNoKeyCode}};
    for (const auto &[scanCode, keyCode] : kAliases) {
        EXPECT_EQ(KeyCodeFromScanCode(scanCode), keyCode);
    }
    static constexpr std::pair<std::uint8_t, std::uint16_t> kSent[] = {
        {0, KEY_A},        {54, KEY_RIGHTMETA}, {105, KEY_SYSRQ}, {107, KEY_SCROLLLOCK}, {113, KEY_PAUSE},
        {114, KEY_INSERT}, {71, KEY_NUMLOCK},   {127, 0},         {kNoKeyCode, 0}};
    for (const auto &[keyCode, scanCode] : kSent) {
        EXPECT_EQ(ScanCodeToSend(keyCode), scanCode) << int{keyCode};
    }
    EXPECT_TRUE(IsModifierKey(54) && IsModifierKey(63) && !IsModifierKey(53) && !IsModifierKey(64));
    static constexpr std::pair<int, bool> kNeverPrint[] = {
        {53, true}, {117, true}, {36, true}, {0, false}, {49, false}, {71, false}, {54, false}, {127, false}};
    for (const auto &[keyCode, never] : kNeverPrint) {
        EXPECT_EQ(NeverPrints(static_cast<std::uint8_t>(keyCode)), never) << keyCode;
    }
}

TEST_F(Keys, CombinationNames_AreModifiersInOrderThenTheKey) {
    static constexpr std::tuple<int, int, std::int16_t, bool, const char *> kRows[] = {
        {0, 0x0300, 255, false, "cmd+shift+a"},
        {36, 0x1400, 255, false, "caps+ctrl+return"},
        {65, 0x1F00, 255, false, "cmd+shift+caps+opt+ctrl+num+."},
        {92, 0xE0FF, 255, false, "num+9"}, // bits that are no modifiers
        {64, 0, 255, false, "Fx"},         // beside the keypad's keys
        {93, 0, 255, false, "\\0"},
        {255, 0, 255, false, "\\0"},
        {0, 0x0300, 5, false, "cmd+s"},
        {0, 0x1F00, 255, true, "\1\2\3\4 a"},
        {0, 0x0400, 255, true, "a"}, // caps lock has no symbol
        {65, 0x0100, 2, true, "\1\5"},
    };
    for (const auto &[keyCode, modifiers, limit, codes, text] : kRows) {
        EXPECT_EQ(TextOf(CombinationName(keyCode, modifiers, limit, codes)), text);
    }
    Str255 name{};
    for (const auto &[key, modifiers] : {std::pair<std::uint16_t, std::uint16_t>{0xFFFF, 0}, {0, 0xFFFF}}) {
        GetKeyCombinationName(key, modifiers, name.data(), 5, 0);
        EXPECT_EQ(TextOf(name), "(none");
    }
    EXPECT_EQ(KeystrokeText(0, 0x0300), "cmd+shift+a");
    EXPECT_EQ(KeystrokeText(kNoKeyCode, 0) + KeystrokeText(0, 0xFFFF), "(none)(none)");
    EXPECT_EQ(ModifiersText(0x0300), "cmd+shift");
    std::uint16_t read = 7;
    EXPECT_TRUE(!ParseModifiers("cmd+hyper", &read) && !ParseModifiers("num", &read) && read == 7);
    for (const auto &[text, modifiers] : {std::pair{"cmd+shift", 0x0300}, {"+Alt+ctrl", 0x1800}, {"", 0}}) {
        EXPECT_TRUE(ParseModifiers(text, &read)) << text;
        EXPECT_EQ(read, modifiers) << text;
    }
}

TEST_F(Keys, Captions_AreThoseOfALinuxKeyboard) {
    const std::tuple<int, int, CommandOnKeyboard, std::vector<std::string>> rows[] = {
        {1, 0x1B00, CommandOnKeyboard::Super, {"Super", "Ctrl", "Alt", "Shift", "s"}},
        {1, 0x0300, CommandOnKeyboard::Ctrl, {"Ctrl", "Shift", "s"}},
        {1, 0x1000, CommandOnKeyboard::Ctrl, {"Super", "s"}},
        {1, 0x1100, CommandOnKeyboard::Ctrl, {"Super", "Ctrl", "s"}},
        {51, 0x0400, CommandOnKeyboard::Super, {"Caps Lock", "Backspace"}},
        {76, 0, CommandOnKeyboard::Super, {"Num", "Enter"}},
        {71, 0, CommandOnKeyboard::Super, {"Num Lock"}},
        {kNoKeyCode, 0x0300, CommandOnKeyboard::Super, {}},
    };
    for (const auto &[keyCode, modifiers, command, captions] : rows) {
        EXPECT_EQ(
            KeyCaptions(static_cast<std::uint8_t>(keyCode), static_cast<std::uint16_t>(modifiers), command),
            captions)
            << keyCode;
    }
}

TEST_F(Keys, Limits_CutWordsButNotACharacter) {
    static constexpr std::tuple<std::uint8_t, std::int16_t, const char *> kRows[] = {
        {'a', 0, "a"},  {33, 255, "!"}, {255, 255, "\xFF"}, {128, 0, "\x80"},
        {32, 3, "spa"}, {0, 0, "\\"},   {26, 2, "\\2"},     {2, 255, "\\2"}};
    for (const auto &[character, limit, name] : kRows) {
        gAsciiTable[0] = character;
        EXPECT_EQ(KeyName(0, limit), name);
    }
}

TEST_F(Keys, Texts_AreReadAsPeopleWriteThem) {
    static constexpr std::tuple<const char *, int, int> kRows[] = {
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
        // As a Linux keyboard is labelled: "delete" was Backspace, and no other of these was understood.
        {"ctrl+Backspace", 51, 0x1000},
        {"super+Insert", 114, 0x0100},
        {"Meta+help", 114, 0x0100},
        {"Print", 105, 0},
        {"F13", 105, 0},
        {"scroll lock", 107, 0},
        {"Pause", 113, 0},
        {"Menu", 110, 0},
        {"fw del", 117, 0},
        {"opt+num+enter", 76, 0x0800},
    };
    for (const char *text :
         {"", " ", "cmd", "cmd+", "+cmd", "a+b", "cmd+a+", "hyper+a", "ab", "num+a", "f99", "\\0", "\u20AC",
          "\xFF", "?", "(none)", "ctrl+Delete", "enter", "num+backspace"}) {
        EXPECT_EQ(Parsed(text), std::nullopt) << text;
    }
    for (const auto &[text, keyCode, modifiers] : kRows) {
        EXPECT_EQ(Parsed(text), std::pair(keyCode, modifiers)) << text;
    }
    EXPECT_EQ(FindAmbiguousKeyName("shift+Delete")->ours, "backspace");
    EXPECT_EQ(LabelledKeystrokeText(51, 0x0300), "cmd+shift+delete (backspace)");
    EXPECT_EQ(LabelledKeystrokeText(76, 0), "enter (num+enter)");
    EXPECT_EQ(LabelledKeystrokeText(87, 0x0100), "cmd+num+5");
}

// Every key that has a name is found by it again, on the keypad or off it as it was; but for "delete".
TEST_F(Keys, NamesOfEveryLayout_LeadBackToTheirKeys) {
    for (const char *layout : {"us", "de", "fr", "ch", "ru", "tr", "cz", "jp", "br"}) {
        gAsciiTable = TableOf(layout);
        int named = 0;
        for (int keyCode = 0; keyCode < 128; ++keyCode) {
            if (const std::string key = KeyName(keyCode); key.size() > 1 && key[0] == '\\') {
                continue;
            }
            ++named;
            const Str255 written = CombinationName(keyCode, 0x1F00);
            const std::string text = Utf8FromMacRoman(std::span(written).subspan(1, written[0]));
            if (FindAmbiguousKeyName(text) != nullptr) {
                EXPECT_EQ(KeyName(keyCode), "delete") << layout;
                continue;
            }
            const auto found = Parsed(text);
            ASSERT_TRUE(found) << layout << " " << text;
            EXPECT_EQ(CombinationName(found->first, found->second), written) << layout << " " << text;
        }
        EXPECT_GE(named, 100) << layout;
    }
}

// As the layouts are drawn in their countries' standards, the four rows of an ISO keyboard from left to
// right. Of a dead key its accent; of a key whose character Mac OS Roman lacks (the French small 2, the Czech
// y with acute) the US one.
TEST_F(Keys, Layouts_GiveWhatIsPrintedOnTheKeys) {
    static constexpr std::uint8_t kRowsOfKeys[] = {
        50, 18, 19, 20, 21, 23, 22, 26, 28, 25, 29, 27, 24,         kNoKeyCode, //
        12, 13, 14, 15, 17, 16, 32, 34, 31, 35, 33, 30, kNoKeyCode,             //
        0,  1,  2,  3,  5,  4,  38, 40, 37, 41, 39, 42, kNoKeyCode,             //
        10, 6,  7,  8,  9,  11, 45, 46, 43, 47, 44};
    static constexpr std::tuple<const char *, const char *, const char *, char> kRows[] = {
        {"fr", "", "`&\u00E9\"'(-\u00E8_\u00E7\u00E0)= azertyuiop^$ qsdfghjklm\u00F9* <wxcvbn,;:!", '.'},
        {"us", "dvorak", "`1234567890[] ',.pyfgcrl/= aoeuidhtns-\\ <;qjkxbmwvz", '.'},
        {"ru,de", "", "^1234567890\u00DF\u00B4 qwertzuiop\u00FC+ asdfghjkl\u00F6\u00E4# <yxcvbnm,.-", ','},
        {"gr", "", "`1234567890-= qwertyuiop[] asdfghjkl;'\\ <zxcvbnm,./", '.'},
        // The u with ring has no US semicolon: that is beside the 1.
        {"cz", "", ";+234567\u00E1\u00ED\u00E9=\u00B4 qwertzuiop\u00FA) asdfghjkl \u00A7\u00A8 \\yxcvbnm,.-",
         '.'},
    };
    for (const auto &[layout, variant, wanted, decimal] : kRows) {
        const KeyTable table = TableOf(layout, variant);
        std::string printed;
        for (const std::uint8_t keyCode : kRowsOfKeys) {
            const bool isNamed = keyCode != kNoKeyCode && table[keyCode] != 0;
            printed += isNamed ? Utf8FromMacRoman({&table[keyCode], 1}) : " ";
        }
        EXPECT_EQ(printed, wanted) << layout;
        EXPECT_EQ(table[65], decimal) << layout << ", on the keypad";
        EXPECT_EQ(table[87], '5') << "keypad digits are those of every layout";
    }
}

// A character was found on the key that has it in the US layout, since Mac OS Roman lacks what is printed on
// that key here. These are all the layouts of xkb-data 2.35 that had such keys, with one each.
TEST_F(Keys, Characters_AreFoundOnTheKeysThatPrintThem) {
    static constexpr std::tuple<const char *, const char *, const char *, int> kRows[] = {
        // clang-format off
        {"cz", "", ";", 0x32},            {"cz", "bksl", ";", 0x32},         {"cz", "qwerty", ";", 0x32},
        {"cz", "qwerty_bksl", ";", 0x32}, {"in", "iipa", "j", 0x2C},         {"ba", "unicode", "z", 0x10},
        {"br", "nativo-epo", "t", 0x22},  {"pt", "nativo-epo", "z", 0x2C},   {"cm", "dvorak", "-", 0x27},
        {"hr", "unicode", "z", 0x10},     {"me", "latinunicode", "z", 0x10}, {"rs", "latinunicode", "z", 0x10},
        {"lt", "std", "q", 0x2A},         {"lt", "lekp", "o", 0x29},         {"lt", "lekpa", "b", 0x2E},
        {"lt", "ratise", "c", 0x21},      {"lv", "modern", "i", 0x28},       {"lv", "ergonomic", "a", 0x26},
        {"lk", "us", "d", 0x0C},
        // clang-format on
    };
    for (const auto &[layout, variant, character, keyCode] : kRows) {
        gAsciiTable = TableOf(layout, variant);
        EXPECT_EQ(Parsed(character), std::pair(keyCode, 0)) << layout << " " << variant;
    }
}

// A program's own table is that of the environment it runs in; a configured layout that does not exist is no
// reason to have none.
TEST_F(Keys, GetKeyboardInformation_FollowsTheEnvironment) {
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    ::setenv("XKB_DEFAULT_LAYOUT", "cz", 1);
    GetKeyboardInformation();
    EXPECT_EQ(KeystrokeText(0x29, 0x1000), "ctrl+\u016F") << "a key without a name shows what it prints";
    EXPECT_EQ(KeyName(0x29), "\\0");
    EXPECT_EQ(Parsed("ctrl+\u016F"), std::pair(0x29, 0x1000)) << "as it is shown";
    for (const auto &[layout, character] : {std::pair("de,us", 'y'), std::pair("nosuchlayout", 'z')}) {
        ::setenv("XKB_DEFAULT_LAYOUT", layout, 1);
        GetKeyboardInformation();
        EXPECT_EQ(GetKeyChar(6), character);
        EXPECT_EQ(GetKeyChar(127), 0);
        EXPECT_NE(KeyCaption(0x29), "\u016F");
    }
    ::unsetenv("XKB_DEFAULT_LAYOUT");
}

} // namespace
} // namespace drevix
