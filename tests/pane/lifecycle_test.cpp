// The flow of settings between file, base, working copy and controls, also when something fails.
#include "tests/pane/panel.h"

namespace drevix::test {
namespace {

class Flow : public PanelTest {};

TEST_F(Flow, ApplyAndRevert_DimAndLightWithTheDifference) {
    EXPECT_FALSE(CanApply());
    Edit();
    EXPECT_TRUE(CanApply());
    Edit(Qt::Key_Left);
    EXPECT_FALSE(CanApply()) << "the old value again";
    EXPECT_EQ(TitleOf(0), u"Global Settings"_s);
    Edit();
    auto *const apply = Find<QWidget>("uiPaneButtonApply");
    apply->setFocus();
    QTest::keyClick(apply, Qt::Key_Space);
    EXPECT_FALSE(CanApply());
    EXPECT_EQ(QApplication::focusWidget(), Find<QWidget>("uiSettingsMenuNavRing"));
    EXPECT_TRUE(SameBytes(Saved(0), fPane->WorkingCopy()));
    Edit();
    Click("uiPaneButtonRevert");
    EXPECT_FALSE(CanApply());
    EXPECT_EQ(fPane->WorkingCopy().device[0].toolSensitivity, 101);
}

TEST_F(Flow, EveryWayOut_SavesEverything) {
    const std::function<void()> ways[] = {
        [this] { fPane->willUnselect(); },
        [] { GoAway(); },
        [this] { Click("uiPaneButtonApply"); },
    };
    std::uint8_t value = 100;
    for (const auto &leave : ways) {
        Edit();
        ASSERT_TRUE(Choose(Targets(), 3));
        Edit();
        leave();
        ++value;
        EXPECT_EQ(Saved(0).device[0].toolSensitivity, value);
        EXPECT_EQ(Saved(2).device[0].toolSensitivity, value);
        EXPECT_FALSE(CanApply() || Titles().join(u' ').contains(u'*'));
        EXPECT_EQ(Text("uiPaneTextDifferences"), u"All changes saved"_s);
        Start();
    }
    // Nothing was written once, and the helper told nothing, when another program's changes were taken over.
    Save({MakeFullRecord(0, ""), MakeFullRecord(kPhoto, "outside")});
    const std::string before = fFolder.Path("before");
    fs::create_hard_link(fFolder.path, before);
    fPane->willUnselect();
    EXPECT_FALSE(fs::equivalent(fFolder.path, before));
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "outside"}));
    EXPECT_EQ(Titles().constLast(), u"outside"_s);
    fs::remove(fFolder.path);
    Edit();
    GoAway();
    fPane->willUnselect();
    EXPECT_FALSE(fs::exists(fFolder.path)) << "a panel that is not shown saves nothing";
}

TEST_F(Flow, Revert_RebuildsTheListAndFindsTheRecordShown) {
    Edit();
    ASSERT_TRUE(fPane->showRecord(u"BETA"_s) && fPane->showPage(2) && fPane->showControl(u"tunerCW"_s));
    EXPECT_FALSE(fPane->showRecord(u"none"_s) || fPane->showPage(3) || fPane->showPage(-1));
    EXPECT_EQ(Targets()->currentIndex(), 4);
    // Of two records of one file name it was once the first, whichever had been edited.
    AppPrefs second = MakeRecord(kNoSignature, "beta");
    second.appName[1] = 'c';
    Save({MakeFullRecord(0, ""), MakeRecord(kNoSignature, "beta"), second, MakeRecord(kNoSignature, "Zeta")});
    for (const int item : {2, 3}) {
        Edit();
        Click("uiPaneButtonRevert");
        EXPECT_EQ(Titles(), QStringList({u"Global Settings"_s, u"-"_s, u"beta"_s, u"ceta"_s, u"Zeta"_s}));
        EXPECT_EQ(Targets()->currentIndex(), item);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), Saved(item - 1)));
        ASSERT_TRUE(Choose(Targets(), 3));
    }
}

// Every transfer of a save fails, once and for ever: the file is whole, and the edits wait for the next save.
TEST_F(Flow, FailedSave_KeepsTheFileAndTheEdits) {
    ForEachFault(5, [&](int failAt, Lasts lasts) {
        const std::string before = ReadWhole(fFolder.path);
        Edit(failAt % 2 == 0 ? Qt::Key_Left : Qt::Key_Right); // more steps than the slider has
        const bool wasHit = MeetsFault(failAt, lasts, ENOSPC, [&] { Click("uiPaneButtonApply"); });
        const AppPrefs &edited = fPane->WorkingCopy();
        // A new file is there when the last step alone failed.
        const bool isSaved = ReadWhole(fFolder.path) != before;
        EXPECT_TRUE(isSaved || fProblem.startsWith(u"Not saved: "_s));
        EXPECT_TRUE(isSaved || TitleOf(0) == u"Global Settings *"_s);
        const bool isFine = fProblem.isEmpty() || fProblem.startsWith(u"The settings are saved"_s);
        EXPECT_EQ(SaveOffer(), isFine ? QString() : u"Retry"_s);
        EXPECT_TRUE(wasHit || (isSaved && fProblem.isEmpty()));
        GoAway();
        EXPECT_TRUE(SameBytes(Saved(0), edited)) << "the next save writes them";
        EXPECT_TRUE(fProblem.isEmpty());
        return wasHit;
    });
}

TEST_F(Flow, UnusableSettings_AreKeptAndTheUserIsTold) {
    fFolder.WriteDamaged(kPanelVersion);
    const std::string damaged = ReadWhole(fFolder.path);
    Start();
    EXPECT_TRUE(fProblem.contains(u"com.halcyra.drevix.prefs.refused"_s)) << fProblem;
    fPane->willUnselect();
    EXPECT_EQ(ReadWhole(fFolder.kept), damaged);
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "photo"}));

    // What is brought in once took the place of a file that "another program had changed".
    fFolder.WriteDamaged(kPanelVersion);
    fs::rename(fFolder.Path(kDefaultsFileName), fFolder.Path("exported"));
    Start();
    EXPECT_EQ(fPane->ImportAppPrefs(TextOf(fFolder.Path("exported"))), noErr);
    fPane->willUnselect();
    EXPECT_FALSE(fProblem.contains(u"nother program"_s)) << fProblem;
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "photo"}));

    fs::rename(fFolder.Path("exported"), fFolder.Path(kDefaultsFileName));
    fs::remove(fFolder.path);
    fs::create_directory(fFolder.path); // in the way: no file, and no access to one
    Start();
    EXPECT_TRUE(fProblem.startsWith(u"Couldn't read the settings file"_s)) << fProblem;
    Edit();
    Click("uiPaneButtonApply");
    EXPECT_TRUE(fProblem.startsWith(u"Not saved: the settings file"_s)) << fProblem;
    EXPECT_TRUE(fs::is_directory(fFolder.path));
}

TEST_F(Flow, WithoutAnySettings_ThePanelStillWorks) {
    fs::remove(fFolder.path);
    fs::remove(fFolder.Path(kDefaultsFileName));
    Start();
    EXPECT_EQ(fProblem, u"Couldn't load your settings: no settings were found."_s);
    EXPECT_FALSE(CanApply());
    Edit();
    SelectControl(2, 3);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 6));
    Click("uiSettingsButtonTriggerDefaults");
    Click("uiPaneButtonRevert");
    EXPECT_FALSE(CanApply());
    AppPrefs shown = fPane->WorkingCopy();
    shown.device[0].toolSensitivity = 100;
    EXPECT_TRUE(SameBytes(gDefaultGlobalPrefs, shown)) << "the built-in defaults";
}

TEST_F(Flow, NoMemory_KeepsTheSettingsFile) {
    bool wasHit = true;
    for (int failAt = 1; wasHit; ++failAt) {
        {
            const FaultyAllocator faults(failAt, Lasts::ForEver);
            Start();
            Edit();
            Click("uiPaneButtonApply");
            fPane->willUnselect();
            End();
            wasHit = faults.WasHit();
        }
        EXPECT_EQ(fFolder.SavedNames(), Names({"", "photo", "Alpha", "beta"})) << failAt;
    }
}

} // namespace
} // namespace drevix::test
