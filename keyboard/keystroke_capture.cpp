#include "keyboard/keystroke_capture.h"

#include "keyboard/keystroke_receiver.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>
#include <memory>
#include <vector>

namespace drevix {
namespace {

CommandKey gCommandKey = CommandKey::Super;

bool OverrideKeysIsActive() {
    return gDrevixPane != nullptr && gDrevixPane->OverrideKeysIsActive();
}

// A key that was taken and is still down.
struct HeldKey {
    std::uint32_t scanCode;
    int key;            // what it means; tells keys without a scan code apart
    bool isPressToCome; // taken on the way to the shortcuts; its key-down proper follows

    [[nodiscard]] bool IsKeyOf(const QKeyEvent &event) const {
        return scanCode == event.nativeScanCode() && (scanCode != 0 || key == event.key());
    }
};

// The one filter of the application. A key-down comes twice, as an override before the shortcuts are looked
// through, and if no shortcut took it, as a press.
class KeystrokeCapture : public QObject {
  public:
    KeystrokeCapture() { QCoreApplication::instance()->installEventFilter(this); }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override {
        switch (event->type()) {
        case QEvent::ShortcutOverride:
        case QEvent::KeyPress:
            return TakeKeyDown(static_cast<QKeyEvent &>(*event));
        case QEvent::KeyRelease:
            return TakeKeyUp(static_cast<QKeyEvent &>(*event));
        default:
            return false;
        }
    }

  private:
    bool TakeKeyDown(QKeyEvent &event) {
        const bool isTaken = IsMoreOfHeldKey(event) || TakeNewKey(event);
        if (isTaken) {
            event.accept(); // an accepted override keeps the key from the shortcuts
        }
        return isTaken;
    }

    // Whether the event only goes on with a key-down that was taken. One that does not belong to it shows
    // that the key's release went elsewhere, as it does when another window comes up while the key is down.
    bool IsMoreOfHeldKey(const QKeyEvent &event) {
        const auto held = FindHeld(event);
        if (held == fHeldKeys.end() || event.isAutoRepeat()) {
            return held != fHeldKeys.end();
        }
        if (event.type() == QEvent::KeyPress && held->isPressToCome) {
            held->isPressToCome = false;
            return true;
        }
        fHeldKeys.erase(held);
        return false;
    }

    bool TakeNewKey(const QKeyEvent &event) {
        if (!OverrideKeysIsActive() || IsModifierOnly(event)) {
            return false;
        }
        // The repetitions of a key that was down before the field waited, such as the one that made it wait,
        // are nobody's choice.
        if (!event.isAutoRepeat()) {
            fHeldKeys.push_back(
                {event.nativeScanCode(), event.key(), event.type() == QEvent::ShortcutOverride});
            SendKeystrokeToField(event);
        }
        return true;
    }

    bool TakeKeyUp(QKeyEvent &event) {
        const auto held = FindHeld(event);
        if (held == fHeldKeys.end()) {
            return false;
        }
        if (!event.isAutoRepeat()) {
            fHeldKeys.erase(held);
        }
        event.accept();
        return true;
    }

    std::vector<HeldKey>::iterator FindHeld(const QKeyEvent &event) {
        return std::ranges::find_if(fHeldKeys, [&](const HeldKey &key) { return key.IsKeyOf(event); });
    }

    std::vector<HeldKey> fHeldKeys;
};

std::unique_ptr<KeystrokeCapture> gCapture; // while the capture is on

} // namespace

void SwapNSAppMethods() {
    gCapture = gCapture == nullptr ? std::make_unique<KeystrokeCapture>() : nullptr;
}

void SendKeystrokeToField(const QKeyEvent &event) {
    if (const auto keystroke = KeystrokeOfEvent(event, gCommandKey); keystroke && gDrevixPane != nullptr) {
        gDrevixPane->ReceiveKeystroke(keystroke->keyCode, keystroke->modifiers);
    }
}

void SetCommandKey(CommandKey key) {
    gCommandKey = key;
}

CommandKey GetCommandKey() {
    return gCommandKey;
}

} // namespace drevix
