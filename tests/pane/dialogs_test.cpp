// What is chosen, looked at and made in dialogs of its own: the application chooser, duplicates, the overview.
#include "tests/pane/panel.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollArea>
#include <QSettings>
#include <QStandardPaths>

namespace drevix::test {
namespace {

constexpr int kAddCommand = 9; // places from the end of the list

// Stands in for the program that shows PDF documents.
class PdfProgram : public QObject {
    Q_OBJECT

  public:
    PdfProgram() { QDesktopServices::setUrlHandler(u"file"_s, this, "Take"); }
    ~PdfProgram() override { QDesktopServices::unsetUrlHandler(u"file"_s); }
    Q_INVOKABLE void Take(const QUrl &address) { shown += address.toLocalFile(); }

    QStringList shown;
};

class Dialogs : public PanelTest {
  protected:
    Dialogs() {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, TextOf(fFolder.Path()));
        std::filesystem::create_directories(fFolder.Path("data/applications"));
        for (const char *name : {"beta", "peach"}) {
            WriteWhole(fFolder.Path("data/applications/") + name + ".desktop",
                       "[Desktop Entry]\nType=Application\nExec=x\nName=" + std::string(name) + "\n");
        }
        qputenv("XDG_DATA_HOME", QByteArray::fromStdString(fFolder.Path("data")));
        qputenv("XDG_DATA_DIRS", "/nowhere");
        QStandardPaths::setTestModeEnabled(true);
    }
    ~Dialogs() override {
        QStandardPaths::setTestModeEnabled(false);
        qunsetenv("XDG_DATA_HOME");
        qunsetenv("XDG_DATA_DIRS");
    }
    static bool CanPress(const QDialog *dialog, const QString &title) {
        for (const auto *button : dialog->findChildren<QAbstractButton *>()) {
            if (button->text().remove(u'&') == title) {
                return button->isVisible() && button->isEnabled();
            }
        }
        return false;
    }
    static void Select(const QDialog *chooser, const QString &name) {
        QTest::keyClicks(chooser->findChild<QLineEdit *>(), name);
        EXPECT_EQ(chooser->findChild<QListView *>()->currentIndex().data().toString(), name);
    }
    static void EnterName(QDialog *panel, const QString &path) {
        auto *const field = panel->findChild<QLineEdit *>(u"fileNameEdit"_s);
        field->setText(path);
        Press(panel, u"Save"_s);
    }
    static QLabel *ProblemOf(const QDialog *overview) {
        for (auto *label : overview->findChildren<QLabel *>(Qt::FindDirectChildrenOnly)) {
            if (label->isVisible()) {
                return label;
            }
        }
        return nullptr;
    }
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
    ASSERT_TRUE(ChooseCommand(kAddCommand));
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
    PdfProgram viewer;
    const std::string path = fFolder.Path("sheet.pdf");
    AnswerNext([&](QDialog *overview) {
        const auto pages = [overview] {
            return overview->findChild<QScrollArea *>()
                ->widget()
                ->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)
                .size();
        };
        EXPECT_EQ(pages(), 1);
        EXPECT_LE(overview->width(), 1024);
        Press(overview, u"Copy"_s);
        const QMimeData *copied = QGuiApplication::clipboard()->mimeData();
        EXPECT_TRUE(copied->hasImage());
        EXPECT_TRUE(copied->text().contains(u"Button II: "_s)) << copied->text();

        Press(overview, u"All applications"_s);
        QCoreApplication::processEvents();
        EXPECT_EQ(pages(), 4);
        Press(overview, u"Copy"_s);
        EXPECT_FALSE(QGuiApplication::clipboard()->mimeData()->hasImage()) << "no picture of four";
        EXPECT_TRUE(QGuiApplication::clipboard()->text().contains(u"Alpha"_s));

        AnswerNext([&](QDialog *panel) { EnterName(panel, TextOf(path)); });
        Press(overview, u"Save as PDF…"_s);
        EXPECT_EQ(ReadWhole(path).substr(0, 5), "%PDF-");
        EXPECT_EQ(ProblemOf(overview), nullptr);

        Press(overview, u"Print…"_s);
        ASSERT_EQ(viewer.shown.size(), 1);
        EXPECT_EQ(ReadWhole(viewer.shown[0].toStdString()).substr(0, 5), "%PDF-");
        EXPECT_EQ(std::filesystem::status(viewer.shown[0].toStdString()).permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
            << "what one does is nobody else's concern";

        // What cannot be written is told,.
        AnswerNext([](QDialog *panel) { EnterName(panel, u"/proc/sheet.pdf"_s); });
        Press(overview, u"Save as PDF…"_s);
        ASSERT_NE(ProblemOf(overview), nullptr);
        EXPECT_TRUE(ProblemOf(overview)->text().contains(u"/proc/sheet.pdf"_s));
        overview->reject();
    });
    Click("uiPaneButtonOverview");
}

} // namespace
} // namespace drevix::test

#include "dialogs_test.moc"
