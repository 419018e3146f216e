#include "keyboard/qt/keystroke_capture.h"

#include "keyboard/qt/keystroke_receiver.h"

#include <QCoreApplication>
#include <QGuiApplication>
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

// A key that went down and has not been seen to come up, or the last that did.
struct SeenKey {
    std::uint32_t scanCode;
    int key; // what it means; tells keys without a scan code apart

    [[nodiscard]] bool IsKeyOf(const QKeyEvent &event) const {
        return scanCode == event.nativeScanCode() && (scanCode != 0 || key == event.key());
    }
};

// A key that was taken and is still down.
struct HeldKey : SeenKey {
    bool isPressToCome; // taken on the way to the shortcuts; its key-down proper follows
};

struct ReleasedKey : SeenKey {
    std::uint64_t time; // in milliseconds of the window system's clock; 0 for none
    bool wasTaken;
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
        const bool hadNotComeUp = FollowsItsRelease(event);
        if (hadNotComeUp && fLastReleased.wasTaken && FindHeld(event) == fHeldKeys.end()) {
            fHeldKeys.push_back({fLastReleased, false});
        }
        const bool isRepetition = hadNotComeUp || event.isAutoRepeat();
        const bool isTaken = IsMoreOfHeldKey(event, isRepetition) || TakeNewKey(event, isRepetition);
        if (isTaken) {
            event.accept(); // an accepted override keeps the key from the shortcuts
        }
        return isTaken;
    }

    // X11 repeats a key by a release and a press of the same time. Qt takes them for a repetition only where
    // the press has arrived by the time that it looks at the release. On Wayland Qt itself makes the
    // repetitions, and what has one time there was typed by a quick program.
    bool FollowsItsRelease(const QKeyEvent &event) const {
        return !fIsOnWayland && fLastReleased.time != 0 && fLastReleased.time == event.timestamp() &&
               fLastReleased.IsKeyOf(event);
    }

    // Whether the event only goes on with a key-down that was taken. One that does not belong to it shows
    // that the key's release went elsewhere, as it does when another window comes up while the key is down.
    bool IsMoreOfHeldKey(const QKeyEvent &event, bool isRepetition) {
        const auto held = FindHeld(event);
        if (held == fHeldKeys.end() || isRepetition) {
            return held != fHeldKeys.end();
        }
        if (event.type() == QEvent::KeyPress && held->isPressToCome) {
            held->isPressToCome = false;
            return true;
        }
        fHeldKeys.erase(held);
        return false;
    }

    bool TakeNewKey(const QKeyEvent &event, bool isRepetition) {
        if (!OverrideKeysIsActive() || IsModifierOnly(event)) {
            return false;
        }
        // The repetitions of a key that was down before the field waited, such as the one that made it wait,
        // are nobody's choice.
        if (!isRepetition) {
            fHeldKeys.push_back(
                {{event.nativeScanCode(), event.key()}, event.type() == QEvent::ShortcutOverride});
            SendKeystrokeToField(event);
        }
        return true;
    }

    bool TakeKeyUp(QKeyEvent &event) {
        const auto held = FindHeld(event);
        const bool isTaken = held != fHeldKeys.end();
        if (!event.isAutoRepeat()) {
            fLastReleased = {{event.nativeScanCode(), event.key()}, event.timestamp(), isTaken};
        }
        if (!isTaken) {
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
    ReleasedKey fLastReleased{};
    const bool fIsOnWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
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
