// The side bar of applications, the pop-up menu that takes its place, and the strip of messages.
#include "pane/application_icons.h"
#include "pane/message_strip.h"
#include "tests/pane/panel.h"

#include <QAccessible>
#include <QImage>
#include <QSignalSpy>

namespace drevix::test {
namespace {

class SideBar : public PanelTest {
  protected:
    SideBar() {
        fInstalled.Add("peach.desktop", "Peach");
        fInstalled.Add("beta.desktop", "Beta");
        fInstalled.Add("greek.desktop", "\u0391\u03B2\u03B3");
    }
    [[nodiscard]] QListView *View() const { return Find<QListView>("uiTargetList"); }
    [[nodiscard]] const TargetRows *RowModel() const { return qobject_cast<TargetRows *>(View()->model()); }
    // The rows at the event loop's next turn, headings in brackets.
    [[nodiscard]] QString Rows() const {
        QCoreApplication::processEvents();
        QStringList rows;
        for (int i = 0; i < RowModel()->rowCount(); ++i) {
            const QString text = RowModel()->index(i, 0).data().toString();
            rows += RowModel()->IsHeading(i) ? u"[%1]"_s.arg(text) : text;
        }
        return rows.join(u' ');
    }
    void Search(const QString &text) const {
        QTest::keyClick(fWindow.get(), Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(QApplication::focusWidget(), text);
    }
    // The name of what is selected in the side bar.
    [[nodiscard]] QString Selected() const {
        QCoreApplication::processEvents();
        QStringList names;
        for (const QModelIndex &row : View()->selectionModel()->selectedIndexes()) {
            names += row.data().toString();
        }
        return Find<QAbstractButton>("uiTargetGlobal")->isChecked() ? u"Global"_s : names.join(u' ');
    }
    [[nodiscard]] MessageStrip *Strip() const { return Find<MessageStrip>("uiPaneStrip"); }
    [[nodiscard]] QString StripTitle() const {
        return Strip()->isVisible() ? Text("uiStripTitle") : QString();
    }
    void PressInStrip(const QString &title) const {
        Press(Strip(), title);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    const InstalledApplications fInstalled{fFolder};
};

TEST_F(SideBar, RowsFollowTheList) {
    const QString all = u"[Yours] Alpha beta [From the factory] photo"_s;
    EXPECT_EQ(Rows(), all);
    EXPECT_EQ(Selected(), u"Global"_s);
    ASSERT_TRUE(Choose(Targets(), 3));
    EXPECT_EQ(Selected(), u"Alpha"_s);
    EXPECT_EQ(Text("uiHeaderTextName"), u"Alpha"_s);
    // The dot between the notes was two letters: its bytes were read as Latin-1.
    ASSERT_TRUE(Choose(Find<PopUpMenu>("uiSettingsMenuAction"), 6));
    EXPECT_EQ(Text("uiHeaderTextNote"), u"Your settings · 1 control changed"_s);
    const auto endOf = [&](int source) { // of its row, where marks are
        QRect end = View()->visualRect(RowModel()->index(RowModel()->RowOfSource(source), 0));
        end.setLeft(end.right() - end.height());
        return View()->viewport()->grab(end).toImage();
    };
    const std::pair before(endOf(3), endOf(4));
    Click("uiSettingsRadioDisabled");
    EXPECT_NE(endOf(3), before.first) << "off";
    EXPECT_EQ(endOf(4), before.second);
    const QModelIndex row = RowModel()->index(RowModel()->RowOfSource(3), 0);
    EXPECT_EQ(row.data(Qt::AccessibleDescriptionRole).toString(), u"your settings, off, unsaved changes"_s);
    const auto *access = QAccessible::queryAccessibleInterface(View());
    EXPECT_EQ(access->child(row.row())->text(QAccessible::Name), u"Alpha"_s);
    AnswerNext([](QDialog *panel) { Press(panel, u"Delete"_s); });
    Click("uiTargetButtonDelete");
    EXPECT_EQ(Rows(), u"[Yours] beta [From the factory] photo"_s);
    EXPECT_EQ(Selected(), u"photo"_s) << "the one above in the list";
    EXPECT_FALSE(Find<QWidget>("uiTargetButtonDelete")->isEnabled()) << "a factory record stays";
    ASSERT_TRUE(Choose(Targets(), 0));
    Click("uiSettingsRadioDisabled");
    EXPECT_TRUE(Find<QWidget>("uiTargetGlobal")->property("isOff").toBool());
}

TEST_F(SideBar, Icons_AreFoundFromTheStartOn) {
    ApplicationIcons icons;
    QSignalSpy found(&icons, &ApplicationIcons::iconsFound);
    std::ignore = icons.IconOf(u"peach.desktop"_s, u"Peach"_s);
    EXPECT_FALSE(found.wait(50)) << "not before the first paint";
    icons.Start();
    EXPECT_TRUE(found.wait());
    std::ignore = icons.IconOf(u"beta.desktop"_s, u"Beta"_s);
    EXPECT_TRUE(found.wait());
}

TEST_F(SideBar, Search_FindsAndAddsWithTheKeyboard) {
    Search(u"BET"_s);
    EXPECT_EQ(Rows(), u"[Yours] beta"_s) << "no application that has settings is offered";
    EXPECT_FALSE(Find<QWidget>("uiTargetGlobal")->isVisible());
    const AppPrefs before = fPane->WorkingCopy();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); // to the first found
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before)) << "not chosen on the way";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "beta");
    Search(u"pea"_s);
    EXPECT_EQ(Rows(), u"[Installed, without settings] Peach"_s);
    EXPECT_EQ(Selected(), QString());
    const QModelIndex peach = RowModel()->index(1, 0);
    QTest::mouseClick(View()->viewport(), Qt::LeftButton, {}, View()->visualRect(peach).center() / 2);
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "beta") << "a click beside Add";
    QTest::mouseClick(View()->viewport(), Qt::LeftButton, {},
                      View()->visualRect(peach).topRight() + QPoint(-20, 12));
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "peach");
    EXPECT_EQ(Rows(), u"[Yours] Alpha beta Peach [From the factory] photo"_s);
    EXPECT_EQ(Selected(), u"Peach"_s);
    Search(u"greek"_s); // Mac OS Roman has none: the record's own names are of question marks
    EXPECT_EQ(Rows(), u"[Installed, without settings] \u0391\u03B2\u03B3"_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "greek");
    EXPECT_EQ(Text("uiHeaderTextName") + Selected(), u"\u0391\u03B2\u03B3\u0391\u03B2\u03B3"_s);
    Search(u"none such"_s);
    EXPECT_EQ(Rows(), QString());
    EXPECT_EQ(Text("uiTargetNone"), u"No application is called “none such”."_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(Rows().section(u' ', 0, 0), u"[Yours]"_s);
}

TEST_F(SideBar, ArrowKeysMoveTheFocusAlone) {
    Find<QWidget>("uiTargetGlobal")->setFocus();
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down}) {
        QTest::keyClick(QApplication::focusWidget(), key);
    }
    EXPECT_EQ(View()->currentIndex().data().toString(), u"photo"_s);
    EXPECT_EQ(Selected(), u"Global"_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(Selected(), u"photo"_s);
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up);
    }
    EXPECT_EQ(QApplication::focusWidget(), Find<QWidget>("uiTargetGlobal"));
}

TEST_F(SideBar, TenThousandRecords_AreOneRebuild) {
    const QBaseOwner base = MakeBase({MakeFullRecord(0, "")}, kPanelVersion);
    for (int i = 0; i < 10'000; ++i) {
        AppPrefs record = MakeRecord(kNoSignature, "app" + std::to_string(10'000 + i));
        ASSERT_NE(StoreAppPrefs(base.get(), record, kNoRecord), kNoRecord);
    }
    ASSERT_EQ(SaveDevicePrefsToPath(base.get(), fFolder.path), noErr);
    Start();
    QCoreApplication::processEvents();
    EXPECT_EQ(RowModel()->rowCount(), 10'001);
    QSignalSpy rebuilt(RowModel(), &TargetRows::rebuilt);
    Edit();
    ASSERT_TRUE(Choose(Targets(), 5000));
    EXPECT_EQ(rebuilt.count(), 0) << "changed data passes through";
    ASSERT_EQ(fPane->ImportAppPrefs(
                  WriteExport({MakeRecord(kNoSignature, "one"), MakeRecord(kNoSignature, "two")})),
              noErr);
    QCoreApplication::processEvents();
    EXPECT_EQ(rebuilt.count(), 1);
    EXPECT_EQ(RowModel()->rowCount(), 10'003);
}

TEST_F(SideBar, FoldsWhereThereIsNoRoom) {
    const auto state = [this] {
        QCoreApplication::processEvents();
        return std::pair(Find<QWidget>("uiTargetSideBar")->isVisible(), Targets()->isVisible());
    };
    fWindow->resize(1100, 700);
    EXPECT_EQ(state(), std::pair(true, false));
    QTest::keyClick(fWindow.get(), Qt::Key_F9);
    EXPECT_EQ(state(), std::pair(false, true));
    ASSERT_TRUE(Choose(Targets(), 4));
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "beta");
    EXPECT_FALSE(Choose(Targets(), Targets()->count() - 3)) << "there is no installer";
    Start();
    fWindow->resize(1100, 700);
    EXPECT_EQ(state(), std::pair(false, true)) << "kept";
    QTest::keyClick(fWindow.get(), Qt::Key_F9);
    EXPECT_EQ(state(), std::pair(true, false));
    fWindow->resize(fWindow->minimumSizeHint());
    EXPECT_EQ(state(), std::pair(false, true));
    fWindow->resize(1100, 700);
    EXPECT_EQ(state(), std::pair(true, false));
    QSet<QWidget *> areas;
    for (int i = 0; i < 5; ++i) {
        QTest::keyClick(fWindow.get(), Qt::Key_F6);
        areas += QApplication::focusWidget();
    }
    EXPECT_EQ(areas.size(), 4) << "side bar, header, stage, editor; nothing to save";
}

TEST_F(SideBar, OneRecordChangedOnBothSides_IsAsked) {
    ASSERT_TRUE(Choose(Targets(), 4));
    AppPrefs theirs = MakeFullRecord(kNoSignature, "beta");
    for (const auto &[answer, isTheirs] : {std::pair{u"Keep Mine"_s, false}, {u"Show Theirs"_s, true}}) {
        theirs.device[0].navSpeed = static_cast<std::uint8_t>(theirs.device[0].navSpeed + 1);
        Edit();
        const AppPrefs mine = fPane->WorkingCopy();
        Save({MakeFullRecord(0, ""), MakeFullRecord(kPhoto, "photo"), theirs});
        ComeBack();
        EXPECT_EQ(StripTitle(), u"Another program changed beta too"_s);
        PressInStrip(answer);
        EXPECT_EQ(StripTitle(), QString());
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), isTheirs ? theirs : mine)) << answer;
        fPane->willUnselect();
        fPane->didSelect();
        EXPECT_TRUE(SameBytes(Saved(2), isTheirs ? theirs : mine)) << answer;
    }
}

TEST_F(SideBar, ProblemsAndTheIntroduction_StayUntilTheyAreClosed) {
    EXPECT_EQ(StripTitle(), QString()) << "there are settings";
    EXPECT_NE(fPane->ImportAppPrefs(u"/nowhere.veltrana"_s), noErr);
    EXPECT_TRUE(StripTitle().startsWith(u"Couldn't import this file: "_s)) << StripTitle();
    QTest::mouseClick(Strip()->findChild<QToolButton *>(), Qt::LeftButton);
    EXPECT_EQ(StripTitle(), QString());
    fs::remove(fFolder.path);
    Start();
    EXPECT_EQ(StripTitle(), u"Welcome to your Veltrana"_s);
    PressInStrip(u"Got It"_s);
    EXPECT_EQ(StripTitle(), QString());
    Start();
    EXPECT_EQ(StripTitle(), QString());
}

} // namespace
} // namespace drevix::test
