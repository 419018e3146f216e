// The keys of the classic keyboard: their virtual key codes, the scan codes that Linux knows them by, and the
// characters that they give.
#pragma once

#include "platform/desktop/keyboard_layout.h"
#include "settings/app_prefs.h"

#include <array>
#include <cstdint>

namespace drevix {

// A virtual key code is a key's place on the keyboard as the classic platform numbers it, 0 to 126, the same
// in every layout. Settings files hold it, and kNoKeyCode where there is none.

// A scan code is the key's number in Linux's input events (KEY_* in linux/input-event-codes.h). X11 and
// Wayland clients see it with kScanCodeOffset added.
inline constexpr std::uint16_t kScanCodeOffset = 8;

// The key with a scan code; kNoKeyCode for a key that the classic keyboard lacks, as the media keys. Keys of
// a PC keyboard stand for those in whose place they are: Num Lock for clear, Insert for help, Print Screen,
// Scroll Lock and Pause for F13 to F15.
[[nodiscard]] std::uint8_t KeyCodeFromScanCode(std::uint16_t scanCode);

// The scan code to send for a key, 0 for a number that is no key. Keys that stand for those of a PC keyboard which
// lacks them, help and F13 to F15, are sent as these: Insert, Print Screen, Scroll Lock, Pause.
[[nodiscard]] std::uint16_t ScanCodeToSend(std::uint8_t keyCode);

// Whether the key is one of the numeric keypad, by its number: 65 to 92.
[[nodiscard]] constexpr bool IsKeypadKey(std::uint8_t keyCode) {
    return keyCode >= 65 && keyCode <= 92;
}

// Whether the key only modifies others: command, shift, caps lock, option, control and fn, left and right.
[[nodiscard]] constexpr bool IsModifierKey(std::uint8_t keyCode) {
    return keyCode >= 54 && keyCode <= 63;
}

// Whether the key prints nothing in any layout and with any modifier: escape, function keys, arrows, return and
// the like, but neither space nor clear, on which some layouts put characters.
[[nodiscard]] bool NeverPrints(std::uint8_t keyCode);

// The character of each key without modifiers under a layout, in Mac OS Roman, by virtual key code. Keys that
// print nothing have the platform's control character for their kind, modifier keys and numbers that are no
// key 0. The keypad's digits and operators are the same in every layout.
[[nodiscard]] std::array<std::uint8_t, 128> KeyCharacters(const KeyboardCharacters &layout);

} // namespace drevix
