// Keystrokes read from their names.
#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "platform/ascii.h"
#include "platform/mac_roman.h"
#include "settings/app_prefs.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>

namespace drevix {
namespace {

struct ModifierWord {
    std::string_view word;
    std::uint16_t modifier;
};
constexpr std::uint16_t kKeypad = 1; // no classic modifier has a bit in the low byte
constexpr auto kModifierWords = std::to_array<ModifierWord>({
    {"cmd", kCommandModifier},
    {"command", kCommandModifier},
    {"shift", kShiftModifier},
    {"caps", kCapsLockModifier},
    {"caps lock", kCapsLockModifier},
    {"opt", kOptionModifier},
    {"option", kOptionModifier},
    {"alt", kOptionModifier},
    {"ctrl", kControlModifier},
    {"control", kControlModifier},
    {"num", kKeypad},
});

struct OtherName {
    std::string_view written;
    std::string_view name;
};
constexpr auto kOtherNames = std::to_array<OtherName>({
    {"escape", "esc"},
    {"page up", "pg up"},
    {"pageup", "pg up"},
    {"pgup", "pg up"},
    {"page down", "pg dwn"},
    {"pagedown", "pg dwn"},
    {"pgdn", "pg dwn"},
    {"pgdwn", "pg dwn"},
    {"backspace", "delete"},
    {"forward delete", "fw del"},
    {"del", "fw del"},
});

std::string_view Trimmed(std::string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

// The row of a word in any letter case, null for none.
const ModifierWord *FindModifierWord(std::string_view word) {
    const auto *row = std::ranges::find_if(
        kModifierWords, [word](const ModifierWord &known) { return IsEqualWithoutCase(known.word, word); });
    return row == kModifierWords.end() ? nullptr : row;
}

// The modifiers in front of the key's name, which is left in *text. A plus sign in front of which no modifier
// stands is the key itself.
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

// The name of a key in small letters; empty for one that is known by its number only.
std::string NameOf(std::uint8_t keyCode) {
    Str63 name;
    GetKeyName(keyCode, name.data(), 63);
    const std::string text(name.begin() + 1, name.begin() + 1 + name[0]);
    return text.size() > 1 && text[0] == '\\' ? std::string() : WithSmallLetters(text);
}

std::optional<std::uint8_t> FindKey(const std::string &name, bool onKeypad) {
    constexpr std::uint8_t kEndOfKeys = std::tuple_size_v<decltype(gAsciiTable)>;
    for (std::uint8_t keyCode = 0; keyCode < kEndOfKeys; ++keyCode) {
        if (IsKeypadKey(keyCode) == onKeypad && NameOf(keyCode) == name) {
            return keyCode;
        }
    }
    return std::nullopt;
}

// The key's name in Mac OS Roman and small letters, as NameOf gives it.
std::string PlainName(std::string_view text) {
    const std::string name = WithSmallLetters(Trimmed(text));
    const auto *other = std::ranges::find(kOtherNames, name, &OtherName::written);
    if (other != kOtherNames.end()) {
        return std::string(other->name);
    }
    return FitsMacRoman(name) ? MacRomanFromUtf8(name) : std::string();
}

} // namespace

bool ParseKeyCombination(std::string_view text, std::uint8_t *keyCode, std::uint16_t *modifiers) try {
    const std::uint16_t found = TakeModifiers(&text);
    const std::string name = PlainName(text);
    if (name.empty()) {
        return false;
    }
    std::optional<std::uint8_t> key = FindKey(name, (found & kKeypad) != 0);
    if (!key && (found & kKeypad) == 0) {
        key = FindKey(name, true); // as "enter", and "+" in many layouts
    }
    if (!key) {
        return false;
    }
    *keyCode = *key;
    *modifiers = static_cast<std::uint16_t>(found & ~kKeypad);
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

bool ParseModifiers(std::string_view text, std::uint16_t *modifiers) {
    std::uint16_t found = 0;
    while (!text.empty()) {
        text.remove_prefix(text.front() == '+' ? 1 : 0);
        const std::string_view word = text.substr(0, text.find('+'));
        const ModifierWord *row = FindModifierWord(word);
        if (row == nullptr || row->modifier == kKeypad) {
            return false;
        }
        found |= row->modifier;
        text.remove_prefix(word.size());
    }
    *modifiers = found;
    return true;
}

} // namespace drevix
