// Nothing is lost: edits in the background, what other programs save, and saves that fail.
#include "tests/pane/panel.h"

namespace drevix::test {
namespace {

class Saving : public PanelTest {
  protected:
    [[nodiscard]] bool IsSaved() const { return SameBytes(Saved(0), fPane->WorkingCopy()); }
};

// An edit that came while the window was in the background was thrown away when it came to the front.
TEST_F(Saving, EditInTheBackground_IsSavedWithoutApply) {
    GoAway();
    ASSERT_TRUE(DropOnControl(19, MakeFile("notes.txt")));
    EXPECT_TRUE(IsSaved() && !CanApply()) << "a drop at once";
    auto *const rest = fPane->findChild<QTimer *>(u"fRestTimer"_s);
    const std::function<void()> ends[] = {[&] { rest->start(1); }, [] { ComeBack(); }};
    for (const auto &end : ends) {
        Edit();
        EXPECT_FALSE(IsSaved()) << "the wheel may still turn";
        EXPECT_EQ(rest->interval(), 1000);
        const AppPrefs edited = fPane->WorkingCopy();
        end();
        EXPECT_TRUE(QTest::qWaitFor([&] { return SameBytes(Saved(0), edited); }));
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), edited) && !CanApply());
        rest->setInterval(1000);
    }
    Edit();
    EXPECT_FALSE(rest->isActive()) << "in front Apply decides";
}

// Apply wrote every record over what another program had saved, and said so only sometimes.
TEST_F(Saving, RecordsOfOtherPrograms_ComeInAndTheSameOneIsTold) {
    const std::function<void()> ways[] = {
        [this] { Click("uiPaneButtonApply"); },
        [] { GoAway(), ComeBack(); },
        [this] { fPane->willUnselect(), fPane->didSelect(); },
        [this] { EXPECT_FALSE(fPane->mayClose()) << "stays to be read"; },
    };
    ASSERT_TRUE(Choose(Targets(), 4));
    std::uint8_t speed = 7;
    for (const auto &way : ways) {
        Save({MakeFullRecord(0, ""), MakeFullRecord(kNoSignature, "Alpha", ++speed),
              MakeFullRecord(kNoSignature, "beta"), MakeRecord(kNoSignature, "Ada")});
        Edit();
        const AppPrefs edited = fPane->WorkingCopy();
        way();
        EXPECT_EQ(fFolder.SavedNames(), Names({"", "Ada", "Alpha", "beta"}));
        EXPECT_EQ(Saved(2).device[0].navSpeed, speed);
        EXPECT_TRUE(SameBytes(Saved(3), edited) && SameBytes(fPane->WorkingCopy(), edited));
        EXPECT_EQ(Titles().join(u' '), u"Global Settings - Ada Alpha beta"_s);
        EXPECT_EQ(Targets()->currentIndex(), 4);
        EXPECT_TRUE(speed == 8 ? fProblem.isEmpty() : fProblem.contains(u"\"beta\" too"_s)) << fProblem;
    }
    EXPECT_TRUE(fPane->mayClose()) << "it was told";
}

// What another program saved was seen only when the window came to the front again.
TEST_F(Saving, OutsideChange_IsTakenInFrontUnlessSomethingIsUnsaved) {
    auto *const timer = fPane->findChild<QTimer *>(u"fDeviceCheckTimer"_s);
    timer->setInterval(1);
    const AppPrefs theirs = MakeFullRecord(0, "", 7);
    Save({theirs, MakeFullRecord(kNoSignature, "Ada")});
    EXPECT_TRUE(QTest::qWaitFor([&] { return SameBytes(fPane->WorkingCopy(), theirs); }));
    EXPECT_EQ(Titles().join(u' '), u"Global Settings - Ada"_s);
    Edit();
    EXPECT_EQ(Text("uiPaneTextDifferences"), u"Unsaved changes in Global Settings"_s);
    Save({theirs});
    QTest::qWait(20);
    EXPECT_EQ(Titles().constLast(), u"Ada"_s) << "not while an edit waits for Apply";
    EXPECT_TRUE(CanApply());
    QTest::keyClick(fWindow.get(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(Titles().join(u' '), u"Global Settings -"_s);
}

TEST_F(Saving, WhatIsTold_IsWhatEachSideDid) {
    ASSERT_TRUE(Choose(Targets(), 3));
    Delete();
    ASSERT_TRUE(Choose(Targets(), 3)); // beta
    Edit();
    AppPrefs alpha = MakeFullRecord(kNoSignature, "Alpha");
    alpha.active = 0;
    Save({MakeFullRecord(0, ""), MakeFullRecord(kPhoto, "photo"), alpha});
    Click("uiPaneButtonApply");
    EXPECT_EQ(fProblem, u"Another program deleted \"beta\", which was changed here; it is kept. "
                        u"Another program changed \"Alpha\", which was deleted here; it stays deleted. "
                        u"What was replaced is under Earlier Settings (Ctrl+H)."_s);
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "photo", "beta"}));
    GoAway();
    EXPECT_FALSE(fProblem.isEmpty()) << "it stays to be read";
    ComeBack();
    Edit();
    Click("uiPaneButtonApply");
    EXPECT_TRUE(fProblem.isEmpty());
}

TEST_F(Saving, BusyLock_IsToldAndTriedAgain) {
    auto other = std::make_unique<SettingsDocument>(fFolder.resources, kPanelVersion);
    std::ignore = other->Open(Access::Change);
    ASSERT_EQ(other->Lock({}), noErr);
    Edit();
    Click("uiPaneButtonApply");
    EXPECT_TRUE(fProblem.startsWith(u"Another program is saving"_s)) << fProblem;
    EXPECT_EQ(SaveOffer(), u"Retry"_s);
    EXPECT_FALSE(IsSaved());
    Edit();
    EXPECT_TRUE(CanApply()) << "which saves all the rest too";
    Edit(Qt::Key_Left);
    EXPECT_FALSE(CanApply());
    other.reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return IsSaved(); }));
    EXPECT_EQ(fProblem + SaveOffer(), QString());
}

// After a failed save both buttons were dim, and closing threw everything away without a question.
TEST_F(Saving, FailedSave_CanBeTriedAgainAndClosingAsks) {
    static constexpr struct {
        const char *answer;
        bool closes, isMended, saves, exports;
    } kRows[] = {{"Cancel", false, false, false, false},
                 {"Retry", true, true, true, false},
                 {"Export All…", true, true, false, true},
                 {"Discard", true, false, false, false}};
    {
        const FullDisk full;
        fPane->willUnselect();
    }
    fPane->didSelect();
    EXPECT_EQ(SaveOffer(), u"Retry"_s) << "though nothing differs";
    for (const auto &row : kRows) {
        auto full = std::make_unique<FullDisk>();
        Edit();
        Click("uiPaneButtonApply");
        EXPECT_FALSE(CanApply());
        EXPECT_EQ(SaveOffer(), u"Retry"_s);
        EXPECT_EQ(Text("uiPaneTextDifferences"),
                  u"Not saved: the disk is full. Your changes are kept here."_s);
        AnswerNext([&](QDialog *question) {
            if (row.isMended) {
                full.reset();
            }
            if (row.exports) {
                AnswerNext([&](QDialog *panel) {
                    EnterPath(panel, TextOf(fFolder.Path("all.veltrana")), u"Save"_s);
                });
            }
            Press(question, QString::fromUtf8(row.answer));
        });
        EXPECT_EQ(fPane->mayClose(), row.closes) << row.answer;
        full.reset();
        EXPECT_EQ(IsSaved(), row.saves) << row.answer;
        EXPECT_EQ(fs::exists(fFolder.Path("all.veltrana")), row.exports);
        fs::remove(fFolder.Path("all.veltrana"));
        if (!row.closes) {
            Click("uiPaneButtonSave");
            EXPECT_TRUE(IsSaved() && SaveOffer().isEmpty() && fProblem.isEmpty()) << fProblem;
        }
        EXPECT_TRUE(fPane->mayClose()) << "there is nothing to ask, or no panel to leave";
        Start();
    }
}

} // namespace
} // namespace drevix::test
