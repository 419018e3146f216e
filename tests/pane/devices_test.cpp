// The connected devices, the helper, the information panel and the help book.
#include "helperlink/driver_messages.h"
#include "pane/help_pages.h"
#include "pane/hyperlink.h"
#include "tests/pane/panel.h"

#include <QDesktopServices>
#include <QLabel>
#include <QUrl>

#include <sys/stat.h>

namespace drevix::test {
namespace {

// Takes what is to be opened in other programs.
class Opened : public QObject {
    Q_OBJECT

  public:
    Opened() {
        for (const char *scheme : {"https", "file"}) {
            QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "Take");
        }
    }
    ~Opened() override {
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    }
    Q_INVOKABLE void Take(const QUrl &address) { addresses += address.toString(); }

    QStringList addresses;
};

class Devices : public PanelTest {
  protected:
    // The helper's answer comes in, and a moment passes.
    void Receive(std::uint16_t count, std::uint16_t version, std::uint8_t serialStart) const {
        gConnectedListPtr->count = count;
        gConnectedListPtr->device[0].productVers = version;
        for (std::uint8_t i = 0; i < 8; ++i) {
            gConnectedListPtr->device[0].serialNumber[i] = i == 0 ? serialStart : i;
        }
        Tick();
    }
    void Tick() const {
        auto *const timer = fPane->findChild<QTimer *>(QStringLiteral("fDeviceCheckTimer"));
        EXPECT_EQ(timer->interval(), 1000);
        timer->setInterval(1);
        QTest::qWait(20);
        timer->setInterval(1000);
    }
    [[nodiscard]] QStringList Shown() const {
        QStringList texts;
        for (const char *name : {"uiInfoTextCount", "uiInfoTextFirmwareVers", "uiInfoTextSerialNumber"}) {
            texts += Find<QLabel>(name)->text().section(QStringLiteral(": "), 1);
        }
        return texts;
    }
    // An application folder in the resources whose program adds a line to `traces`.
    void MakeApplication(const std::string &name) const {
        const std::string folder = fFolder.Path(name + ".app/Contents/Linux");
        std::filesystem::create_directories(folder);
        WriteWhole(folder + "/" + name, "#!/bin/sh\necho " + name + " >> '" + fTraces + "'\n");
        ASSERT_EQ(::chmod((folder + "/" + name).c_str(), 0700), 0);
    }
    [[nodiscard]] bool WaitForTraces(const std::string &expected) const {
        return QTest::qWaitFor(
            [&] { return std::filesystem::exists(fTraces) && ReadWhole(fTraces) == expected; });
    }
    void WriteHelp() const {
        std::filesystem::create_directories(fFolder.Path("help"));
        WriteWhole(fFolder.Path("help/index.html"), "");
    }
    [[nodiscard]] QString PageAddress(const char *page) const {
        return QStringLiteral("file://") + QString::fromStdString(fFolder.Path("help/")) +
               QLatin1String(page);
    }

    const std::string fTraces = fFolder.Path("traces");
    const std::string fItems = fFolder.Preferences() + "/loginwindow.plist";
    Opened fOpened;
};

TEST_F(Devices, OnlyAChangeOfTheCount_IsShown) {
    Start();
    const QStringList none = {QStringLiteral("0"), QStringLiteral("-"), QStringLiteral("-")};
    const QStringList one = {QStringLiteral("1"), QStringLiteral("1.05"), QStringLiteral("07060504030201")};
    EXPECT_EQ(Shown(), none);
    Receive(1, 0x0105, 1);
    EXPECT_EQ(Shown(), one);
    Receive(1, 0x0200, 0);
    EXPECT_EQ(Shown(), one) << "the count is the same";
    Receive(2, 0x0200, 0);
    EXPECT_EQ(Shown(), QStringList({QStringLiteral("2"), QStringLiteral("2.00"), QStringLiteral("n/a")}));
    fPane->willUnselect();
    Receive(0, 0, 0);
    EXPECT_EQ(Shown().at(0), QStringLiteral("2")) << "nothing is looked at while the panel is not shown";
    fPane->didSelect();
    Tick();
    EXPECT_EQ(Shown(), none) << "unplugged";
}

TEST_F(Devices, Helper_IsStartedAndRegistered) {
    Start();
    EXPECT_FALSE(std::filesystem::exists(fItems)) << "without a helper there is nothing to register";
    MakeApplication("DrevixHelper");
    fPane = std::make_unique<DrevixPane>(PaneBundle{fFolder.resources, kPanelVersion});
    fPane->setDrawnOnly();
    fPane->mainViewDidLoad();
    EXPECT_FALSE(std::filesystem::exists(fItems));
    EXPECT_FALSE(std::filesystem::exists(fTraces));
    Start();
    EXPECT_TRUE(WaitForTraces("DrevixHelper\n"));
    EXPECT_NE(ReadWhole(fItems).find(fFolder.Path("DrevixHelper.app<")), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(fFolder.Preferences() + "/autostart/DrevixHelper.desktop"));
}

TEST_F(Devices, InformationPanel_TellsTheVersionAndLeadsOn) {
    WriteHelp();
    Start();
    QString version;
    const auto press = [&](const QStringList &links) {
        return [&version, links](QDialog *panel) {
            version = panel->findChild<QLabel *>(QStringLiteral("uiInfoTextDriverVers"))->text();
            EXPECT_EQ(version.section(QLatin1Char(' '), -1),
                      panel->findChild<QLabel *>(QStringLiteral("uiInfoTextLargeDriverVers"))
                          ->text()
                          .section(QLatin1Char(' '), -1));
            for (const QString &link : links) {
                Press(panel, link);
            }
            auto *const trainer = panel->findChild<QPushButton *>(QStringLiteral("uiInfoButtonTrainer"));
            EXPECT_EQ(trainer->isEnabled(), trainer->toolTip().isEmpty());
            Press(panel, QStringLiteral("Close"));
        };
    };
    AnswerNext(press({QStringLiteral("Help book"), QStringLiteral("Web page"), QStringLiteral("Support")}));
    Click("uiPaneButtonInfo");
    EXPECT_TRUE(version.endsWith(QStringLiteral(": -"))) << version.toStdString();
    EXPECT_EQ(fOpened.addresses,
              QStringList({PageAddress("index.html"), QStringLiteral("https://www.halcyra.example/veltrana"),
                           QStringLiteral("https://www.halcyra.example/veltrana/support")}));

    WriteWhole(fFolder.Path("Info.plist"),
               "<plist><dict><key>CFBundleVersion</key><string>2.5</string></dict></plist>");
    MakeApplication("Drevix Trainer");
    AnswerNext(press({QStringLiteral("Trainer")}));
    ASSERT_TRUE(ChooseCommand(1)) << "the list's last command is the same";
    EXPECT_TRUE(version.endsWith(QStringLiteral(": 2.5")));
    EXPECT_TRUE(WaitForTraces("Drevix Trainer\n"));
}

TEST_F(Devices, Help_OpensThePageAboutTheFocus) {
    Start();
    Click("uiPaneButtonManual");
    EXPECT_TRUE(fOpened.addresses.isEmpty());
    EXPECT_EQ(fProblem, QStringLiteral("The help could not be opened."));
    WriteHelp();
    for (const char *page : {"applications.html", "controls.html", "actions.html", "companion.html"}) {
        WriteWhole(fFolder.Path("help/") + page, "");
    }
    Click("uiPaneButtonManual");
    EXPECT_EQ(fProblem, QString());
    EXPECT_EQ(fOpened.addresses, QStringList{PageAddress("index.html")});
    static constexpr std::pair<const char *, const char *> kRows[] = {
        {"uiSettingsMenuTarget", "applications.html"},
        {"uiSettingsTabsImages", "controls.html"},
        {"uiSettingsMenuAction", "actions.html"},
        {"uiPaneButtonInfo", "index.html"},
    };
    for (const auto &[widget, page] : kRows) {
        auto *const focus = Find<QWidget>(widget);
        focus->setFocus();
        ASSERT_EQ(QApplication::focusWidget(), focus) << widget;
        QTest::keyClick(focus, Qt::Key_F1);
        EXPECT_EQ(fOpened.addresses.constLast(), PageAddress(page)) << widget;
    }
    EXPECT_STREQ(HelpPageOf(Find<QWidget>("uiSettingsMenuToolMenu")), "companion.html");
    EXPECT_STREQ(HelpPageOf(nullptr), kFirstHelpPage);
}

TEST_F(Devices, Links_CanBeReadOnEveryBackground) {
    EXPECT_EQ(HyperlinkColor(LinkLook::Normal, Qt::white), QColor::fromRgbF(0.1F, 0.1F, 1.0F));
    EXPECT_EQ(HyperlinkColor(LinkLook::Pressed, Qt::white), QColor::fromRgbF(1.0F, 0.1F, 0.1F));
    EXPECT_NEAR(ContrastOf(Qt::black, Qt::white), 21, 0.001);
    for (int gray = 0; gray < 256; gray += 5) {
        const QColor background(gray, gray, gray);
        EXPECT_GE(ContrastOf(HyperlinkColor(LinkLook::Normal, background), background), 4.5) << gray;
        EXPECT_GE(ContrastOf(HyperlinkColor(LinkLook::Pressed, background), background), 3) << gray;
    }
}

} // namespace
} // namespace drevix::test

#include "devices_test.moc"
