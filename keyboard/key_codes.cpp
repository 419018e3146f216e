#include "keyboard/key_codes.h"

#include <algorithm>
#include <functional>

namespace drevix {
namespace {

// The control characters of keys that print nothing.
enum : std::uint8_t {
    kNothing = 0,
    kHome = 1,
    kEnter = 3,
    kEnd = 4,
    kHelp = 5,
    kDelete = 8,
    kTab = 9,
    kPageUp = 11,
    kPageDown = 12,
    kReturn = 13,
    kFunction = 16,
    kEscape = 27, // and clear
    kLeft = 28,
    kRight = 29,
    kUp = 30,
    kDown = 31,
    kSpace = 32,
    kForwardDelete = 127,
    kPrinted = 255, // not a character: the layout decides
};

constexpr std::uint8_t kClearKey = 0x47;

struct Key {
    std::uint8_t keyCode;
    std::uint16_t scanCode;
    std::uint8_t character;
};

// clang-format off
// Every key, by virtual key code. A printing key is named by its character in the US layout.
constexpr auto kKeyTable = std::to_array<Key>({
    {0x00,  30, kPrinted},       // A
    {0x01,  31, kPrinted},       // S
    {0x02,  32, kPrinted},       // D
    {0x03,  33, kPrinted},       // F
    {0x04,  35, kPrinted},       // H
    {0x05,  34, kPrinted},       // G
    {0x06,  44, kPrinted},       // Z
    {0x07,  45, kPrinted},       // X
    {0x08,  46, kPrinted},       // C
    {0x09,  47, kPrinted},       // V
    {0x0A,  86, kPrinted},       // on ISO keyboards only: KEY_102ND
    {0x0B,  48, kPrinted},       // B
    {0x0C,  16, kPrinted},       // Q
    {0x0D,  17, kPrinted},       // W
    {0x0E,  18, kPrinted},       // E
    {0x0F,  19, kPrinted},       // R
    {0x10,  21, kPrinted},       // Y
    {0x11,  20, kPrinted},       // T
    {0x12,   2, kPrinted},       // 1
    {0x13,   3, kPrinted},       // 2
    {0x14,   4, kPrinted},       // 3
    {0x15,   5, kPrinted},       // 4
    {0x16,   7, kPrinted},       // 6
    {0x17,   6, kPrinted},       // 5
    {0x18,  13, kPrinted},       // =
    {0x19,  10, kPrinted},       // 9
    {0x1A,   8, kPrinted},       // 7
    {0x1B,  12, kPrinted},       // -
    {0x1C,   9, kPrinted},       // 8
    {0x1D,  11, kPrinted},       // 0
    {0x1E,  27, kPrinted},       // ]
    {0x1F,  24, kPrinted},       // O
    {0x20,  22, kPrinted},       // U
    {0x21,  26, kPrinted},       // [
    {0x22,  23, kPrinted},       // I
    {0x23,  25, kPrinted},       // P
    {0x24,  28, kReturn},        // KEY_ENTER
    {0x25,  38, kPrinted},       // L
    {0x26,  36, kPrinted},       // J
    {0x27,  40, kPrinted},       // '
    {0x28,  37, kPrinted},       // K
    {0x29,  39, kPrinted},       // ;
    {0x2A,  43, kPrinted},       // backslash
    {0x2B,  51, kPrinted},       // ,
    {0x2C,  53, kPrinted},       // /
    {0x2D,  49, kPrinted},       // N
    {0x2E,  50, kPrinted},       // M
    {0x2F,  52, kPrinted},       // .
    {0x30,  15, kTab},           // KEY_TAB
    {0x31,  57, kSpace},         // KEY_SPACE
    {0x32,  41, kPrinted},       // `
    {0x33,  14, kDelete},        // KEY_BACKSPACE
    {0x35,   1, kEscape},        // KEY_ESC
    {0x36, 126, kNothing},       // right command: KEY_RIGHTMETA
    {0x37, 125, kNothing},       // command: KEY_LEFTMETA
    {0x38,  42, kNothing},       // shift: KEY_LEFTSHIFT
    {0x39,  58, kNothing},       // caps lock: KEY_CAPSLOCK
    {0x3A,  56, kNothing},       // option: KEY_LEFTALT
    {0x3B,  29, kNothing},       // control: KEY_LEFTCTRL
    {0x3C,  54, kNothing},       // right shift: KEY_RIGHTSHIFT
    {0x3D, 100, kNothing},       // right option: KEY_RIGHTALT
    {0x3E,  97, kNothing},       // right control: KEY_RIGHTCTRL
    {0x3F, 464, kNothing},       // fn: KEY_FN
    {0x40, 187, kFunction},      // F17: KEY_F17
    {0x41,  83, kPrinted},       // keypad: KEY_KPDOT, a comma in many layouts
    {0x43,  55, '*'},            // keypad: KEY_KPASTERISK
    {0x45,  78, '+'},            // keypad: KEY_KPPLUS
    {0x47,  69, kEscape},        // clear: KEY_NUMLOCK
    {0x4B,  98, '/'},            // keypad: KEY_KPSLASH
    {0x4C,  96, kEnter},         // KEY_KPENTER
    {0x4E,  74, '-'},            // keypad: KEY_KPMINUS
    {0x4F, 188, kFunction},      // F18: KEY_F18
    {0x50, 189, kFunction},      // F19: KEY_F19
    {0x51, 117, '='},            // keypad: KEY_KPEQUAL
    {0x52,  82, '0'},            // keypad: KEY_KP0
    {0x53,  79, '1'},            // keypad: KEY_KP1
    {0x54,  80, '2'},            // keypad: KEY_KP2
    {0x55,  81, '3'},            // keypad: KEY_KP3
    {0x56,  75, '4'},            // keypad: KEY_KP4
    {0x57,  76, '5'},            // keypad: KEY_KP5
    {0x58,  77, '6'},            // keypad: KEY_KP6
    {0x59,  71, '7'},            // keypad: KEY_KP7
    {0x5A, 190, kFunction},      // F20: KEY_F20
    {0x5B,  72, '8'},            // keypad: KEY_KP8
    {0x5C,  73, '9'},            // keypad: KEY_KP9
    {0x5D, 124, kPrinted},       // yen, on Japanese keyboards: KEY_YEN
    {0x5E,  89, kPrinted},       // underscore, on Japanese keyboards: KEY_RO
    {0x5F,  95, ','},            // keypad comma, on Japanese keyboards: KEY_KPJPCOMMA
    {0x60,  63, kFunction},      // F5: KEY_F5
    {0x61,  64, kFunction},      // F6: KEY_F6
    {0x62,  65, kFunction},      // F7: KEY_F7
    {0x63,  61, kFunction},      // F3: KEY_F3
    {0x64,  66, kFunction},      // F8: KEY_F8
    {0x65,  67, kFunction},      // F9: KEY_F9
    {0x66, 123, kNothing},       // Latin script, on Japanese keyboards: KEY_HANJA
    {0x67,  87, kFunction},      // F11: KEY_F11
    {0x68, 122, kNothing},       // Japanese script, on Japanese keyboards: KEY_HANGEUL
    {0x69, 183, kFunction},      // F13: KEY_F13
    {0x6A, 186, kFunction},      // F16: KEY_F16
    {0x6B, 184, kFunction},      // F14: KEY_F14
    {0x6D,  68, kFunction},      // F10: KEY_F10
    {0x6E, 127, kNothing},       // context menu, on PC keyboards: KEY_COMPOSE
    {0x6F,  88, kFunction},      // F12: KEY_F12
    {0x71, 185, kFunction},      // F15: KEY_F15
    {0x72, 138, kHelp},          // KEY_HELP
    {0x73, 102, kHome},          // KEY_HOME
    {0x74, 104, kPageUp},        // KEY_PAGEUP
    {0x75, 111, kForwardDelete}, // KEY_DELETE
    {0x76,  62, kFunction},      // F4: KEY_F4
    {0x77, 107, kEnd},           // KEY_END
    {0x78,  60, kFunction},      // F2: KEY_F2
    {0x79, 109, kPageDown},      // KEY_PAGEDOWN
    {0x7A,  59, kFunction},      // F1: KEY_F1
    {0x7B, 105, kLeft},          // KEY_LEFT
    {0x7C, 106, kRight},         // KEY_RIGHT
    {0x7D, 108, kDown},          // KEY_DOWN
    {0x7E, 103, kUp},            // KEY_UP
});

struct Alias {
    std::uint16_t scanCode;
    std::uint8_t keyCode;
    bool isSent = false; // sent instead of the classic key, which PC keyboards lack
};

// Keys of other keyboards in the place, or with the function, of a classic one.
constexpr auto kAliases = std::to_array<Alias>({
    { 99, 0x69, true}, // KEY_SYSRQ, Print Screen: F13
    { 70, 0x6B, true}, // KEY_SCROLLLOCK: F14
    {119, 0x71, true}, // KEY_PAUSE: F15
    {110, 0x72, true}, // KEY_INSERT: help
    {355, 0x47}, // KEY_CLEAR: clear
    {121, 0x5F}, // KEY_KPCOMMA, on Brazilian keyboards: keypad comma
    { 94, 0x66}, // KEY_MUHENKAN: Latin script
    { 92, 0x68}, // KEY_HENKAN: Japanese script
    { 93, 0x68}, // KEY_KATAKANAHIRAGANA: Japanese script
    {139, 0x6E}, // KEY_MENU: context menu
});
// clang-format on

constexpr bool IsInOrder() {
    return kKeyTable.back().keyCode < 127 &&
           std::ranges::adjacent_find(kKeyTable, std::ranges::greater_equal(), &Key::keyCode) ==
               kKeyTable.end();
}

constexpr bool HasEachScanCodeOnce() {
    for (const Key &key : kKeyTable) {
        if (std::ranges::count(kKeyTable, key.scanCode, &Key::scanCode) != 1 ||
            std::ranges::count(kAliases, key.scanCode, &Alias::scanCode) != 0) {
            return false;
        }
    }
    return true;
}

constexpr bool LeadToKeys() {
    return std::ranges::all_of(kAliases, [](const Alias &alias) {
        return std::ranges::count(kKeyTable, alias.keyCode, &Key::keyCode) == 1;
    });
}

static_assert(IsInOrder() && HasEachScanCodeOnce() && LeadToKeys());

} // namespace

std::uint8_t KeyCodeFromScanCode(std::uint16_t scanCode) {
    const auto *key = std::ranges::find(kKeyTable, scanCode, &Key::scanCode);
    if (key != kKeyTable.end()) {
        return key->keyCode;
    }
    const auto *alias = std::ranges::find(kAliases, scanCode, &Alias::scanCode);
    return alias != kAliases.end() ? alias->keyCode : kNoKeyCode;
}

std::uint16_t ScanCodeToSend(std::uint8_t keyCode) {
    const auto *alias = std::ranges::find_if(
        kAliases, [keyCode](const Alias &row) { return row.keyCode == keyCode && row.isSent; });
    if (alias != kAliases.end()) {
        return alias->scanCode;
    }
    const auto *key = std::ranges::find(kKeyTable, keyCode, &Key::keyCode);
    return key != kKeyTable.end() ? key->scanCode : std::uint16_t{0};
}

bool NeverPrints(std::uint8_t keyCode) {
    const auto *key = std::ranges::find(kKeyTable, keyCode, &Key::keyCode);
    return key != kKeyTable.end() && keyCode != kClearKey && key->character != kNothing &&
           (key->character < kSpace || key->character == kForwardDelete);
}

std::array<std::uint8_t, 128> KeyCharacters(const KeyboardCharacters &layout) {
    std::array<std::uint8_t, 128> characters{};
    for (const Key &key : kKeyTable) {
        const std::uint8_t printed = key.scanCode < layout.size() ? layout[key.scanCode] : std::uint8_t{0};
        characters[key.keyCode] = key.character == kPrinted ? printed : key.character;
    }
    return characters;
}

} // namespace drevix
