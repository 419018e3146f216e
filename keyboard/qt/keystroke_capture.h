// Captures keys for the keystroke field: while the panel is selected, diverts the application's key-downs to
// the panel's controller when it asks for them. Main thread only.
#pragma once

#include "keyboard/qt/key_events.h"

namespace drevix {

// Toggles the capture, so calls must be paired: one when the panel is selected, one when it is left.
// Initially off. Needs the application object.
//
// While on, it consumes key-downs exactly while gDrevixPane->OverrideKeysIsActive(): no widget, shortcut,
// mnemonic or menu of the application sees them, nor the key's repeats and its release. Modifier keys and all
// other events pass. Keys that the desktop grabs never arrive here.
void SwapNSAppMethods();

// Passes the keystroke of a key-down to gDrevixPane->ReceiveKeystroke. Ignores a key that the classic
// keyboard lacks; the field keeps waiting.
void SendKeystrokeToField(const QKeyEvent &event);

// Sets which PC key counts as command; initially Super.
void SetCommandKey(CommandKey key);
[[nodiscard]] CommandKey GetCommandKey();

} // namespace drevix
