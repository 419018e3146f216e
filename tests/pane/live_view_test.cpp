// The live view with the real helper on a session bus of its own: what is touched lights up, and acts only while another
// window is in front.
#include "platform/bus/device_client.h"
#include "platform/bus/session_bus.h"
#include "tests/pane/panel.h"
#include "tests/support/private_bus.h"

#include <QElapsedTimer>

#include <csignal>

namespace drevix::test {
namespace {

constexpr SlotIndex kRingLeft = 0, kPushRest = 8, kTunerRight = 7, kButtonV = 16, kButtonI = 18,
                    kTouched = 19;

class LiveView : public PanelTest {
  protected:
    LiveView() {
        gBusTimes = BusTimes();
        gBusTimes.betweenAttempts = std::chrono::milliseconds(20);
        fBus.emplace(fFolder.Path());
        StartHelper();
    }
    ~LiveView() override {
        End();
        LeaveSessionBus();
        gBusTimes = BusTimes();
    }
    void SetUp() override {
        PanelTest::SetUp();
        fPane->findChild<QTimer *>(u"fDeviceCheckTimer"_s)->setInterval(20);
    }
    void StartHelper() {
        fHelper.emplace(std::vector<std::string>{DREVIX_HELPER});
        ASSERT_TRUE(QTest::qWaitFor([&] { return fClient.emplace().Connect("DrevixHelper"); }));
    }
    // Gives what came of it.
    std::string Act(const char *control, const char *how, std::uint32_t times = 1) {
        std::string what;
        std::string problem;
        EXPECT_TRUE(fClient->Act(control, how, times, &what, &problem)) << problem;
        return what;
    }
    [[nodiscard]] bool IsLit(SlotIndex slot) const {
        return Find<DevicePicture>("uiSettingsTabsImages")->isPressed(PictureIndexOf(slot));
    }
    // The one lit control lights up, or goes out, soon.
    [[nodiscard]] bool Turns(SlotIndex slot, bool isLit) const {
        return QTest::qWaitFor([&] { return IsLit(slot) == isLit; });
    }
    [[nodiscard]] SlotIndex Chosen() const {
        const int index = Find<DevicePicture>("uiSettingsTabsImages")->currentIndex();
        return index < 0 ? kNoSlot : kPictureSlots.at(static_cast<std::size_t>(index));
    }
    // What a control came to is told 30 times a second, after that it is lit.
    [[nodiscard]] bool GetsChosen(SlotIndex slot) const {
        return QTest::qWaitFor([&] { return Chosen() == slot; });
    }
    // Presses until the helper knows whether the panel is in front.
    [[nodiscard]] bool WaitForQuiet(bool isQuiet) {
        return QTest::qWaitFor([&] { return Act("buttonV", "press").ends_with("is in front") == isQuiet; });
    }

    const ScopedVariable fNoDisplay{"DISPLAY", ""};
    const ScopedVariable fNoCompositor{"WAYLAND_DISPLAY", ""};
    std::optional<PrivateBus> fBus;
    std::optional<TestProcess> fHelper;
    std::optional<DeviceClient> fClient;
};

TEST_F(LiveView, InFront_TheControlIsChosenAndDoesNothing) {
    ASSERT_TRUE(WaitForQuiet(true));
    EXPECT_EQ(Act("buttonII", "hold"), "nothing: the settings panel is in front");
    EXPECT_TRUE(Turns(kTouched, true));
    EXPECT_TRUE(GetsChosen(kTouched));
    QTest::qWait(600);
    EXPECT_TRUE(IsLit(kTouched)) << "as long as it is down";
    std::ignore = Act("buttonII", "release");
    EXPECT_TRUE(Turns(kTouched, false));

    std::ignore = Act("tunerCW", "turn", 3);
    EXPECT_TRUE(Turns(kTunerRight, true));
    EXPECT_TRUE(GetsChosen(kTunerRight));
    EXPECT_TRUE(Turns(kTunerRight, false)) << "a step is over by itself";

    std::ignore = Act("ringLeft", "hold");
    std::ignore = Act("ringLeft", "release");
    std::ignore = Act("ringXYRest", "turn");
    EXPECT_TRUE(Turns(kPushRest, true));
    EXPECT_TRUE(GetsChosen(kRingLeft));
    QTest::qWait(50); // until what was held back is told
    EXPECT_EQ(Chosen(), kRingLeft) << "its release is no choice";
    EXPECT_FALSE(fProblem.contains(u"front"_s)) << "no failure: " << fProblem;

    SelectControl(2, 2);
    Find<QWidget>("uiSettingsFieldKeystroke")->setFocus();
    QTest::mouseClick(Find<QWidget>("uiSettingsFieldKeystroke"), Qt::LeftButton);
    ASSERT_TRUE(fPane->OverrideKeysIsActive());
    std::ignore = Act("buttonII", "hold");
    EXPECT_TRUE(Turns(kTouched, true));
    EXPECT_EQ(Chosen(), kButtonI) << "no other control comes under keys that are being taken";
}

TEST_F(LiveView, InTheBackground_ItActsAndIsOnlyLit) {
    ASSERT_TRUE(WaitForQuiet(true)) << "it is watched";
    GoAway(); // before the panel has heard of the touch, which has done nothing
    EXPECT_TRUE(GetsChosen(kButtonV));
    SelectControl(2, 2);
    ASSERT_TRUE(WaitForQuiet(false));
    QTest::qWait(50); // until what was held back is told
    const std::string what = Act("buttonII", "press");
    EXPECT_EQ(what, "nothing: there is no desktop to send it to");
    EXPECT_TRUE(Turns(kTouched, true)) << "a press that is over at once is seen";
    EXPECT_EQ(Chosen(), kButtonI);
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return fProblem == u"Button II: there is no desktop to send it to."_s;
    })) << fProblem;
    ComeBack();
    // What was lit from a touch in another window was not chosen when it was touched again with the panel in front.
    ASSERT_TRUE(QTest::qWaitFor([&] { return Act("buttonII", "press").ends_with("is in front"); }));
    EXPECT_TRUE(GetsChosen(kTouched));
    fPane->willUnselect();
    ASSERT_TRUE(WaitForQuiet(false)) << "a panel that is not shown keeps nothing from acting";
    fPane->didSelect();
    EXPECT_TRUE(WaitForQuiet(true));
}

TEST_F(LiveView, HelperThatEndsOrHangs_IsWatchedAgain) {
    ASSERT_TRUE(WaitForQuiet(true));
    std::ignore = Act("buttonI", "hold");
    ASSERT_TRUE(Turns(kButtonI, true));
    fHelper.reset();
    EXPECT_TRUE(Turns(kButtonI, false)) << "nobody will tell that it goes up";
    StartHelper();
    ASSERT_TRUE(WaitForQuiet(true));

    fHelper->Signal(SIGSTOP);
    QElapsedTimer time;
    qint64 longest = 0; // milliseconds
    for (int i = 0; i < 20; ++i) {
        time.start();
        i % 2 == 0 ? GoAway() : ComeBack();
        QTest::qWait(10);
        longest = std::max(longest, time.elapsed());
    }
    EXPECT_LT(longest, 500) << "the window waited for the helper";
    GoAway();
    fHelper->Signal(SIGCONT);
    EXPECT_TRUE(WaitForQuiet(false)) << "the last word counts";

    fBus.reset();
    QTest::qWait(50);
    ComeBack();
    fHelper.reset();
    fs::remove(fFolder.Path("bus"));
    fBus.emplace(fFolder.Path());
    StartHelper();
    EXPECT_TRUE(WaitForQuiet(true)) << "on another bus too";
}

} // namespace
} // namespace drevix::test
