// Finding actions by name, the menu of a control with its clipboard, and the sheets.
#include "keyboard/qt/keystroke_capture.h"
#include "pane/action_search.h"
#include "pane/find_panel.h"
#include "pane/key_texts.h"
#include "pane/sheet.h"
#include "qbase/qbase_exchange.h"
#include "tests/pane/panel.h"

#include <QBuffer>
#include <QClipboard>
#include <QPainter>
#include <QSvgGenerator>

namespace drevix::test {
namespace {

class FindAction : public PanelTest {
  protected:
    void SetUp() override {
        Start();
        ASSERT_TRUE(fPane->showControl(u"buttonII"_s));
    }
    [[nodiscard]] static QWidget *Panel() { return QApplication::activePopupWidget(); }
    // Opens the panel, types, and gives what stands in its list, what cannot be taken in brackets.
    [[nodiscard]] QStringList Type(const QString &query) const {
        QTest::keyClick(fWindow.get(), Qt::Key_K, Qt::ControlModifier);
        if (Panel() == nullptr) {
            return {u"no panel"_s};
        }
        QTest::keyClicks(Panel()->findChild<QLineEdit *>(), query);
        QStringList rows;
        const auto *const list = Panel()->findChild<QListWidget *>();
        for (int i = 0; i < list->count(); ++i) {
            const QListWidgetItem *item = list->item(i);
            const bool isEnabled = (item->flags() & Qt::ItemIsEnabled) != 0;
            rows += isEnabled ? item->text()
                              : u"(%1: %2)"_s.arg(item->text(), item->data(Qt::UserRole + 2).toString());
        }
        return rows;
    }
    static void Press(Qt::Key key) { QTest::keyClick(Panel()->findChild<QLineEdit *>(), key); }
};

TEST_F(FindAction, EveryRow_StoresItsActionOrSaysWhyNot) {
    QSet<int> found;
    for (const SearchEntry &entry : SearchEntries()) {
        const QStringList rows = Type(entry.title);
        const qsizetype at = rows.indexOf(entry.title);
        const ActionRefusal refusal = CheckAction(fPane->WorkingCopy(), 19, entry.command);
        EXPECT_EQ(at >= 0, refusal == ActionRefusal::None) << entry.title;
        for (qsizetype i = 0; i < at; ++i) {
            Press(Qt::Key_Down);
        }
        Press(at >= 0 ? Qt::Key_Return : Qt::Key_Escape);
        EXPECT_EQ(Panel(), nullptr);
        EXPECT_TRUE(at < 0 || Slot(19).command == entry.command) << entry.title;
        found += entry.command;
    }
    for (const ActionInfo &action : AllActions()) {
        EXPECT_TRUE(found.contains(action.code)) << action.title;
    }
}

TEST_F(FindAction, Query_RanksNamesAndTellsReasons) {
    EXPECT_EQ(Type(u"wind"_s).last(), u"(Fit to window: not in Global Settings)"_s);
    Press(Qt::Key_Escape);
    EXPECT_EQ(Type(u"open ca"_s),
              QStringList({u"Open calendar"_s, u"Open calculator"_s, u"Open file or application"_s}));
    Press(Qt::Key_Escape);
    EXPECT_TRUE(Type(u"xyzzy"_s).value(0).contains(u"No action matches"_s));
    Press(Qt::Key_Return); // takes nothing
    EXPECT_EQ(Slot(19).command, kActionKeystroke);
}

TEST_F(FindAction, TypedKeystroke_IsTakenByTheKeyboardsNames) {
    SetCommandKey(CommandKey::Control);
    EXPECT_EQ(Type(u"ctrl+shift+F5"_s).value(0), u"Ctrl+Shift+F5"_s);
    Press(Qt::Key_Return);
    SetCommandKey(CommandKey::Super);
    EXPECT_EQ(Slot(19).modifiers, kCommandModifier | kShiftModifier) << "Ctrl is the command key";
    EXPECT_EQ(Slot(19).keyCode, 0x60);
    EXPECT_EQ(Text("uiSettingsFieldKeystroke"), u"cmd+shift+F5"_s) << "the stored name";
    EXPECT_EQ(KeyText(Slot(19)), u"Super+Shift+F5"_s);
    EXPECT_EQ(KeyText({kActionKeystroke, 0, 0x4C, 0, 0, 0, 0, {}}), u"Num Enter"_s);
}

class ControlMenu : public PanelTest {
  protected:
    // Opens the menu of a control and chooses an entry. False where it is dim.
    bool Take(const char *control, const QString &entry) const {
        EXPECT_TRUE(fPane->showControl(QLatin1String(control)));
        return ChooseInMenu(entry);
    }
};

TEST_F(ControlMenu, CopiedAction_GoesToAnotherControlAndApplication) {
    QGuiApplication::clipboard()->clear();
    EXPECT_FALSE(Take("buttonII", u"Paste Action"_s));
    EXPECT_TRUE(Take("buttonII", u"Copy Action"_s));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"Button II: "_s + KeyText(Slot(19)));
    const std::uint8_t copied = Slot(19).keyCode;
    ASSERT_TRUE(fPane->showRecord(u"beta"_s));
    EXPECT_TRUE(Take("ringUp", u"Paste Action"_s));
    EXPECT_EQ(Slot(2).keyCode, copied);
    EXPECT_FALSE(Take("ringUp", u"Paste All Actions"_s)) << "one control's alone";
    EXPECT_TRUE(Take("ringUp", u"No Action"_s));
    EXPECT_EQ(Slot(2).command, kActionNone);
    EXPECT_TRUE(Take("ringUp", u"Back to Factory"_s));
    EXPECT_EQ(Slot(2).keyCode, 2);
}

TEST_F(ControlMenu, CopiedRecord_LeavesOutWhatTheOtherMayNotHold) {
    ASSERT_TRUE(fPane->showRecord(u"photo"_s));
    ASSERT_TRUE(Take("ringUp", u"No Action"_s));
    ASSERT_TRUE(fPane->showControl(u"ringLeft"_s));
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 2)); // move left, and its opposite
    ASSERT_TRUE(Take("ringLeft", u"Copy All Actions"_s));
    ASSERT_TRUE(fPane->showRecord(u"beta"_s));
    const ActionSlot before = Slot(0);
    EXPECT_TRUE(Take("buttonV", u"Paste All Actions"_s));
    EXPECT_EQ(Slot(2).command, kActionNone);
    EXPECT_EQ(std::memcmp(&Slot(0), &before, sizeof before), 0);
    EXPECT_TRUE(fProblem.contains(u"Push left, Push right"_s)) << fProblem;
    EXPECT_TRUE(CanApply());
}

// What lies on the clipboard may be anybody's.
TEST_F(ControlMenu, ForeignClipboard_IsNotTaken) {
    ASSERT_TRUE(Take("buttonII", u"Copy All Actions"_s));
    const QString type = u"application/x-com.halcyra.drevix.record"_s;
    const QByteArray whole = QGuiApplication::clipboard()->mimeData()->data(type);
    ASSERT_GT(whole.size(), 1668);
    QList<QByteArray> blocks = {QByteArray(), whole.left(21), whole + whole};
    for (const qsizetype at : {0, 8, 16, 20, 23, 24}) {
        blocks += whole;
        blocks.last()[at] = 'x';
    }
    for (const QByteArray &bytes : blocks) {
        auto *const data = new QMimeData;
        data->setData(type, bytes);
        QGuiApplication::clipboard()->setMimeData(data);
        EXPECT_FALSE(Take("buttonII", u"Paste All Actions"_s)) << bytes.size();
    }
    EXPECT_FALSE(CanApply());
}

// German names were cut, and paper has no tool tips.
TEST(Sheet, Actions_AreNeverCut) {
    const QString longest = u"Strg + nach unten scrollen"_s;
    for (const QString &action : {u"Ctrl+S"_s, longest}) {
        SheetContents sheet{u"GIMP"_s, {}, {}};
        sheet.controls.fill({u"Drehung losgelassen"_s, action, {}, true, false});
        QBuffer file;
        QSvgGenerator paper; // writes texts as they are
        paper.setOutputDevice(&file);
        paper.setResolution(96);
        QPainter painter(&paper);
        PaintSheet(painter, sheet);
        painter.end();
        EXPECT_EQ(file.data().count((u'>' + action + u"</text>"_s).toUtf8()), 15) << action;
    }
}

} // namespace
} // namespace drevix::test
