// What is chosen, looked at and made in dialogs of its own: the application chooser, duplicates, the overview.
#include "tests/pane/panel.h"

#include <QClipboard>
#include <QScrollArea>

namespace drevix::test {
namespace {

class Dialogs : public PanelTest {
  protected:
    Dialogs() {
        fInstalled.Add("beta.desktop", "beta");
        fInstalled.Add("peach.desktop", "peach");
    }
    static bool CanPress(const QDialog *dialog, const QString &title) {
        const QAbstractButton *button = ButtonOf(dialog, title);
        return button != nullptr && button->isEnabled();
    }
    static void Select(const QDialog *chooser, const QString &name) {
        QTest::keyClicks(chooser->findChild<QLineEdit *>(), name);
        EXPECT_EQ(chooser->findChild<QListView *>()->currentIndex().data().toString(), name);
    }

    const InstalledApplications fInstalled{fFolder};
};

TEST_F(Dialogs, ShowSettings_GoesToTheRecordThatIsThere) {
    const QStringList before = Titles();
    AnswerNext([](QDialog *chooser) {
        Select(chooser, u"peach"_s);
        EXPECT_FALSE(CanPress(chooser, u"Show Settings"_s)) << "it has none";
        EXPECT_TRUE(CanPress(chooser, u"Add"_s));
        chooser->findChild<QLineEdit *>()->clear();
        Select(chooser, u"beta"_s);
        Press(chooser, u"Show Settings"_s);
    });
    Edit(); // which is stored, as with every choice in the list
    ASSERT_TRUE(ChooseCommand(kAdd));
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "beta");
    EXPECT_EQ(Targets()->currentText(), u"beta"_s);
    EXPECT_EQ(Titles().size(), before.size()) << "nothing is added";
    EXPECT_EQ(SaveOffer(), u"Save Now"_s);
}

TEST_F(Dialogs, Duplicate_IsTheRecordUnderAnotherName) {
    ASSERT_TRUE(fPane->showRecord(u"photo"_s));
    ASSERT_TRUE(fPane->showControl(u"ringLeft"_s));
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 2)); // what only the companion's applications may have
    Edit();
    const AppPrefs source = fPane->WorkingCopy();
    AnswerNext([](QDialog *chooser) {
        EXPECT_FALSE(CanPress(chooser, u"Show Settings"_s));
        Select(chooser, u"peach"_s);
        Press(chooser, u"Add"_s);
    });
    ASSERT_TRUE(ChooseInMenu(u"Duplicate for Another Application…"_s));
    AppPrefs copy = fPane->WorkingCopy();
    EXPECT_EQ(FoldedName(copy), "peach");
    EXPECT_EQ(copy.factory, 0) << "it is the user's own, and can be deleted";
    EXPECT_EQ(copy.device[0].toolSensitivity, source.device[0].toolSensitivity);
    EXPECT_EQ(copy.device[0].action[19].keyCode, source.device[0].action[19].keyCode);
    EXPECT_EQ(copy.device[0].action[4].keyCode, 4) << "the global record's, where the other may not be";
    EXPECT_TRUE(fProblem.contains(u"stay as they are"_s)) << fProblem;
    ASSERT_TRUE(fPane->showRecord(u"photo"_s));
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), source)) << "the edit came along";

    // Cancelled, and onto one that is there: nothing changes.
    const QStringList titles = Titles();
    AnswerNext([](QDialog *chooser) { chooser->reject(); });
    ASSERT_TRUE(ChooseInMenu(u"Duplicate for Another Application…"_s));
    const AppPrefs beta = Saved(3);
    AnswerNext([](QDialog *chooser) {
        Select(chooser, u"beta"_s);
        AnswerNext([](QDialog *question) { Press(question, u"Keep Old"_s); });
        Press(chooser, u"Add"_s);
    });
    ASSERT_TRUE(ChooseInMenu(u"Duplicate for Another Application…"_s));
    EXPECT_EQ(Titles(), titles);
    ASSERT_TRUE(fPane->showRecord(u"beta"_s));
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), beta));
}

TEST_F(Dialogs, Overview_IsCopiedKeptAndPrinted) {
    Opened inViewer;
    const std::string path = fFolder.Path("sheet.pdf");
    AnswerNext([&](QDialog *overview) {
        const auto pages = [overview] {
            QStringList names;
            const QWidget *paper = overview->findChild<QScrollArea *>()->widget();
            for (const auto *page : paper->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
                names += page->accessibleName();
            }
            return names.join(u' ');
        };
        EXPECT_EQ(pages(), u"Global Settings"_s);
        EXPECT_LE(overview->width(), 1024);
        Press(overview, u"Copy"_s);
        const QMimeData *copied = QGuiApplication::clipboard()->mimeData();
        EXPECT_TRUE(copied->hasImage());
        EXPECT_TRUE(copied->text().contains(u"Button II: "_s + KeyText(Slot(19)) + u'\n')) << copied->text();

        Press(overview, u"All applications"_s);
        QCoreApplication::processEvents();
        EXPECT_EQ(pages(), u"Global Settings photo Alpha beta"_s);
        Press(overview, u"Copy"_s);
        EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasImage()) << "no picture of four";
        EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(u"Alpha"_s));

        const auto *problem = overview->findChild<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        for (const auto &[territory, width] : // of the paper that is used there
             {std::pair{QLocale::Germany, "[0 0 842"}, {QLocale::UnitedStates, "[0 0 792"}}) {
            QLocale::setDefault(QLocale(QLocale::English, territory));
            fs::remove(path);
            AnswerNext([&](QDialog *panel) { EnterPath(panel, TextOf(path), u"Save"_s); });
            Press(overview, u"Save as PDF…"_s);
            const auto sheets = QByteArray::fromStdString(ReadWhole(path));
            EXPECT_TRUE(sheets.startsWith("%PDF-") && sheets.contains("/Count 4") && sheets.contains(width))
                << width;
            EXPECT_FALSE(problem->isVisible());
        }
        QLocale::setDefault(QLocale::c());

        Press(overview, u"Print…"_s);
        ASSERT_EQ(inViewer.addresses.size(), 1);
        const std::string printed = QUrl(inViewer.addresses[0]).toLocalFile().toStdString();
        EXPECT_TRUE(ReadWhole(printed).starts_with("%PDF-"));
        EXPECT_EQ(fs::status(printed).permissions(), fs::perms::owner_read | fs::perms::owner_write)
            << "what one does is nobody else's concern";

        AnswerNext([](QDialog *panel) { EnterPath(panel, u"/proc/sheet.pdf"_s, u"Save"_s); });
        Press(overview, u"Save as PDF…"_s);
        EXPECT_TRUE(problem->isVisible() && problem->text().contains(u"/proc/sheet.pdf"_s));
        overview->reject();
    });
    Click("uiPaneButtonOverview");
}

} // namespace
} // namespace drevix::test
