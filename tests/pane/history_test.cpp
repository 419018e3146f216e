// Earlier settings in the panel, and what is told of files beside the settings file that could not be written.
#include "tests/pane/panel.h"

#include "pane/history_panel.h"
#include "platform/files/kept_bytes.h"

#include <QTreeWidget>

namespace drevix::test {
namespace {

class Earlier : public PanelTest {
  protected:
    void Ask(const std::function<void(QDialog *)> &answer) const {
        AnswerNext(answer);
        PressKeys(Qt::Key_H);
    }
    static QComboBox *What(const QDialog *panel) { return panel->findChild<QComboBox *>(); }
};

TEST_F(Earlier, ComeBackWholeOrForOneApplication) {
    PressKeys(Qt::Key_H);
    EXPECT_TRUE(fProblem.startsWith(u"There are no earlier settings"_s)) << fProblem;
    const AppPrefs global = fPane->WorkingCopy();
    Edit();
    Click("uiPaneButtonApply");
    ASSERT_TRUE(Choose(Targets(), 4)); // beta
    Edit();
    Click("uiPaneButtonApply");
    const AppPrefs changed = Saved(3);
    Ask([&](QDialog *panel) {
        auto *const list = panel->findChild<QTreeWidget *>();
        ASSERT_EQ(list->topLevelItemCount(), 2);
        // In a language whose times have seconds they stood there twice.
        EXPECT_EQ(list->topLevelItem(0)->text(0).count(u':'), 2) << list->topLevelItem(0)->text(0);
        EXPECT_EQ(list->topLevelItem(0)->text(1), u"beta: other values"_s);
        EXPECT_EQ(list->topLevelItem(1)->text(1), u"Global Settings: other values"_s);
        list->setCurrentItem(list->topLevelItem(1));
        EXPECT_EQ(What(panel)->count(), 5);
        What(panel)->setCurrentIndex(1);
        Press(panel, u"Restore"_s);
    });
    EXPECT_TRUE(SameBytes(Saved(0), global) && SameBytes(fPane->WorkingCopy(), global));
    EXPECT_TRUE(SameBytes(Saved(3), changed)) << "the others stay";
    Ask([&](QDialog *panel) { Press(panel, u"Restore"_s); }); // the newest: what the restoring replaced
    EXPECT_FALSE(SameBytes(Saved(0), global));
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), Saved(0)));
    Ask([&](QDialog *panel) { Press(panel, u"Cancel"_s); });
    EXPECT_FALSE(SameBytes(Saved(0), global));
}

// A companion's file that could not be written was told of by nobody, 12 times of 12.
TEST_F(Earlier, CompanionsFileThatIsNotWritten_IsTold) {
    const std::string file = WriteMenu("<HotKey><Menu>Empty Trash</Menu></HotKey>");
    const std::string before = ReadWhole(file);
    Start();
    // Its old bytes have nowhere to be kept, so it is not touched; the settings themselves can be saved.
    fs::create_directories(fFolder.Path("state/com.halcyra.drevix"));
    WriteWhole(fFolder.Path("state/com.halcyra.drevix/kept"), "a file in the way");
    ASSERT_TRUE(ChooseEntry(u"buttonII"_s, 1));
    Click("uiPaneButtonApply");
    EXPECT_EQ(Saved(0).device[0].action[19].command, kActionToolMenu);
    EXPECT_EQ(ReadWhole(file), before);
    EXPECT_TRUE(fProblem.contains(TextOf(file)) && fProblem.contains(u"hold again"_s)) << fProblem;
    EXPECT_FALSE(fPane->mayClose()) << "it is to be read";
}

// What the companion wrote while the panel was in front was replaced by Apply, and nobody was told.
TEST_F(Earlier, CompanionsChangeThatIsReplaced_IsToldOnce) {
    const auto bind = [](const std::string &key) {
        return WriteMenu("<HotKey><Menu>Empty Trash</Menu><Key>" + key +
                         "</Key><Device>pyralis</Device></HotKey><HotKey><Menu>Eject</Menu></HotKey>");
    };
    const std::string file = bind("");
    Start();
    ASSERT_TRUE(ChooseEntry(u"buttonII"_s, 2));
    const std::string bound = ReadWhole(bind("1"));
    Click("uiPaneButtonApply");
    EXPECT_TRUE(fProblem.contains(TextOf(file)) && fProblem.contains(u"meanwhile changed"_s)) << fProblem;
    EXPECT_EQ(ReadWhole(fProblem.chopped(1).section(u' ', -1).toStdString()), bound)
        << "the copy that is named";
    bind("2");
    EXPECT_FALSE(fPane->mayClose()) << "what closing replaced is to be read";
    EXPECT_TRUE(fPane->mayClose());
    fPane->didSelect();

    // What came in when the panel came to the front, or with another program's save, is known.
    GoAway();
    bind("1");
    ComeBack();
    ASSERT_TRUE(ChooseEntry(u"buttonI"_s, 2));
    Click("uiPaneButtonApply");
    EXPECT_EQ(fProblem, u""_s);
    bind("3");
    AppPrefs theirs = fPane->WorkingCopy();
    theirs.device[0].navSpeed = 7;
    Save({theirs});
    ASSERT_TRUE(QTest::qWaitFor([&] { return fPane->WorkingCopy().device[0].navSpeed == 7; }));
    ASSERT_TRUE(ChooseEntry(u"buttonII"_s, 2));
    Click("uiPaneButtonApply");
    EXPECT_EQ(fProblem, u""_s);
}

TEST_F(Earlier, KeptCopyOfAFailedExport_IsNamed) {
    const std::string old(200'000, 'x');
    int copies = 0;
    ForEachFault(5, [&](int failAt, Lasts lasts) {
        const std::string path =
            fFolder.Path((lasts == Lasts::Once ? "once" : "for ever") + std::to_string(failAt));
        WriteWhole(path, old);
        OSErr status = noErr;
        const bool wasHit = MeetsFault(failAt, lasts, ENOSPC,
                                       [&] { status = fPane->ExportCurrentAppPrefs(TextOf(path), true); });
        const std::string copy = FindKeptCopy(path);
        if (status != noErr && !copy.empty()) {
            ++copies;
            EXPECT_TRUE(fProblem.contains(TextOf(copy))) << fProblem;
            EXPECT_EQ(ReadWhole(copy), old);
        }
        return wasHit;
    });
    EXPECT_GT(copies, 0);
}

} // namespace
} // namespace drevix::test
