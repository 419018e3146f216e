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

// A key that is down as far as we know, or the last one released.
struct SeenKey {
    std::uint32_t scanCode;
    int key; // the Qt key; distinguishes keys without a scan code

    [[nodiscard]] bool IsKeyOf(const QKeyEvent &event) const {
        return scanCode == event.nativeScanCode() && (scanCode != 0 || key == event.key());
    }
};

// A consumed key that is still down.
struct HeldKey : SeenKey {
    bool isPressToCome; // consumed as a shortcut override; the real press follows
};

struct ReleasedKey : SeenKey {
    std::uint64_t time; // window system's clock, in milliseconds; 0: none
    bool wasTaken;
};

// The application's event filter. A key-down arrives twice: as an override before shortcuts are matched and,
// if no shortcut took it, as a press.
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
            event.accept(); // accepting the override keeps shortcuts from acting
        }
        return isTaken;
    }

    // X11 repeats a key with a release and a press at the same time. Qt reports a repeat only if the press
    // has arrived when it processes the release. On Wayland Qt itself makes the repeats, so equal times there
    // mean a fast program typed it.
    bool FollowsItsRelease(const QKeyEvent &event) const {
        return !fIsOnWayland && fLastReleased.time != 0 && fLastReleased.time == event.timestamp() &&
               fLastReleased.IsKeyOf(event);
    }

    // Whether the event belongs to a key-down that was consumed. Any other event shows that the key's release
    // went elsewhere, as happens when another window opens while the key is down.
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
        // Ignore repeats of a key that was down before the field started waiting, such as the one that
        // started it.
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
