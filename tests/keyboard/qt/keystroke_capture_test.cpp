// Key-downs on their way through an application: what the capture takes, and what it leaves.
#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "keyboard/qt/keystroke_capture.h"
#include "keyboard/qt/keystroke_receiver.h"
#include "tests/support/testing.h"

#include <QApplication>
#include <QTest>
#include <linux/input-event-codes.h>

namespace drevix::test {
namespace {

constexpr auto kKeypad = Qt::KeypadModifier;
constexpr std::uint32_t kLock = 0x02; // native modifiers, as X11 and Wayland give them
constexpr std::uint32_t kMod3 = 0x20;
constexpr std::uint32_t kMod5 = 0x80;

// A key as the plug-ins of X11 and Wayland tell of it; both add 8 to the scan code.
struct Key {
    std::uint16_t scanCode;
    int key;
    Qt::KeyboardModifiers modifiers;
    std::uint32_t native;
    std::uint32_t symbol;

    [[nodiscard]] QKeyEvent Event(QEvent::Type type, bool isRepeat = false) const {
        const std::uint32_t code = scanCode == KEY_RESERVED ? 0U : scanCode + 8U;
        return {type, key, modifiers, code, symbol, native, QString(), isRepeat};
    }
};
constexpr Key kQ = {KEY_Q, Qt::Key_Q, Qt::ControlModifier, 0x04, 'q'};

// Stands for the keystroke field, and writes down what keys come to it in spite of the capture.
class Field : public QWidget {
  public:
    std::vector<QEvent::Type> fSeen;

  protected:
    bool event(QEvent *event) override {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
            fSeen.push_back(event->type());
        }
        return QWidget::event(event);
    }
};

class KeystrokeCapture : public ::testing::Test, public KeystrokeReceiver {
  protected:
    KeystrokeCapture() : fField(new Field) {
        fField->setParent(&fWindow);
        fField->setFocusPolicy(Qt::StrongFocus);
        KeyboardCharacters characters;
        EXPECT_TRUE(KeyboardCharactersOfLayout({"", "", "us", "", ""}, &characters));
        gAsciiTable = KeyCharacters(characters);
        fWindow.show();
        fWindow.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&fWindow));
        fField->setFocus();
        gDrevixPane = this;
        SwapNSAppMethods();
    }
    ~KeystrokeCapture() override {
        SwapNSAppMethods();
        gDrevixPane = nullptr;
    }

    bool OverrideKeysIsActive() const override { return fIsWaiting; }
    void ReceiveKeystroke(std::uint8_t keyCode, std::uint16_t modifiers) override {
        fReceived.push_back({keyCode, modifiers});
        fIsWaiting = false;
    }

    // What a platform does with a key-down: the focus gets it before the shortcuts, then the window.
    void Press(const Key &key, bool isRepeat = false, std::uint64_t time = 0) {
        QKeyEvent first = key.Event(QEvent::ShortcutOverride, isRepeat);
        first.setTimestamp(time);
        first.ignore();
        QCoreApplication::sendEvent(fField, &first);
        fShortcutsSawKey = !first.isAccepted();
        QKeyEvent press = key.Event(QEvent::KeyPress, isRepeat);
        press.setTimestamp(time);
        QCoreApplication::sendEvent(fWindow.windowHandle(), &press);
    }
    void Release(const Key &key, bool isRepeat = false, std::uint64_t time = 0) {
        QKeyEvent release = key.Event(QEvent::KeyRelease, isRepeat);
        release.setTimestamp(time);
        QCoreApplication::sendEvent(fWindow.windowHandle(), &release);
    }
    std::vector<Keystroke> PressWaiting(const Key &key) {
        fReceived.clear();
        fIsWaiting = true;
        Press(key);
        Release(key);
        return fReceived;
    }

    QWidget fWindow;
    Field *fField;
    bool fIsWaiting = false;
    bool fShortcutsSawKey = false;
    std::vector<Keystroke> fReceived;
};

TEST_F(KeystrokeCapture, KeyDown_IsStoredByItsPlaceAndModifiers) {
    const auto all = Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const std::pair<Key, Keystroke> rows[] = {
        {{KEY_A, Qt::Key_A, Qt::MetaModifier | Qt::ShiftModifier, 0x41, 'A'}, {0x00, 0x0300}},
        {{KEY_Q, 0x0419, Qt::ControlModifier, 0x04, 0x06CA}, {0x0C, 0x1000}}, // Russian
        {{KEY_TAB, Qt::Key_Backtab, Qt::ShiftModifier, 0x01, 0xFE20}, {0x30, 0x0200}},
        {{KEY_LEFT, Qt::Key_Left, all, 0x4D, 0xFF51}, {0x7B, 0x1B00}},
        {{KEY_KP1, Qt::Key_End, kKeypad, 0, 0xFF9C}, {0x53, 0}},
        {{KEY_A, Qt::Key_A, Qt::ShiftModifier, kLock | 0x01, 'a'}, {0x00, 0x0600}},
        {{KEY_Q, Qt::Key_At, Qt::GroupSwitchModifier, kMod5, '@'}, {0x0C, 0x0800}}, // AltGr on X11
        {{KEY_Q, Qt::Key_At, {}, kMod5, '@'}, {0x0C, 0x0800}},                      // AltGr on Wayland
        {{KEY_Q, Qt::Key_PageUp, {}, kMod3, 0xFF55}, {0x0C, 0x0800}},               // AltGr in Neo
        {{KEY_CAPSLOCK, Qt::Key_Escape, {}, 0, 0xFF1B}, {0x35, 0}},                 // made Escape
        // Without a scan code, as on-screen keyboards and remote displays send keys.
        {{0, Qt::Key_A, Qt::ControlModifier, 0, 0}, {0x00, 0x1000}},
        {{0, Qt::Key_Exclam, Qt::ShiftModifier, 0, 0}, {0x12, 0x0200}},
        {{0, Qt::Key_Plus, kKeypad, 0, 0}, {0x45, 0}},
        {{0, Qt::Key_Delete, {}, 0, 0}, {0x75, 0}},
        {{0, Qt::Key_Delete, kKeypad, 0, 0}, {0x41, 0}},
        // Keyboards that number their keys from 1: every letter, and then still the space, was stored as Escape.
        {{KEY_ESC, Qt::Key_A, Qt::ControlModifier, 0x04, 'a'}, {0x00, 0x1000}},
        {{KEY_ESC, Qt::Key_Space, {}, 0, ' '}, {0x31, 0}},
        {{KEY_F1, Qt::Key_Exclam, Qt::ShiftModifier, 0x01, '!'}, {0x12, 0x0200}},
        {{KEY_UP, Qt::Key_Z, {}, 0, 'z'}, {0x06, 0}},
        {{KEY_SPACE, Qt::Key_nobreakspace, {}, kMod5, 0xA0}, {0x31, 0x0800}}, // as layouts have it
        {{KEY_NUMLOCK, Qt::Key_Equal, {}, kMod5, '='}, {0x47, 0x0800}},       // in the German layout Neo
    };
    for (const auto &[key, stored] : rows) {
        EXPECT_EQ(PressWaiting(key), std::vector{stored});
        EXPECT_FALSE(fShortcutsSawKey);
        EXPECT_TRUE(fField->fSeen.empty());
    }
}

TEST_F(KeystrokeCapture, KeysThatModify_Pass) {
    static constexpr Key kKeys[] = {
        {KEY_LEFTSHIFT, Qt::Key_Shift, {}, 0, 0xFFE1},   {KEY_LEFTMETA, Qt::Key_Super_L, {}, 0, 0xFFEB},
        {KEY_CAPSLOCK, Qt::Key_CapsLock, {}, 0, 0xFFE5}, {KEY_RIGHTALT, Qt::Key_AltGr, {}, 0, 0xFE03},
        {KEY_102ND, Qt::Key_unknown, {}, 0, 0xFE11}, // a level key in some layouts
        {KEY_A, Qt::Key_Control, {}, 0, 0xFFE3},     // made a modifier
    };
    fIsWaiting = true;
    for (const Key &key : kKeys) {
        fField->fSeen.clear();
        Press(key);
        Release(key);
        EXPECT_EQ(fField->fSeen, (std::vector{QEvent::KeyPress, QEvent::KeyRelease})) << key.key;
    }
    EXPECT_TRUE(fIsWaiting && fReceived.empty());
    // One that cannot be stored does nothing at all.
    for (const Key &key : {Key{KEY_PLAYPAUSE, Qt::Key_MediaTogglePlayPause, {}, 0, 0x1008FF14},
                           Key{KEY_ESC, 0x0419, {}, 0, 0x06CA}}) { // a letter that the layout lacks
        fField->fSeen.clear();
        EXPECT_TRUE(PressWaiting(key).empty());
        EXPECT_TRUE(fField->fSeen.empty() && !fShortcutsSawKey && fIsWaiting) << key.key;
    }
}

TEST_F(KeystrokeCapture, KeyDown_IsTakenOnceAndWithAllThatFollows) {
    fIsWaiting = true;
    Press(kQ);
    for (int i = 0; i < 3; ++i) { // X11 sends both, Wayland the press alone
        Release(kQ, true);
        Press(kQ, true);
        EXPECT_FALSE(fShortcutsSawKey);
    }
    Release(kQ);
    EXPECT_EQ(fReceived.size(), 1U);
    EXPECT_TRUE(fField->fSeen.empty());
    Press(kQ);
    EXPECT_TRUE(fShortcutsSawKey);
    fIsWaiting = true; // as a held space bar makes the field wait: it is no keystroke
    Press(kQ, true);
    Release(kQ);
    EXPECT_EQ(fReceived.size(), 1U);
    EXPECT_EQ(fField->fSeen, (std::vector{QEvent::KeyPress, QEvent::KeyRelease}));
    EXPECT_EQ(PressWaiting(kQ), (std::vector<Keystroke>{{0x0C, 0x1000}}));
}

TEST_F(KeystrokeCapture, ReleaseThatWentElsewhere_CostsNoKey) {
    fIsWaiting = true;
    Press(kQ);
    Press(kQ);
    EXPECT_TRUE(fShortcutsSawKey);
    EXPECT_EQ(fField->fSeen, std::vector{QEvent::KeyPress});
    QKeyEvent bare = kQ.Event(QEvent::KeyPress); // as programs send it, without an override before
    fIsWaiting = true;
    Press(kQ);
    QCoreApplication::sendEvent(fWindow.windowHandle(), &bare);
    EXPECT_EQ(fField->fSeen.size(), 2U);
    fIsWaiting = true;
    QKeyEvent first = kQ.Event(QEvent::ShortcutOverride);
    QCoreApplication::sendEvent(fField, &first); // and its window goes before the press comes
    EXPECT_EQ(PressWaiting(kQ).size(), 1U);
    EXPECT_EQ(fField->fSeen.size(), 2U);
}

// Repetitions that Qt had not seen to be such counted as new keys: a held Return made the field wait again.
TEST_F(KeystrokeCapture, PressAtTheTimeOfItsRelease_IsARepetition) {
    fIsWaiting = true;
    Press(kQ, false, 100);
    for (const std::uint64_t time : {600, 640}) {
        Release(kQ, false, time);
        Press(kQ, false, time);
        EXPECT_FALSE(fShortcutsSawKey);
    }
    Press(kQ, true, 680);
    Release(kQ, false, 700);
    EXPECT_TRUE(fField->fSeen.empty());
    EXPECT_EQ(fReceived.size(), 1U);
    // Down since before the field waits.
    Press(kQ, false, 800);
    Press(kQ, true, 1300);
    Release(kQ, false, 1340);
    EXPECT_EQ(fField->fSeen.size(), 3U) << "a key that was taken once is the window's again";
    fIsWaiting = true;
    Press(kQ, false, 1340);
    EXPECT_EQ(fReceived.size(), 1U);
    EXPECT_TRUE(fIsWaiting);
    Release(kQ, false, 1380);
    Press(kQ, false, 1381);
    EXPECT_EQ(fReceived.size(), 2U) << "released and pressed again";
}

TEST_F(KeystrokeCapture, SwappedTwice_IsAsBefore) {
    for (const bool isOn : {false, true, false, true}) {
        SwapNSAppMethods();
        fField->fSeen.clear();
        EXPECT_EQ(PressWaiting(kQ).size(), isOn ? 1U : 0U);
        EXPECT_EQ(fField->fSeen.size(), isOn ? 0U : 2U);
    }
    gDrevixPane = nullptr; // without a panel nothing is taken
    Press(kQ);
    EXPECT_EQ(fField->fSeen, std::vector{QEvent::KeyPress});
}

} // namespace
} // namespace drevix::test
