// Undo and Redo: every edit of the session is one step, over applications, saves and reloads.
#include "tests/pane/panel.h"

#include <random>

namespace drevix::test {
namespace {

class Undo : public PanelTest {
  protected:
    using State = std::vector<std::string>;

    // Every record as the window has it.
    [[nodiscard]] State Records() const {
        State records;
        const int shown = std::max(0, Targets()->currentIndex() - 1);
        for (RecordNumber i = 0; i < QBaseCountRecords(fPane->Base()); ++i) {
            const AppPrefs &prefs = i == shown ? fPane->WorkingCopy() : *GetAppPrefs(fPane->Base(), i);
            records.emplace_back(reinterpret_cast<const char *>(&prefs), sizeof prefs);
        }
        return records;
    }
    void PressUndo() const { PressKeys(Qt::Key_Z); }
    void PressRedo() const { PressKeys(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }
    [[nodiscard]] bool CanUndo() const { return Find<QWidget>("uiPaneButtonUndo")->isEnabled(); }
    [[nodiscard]] bool CanRedo() const { return Find<QWidget>("uiPaneButtonRedo")->isVisible(); }
    void Move(const char *slider, int by) const {
        auto *const found = Find<QSlider>(slider);
        found->setValue(found->value() + by);
    }
    void Import(const std::vector<AppPrefs> &records) const {
        QTimer agree; // to each question about a record that is there already
        QObject::connect(&agree, &QTimer::timeout, [] {
            if (auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                dialog->accept();
            }
        });
        agree.start(1);
        ASSERT_EQ(fPane->ImportAppPrefs(WriteExport(records)), noErr);
    }
    void FindAndTake(const char *words) const {
        PressKeys(Qt::Key_K);
        QWidget *const panel = QApplication::activePopupWidget();
        ASSERT_NE(panel, nullptr);
        auto *const field = panel->findChild<QLineEdit *>();
        QTest::keyClicks(field, QLatin1String(words));
        QTest::keyClick(field, Qt::Key_Return);
        panel->close(); // of what the control may not have nothing was taken
    }
    void DoAnything(std::mt19937 &random) const {
        const auto pick = [&](int count) {
            return static_cast<int>(random() % static_cast<unsigned>(count));
        };
        const auto record = [&](const char *name) {
            return MakeFullRecord(kNoSignature, name, static_cast<std::uint8_t>(pick(250)));
        };
        const std::function<void()> edits[] = {
            [&] { Move("uiSettingsSliderToolSens", pick(7) - 3); },
            [&] { Move("uiSettingsSliderNavSens", pick(7) - 3); },
            [&] { Find<QCheckBox>("uiSettingsBoxAllAxis")->click(); },
            [&] { Find<QAbstractButton>("uiSettingsRadioDisabled")->click(); },
            [&] { std::ignore = Choose(Targets(), pick(Targets()->count() - 10)); },
            [&] { std::ignore = fPane->showControl(TextOf(kControlSlots.at(pick(15)).key)); },
            [&] { std::ignore = Choose("uiSettingsMenuAction", pick(20)); },
            [&] { FindAndTake(pick(2) == 0 ? "calc" : "ctrl+t"); },
            [&] {
                const std::array buttons = {"uiSettingsButtonNavDefaults", "uiSettingsButtonToolDefaults",
                                            "uiSettingsButtonTriggerDefaults"};
                Find<QAbstractButton>(buttons.at(pick(3)))->click();
            },
            [&] {
                if (Targets()->currentIndex() > 2) {
                    Delete();
                }
            },
            [&] {
                Import({record("Alpha"), record("Gamma"), record("beta"), record("Gamma")});
            },
            [&] { Import({record("Delta")}); },
            [&] { DropOnControl(static_cast<SlotIndex>(pick(10)), fFolder.Path("dropped")); },
            [&] { Find<QAbstractButton>("uiPaneButtonRevert")->click(); },
            [&] { Find<QAbstractButton>("uiPaneButtonApply")->click(); },
        };
        edits[random() % std::size(edits)]();
    }
};

TEST_F(Undo, AnyEdits_AreTakenBackAndDoneAgain) {
    std::ignore = MakeFile("dropped");
    for (unsigned seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<State> states = {Records()};
        for (int i = 0; i < 40; ++i) {
            DoAnything(random);
            if (State now = Records(); now != states.back()) {
                states.push_back(std::move(now));
            }
        }
        auto at = states.rbegin();
        int steps = 0;
        while (CanUndo() && steps < 100) {
            PressUndo();
            ++steps;
            at = std::find(at, states.rend(), Records()); // moves of a slider are skipped
            ASSERT_NE(at, states.rend()) << "step " << steps << " from the end";
        }
        EXPECT_EQ(Records(), states.front());
        EXPECT_GT(steps, 10);
        for (; CanRedo(); --steps) {
            PressRedo();
        }
        EXPECT_EQ(steps, 0);
        EXPECT_EQ(Records(), states.back());
        Start();
    }
}

TEST_F(Undo, StepsBackToTheFile_LeaveNothingUnsaved) {
    ASSERT_TRUE(Choose(Targets(), 4));
    Move("uiSettingsSliderToolSens", 1);
    Move("uiSettingsSliderToolSens", 2);
    ASSERT_TRUE(Choose(Targets(), 0));
    Find<QAbstractButton>("uiSettingsRadioDisabled")->click();
    PressUndo();
    EXPECT_FALSE(CanApply());
    EXPECT_EQ(Targets()->currentIndex(), 0);
    Click("uiPaneButtonUndo"); // both moves at once
    EXPECT_EQ(Targets()->currentIndex(), 4) << "the step's record is shown";
    EXPECT_EQ(Text("uiPaneTextDifferences"), u"All changes saved"_s);
    EXPECT_FALSE(CanUndo());
    Click("uiPaneButtonRedo");
    PressRedo();
    EXPECT_FALSE(CanRedo());
    EXPECT_EQ(Text("uiPaneTextDifferences"), u"Unsaved changes in 2 applications"_s);
}

TEST_F(Undo, SavesAndReverts_AreNoEnd) {
    const State first = Records();
    Move("uiSettingsSliderToolSens", 1);
    Click("uiPaneButtonApply");
    Move("uiSettingsSliderToolSens", 1);
    const State edited = Records();
    Click("uiPaneButtonRevert");
    PressUndo();
    EXPECT_TRUE(Records() == edited);
    PressUndo();
    PressUndo();
    EXPECT_TRUE(Records() == first) << "a save ends the joining of moves";
    EXPECT_TRUE(CanApply()) << "the file has the move";
    EXPECT_FALSE(CanUndo());
}

TEST_F(Undo, OtherProgramsChange_DropsItsRecordsStepsAlone) {
    ASSERT_TRUE(Choose(Targets(), 3)); // Alpha
    Edit();
    ASSERT_TRUE(Choose(Targets(), 4)); // beta
    Edit();
    ASSERT_TRUE(Choose(Targets(), 3));
    Find<QAbstractButton>("uiSettingsRadioDisabled")->click();
    Click("uiPaneButtonApply");
    Save({MakeFullRecord(0, ""), MakeFullRecord(kPhoto, "photo"), MakeFullRecord(kNoSignature, "Alpha", 7),
          Saved(3)});
    ComeBack();
    ASSERT_EQ(fPane->WorkingCopy().device[0].navSpeed, 7);
    PressUndo();
    EXPECT_EQ(Targets()->currentIndex(), 4);
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), MakeFullRecord(kNoSignature, "beta")));
    EXPECT_FALSE(CanUndo());
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 2)->device[0].navSpeed, 7);
}

TEST_F(Undo, Keys_GoToTheFieldThatTakesThem) {
    ASSERT_TRUE(fPane->showControl(u"buttonII"_s));
    Find<QAbstractButton>("uiSettingsRadioDisabled")->click();
    auto *const field = Find<QLineEdit>("uiSettingsFieldKeystroke");
    QTest::mouseClick(field, Qt::LeftButton);
    QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Slot(19).keyCode, 6) << "the key Z";
    EXPECT_EQ(fPane->WorkingCopy().active, 0);
    PressUndo();
    EXPECT_EQ(Slot(19).keyCode, 19);
}

TEST_F(Undo, Steps_AreAHundredAtMost) {
    for (int i = 0; i < 105; ++i) {
        Find<QAbstractButton>("uiSettingsBoxAllAxis")->click();
    }
    int steps = 0;
    for (; CanUndo(); ++steps) {
        PressUndo();
    }
    EXPECT_EQ(steps, 100);
}

} // namespace
} // namespace drevix::test
