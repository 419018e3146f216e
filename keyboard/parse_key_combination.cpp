// Parses the names of keystrokes.
#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "platform/base/ascii.h"
#include "platform/base/mac_roman.h"
#include "settings/app_prefs.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace drevix {
namespace {

struct ModifierWord {
    std::string_view word;
    std::uint16_t modifier;
};
constexpr std::uint16_t kKeypadBit = 1; // no classic modifier has a bit in the low byte
constexpr auto kModifierWords = std::to_array<ModifierWord>({
    {"cmd", kCommandModifier},
    {"command", kCommandModifier},
    {"super", kCommandModifier},
    {"meta", kCommandModifier},
    {"shift", kShiftModifier},
    {"caps", kCapsLockModifier},
    {"caps lock", kCapsLockModifier},
    {"opt", kOptionModifier},
    {"option", kOptionModifier},
    {"alt", kOptionModifier},
    {"altgr", kOptionModifier},
    {"ctrl", kControlModifier},
    {"control", kControlModifier},
    {"num", kKeypadBit},
});

// A key's label on a Linux keyboard, or another common spelling.
struct KeyLabel {
    std::string_view label;
    std::uint8_t keyCode;
    bool isShown = false; // beside the system's own name, which a Linux user would misread
};
constexpr auto kKeyLabels = std::to_array<KeyLabel>({
    // clang-format off
    {"backspace", 51, true},    {"num+enter", 76, true},   {"num lock", 71, true},  {"numlock", 71},
    {"insert", 114, true},      {"ins", 114},              {"menu", 110, true},     {"print", 105, true},
    {"print screen", 105},      {"prtsc", 105},            {"scroll lock", 107, true}, {"scrolllock", 107},
    {"pause", 113, true},       {"del", 117},              {"forward delete", 117}, {"escape", 53},
    {"page up", 116},           {"pageup", 116},           {"pgup", 116},           {"page down", 121},
    {"pagedown", 121},          {"pgdn", 121},             {"pgdwn", 121},
    // clang-format on
});

constexpr auto kAmbiguousKeys = std::to_array<AmbiguousKeyName>({
    {"delete", "backspace", "fw del"},
    {"enter", "return", "num+enter"},
});

std::string_view Trimmed(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

// The row of a word in any letter case, or null.
const ModifierWord *FindModifierWord(std::string_view word) {
    const auto *row = std::ranges::find_if(
        kModifierWords, [word](const ModifierWord &known) { return IsEqualWithoutCase(known.word, word); });
    return row == kModifierWords.end() ? nullptr : row;
}

// Removes the modifiers before the key's name from *text. A plus sign without a modifier before it is the key
// itself.
std::uint16_t TakeModifiers(std::string_view *text) {
    std::uint16_t modifiers = 0;
    for (;;) {
        const std::size_t end = text->find('+');
        const ModifierWord *row = FindModifierWord(Trimmed(text->substr(0, end)));
        if (end == std::string_view::npos || row == nullptr) {
            return modifiers;
        }
        modifiers |= row->modifier;
        text->remove_prefix(end + 1);
    }
}

// A key's caption in lower case; empty if the key has only a number.
std::string NameOf(std::uint8_t keyCode) {
    const std::string text = KeyCaption(keyCode);
    return text.size() > 1 && text[0] == '\\' ? std::string() : WithSmallLetters(text);
}

std::optional<std::uint8_t> FindKeyByLabel(const std::string &label, bool onKeypad) {
    const auto *row = std::ranges::find(kKeyLabels, label, &KeyLabel::label);
    return row == kKeyLabels.end() || (onKeypad && !IsKeypadKey(row->keyCode)) ? std::nullopt
                                                                               : std::optional(row->keyCode);
}

std::optional<std::uint8_t> FindKeyByName(const std::string &name, bool onKeypad) {
    constexpr std::uint8_t kEndOfKeys = std::tuple_size_v<decltype(gAsciiTable)>;
    for (std::uint8_t keyCode = 0; keyCode < kEndOfKeys && !name.empty(); ++keyCode) {
        if (IsKeypadKey(keyCode) == onKeypad && NameOf(keyCode) == name) {
            return keyCode;
        }
    }
    return std::nullopt;
}

// Combines a letter and its accent into one character, as in captions.
std::string Composed(const std::string &text) {
    const std::string roman = MacRomanFromUtf8(text);
    return FitsMacRoman(text) ? Utf8FromMacRoman(std::vector<std::uint8_t>(roman.begin(), roman.end()))
                              : text;
}

std::optional<std::uint8_t> FindKey(const std::string &text, bool onKeypad) {
    const std::string name = Composed(text);
    std::optional<std::uint8_t> key = FindKeyByLabel(text, onKeypad);
    key = key ? key : FindKeyByName(name, onKeypad);
    // A keypad key needs no "num+" if no other key has its name, like "+" in many layouts.
    return key || onKeypad ? key : FindKeyByName(name, true);
}

} // namespace

const AmbiguousKeyName *FindAmbiguousKeyName(std::string_view text) {
    const bool saysWhich = (TakeModifiers(&text) & kKeypadBit) != 0; // as in "num+enter"
    const auto *row =
        std::ranges::find(kAmbiguousKeys, WithSmallLetters(Trimmed(text)), &AmbiguousKeyName::name);
    return row == kAmbiguousKeys.end() || saysWhich ? nullptr : row;
}

bool ParseKeyCombination(std::string_view text, std::uint8_t *keyCode, std::uint16_t *modifiers) try {
    const bool isAmbiguous = FindAmbiguousKeyName(text) != nullptr;
    const std::uint16_t found = TakeModifiers(&text);
    const std::optional<std::uint8_t> key =
        FindKey(WithSmallLetters(Trimmed(text)), (found & kKeypadBit) != 0);
    if (!key || isAmbiguous) {
        return false;
    }
    *keyCode = *key;
    *modifiers = static_cast<std::uint16_t>(found & ~kKeypadBit);
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

std::string LabelledKeystrokeText(std::uint8_t keyCode, std::uint16_t modifiers) {
    const auto *row = std::ranges::find_if(
        kKeyLabels, [keyCode](const KeyLabel &key) { return key.keyCode == keyCode && key.isShown; });
    if (row == kKeyLabels.end()) {
        return KeystrokeText(keyCode, modifiers);
    }
    Str63 name;
    GetKeyName(keyCode, name.data(), 63);
    const std::string before = ModifiersText(modifiers);
    return before + (before.empty() ? "" : "+") + stringWithPascalString(name.data()) + " (" +
           std::string(row->label) + ")";
}

bool ParseModifiers(std::string_view text, std::uint16_t *modifiers) {
    std::uint16_t found = 0;
    while (!text.empty()) {
        text.remove_prefix(text.front() == '+' ? 1 : 0);
        const std::string_view word = text.substr(0, text.find('+'));
        const ModifierWord *row = FindModifierWord(word);
        if (row == nullptr || row->modifier == kKeypadBit) {
            return false;
        }
        found |= row->modifier;
        text.remove_prefix(word.size());
    }
    *modifiers = found;
    return true;
}

} // namespace drevix
