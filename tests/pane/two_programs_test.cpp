// A panel, a second panel as of another login session, and drevixctl change the settings at once. DREVIX_TEST_SECONDS
// says for how long; scripts/two_programs gives it a minute.
#include "tests/pane/panel.h"

#include "document/history.h"

#include <QElapsedTimer>
#include <QProcess>

#include <iostream>

namespace drevix::test {
namespace {

constexpr const char *kFolder = "DREVIX_TEST_FOLDER";
constexpr const char *kRole = "DREVIX_TEST_ROLE";
constexpr int kSeconds = 2;
constexpr int kLongestSave = 30'000; // milliseconds

int SecondsAsked() {
    const int asked = qEnvironmentVariableIntValue("DREVIX_TEST_SECONDS");
    return asked > 0 ? asked : kSeconds;
}

class TwoPrograms : public PanelTest {
  protected:
    // Changes a record that is its own for a while, and looks whether the file keeps each change.
    static void Work(const char *who, RecordNumber number, const std::function<bool(AppPrefs *)> &change) {
        int saves = 0;
        int lost = 0;
        int failed = 0;
        AppPrefs last = Saved(number);
        const auto look = [&] { lost += SameBytes(Saved(number), last) ? 0 : 1; };
        QElapsedTimer clock;
        for (clock.start(); clock.elapsed() < SecondsAsked() * 1000; ++saves) {
            look();
            failed += change(&last) ? 0 : 1;
        }
        look();
        std::cout << who << ": " << saves << " saves, " << lost << " lost, " << failed << " failed"
                  << std::endl;
        EXPECT_GT(saves, 1);
        EXPECT_EQ(lost + failed, 0);
    }
    void WorkAsPanel(const char *who, int target) {
        EXPECT_TRUE(Choose(Targets(), target));
        Work(who, target - 1, [this](AppPrefs *record) {
            Edit(record->device[0].toolSensitivity % 2 == 0 ? Qt::Key_Right : Qt::Key_Left);
            *record = fPane->WorkingCopy();
            Click("uiPaneButtonApply");
            return QTest::qWaitFor([&] { return Text("uiPaneTextDifferences") == u"All changes saved"_s; },
                                   kLongestSave);
        });
    }
    static bool SetRingSpeed(int speed) {
        return QProcess::execute(QStringLiteral(DREVIX_CTL),
                                 {u"set"_s, u"ringSpeed"_s, QString::number(speed)}) == 0;
    }
    static void WorkAsDrevixctl() {
        Work("drevixctl", 0, [](AppPrefs *record) {
            std::uint8_t &speed = record->device[0].navSpeed;
            speed = static_cast<std::uint8_t>((speed + 1) % 200);
            return SetRingSpeed(speed);
        });
    }
    // This program again, as another one that works on the same settings.
    void StartOther(QProcess &process, const char *role) const {
        const ScopedVariable ofFolder(kFolder, fFolder.Path());
        const ScopedVariable ofRole(kRole, role);
        const ScopedVariable session("XDG_RUNTIME_DIR", fFolder.Path("config")); // another has another one
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(QCoreApplication::applicationFilePath(), {u"--gtest_filter=TwoPrograms.Other"_s});
    }
};

TEST_F(TwoPrograms, Other) {
    const std::string folder = qgetenv(kFolder).toStdString();
    if (folder.empty()) {
        GTEST_SKIP() << "started by the test below";
    }
    const ScopedVariable config("XDG_CONFIG_HOME", folder + "/config");
    const ScopedVariable state("XDG_STATE_HOME", folder + "/state");
    const ScopedVariable home("HOME", folder);
    if (qgetenv(kRole) == "panel") {
        Start();
        WorkAsPanel("second panel", 4);
    } else {
        WorkAsDrevixctl();
    }
    End();
}

TEST_F(TwoPrograms, DifferentRecords_NothingIsLost) {
    QProcess panel;
    QProcess drevixctl;
    StartOther(panel, "panel");
    StartOther(drevixctl, "drevixctl");
    WorkAsPanel("panel", 3);
    for (QProcess *process : {&panel, &drevixctl}) {
        // One that has ended before is not waited for.
        EXPECT_TRUE(process->state() == QProcess::NotRunning || process->waitForFinished(kLongestSave));
        EXPECT_EQ(process->exitCode(), 0);
    }
}

// The later word holds, the earlier one is in the history, and the user is told, each time.
TEST_F(TwoPrograms, TheSameRecord_TheLaterHoldsAndTheEarlierIsKept) {
    constexpr int kTimes = 5;
    for (int i = 1; i <= kTimes; ++i) {
        fProblem.clear();
        Edit(i % 2 == 0 ? Qt::Key_Left : Qt::Key_Right);
        ASSERT_TRUE(SetRingSpeed(100 + i));
        const AppPrefs theirs = Saved(0);
        Click("uiPaneButtonApply");
        EXPECT_TRUE(SameBytes(Saved(0), fPane->WorkingCopy()));
        EXPECT_TRUE(fProblem.contains(u"\"Global Settings\" too"_s)) << fProblem;
        std::vector<EarlierSettings> history;
        ASSERT_EQ(ListHistory(fFolder.path, &history), noErr);
        ASSERT_FALSE(history.empty());
        EXPECT_TRUE(SameBytes(*GetAppPrefs(ReadEarlierSettings(history[0]).get(), 0), theirs));
    }
}

} // namespace
} // namespace drevix::test
