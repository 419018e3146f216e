#include "keyboard/key_captions.h"

#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

struct ModifierCaption {
    std::uint16_t modifier;
    std::string_view caption;
};
// In the order of a keystroke's name.
constexpr auto kModifiers = std::to_array<ModifierCaption>({
    {kCommandModifier, "Super"},
    {kControlModifier, "Ctrl"},
    {kOptionModifier, "Alt"},
    {kShiftModifier, "Shift"},
    {kCapsLockModifier, "Caps Lock"},
});

struct KeyWord {
    std::uint8_t keyCode;
    std::string_view caption;
};
constexpr auto kKeyWords = std::to_array<KeyWord>({
    {0x24, "Enter"}, {0x4C, "Enter"},       {0x30, "Tab"},   {0x35, "Esc"},       {0x72, "Insert"},
    {0x69, "Print"}, {0x6B, "Scroll Lock"}, {0x71, "Pause"}, {0x33, "Backspace"}, {0x75, "Delete"},
    {0x31, "Space"}, {0x73, "Home"},        {0x77, "End"},   {0x74, "Page Up"},   {0x79, "Page Down"},
    {0x7B, "Left"},  {0x7C, "Right"},       {0x7E, "Up"},    {0x7D, "Down"},      {0x47, "Num Lock"},
    {0x6E, "Menu"},
});
constexpr std::string_view kKeypad = "Num";
constexpr std::uint8_t kNumLockKey = 0x47; // on the keypad, but nobody calls it "Num Num Lock"

constexpr auto kWords = [] {
    std::array<std::string_view, kModifiers.size() + kKeyWords.size() + 1> words{kKeypad};
    std::ranges::transform(kModifiers, words.begin() + 1, &ModifierCaption::caption);
    std::ranges::transform(kKeyWords, words.begin() + 1 + kModifiers.size(), &KeyWord::caption);
    return words;
}();

// Swaps command and control if the keyboard's Ctrl is the command key.
std::uint16_t OnKeyboard(std::uint16_t modifiers, CommandOnKeyboard command) {
    constexpr std::uint16_t kBoth = kCommandModifier | kControlModifier;
    const bool isOne = (modifiers & kBoth) != 0 && (modifiers & kBoth) != kBoth;
    return static_cast<std::uint16_t>(command == CommandOnKeyboard::Ctrl && isOne ? modifiers ^ kBoth
                                                                                  : modifiers);
}

} // namespace

std::span<const std::string_view> CaptionWords() {
    return kWords;
}

std::vector<std::string_view> ModifierCaptions(std::uint16_t modifiers, CommandOnKeyboard command) {
    const std::uint16_t onKeyboard = OnKeyboard(modifiers, command);
    std::vector<std::string_view> captions;
    for (const ModifierCaption &row : kModifiers) {
        if ((onKeyboard & row.modifier) != 0) {
            captions.push_back(row.caption);
        }
    }
    return captions;
}

std::vector<std::string> KeyCaptions(std::uint8_t keyCode, std::uint16_t modifiers,
                                     CommandOnKeyboard command) {
    if (keyCode == kNoKeyCode) {
        return {};
    }
    std::vector<std::string> captions;
    for (const std::string_view caption : ModifierCaptions(modifiers, command)) {
        captions.emplace_back(caption);
    }
    if (IsKeypadKey(keyCode) && keyCode != kNumLockKey) {
        captions.emplace_back(kKeypad);
    }
    const auto *word = std::ranges::find(kKeyWords, keyCode, &KeyWord::keyCode);
    captions.push_back(word == kKeyWords.end() ? KeyCaption(keyCode) : std::string(word->caption));
    return captions;
}

} // namespace drevix
