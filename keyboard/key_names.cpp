#include "keyboard/key_names.h"

#include "keyboard/key_codes.h"
#include "settings/app_prefs.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <future>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace drevix {

std::array<std::uint8_t, 128> gAsciiTable{};

namespace {

// The characters (UTF-8) printed on the keys that gAsciiTable has nothing for.
std::array<std::string, 128> gPrintedBeside;

constexpr std::uint8_t kFunctionCharacter = 16;
constexpr std::uint8_t kEscapeCharacter = 27;
constexpr std::uint8_t kEscapeKey = 53;

struct ModifierRow {
    std::uint8_t bit; // of the high byte of the classic modifiers
    const char *symbol;
    const char *word;
};
// In writing order.
constexpr auto kModifierRows = std::to_array<ModifierRow>({
    {kCommandModifier >> 8, "\1", "cmd+"},
    {kShiftModifier >> 8, "\2", "shift+"},
    {kCapsLockModifier >> 8, "", "caps+"},
    {kOptionModifier >> 8, "\3", "opt+"},
    {kControlModifier >> 8, "\4", "ctrl+"},
});
constexpr ModifierRow kKeypadRow = {0, "\5", "num+"};

struct NameRow {
    std::uint8_t number; // the character, or the key code of a function key
    const char *name;
};
constexpr auto kCharacterNames = std::to_array<NameRow>({
    {1, "home"},
    {3, "enter"},
    {4, "end"},
    {5, "help"},
    {8, "delete"},
    {9, "tab"},
    {11, "pg up"},
    {12, "pg dwn"},
    {13, "return"},
    {28, "left"},
    {29, "right"},
    {30, "up"},
    {31, "down"},
    {32, "space"},
    {127, "fw del"},
});
constexpr auto kFunctionKeyNames = std::to_array<NameRow>({
    {122, "F1"},
    {120, "F2"},
    {99, "F3"},
    {118, "F4"},
    {96, "F5"},
    {97, "F6"},
    {98, "F7"},
    {100, "F8"},
    {101, "F9"},
    {109, "F10"},
    {103, "F11"},
    {111, "F12"},
    {105, "F13"},
    {107, "F14"},
    {113, "F15"},
});

template <std::size_t count>
const char *FindName(const std::array<NameRow, count> &rows, std::uint8_t number, const char *otherwise) {
    const auto *row = std::ranges::find(rows, number, &NameRow::number);
    return row != rows.end() ? row->name : otherwise;
}

// The word for a key, or null.
const char *WordOfKey(std::uint8_t keyCode) {
    const std::uint8_t character = GetKeyChar(keyCode);
    if (character == kFunctionCharacter) {
        return FindName(kFunctionKeyNames, keyCode, "Fx");
    }
    if (character == kEscapeCharacter) {
        return keyCode == kEscapeKey ? "esc" : "clear";
    }
    return FindName(kCharacterNames, character, nullptr);
}

void WriteModifiers(std::uint8_t keyCode, std::uint8_t modifiers, StringPtr name, std::int16_t limit,
                    const char *ModifierRow::*text) {
    name[0] = 0;
    for (const ModifierRow &row : kModifierRows) {
        if ((modifiers & row.bit) != 0) {
            CStringPCat(row.*text, name, limit);
        }
    }
    if (IsKeypadKey(keyCode)) {
        CStringPCat(kKeypadRow.*text, name, limit);
    }
}

struct Layout {
    KeyboardCharacters characters;
    std::vector<UnnamedKey> unnamed;
};

std::optional<Layout> FindLayout(WindowSystem first) {
    Layout layout;
    return CurrentKeyboardCharacters(&layout.characters, &layout.unnamed, first)
               ? std::optional(std::move(layout))
               : std::nullopt;
}

std::future<std::optional<Layout>> gLayoutAhead; // not valid unless one is being looked for

void BuildTables(const KeyboardCharacters &characters, std::vector<UnnamedKey> &unnamed) {
    gAsciiTable = KeyCharacters(characters);
    gPrintedBeside = {};
    for (UnnamedKey &key : unnamed) {
        const std::uint8_t keyCode = KeyCodeFromScanCode(key.scanCode);
        if (keyCode != kNoKeyCode && GetKeyChar(keyCode) == 0) {
            gPrintedBeside[keyCode] = std::move(key.printed);
        }
    }
}

} // namespace

void LookForLayoutAhead(WindowSystem first, std::function<void()> before) try {
    gLayoutAhead = std::async(std::launch::async, [first, before = std::move(before)] {
        before();
        return FindLayout(first);
    });
} catch (const std::system_error &) { // no thread: it is looked for when it is needed
}

void GetKeyboardInformation(WindowSystem first) {
    if (std::optional<Layout> layout = gLayoutAhead.valid() ? gLayoutAhead.get() : FindLayout(first)) {
        BuildTables(layout->characters, layout->unnamed);
    }
}

bool GetKeyboardInformationOver(void *waylandConnection) {
    KeyboardCharacters characters;
    std::vector<UnnamedKey> unnamed;
    if (!KeyboardCharactersOfCompositor(waylandConnection, &characters, &unnamed)) {
        return false;
    }
    BuildTables(characters, unnamed);
    return true;
}

std::uint8_t GetKeyChar(std::uint8_t keyCode) {
    return gAsciiTable[keyCode & 0x7F];
}

void GetModifiersCode(std::uint8_t keyCode, std::uint8_t modifiers, StringPtr name, std::int16_t limit) {
    WriteModifiers(keyCode, modifiers, name, limit, &ModifierRow::symbol);
    if (name[0] > 0) {
        CStringPCat(" ", name, limit);
    }
}

void GetModifiersName(std::uint8_t keyCode, std::uint8_t modifiers, StringPtr name, std::int16_t limit) {
    WriteModifiers(keyCode, modifiers, name, limit, &ModifierRow::word);
}

void GetKeyName(std::uint8_t keyCode, StringPtr name, std::int16_t limit) {
    const std::uint8_t character = GetKeyChar(keyCode);
    if (character > ' ' && character != 127) {
        name[0] = 1;
        name[1] = character;
    } else if (const char *word = WordOfKey(keyCode); word != nullptr) {
        CStringPCopy(word, name, limit);
    } else {
        // The backslash is written whatever the limit, like a printed character.
        CStringPCopy("\\", name, 1);
        CStringPCat(std::to_string(character).c_str(), name, std::max<std::int16_t>(limit, 1));
    }
}

void GetKeyCombinationName(std::uint16_t key, std::uint16_t modifiers, StringPtr name, std::int16_t limit,
                           std::uint16_t useCodes) {
    constexpr std::uint16_t kNothing = 0xFFFF;
    if (key == kNothing || modifiers == kNothing) {
        CStringPCopy("(none)", name, limit);
        return;
    }
    const auto keyCode = static_cast<std::uint8_t>(key >> 8);
    const auto bits = static_cast<std::uint8_t>(modifiers >> 8);
    if (useCodes != 0) {
        GetModifiersCode(keyCode, bits, name, limit);
    } else {
        GetModifiersName(keyCode, bits, name, limit);
    }
    Str63 keyName;
    GetKeyName(keyCode, keyName.data(), 63);
    PStringCat(keyName.data(), name, limit);
}

std::string KeyCaption(std::uint8_t keyCode) {
    if (const std::string &printed = gPrintedBeside[keyCode & 0x7F]; !printed.empty()) {
        return printed;
    }
    Str63 name{};
    GetKeyName(keyCode, name.data(), 63);
    return stringWithPascalString(name.data());
}

std::string KeystrokeText(std::uint8_t keyCode, std::uint16_t modifiers) {
    if (keyCode == kNoKeyCode || modifiers == 0xFFFF) {
        return "(none)";
    }
    Str255 name{};
    GetModifiersName(keyCode, static_cast<std::uint8_t>(modifiers >> 8), name.data(), 255);
    return stringWithPascalString(name.data()) + KeyCaption(keyCode);
}

std::string ModifiersText(std::uint16_t modifiers) {
    Str255 name{};
    GetModifiersName(0, static_cast<std::uint8_t>(modifiers >> 8), name.data(), 255);
    const std::string text = stringWithPascalString(name.data());
    return text.substr(0, text.rfind('+')); // each is followed by a plus sign
}

} // namespace drevix
