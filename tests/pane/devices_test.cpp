// The connected devices, the helper, the information panel and the help book.
#include "helperlink/driver_messages.h"
#include "pane/help_pages.h"
#include "pane/hyperlink.h"
#include "pane/look.h"
#include "tests/pane/panel.h"

namespace drevix::test {
namespace {

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
        auto *const timer = fPane->findChild<QTimer *>(u"fDeviceCheckTimer"_s);
        EXPECT_EQ(timer->interval(), 1000);
        if (timer->isActive()) {
            QMetaObject::invokeMethod(timer, "timeout");
        }
    }
    // The count, the version and the serial number.
    [[nodiscard]] QString Shown() const {
        QStringList texts;
        for (const char *name : {"uiInfoTextCount", "uiInfoTextFirmwareVers", "uiInfoTextSerialNumber"}) {
            texts += Text(name).section(u' ', -1);
        }
        return texts.join(u' ');
    }
    // An application folder in the resources whose program adds a line to `traces`.
    void MakeApplication(const std::string &name) const {
        const std::string folder = fFolder.Path(name + ".app/Contents/Linux/");
        fs::create_directories(folder);
        WriteWhole(folder + name, "#!/bin/sh\necho " + name + " >> '" + fTraces + "'\n");
        fs::permissions(folder + name, fs::perms::owner_all);
    }
    [[nodiscard]] bool WaitForTraces(const std::string &expected) const {
        return QTest::qWaitFor([&] { return fs::exists(fTraces) && ReadWhole(fTraces) == expected; });
    }
    void WriteHelp(const char *page = kFirstHelpPage) const {
        fs::create_directories(fFolder.Path("help"));
        WriteWhole(fFolder.Path("help/") + page, "");
    }
    [[nodiscard]] QString PageAddress(const char *page) const {
        return u"file://"_s + TextOf(fFolder.Path("help/")) + TextOf(page);
    }

    const std::string fTraces = fFolder.Path("traces");
    const std::string fItems = fFolder.Preferences() + "/loginwindow.plist";
    Opened fOpened;
};

TEST_F(Devices, OnlyAChangeOfTheCount_IsShown) {
    EXPECT_EQ(Shown(), u"0 - -"_s);
    Receive(1, 0x0105, 1);
    EXPECT_EQ(Shown(), u"1 1.05 07060504030201"_s);
    Receive(1, 0x0200, 0);
    EXPECT_EQ(Shown(), u"1 1.05 07060504030201"_s) << "the count is the same";
    Receive(2, 0x0200, 0);
    EXPECT_EQ(Shown(), u"2 2.00 n/a"_s);
    fPane->willUnselect();
    Receive(0, 0, 0);
    EXPECT_EQ(Shown(), u"2 2.00 n/a"_s) << "nothing is looked at while the panel is not shown";
    fPane->didSelect();
    Tick();
    EXPECT_EQ(Shown(), u"0 - -"_s) << "unplugged";
}

// It said that there was not enough memory.
TEST_F(Devices, HelperBelowAForeignLetter_IsToldTheReason) {
    MakeApplication("DrevixHelper");
    const FSRef resources{fFolder.Path("\u00FC")};
    fs::create_directory(resources.path);
    fs::rename(fFolder.Path("DrevixHelper.app"), resources.path + "/DrevixHelper.app");
    fPane = std::make_unique<DrevixPane>(PaneBundle{resources, kPanelVersion});
    fPane->setProblemHandler([this](const QString &problem) { fProblem += problem; });
    fPane->mainViewDidLoad();
    EXPECT_TRUE(WaitForTraces("DrevixHelper\n"));
    EXPECT_TRUE(fProblem.contains(u"letters but those of English"_s)) << fProblem.toStdString();
}

TEST_F(Devices, Helper_IsRegisteredAndStartedAlsoByTheStripsButton) {
    EXPECT_FALSE(fs::exists(fItems)) << "without a helper there is nothing to register";
    MakeApplication("DrevixHelper");
    fPane = std::make_unique<DrevixPane>(PaneBundle{fFolder.resources, kPanelVersion});
    fPane->setDrawnOnly();
    fPane->mainViewDidLoad();
    EXPECT_FALSE(fs::exists(fItems));
    EXPECT_FALSE(fs::exists(fTraces));
    Start();
    EXPECT_TRUE(WaitForTraces("DrevixHelper\n"));
    EXPECT_NE(ReadWhole(fItems).find(fFolder.Path("DrevixHelper.app<")), std::string::npos);
    EXPECT_TRUE(fs::exists(fFolder.Preferences() + "/autostart/DrevixHelper.desktop"));
    EXPECT_EQ(fProblem, QString());

    const auto isTold = [this] { // the helper ends at once
        Tick();
        return Find<QWidget>("uiPaneStrip")->isVisible();
    };
    ASSERT_TRUE(QTest::qWaitFor(isTold));
    EXPECT_EQ(Text("uiStripTitle"), u"The device helper isn't running"_s);
    Press(Find<QWidget>("uiPaneStrip"), u"Start Helper"_s);
    EXPECT_FALSE(Find<QWidget>("uiPaneStrip")->isVisible()) << "it is given its time";
    EXPECT_TRUE(WaitForTraces("DrevixHelper\nDrevixHelper\n"));
    EXPECT_TRUE(QTest::qWaitFor(isTold)) << "it has ended again";

    WriteWhole(fFolder.Path("DrevixHelper.app/Contents/Linux/DrevixHelper"), "#!/nowhere\n");
    Start();
    EXPECT_EQ(fProblem, u"Couldn't start the device helper."_s)
        << "settings that load take it off the line again";
}

TEST_F(Devices, InformationPanel_TellsTheVersionAndLeadsOn) {
    WriteHelp();
    const auto press = [](const QStringList &buttons, const QString &expected) {
        return [buttons, expected](QDialog *panel) {
            for (const QString &name : {u"uiInfoTextDriverVers"_s, u"uiInfoTextLargeDriverVers"_s}) {
                EXPECT_EQ(panel->findChild<QLabel *>(name)->text().section(u' ', -1), expected);
            }
            auto *const trainer = panel->findChild<QPushButton *>(u"uiInfoButtonTrainer"_s);
            EXPECT_EQ(trainer->isEnabled(), trainer->toolTip().isEmpty());
            for (const QString &button : buttons) {
                Press(panel, button);
            }
        };
    };
    AnswerNext(press({u"Help"_s, u"Website"_s, u"Support"_s, u"Close"_s}, u"-"_s));
    Click("uiPaneButtonInfo");
    const QString page = u"https://www.halcyra.example/veltrana"_s;
    EXPECT_EQ(fOpened.addresses, QStringList({PageAddress("index.html"), page, page + u"/support"_s}));

    WriteWhole(fFolder.Path("Info.plist"),
               "<plist><dict><key>CFBundleVersion</key><string>2.5</string></dict></plist>");
    MakeApplication("Drevix Trainer");
    AnswerNext(press({u"Trainer"_s, u"Close"_s}, u"2.5"_s));
    ASSERT_TRUE(ChooseCommand(1)) << "the list's last command is the same";
    EXPECT_TRUE(WaitForTraces("Drevix Trainer\n"));
}

TEST_F(Devices, Help_OpensThePageAboutTheFocus) {
    Click("uiPaneButtonManual");
    EXPECT_TRUE(fOpened.addresses.isEmpty());
    EXPECT_EQ(fProblem, u"Couldn't open the help."_s);
    WriteHelp();
    Click("uiPaneButtonManual");
    EXPECT_EQ(fProblem, QString());
    EXPECT_EQ(fOpened.addresses, QStringList{PageAddress("index.html")});
    static constexpr std::pair<const char *, const char *> kRows[] = {
        {"uiTargetSearch", "applications.html"},
        {"uiSettingsTabsImages", "controls.html"},
        {"uiSettingsMenuAction", "actions.html"},
        {"uiPaneButtonApply", "index.html"},
    };
    Edit(); // so that Apply takes the keyboard
    for (const auto &[widget, page] : kRows) {
        WriteHelp(page);
        auto *const focus = Find<QWidget>(widget);
        focus->setFocus();
        QTest::keyClick(focus, Qt::Key_F1);
        EXPECT_EQ(fOpened.addresses.constLast(), PageAddress(page)) << widget;
    }
    EXPECT_STREQ(HelpPageOf(Find<QWidget>("uiSettingsMenuToolMenu")), "companion.html");
    // In front of the window too.
    for (const auto &[open, page] : {std::pair{9, "applications.html"}, {6, "import-export.html"}}) {
        WriteHelp(page);
        AnswerNext([](QDialog *dialog) {
            EXPECT_TRUE(
                QTest::qWaitFor([&] { return dialog->isVisible() && dialog->focusWidget() != nullptr; }));
            QTest::keyClick(dialog->focusWidget(), Qt::Key_F1);
            dialog->reject();
        });
        EXPECT_TRUE(ChooseCommand(open));
        EXPECT_EQ(fOpened.addresses.constLast(), PageAddress(page));
    }
    QLocale::setDefault(QLocale(QLocale::German));
    fs::create_directories(fFolder.Path("help/de"));
    WriteHelp("de/index.html");
    Click("uiPaneButtonManual");
    EXPECT_EQ(fOpened.addresses.constLast(), PageAddress("de/index.html"));
    QLocale::setDefault(QLocale::c());
    EXPECT_STREQ(HelpPageOf(nullptr), kFirstHelpPage);
}

TEST_F(Devices, Links_CanBeReadOnEveryBackground) {
    EXPECT_EQ(HyperlinkColor(LinkLook::Normal, Qt::white), QColor::fromRgbF(0.1F, 0.1F, 1.0F));
    EXPECT_EQ(HyperlinkColor(LinkLook::Alternate, Qt::white), QColor::fromRgbF(1.0F, 0.1F, 0.1F));
    for (int gray = 0; gray < 256; gray += 5) {
        const QColor paper(gray, gray, gray);
        EXPECT_GE(ContrastOf(HyperlinkColor(LinkLook::Normal, paper), paper), 4.5) << gray;
        EXPECT_GE(ContrastOf(HyperlinkColor(LinkLook::Alternate, paper), paper), 3) << gray;
    }
}

} // namespace
} // namespace drevix::test
