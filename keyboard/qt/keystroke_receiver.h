// The receiver of the keystrokes that the panel captures.
#pragma once

#include <cstdint>

namespace drevix {

// The panel's controller, as the keystroke capture sees it.
class KeystrokeReceiver {
  public:
    virtual ~KeystrokeReceiver() = default;
    // Whether key-downs go to the keystroke field: it is being edited, in the active window.
    [[nodiscard]] virtual bool OverrideKeysIsActive() const = 0;
    // A key-down: virtual key code and classic event modifiers.
    virtual void ReceiveKeystroke(std::uint8_t keyCode, std::uint16_t modifiers) = 0;
};

// The receiver while the panel is loaded, else null. Not owned here.
inline KeystrokeReceiver *gDrevixPane = nullptr;

} // namespace drevix
