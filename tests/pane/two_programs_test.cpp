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

// What a program has done with a record that is its own, and how often it found that another one's value there.
struct Tally {
    int saves = 0;
    int lost = 0;
    int failed = 0;
};
std::ostream &operator<<(std::ostream &out, const Tally &tally) {
    return out << tally.saves << " saves, " << tally.lost << " lost, " << tally.failed << " failed";
}

class TwoPrograms : public PanelTest {
  protected:
    // The record of that file name in the settings file; zeroed if the file cannot be read.
    static AppPrefs OnDisk(const std::string &name) {
        std::string path;
        const QBaseOwner base = NewDrevixBase();
        if (FindDevicePrefsPath(&path) == noErr) {
            std::ignore = GetDevicePrefsFromPath(base.get(), path, FSRef{}, 0);
        }
        for (RecordNumber i = 0; i < QBaseCountRecords(base.get()); ++i) {
            const AppPrefs *prefs = GetAppPrefs(base.get(), i);
            if (prefs != nullptr && NameOf(*prefs) == name) {
                return *prefs;
            }
        }
        return {};
    }
    [[nodiscard]] bool IsAllSaved() const { return Text("uiPaneTextDifferences") == u"All changes saved"_s; }
    // Edits the record in the panel, applies, and looks whether the file keeps it.
    Tally WorkAsPanel(int target, const std::string &name) {
        Tally tally;
        EXPECT_TRUE(Choose(Targets(), target));
        AppPrefs last = OnDisk(name);
        QElapsedTimer clock;
        for (clock.start(); clock.elapsed() < SecondsAsked() * 1000; ++tally.saves) {
            tally.lost += SameBytes(OnDisk(name), last) ? 0 : 1;
            QTest::keyClick(Find<QSlider>("uiSettingsSliderToolSens"),
                            tally.saves % 2 == 0 ? Qt::Key_Right : Qt::Key_Left);
            last = fPane->WorkingCopy();
            Click("uiPaneButtonApply");
            tally.failed += QTest::qWaitFor([&] { return IsAllSaved(); }, kLongestSave) ? 0 : 1;
        }
        tally.lost += SameBytes(OnDisk(name), last) ? 0 : 1;
        return tally;
    }
    static bool RunDrevixctl(const QStringList &arguments) {
        return QProcess::execute(QStringLiteral(DREVIX_CTL), arguments) == 0;
    }
    static Tally WorkAsDrevixctl() {
        Tally tally;
        int last = OnDisk("").device[0].navSpeed;
        QElapsedTimer clock;
        for (clock.start(); clock.elapsed() < SecondsAsked() * 1000; ++tally.saves) {
            tally.lost += OnDisk("").device[0].navSpeed == last ? 0 : 1;
            last = (last + 1) % 200;
            tally.failed += RunDrevixctl({u"set"_s, u"ringSpeed"_s, QString::number(last)}) ? 0 : 1;
        }
        tally.lost += OnDisk("").device[0].navSpeed == last ? 0 : 1;
        return tally;
    }
    // This program again, as another one that works on the same settings.
    void StartOther(QProcess &process, const char *role) const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1String(kFolder), TextOf(fFolder.Path()));
        environment.insert(QLatin1String(kRole), QLatin1String(role));
        environment.insert(u"XDG_RUNTIME_DIR"_s,
                           TextOf(fFolder.Path("config"))); // another session has another one
        process.setProcessEnvironment(environment);
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
    const bool isPanel = qgetenv(kRole) == "panel";
    if (isPanel) {
        Start();
    }
    const Tally tally = isPanel ? WorkAsPanel(4, "beta") : WorkAsDrevixctl();
    End();
    std::cout << (isPanel ? "second panel: " : "drevixctl: ") << tally << std::endl;
    EXPECT_GT(tally.saves, 1);
    EXPECT_EQ(tally.lost + tally.failed, 0);
}

TEST_F(TwoPrograms, DifferentRecords_NothingIsLost) {
    QProcess panel;
    QProcess drevixctl;
    StartOther(panel, "panel");
    StartOther(drevixctl, "drevixctl");
    const Tally tally = WorkAsPanel(3, "Alpha");
    std::cout << "panel: " << tally << std::endl;
    EXPECT_GT(tally.saves, 1);
    EXPECT_EQ(tally.lost + tally.failed, 0);
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
        QTest::keyClick(Find<QSlider>("uiSettingsSliderToolSens"), i % 2 == 0 ? Qt::Key_Left : Qt::Key_Right);
        ASSERT_TRUE(RunDrevixctl({u"set"_s, u"ringSpeed"_s, QString::number(100 + i)}));
        const AppPrefs theirs = OnDisk("");
        Click("uiPaneButtonApply");
        EXPECT_TRUE(SameBytes(OnDisk(""), fPane->WorkingCopy()));
        EXPECT_TRUE(fProblem.contains(u"\"Global Settings\" too"_s)) << fProblem;
        std::vector<EarlierSettings> history;
        ASSERT_EQ(ListHistory(fFolder.path, &history), noErr);
        ASSERT_FALSE(history.empty());
        EXPECT_TRUE(SameBytes(*GetAppPrefs(ReadEarlierSettings(history[0]).get(), 0), theirs));
    }
}

} // namespace
} // namespace drevix::test
