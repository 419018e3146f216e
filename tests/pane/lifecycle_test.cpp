// The flow of settings between file, base, working copy and controls, and what becomes of it when something
// fails.
#include "tests/pane/panel.h"
#include "tests/support/faults.h"

#include <QLabel>

#include <cerrno>

namespace drevix::test {
namespace {

class Flow : public PanelTest {
  protected:
    // Moves the tuner's sensitivity of the record shown by one.
    void Edit() const { QTest::keyClick(Find<QSlider>("uiSettingsSliderToolSens"), Qt::Key_Right); }
};

TEST_F(Flow, ApplyAndRevert_DimAndLightWithTheDifference) {
    Start();
    EXPECT_FALSE(CanApply());
    Edit();
    EXPECT_TRUE(CanApply());
    QTest::keyClick(Find<QSlider>("uiSettingsSliderToolSens"), Qt::Key_Left);
    EXPECT_FALSE(CanApply()) << "the old value again";
    EXPECT_EQ(Targets()->currentText(), QStringLiteral("Global Settings"));
    Edit();
    Find<QWidget>("uiPaneButtonApply")->setFocus();
    QTest::keyClick(Find<QWidget>("uiPaneButtonApply"), Qt::Key_Space);
    EXPECT_FALSE(CanApply());
    EXPECT_EQ(QApplication::focusWidget(), Find<QWidget>("uiSettingsMenuNavRing"))
        << "not wherever Tab leads";
    EXPECT_EQ(Saved(0).device[0].toolSensitivity, 101);
    EXPECT_TRUE(SameBytes(Saved(0), fPane->WorkingCopy()));
    Edit();
    Click("uiPaneButtonRevert");
    EXPECT_FALSE(CanApply());
    EXPECT_EQ(fPane->WorkingCopy().device[0].toolSensitivity, 101);
}

TEST_F(Flow, EveryWayOut_SavesEverything) {
    const std::function<void()> ways[] = {
        [this] { fPane->willUnselect(); },
        [] { Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive); },
        [this] { Click("uiPaneButtonApply"); },
    };
    std::uint8_t value = 100;
    for (const auto &leave : ways) {
        Start();
        Edit();
        ASSERT_TRUE(Choose(Targets(), 3));
        Edit();
        ++value;
        EXPECT_EQ(Saved(0).device[0].toolSensitivity, value - 1);
        leave();
        EXPECT_EQ(Saved(0).device[0].toolSensitivity, value);
        EXPECT_EQ(Saved(2).device[0].toolSensitivity, value);
        EXPECT_FALSE(CanApply());
        EXPECT_EQ(Titles().filter(QStringLiteral("*")).size(), 0);
        EXPECT_EQ(Find<QLabel>("uiPaneTextDifferences")->text(), QString());
        End();
    }
    Start();
    fPane->willUnselect();
    std::filesystem::remove(fFolder.path);
    Edit();
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    fPane->willUnselect();
    EXPECT_FALSE(std::filesystem::exists(fFolder.path)) << "a panel that is not shown saves nothing";
}

TEST_F(Flow, Revert_RebuildsTheListAndFindsTheRecord) {
    Start();
    ASSERT_TRUE(Choose(Targets(), 4));
    EXPECT_EQ(SaveDevicePrefsToPath(MakeBase({MakeFactoryRecord(0, ""), MakeRecord(kNoSignature, "beta"),
                                              MakeRecord(kNoSignature, "Zeta")},
                                             kPanelVersion)
                                        .get(),
                                    fFolder.path),
              noErr);
    Edit();
    Click("uiPaneButtonRevert");
    EXPECT_EQ(Titles(), QStringList({QStringLiteral("Global Settings"), QStringLiteral("-"),
                                     QStringLiteral("beta"), QStringLiteral("Zeta")}));
    EXPECT_EQ(Targets()->currentIndex(), 2);
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), Saved(1)));
}

// Every transfer of a save fails, once and for ever: the file is whole, and the edits wait for the next save.
TEST_F(Flow, FailedSave_KeepsTheFileAndTheEdits) {
    Start();
    const std::string before = ReadWhole(fFolder.path);
    ForEachFault(5, [&](int failAt, Lasts lasts) {
        EXPECT_TRUE(Choose(Targets(), 0));
        Edit();
        const bool wasHit = MeetsFault(failAt, lasts, ENOSPC, [&] { Click("uiPaneButtonApply"); });
        const AppPrefs &edited = fPane->WorkingCopy();
        EXPECT_TRUE(SameBytes(*GetAppPrefs(fPane->Base(), 0), edited));
        // A new file is there when the last step alone failed.
        const bool isSaved = ReadWhole(fFolder.path) != before;
        EXPECT_TRUE(isSaved || fProblem.startsWith(QStringLiteral("The settings could not be saved: ")));
        EXPECT_TRUE(isSaved || Targets()->currentText() == QStringLiteral("Global Settings *"));
        EXPECT_TRUE(wasHit || (isSaved && fProblem.isEmpty()));
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
        EXPECT_TRUE(SameBytes(Saved(0), edited)) << "the next save writes them";
        EXPECT_TRUE(fProblem.isEmpty());
        WriteWhole(fFolder.path, before);
        return wasHit;
    });
}

TEST_F(Flow, RefusedSettings_AreKeptAndTheUserIsTold) {
    fFolder.WriteDamaged(kPanelVersion);
    const std::string damaged = ReadWhole(fFolder.path);
    Start();
    EXPECT_TRUE(fProblem.contains(QStringLiteral("com.halcyra.drevix.prefs.refused")))
        << fProblem.toStdString();
    EXPECT_EQ(Titles().size(), 3);
    fPane->willUnselect();
    EXPECT_EQ(ReadWhole(fFolder.kept), damaged);
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "photo"}));
}

TEST_F(Flow, UnreadableSettings_AreLeftAlone) {
    std::filesystem::remove(fFolder.path);
    std::filesystem::create_directory(fFolder.path); // in the way: no file, and no access to one
    Start();
    EXPECT_TRUE(fProblem.startsWith(QStringLiteral("The settings file could not be read")))
        << fProblem.toStdString();
    Edit();
    Click("uiPaneButtonApply");
    EXPECT_TRUE(fProblem.startsWith(QStringLiteral("The settings were not saved"))) << fProblem.toStdString();
    EXPECT_TRUE(std::filesystem::is_directory(fFolder.path));
}

TEST_F(Flow, WithoutAnySettings_ThePanelStillWorks) {
    std::filesystem::remove(fFolder.path);
    std::filesystem::remove(fFolder.Path(kDefaultsFileName));
    Start();
    EXPECT_EQ(fProblem, QStringLiteral("The settings could not be loaded: no settings were found."));
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

TEST_F(Flow, ShowsWhatItsHostAsksFor) {
    Start();
    EXPECT_TRUE(fPane->showRecord(QStringLiteral("PHOTO")) && fPane->showPage(2) &&
                fPane->showControl(QStringLiteral("tunerCW")));
    EXPECT_EQ(Targets()->currentIndex(), 2);
    EXPECT_EQ(Find<QTabWidget>("uiPaneTabs")->currentIndex(), 1);
    EXPECT_FALSE(fPane->showRecord(QStringLiteral("none")) || fPane->showPage(3) || fPane->showPage(-1) ||
                 fPane->showControl(QStringLiteral("lever")));
    EXPECT_FALSE(CanApply());
}

} // namespace
} // namespace drevix::test
