#include "keyboard/qt/key_events.h"

#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "settings/app_prefs.h"

#include <QKeyEvent>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace drevix {
namespace {

struct KeyRow {
    Qt::Key key;
    std::uint8_t keyCode;
    std::uint8_t onKeypad; // the keypad key that does this without Num Lock
};

// The keys that type no character of their own.
// clang-format off
constexpr auto kKeyRows = std::to_array<KeyRow>({
    {Qt::Key_Escape,     0x35, kNoKeyCode}, {Qt::Key_Tab,       0x30, kNoKeyCode},
    {Qt::Key_Backtab,    0x30, kNoKeyCode}, {Qt::Key_Backspace, 0x33, kNoKeyCode},
    {Qt::Key_Return,     0x24, kNoKeyCode}, {Qt::Key_Enter,     0x4C, 0x4C},
    {Qt::Key_Space,      0x31, kNoKeyCode}, {Qt::Key_Menu,      0x6E, kNoKeyCode},
    {Qt::Key_Insert,     0x72, 0x52},       {Qt::Key_Help,      0x72, kNoKeyCode},
    {Qt::Key_Delete,     0x75, 0x41},       {Qt::Key_Clear,     0x47, 0x57},
    {Qt::Key_Home,       0x73, 0x59},       {Qt::Key_End,       0x77, 0x53},
    {Qt::Key_PageUp,     0x74, 0x5C},       {Qt::Key_PageDown,  0x79, 0x55},
    {Qt::Key_Left,       0x7B, 0x56},       {Qt::Key_Right,     0x7C, 0x58},
    {Qt::Key_Up,         0x7E, 0x5B},       {Qt::Key_Down,      0x7D, 0x54},
    {Qt::Key_NumLock,    0x47, 0x47},       {Qt::Key_Print,     0x69, kNoKeyCode},
    {Qt::Key_ScrollLock, 0x6B, kNoKeyCode}, {Qt::Key_Pause,     0x71, kNoKeyCode},
    {Qt::Key_yen,        0x5D, kNoKeyCode},
    {Qt::Key_F1,  0x7A, kNoKeyCode}, {Qt::Key_F2,  0x78, kNoKeyCode}, {Qt::Key_F3,  0x63, kNoKeyCode},
    {Qt::Key_F4,  0x76, kNoKeyCode}, {Qt::Key_F5,  0x60, kNoKeyCode}, {Qt::Key_F6,  0x61, kNoKeyCode},
    {Qt::Key_F7,  0x62, kNoKeyCode}, {Qt::Key_F8,  0x64, kNoKeyCode}, {Qt::Key_F9,  0x65, kNoKeyCode},
    {Qt::Key_F10, 0x6D, kNoKeyCode}, {Qt::Key_F11, 0x67, kNoKeyCode}, {Qt::Key_F12, 0x6F, kNoKeyCode},
    {Qt::Key_F13, 0x69, kNoKeyCode}, {Qt::Key_F14, 0x6B, kNoKeyCode}, {Qt::Key_F15, 0x71, kNoKeyCode},
    {Qt::Key_F16, 0x6A, kNoKeyCode}, {Qt::Key_F17, 0x40, kNoKeyCode}, {Qt::Key_F18, 0x4F, kNoKeyCode},
    {Qt::Key_F19, 0x50, kNoKeyCode}, {Qt::Key_F20, 0x5A, kNoKeyCode},
});

constexpr auto kModifierKeys = std::to_array<Qt::Key>({
    Qt::Key_Shift, Qt::Key_Control, Qt::Key_Meta, Qt::Key_Alt, Qt::Key_AltGr, Qt::Key_CapsLock,
    Qt::Key_Super_L, Qt::Key_Super_R, Qt::Key_Hyper_L, Qt::Key_Hyper_R, Qt::Key_Mode_switch,
});
// clang-format on

// An event may carry the shifted character. Without a scan code, assume the US layout.
constexpr std::string_view kShifted = "!@#$%^&*()_+{}|:\"<>?~";
constexpr std::string_view kUnshifted = "1234567890-=[]\\;',./`";
static_assert(kShifted.size() == kUnshifted.size());

// Whether an X11 or Wayland key symbol (X11/keysymdef.h) is a modifier or changes groups.
bool IsModifierSymbol(std::uint32_t symbol) {
    return (symbol >= 0xFFE1 && symbol <= 0xFFEE) || (symbol >= 0xFE01 && symbol <= 0xFE13) ||
           symbol == 0xFF7E;
}

// The key that types a character in the current layout.
std::uint8_t KeyCodeOfCharacter(const std::string &character, bool isOnKeypad) {
    constexpr std::uint8_t kEndOfKeys = std::tuple_size_v<decltype(gAsciiTable)>;
    for (std::uint8_t keyCode = 0; keyCode < kEndOfKeys; ++keyCode) {
        if (IsKeypadKey(keyCode) == isOnKeypad && KeyCaption(keyCode) == character) {
            return keyCode;
        }
    }
    return kNoKeyCode;
}

bool IsPrintingKey(int key) {
    return key >= Qt::Key_Space && key <= 0xFFFF;
}

std::uint8_t KeyCodeOfPrintingKey(int key, bool isOnKeypad) {
    if (!IsPrintingKey(key)) {
        return kNoKeyCode;
    }
    const std::string typed = QString(QChar(key).toLower()).toStdString();
    const std::uint8_t keyCode = KeyCodeOfCharacter(typed, isOnKeypad);
    const std::size_t shifted = typed.size() == 1 ? kShifted.find(typed[0]) : std::string_view::npos;
    return keyCode != kNoKeyCode || shifted == std::string_view::npos
               ? keyCode
               : KeyCodeOfCharacter(std::string(1, kUnshifted[shifted]), isOnKeypad);
}

std::uint8_t KeyCodeOfMeaning(const QKeyEvent &event) {
    const bool isOnKeypad = event.modifiers().testFlag(Qt::KeypadModifier);
    const auto *row = std::ranges::find(kKeyRows, event.key(), &KeyRow::key);
    if (row != kKeyRows.end()) {
        return isOnKeypad && row->onKeypad != kNoKeyCode ? row->onKeypad : row->keyCode;
    }
    return KeyCodeOfPrintingKey(event.key(), isOnKeypad);
}

std::uint8_t KeyCodeOf(const QKeyEvent &event) {
    const std::uint32_t scanCode = event.nativeScanCode();
    const std::uint8_t keyCode =
        scanCode > kScanCodeOffset && scanCode <= UINT16_MAX
            ? KeyCodeFromScanCode(static_cast<std::uint16_t>(scanCode - kScanCodeOffset))
            : kNoKeyCode;
    const bool isOther = keyCode == kNoKeyCode || IsModifierKey(keyCode);
    const bool isInvented = NeverPrints(keyCode) && IsPrintingKey(event.key());
    return isOther || isInvented ? KeyCodeOfMeaning(event) : keyCode;
}

struct ModifierRow {
    Qt::KeyboardModifiers modifier;
    std::uint32_t native;
    std::uint16_t bit;
};
// Qt does not report caps lock, and AltGr only for some layouts. Their bits in the event's native modifiers
// are those of X11 (LockMask and Mod5Mask; Mod3Mask if AltGr selects a fifth level, as in the German layout
// Neo); Wayland keymaps use the same.
constexpr auto kModifierRows = std::to_array<ModifierRow>({
    {Qt::ShiftModifier, 0, kShiftModifier},
    {{}, 1U << 1, kCapsLockModifier},
    {Qt::AltModifier | Qt::GroupSwitchModifier, (1U << 7) | (1U << 5), kOptionModifier},
    {Qt::MetaModifier, 0, kCommandModifier},
    {Qt::ControlModifier, 0, kControlModifier},
});

std::uint16_t Exchanged(std::uint16_t modifiers) {
    constexpr std::uint16_t kBoth = kCommandModifier | kControlModifier;
    const auto both = static_cast<std::uint16_t>(modifiers & kBoth);
    const bool isOne = both == kCommandModifier || both == kControlModifier;
    return static_cast<std::uint16_t>(isOne ? modifiers ^ kBoth : modifiers);
}

std::uint16_t ModifiersOf(const QKeyEvent &event, CommandKey commandKey) {
    unsigned modifiers = 0;
    for (const ModifierRow &row : kModifierRows) {
        if ((event.modifiers() & row.modifier) != 0 || (event.nativeModifiers() & row.native) != 0) {
            modifiers |= row.bit;
        }
    }
    const auto stored = static_cast<std::uint16_t>(modifiers);
    return commandKey == CommandKey::Control ? Exchanged(stored) : stored;
}

} // namespace

bool IsModifierOnly(const QKeyEvent &event) {
    return std::ranges::find(kModifierKeys, event.key()) != kModifierKeys.end() ||
           IsModifierSymbol(event.nativeVirtualKey());
}

std::optional<Keystroke> KeystrokeOfEvent(const QKeyEvent &event, CommandKey commandKey) {
    if (IsModifierOnly(event)) {
        return std::nullopt;
    }
    const std::uint8_t keyCode = KeyCodeOf(event);
    if (keyCode == kNoKeyCode) {
        return std::nullopt;
    }
    return Keystroke{keyCode, ModifiersOf(event, commandKey)};
}

} // namespace drevix
