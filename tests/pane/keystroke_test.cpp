// The keystroke field: how it comes to wait for a key combination, what ends that, and what it tells.
#include "keyboard/keystroke_capture.h"
#include "pane/keystroke_field.h"
#include "tests/pane/panel.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSettings>
#include <QToolButton>

namespace drevix::test {
namespace {

class KeystrokeOfControl : public PanelTest {
  protected:
    void SetUp() override {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, TextOf(fFolder.Path()));
        QCoreApplication::setOrganizationName(QStringLiteral("tests"));
        Begin();
    }
    void TearDown() override {
        PanelTest::TearDown();
        QCoreApplication::setOrganizationName({});
        SetCommandKey(CommandKey::Super);
    }
    static QString TextOf(const std::string &text) { return QString::fromStdString(text); }
    void Begin() {
        Start();
        SelectControl(2, 4); // button II, which has shift and key 0x13
    }
    [[nodiscard]] KeystrokeField *Field() const { return Find<KeystrokeField>("uiSettingsFieldKeystroke"); }
    [[nodiscard]] QString Line() const { return Find<QLabel>("uiSettingsTextKeystroke")->text(); }
    [[nodiscard]] bool IsWaiting() const {
        const bool isWaiting = fPane->OverrideKeysIsActive();
        EXPECT_EQ(Field()->text() == QStringLiteral("Press a key combination…"), isWaiting);
        EXPECT_EQ(Field()->accessibleDescription().contains(QStringLiteral("Waiting")), isWaiting);
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
            EXPECT_EQ(Field()->text(), QLatin1String(row.shown));
            EXPECT_TRUE(CanApply()) << "nothing else acted on the key";
            EXPECT_EQ(QApplication::focusWidget(), Field());
        }
    }
}

TEST_F(KeystrokeOfControl, GoingElsewhere_LeavesTheKeystroke) {
    QLineEdit other; // a window of its own
    const std::vector<std::function<void()>> ways = {
        [this] { QTest::mouseClick(Find<QLabel>("uiSettingsFieldKeystrokeLabel"), Qt::LeftButton); },
        [this] { Click("uiPaneButtonRevert"); },
        [this] { SelectControl(2, 4); },
        [this] { Find<QTabWidget>("uiPaneTabs")->setFocus(); },
        [this] { fPane->showControl(QStringLiteral("buttonI")), SelectControl(2, 4); },
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
    EXPECT_EQ(other.text(), QStringLiteral("x")) << "the key goes to the window that is active";
}

TEST_F(KeystrokeOfControl, SharedKeystroke_IsTold) {
    const QString legend = QStringLiteral("cmd is Super, opt is Alt, ctrl is Ctrl");
    EXPECT_EQ(Line(), legend);
    Give(Qt::Key_6, Qt::ShiftModifier); // key 0x16 of no control
    EXPECT_EQ(Line(), legend);
    Give(Qt::Key_G, Qt::ShiftModifier); // key 5: "Turn right"
    EXPECT_EQ(Line(), QStringLiteral("Also used by Turn right"));
    EXPECT_TRUE(Field()->accessibleDescription().startsWith(Line()));
    Give(Qt::Key_G);
    EXPECT_EQ(Line(), legend) << "other modifiers";
    Give(Qt::Key_G, Qt::ShiftModifier);
    SelectControl(2, 3);
    Give(Qt::Key_G, Qt::ShiftModifier);
    EXPECT_EQ(Line(), QStringLiteral("Also used by Turn right and 1 more"));
    ASSERT_TRUE(Choose("uiSettingsMenuExtraKeys", 2)); // no key, as another control
    SelectControl(2, 4);
    ASSERT_TRUE(Choose("uiSettingsMenuExtraKeys", 2));
    EXPECT_EQ(Line(), QStringLiteral("Click the field, then press the keys."));
}

TEST_F(KeystrokeOfControl, CommandKey_IsTheUsersChoiceAndKept) {
    static constexpr struct {
        int choice;
        std::uint16_t ofCtrl, ofSuper;
        const char *line, *command;
    } kRows[] = {
        {1, 0x0100, 0x1000, "cmd is Ctrl, opt is Alt, ctrl is Super", "The Ctrl key"},
        {0, 0x1000, 0x0100, "cmd is Super, opt is Alt, ctrl is Ctrl", "The Super key"},
    };
    for (const auto &row : kRows) {
        const AppPrefs before = fPane->WorkingCopy();
        Find<QToolButton>("uiSettingsButtonKeys")->menu()->actions()[row.choice]->trigger();
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before)) << "stored keystrokes stay";
        for (int start = 0; start < 2; ++start) {
            EXPECT_EQ(Line(), QLatin1String(row.line));
            EXPECT_TRUE(
                Find<QCheckBox>("uiSettingsBoxKeyCommand")->toolTip().contains(QLatin1String(row.command)));
            EXPECT_TRUE(
                Find<QToolButton>("uiSettingsButtonKeys")->menu()->actions()[row.choice]->isChecked());
            Give(Qt::Key_7, Qt::ControlModifier);
            EXPECT_EQ(Slot(19).modifiers, row.ofCtrl);
            Give(Qt::Key_7, Qt::MetaModifier);
            EXPECT_EQ(Slot(19).modifiers, row.ofSuper);
            End();
            SetCommandKey(CommandKey::Super);
            Begin();
        }
    }
}

TEST_F(KeystrokeOfControl, LeftPanel_TakesNoKeys) {
    for (int turn = 0; turn < 2; ++turn) {
        fPane->willUnselect();
        QTest::mouseClick(Field(), Qt::LeftButton);
        ASSERT_TRUE(IsWaiting());
        const AppPrefs before = fPane->WorkingCopy();
        QTest::keyClick(Field(), Qt::Key_8);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before));
        fPane->didSelect();
        Give(Qt::Key_8, turn == 0 ? Qt::AltModifier : Qt::MetaModifier);
        EXPECT_FALSE(SameBytes(fPane->WorkingCopy(), before));
    }
}

} // namespace
} // namespace drevix::test
