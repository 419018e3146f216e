// The keystroke field: how it comes to wait for a key combination, what ends that, and what it tells.
#include "keyboard/qt/keystroke_capture.h"
#include "pane/keystroke_field.h"
#include "tests/pane/panel.h"

namespace drevix::test {
namespace {

class KeystrokeOfControl : public PanelTest {
  protected:
    ~KeystrokeOfControl() override { SetCommandKey(CommandKey::Super); }
    void SetUp() override {
        Start();
        SelectControl(2, 4); // button II, which has shift and key 0x13
    }
    [[nodiscard]] KeystrokeField *Field() const { return Find<KeystrokeField>("uiSettingsFieldKeystroke"); }
    [[nodiscard]] QList<QAction *> CommandKeys() const {
        return Find<QToolButton>("uiSettingsButtonKeys")->menu()->actions();
    }
    [[nodiscard]] QString Line() const { return Text("uiSettingsTextKeystroke"); }
    [[nodiscard]] bool IsWaiting() const {
        const bool isWaiting = fPane->OverrideKeysIsActive();
        EXPECT_EQ(Field()->text() == u"Press the keys now"_s, isWaiting);
        EXPECT_EQ(Field()->accessibleDescription().contains(u"Waiting"_s), isWaiting);
        return isWaiting;
    }
    void Give(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(Field(), Qt::LeftButton);
        EXPECT_TRUE(IsWaiting());
        QTest::keyClick(Field(), key, modifiers);
    }
};

TEST_F(KeystrokeOfControl, Field_WaitsOnAClickOrKeyAndTakesOneKeystroke) {
    const std::vector<std::function<void()>> ways = {
        [this] { QTest::mouseClick(Field(), Qt::LeftButton); },
        [this] { QTest::keyClick(Field(), Qt::Key_Return); },
        [this] { QTest::keyClick(Field(), Qt::Key_Enter, Qt::KeypadModifier); },
        [this] { QTest::keyClick(Field(), Qt::Key_Space); },
        [this] { QTest::keyClick(Field(), Qt::Key_F2); },
    };
    static constexpr struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        std::uint8_t keyCode;
        std::uint16_t stored;
        const char *shown;
    } kRows[] = {
        {Qt::Key_Backtab, Qt::ShiftModifier, 0x30, 0x0200, "shift+tab"},
        {Qt::Key_Escape, Qt::NoModifier, 0x35, 0, "esc"},
        {Qt::Key_F4, Qt::AltModifier, 0x76, 0x0800, "opt+F4"},
        {Qt::Key_F1, Qt::NoModifier, 0x7A, 0, "F1"},         // the shortcut of the help
        {Qt::Key_A, Qt::AltModifier, 0x00, 0x0800, "opt+a"}, // the key of Apply
        {Qt::Key_U, Qt::AltModifier, 0x20, 0x0800, "opt+u"}, // and of a page
    };
    for (const auto &way : ways) {
        for (const auto &row : kRows) {
            AppPrefs expected = fPane->WorkingCopy();
            expected.device[0].action[19].keyCode = row.keyCode;
            expected.device[0].action[19].modifiers = row.stored;
            Field()->setFocus();
            EXPECT_FALSE(IsWaiting());
            way();
            ASSERT_TRUE(IsWaiting());
            QTest::keyClick(Field(), row.key, row.modifiers);
            EXPECT_FALSE(IsWaiting());
            EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << row.shown;
            EXPECT_EQ(Field()->text(), TextOf(row.shown));
            EXPECT_TRUE(CanApply() && fProblem.isEmpty()) << "nothing else acted on the key";
            EXPECT_EQ(QApplication::focusWidget(), Field());
        }
    }
    const AppPrefs before = fPane->WorkingCopy();
    fPane->willUnselect();
    Give(Qt::Key_8);
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before)) << "a panel that is left takes no keys";
    fPane->didSelect();
    Give(Qt::Key_8);
    EXPECT_EQ(Field()->text(), u"8"_s);
}

TEST_F(KeystrokeOfControl, DesktopThatKeepsItsCombinations_IsNamedWhileTheFieldWaits) {
    // The combinations of a Wayland compositor never came, and the field waited on silently.
    auto *const keyboard = Field()->findChild<WholeKeyboard *>();
    const QString legend = Line();
    const auto tellsOfDesktop = [&] {
        const bool isTold = Line() == u"The desktop keeps its own combinations."_s;
        EXPECT_TRUE(isTold || Line() == legend) << Line();
        EXPECT_EQ(Field()->accessibleDescription().contains(u"Those of the desktop do not arrive"_s), isTold);
        return isTold;
    };
    Q_EMIT keyboard->answered(false);
    EXPECT_FALSE(tellsOfDesktop()) << "nothing was asked";
    QTest::mouseClick(Field(), Qt::LeftButton);
    EXPECT_FALSE(tellsOfDesktop());
    for (const bool isGiven : {false, true, false}) { // the user takes his leave back
        Q_EMIT keyboard->answered(isGiven);
        EXPECT_EQ(tellsOfDesktop(), !isGiven);
    }
    QTest::keyClick(Field(), Qt::Key_X);
    EXPECT_FALSE(tellsOfDesktop()) << "it no longer waits";
}

TEST_F(KeystrokeOfControl, GoingElsewhere_LeavesTheKeystroke) {
    QLineEdit other; // a window of its own
    const std::vector<std::function<void()>> ways = {
        [this] { QTest::mouseClick(Find<QLabel>("uiSettingsFieldKeystrokeLabel"), Qt::LeftButton); },
        [this] { Click("uiPaneButtonRevert"); },
        [this] { Find<QTabWidget>("uiPaneTabs")->setFocus(); },
        [this] { fPane->showControl(u"buttonI"_s), SelectControl(2, 4); },
        [&other] {
            other.show();
            other.activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
        },
    };
    const AppPrefs before = fPane->WorkingCopy();
    const QString shown = Field()->text();
    for (const auto &way : ways) {
        QTest::mouseClick(Field(), Qt::LeftButton);
        ASSERT_TRUE(IsWaiting());
        way();
        EXPECT_FALSE(IsWaiting());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_X);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before));
        EXPECT_EQ(Field()->text(), shown);
    }
    EXPECT_EQ(other.text(), u"x"_s) << "the key goes to the window that is active";
}

TEST_F(KeystrokeOfControl, SharedKeystroke_IsTold) {
    const QString legend = u"Super is stored as cmd"_s;
    EXPECT_EQ(Line(), legend);
    Give(Qt::Key_G, Qt::ShiftModifier); // key 5: "Turn right"
    EXPECT_EQ(Line(), u"Also used by Turn right"_s);
    EXPECT_TRUE(Field()->accessibleDescription().startsWith(Line()));
    Give(Qt::Key_G);
    EXPECT_EQ(Line(), legend) << "other modifiers";
    Give(Qt::Key_G, Qt::ShiftModifier);
    SelectControl(2, 3);
    Give(Qt::Key_G, Qt::ShiftModifier);
    EXPECT_EQ(Line(), u"Also used by Turn right and 1 more"_s);
    for (const int control : {3, 4}) {
        SelectControl(2, control);
        ASSERT_TRUE(Choose("uiSettingsMenuExtraKeys", 2));
        EXPECT_EQ(Line(), u"Click, then press the keys."_s) << "no key is nobody's";
    }
}

TEST_F(KeystrokeOfControl, CommandKey_IsTheUsersChoiceAndKept) {
    static constexpr struct {
        int choice;
        std::uint16_t ofCtrl, ofSuper;
        const char *line, *command;
    } kRows[] = {
        {1, 0x0100, 0x1000, "Ctrl is stored as cmd", "Ctrl"},
        {0, 0x1000, 0x0100, "Super is stored as cmd", "Super"},
    };
    for (const auto &row : kRows) {
        const AppPrefs before = fPane->WorkingCopy();
        CommandKeys()[row.choice]->trigger();
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before)) << "stored keystrokes stay";
        for (int start = 0; start < 2; ++start) {
            EXPECT_EQ(Line(), TextOf(row.line));
            EXPECT_EQ(Text("uiSettingsBoxKeyCommand"), TextOf(row.command));
            EXPECT_TRUE(CommandKeys()[row.choice]->isChecked());
            Give(Qt::Key_7, Qt::ControlModifier);
            EXPECT_EQ(Slot(19).modifiers, row.ofCtrl);
            Give(Qt::Key_7, Qt::MetaModifier);
            EXPECT_EQ(Slot(19).modifiers, row.ofSuper);
            SetCommandKey(CommandKey::Super);
            SetUp();
        }
    }
}

} // namespace
} // namespace drevix::test
