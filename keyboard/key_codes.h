// The keys of the classic keyboard: their virtual key codes, their Linux scan codes, and their characters.
#pragma once

#include "platform/desktop/keyboard_layout.h"
#include "settings/app_prefs.h"

#include <array>
#include <cstdint>

namespace drevix {

// A virtual key code is a key's place on the keyboard as the classic platform numbers it, 0 to 126, the same
// in every layout. Settings files store it; kNoKeyCode means no key.

// A scan code is the key's number in Linux input events (KEY_* in linux/input-event-codes.h). X11 and Wayland
// clients see it plus kScanCodeOffset.
inline constexpr std::uint16_t kScanCodeOffset = 8;

// The key with a scan code; kNoKeyCode for a key that the classic keyboard lacks, such as a media key. PC
// keys map to the classic keys in the same place: Num Lock for clear, Insert for help, Print Screen, Scroll
// Lock and Pause for F13 to F15.
[[nodiscard]] std::uint8_t KeyCodeFromScanCode(std::uint16_t scanCode);

// The scan code to send for a key; 0 for an unknown key code. Help and F13 to F15, which a PC keyboard lacks,
// are sent as Insert, Print Screen, Scroll Lock and Pause.
[[nodiscard]] std::uint16_t ScanCodeToSend(std::uint8_t keyCode);

// Whether the key is on the numeric keypad: codes 65 to 92.
[[nodiscard]] constexpr bool IsKeypadKey(std::uint8_t keyCode) {
    return keyCode >= 65 && keyCode <= 92;
}

// Whether the key only modifies others: command, shift, caps lock, option, control and fn, left and right.
[[nodiscard]] constexpr bool IsModifierKey(std::uint8_t keyCode) {
    return keyCode >= 54 && keyCode <= 63;
}

// Whether the key prints nothing in any layout with any modifier: escape, function keys, arrows, return and
// so on, but not space or clear, which print characters in some layouts.
[[nodiscard]] bool NeverPrints(std::uint8_t keyCode);

// The unmodified character of each key in a layout, in Mac OS Roman, by virtual key code. Keys that print
// nothing have the platform's control character for their kind; modifier keys and unknown codes have 0. The
// keypad's digits and operators are the same in every layout.
[[nodiscard]] std::array<std::uint8_t, 128> KeyCharacters(const KeyboardCharacters &layout);

} // namespace drevix
