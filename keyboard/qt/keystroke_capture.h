// Keys on their way to the keystroke field: while the panel is selected, key-downs of the whole application
// are diverted to the panel's controller when it asks for them. Main thread only.
#pragma once

#include "keyboard/qt/key_events.h"

namespace drevix {

// Switches the capture on when it is off and off when it is on, so calls must stay paired: one when the panel
// is selected, one when it is left. Off at the start. Needs the application object.
//
// While it is on, a key-down is consumed exactly while gDrevixPane->OverrideKeysIsActive(): no widget,
// shortcut, mnemonic or menu of the application acts on it, nor on the key's repetitions and its release.
// Keys that only modify others pass, as does everything else. What the desktop keeps for itself never comes
// here.
void SwapNSAppMethods();

// Hands the keystroke of a key-down to gDrevixPane->ReceiveKeystroke. A key that the classic keyboard lacks
// is no keystroke, so the field goes on waiting.
void SendKeystrokeToField(const QKeyEvent &event);

// Which key of a PC keyboard counts as command; Super at the start.
void SetCommandKey(CommandKey key);
[[nodiscard]] CommandKey GetCommandKey();

} // namespace drevix
