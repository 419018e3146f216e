// The list of applications: choosing, adding, deleting, importing and exporting records.
#include "pane/application_chooser.h"
#include "pane/confirm_panel.h"
#include "pane/file_panels.h"
#include "pane/pane_text.h"
#include "settings/pascal_strings.h"
#include "tests/pane/panel.h"

#include <QAccessible>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>

namespace drevix::test {
namespace {

// The commands, counted from the end of the list.
constexpr int kNew = 9;
constexpr int kDelete = 8;
constexpr int kExport = 6;
constexpr int kImport = 5;
const QStringList kTitles = {QStringLiteral("Global Settings"), QStringLiteral("-"), QStringLiteral("photo"),
                             QStringLiteral("Alpha"), QStringLiteral("beta")};

class List : public PanelTest {
  protected:
    void SetUp() override { Start(); }

    // Writes a file to import.
    [[nodiscard]] QString WriteExport(const std::vector<AppPrefs> &records) const {
        const std::string path = fFolder.Path("export.veltrana");
        auto next = records.begin();
        EXPECT_EQ(WriteAppPrefsFile(path, [&] { return next == records.end() ? nullptr : &*next++; }), noErr);
        return QString::fromStdString(path);
    }
    // Chooses a file in a file panel, by pasting its path.
    static void EnterPath(QDialog *panel, const QString &path, const QString &button) {
        auto *const field = panel->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        field->selectAll();
        QGuiApplication::clipboard()->setText(
            path); // letter by letter, the completion would still be reading folders
        QTest::keyClick(field, Qt::Key_V, Qt::ControlModifier);
        Press(panel, button);
    }
    // The names of a file of exported records.
    [[nodiscard]] static Names ExportedNames(const std::string &path) {
        Names names;
        EXPECT_EQ(ReadAppPrefsFile(path,
                                   [&](const AppPrefs &record) {
                                       names.push_back(stringWithPascalString(record.appName.data()));
                                   }),
                  noErr);
        return names;
    }
};

TEST_F(List, ShowsTheRecordsInOrderBeforeTenFixedItems) {
    EXPECT_EQ(Titles(), kTitles);
    QList<int> tags;
    for (int i = Targets()->count() - 10; i < Targets()->count(); ++i) {
        tags += Targets()->itemText(i).isEmpty() ? 0 : i - Targets()->count() + 10;
    }
    EXPECT_EQ(tags, QList<int>({0, 1, 2, 0, 4, 5, 0, 7, 0, 9}));
    EXPECT_FALSE(ChooseCommand(kDelete)) << "the global record stays";
    EXPECT_FALSE(ChooseCommand(3)) << "no installer comes with the panel";
    ASSERT_TRUE(Choose(Targets(), 2));
    EXPECT_FALSE(ChooseCommand(kDelete)) << "a factory record stays";
}

TEST_F(List, ChoosingARecord_StoresTheOneBefore) {
    Click("uiSettingsRadioDisabled");
    EXPECT_EQ(Targets()->currentText(), QStringLiteral("Global Settings (disabled) *"));
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 0)->active, 1);
    for (int item = 2; item < 5; ++item) {
        ASSERT_TRUE(Choose(Targets(), item));
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), *GetAppPrefs(fPane->Base(), item - 1)));
    }
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 0)->active, 0);
    EXPECT_EQ(Saved(0).active, 1) << "the file waits for a save";
    EXPECT_EQ(Targets()->itemText(0), QStringLiteral("Global Settings (disabled) *"));
    EXPECT_FALSE(CanApply());
    EXPECT_EQ(Find<QLabel>("uiPaneTextDifferences")->text(), QStringLiteral("Unsaved changes"));
    ASSERT_TRUE(Choose(Targets(), 0));
    Click("uiSettingsRadioActive");
    EXPECT_EQ(fPane->WorkingCopy().active, 1);
}

TEST_F(List, Delete_AsksAndShowsTheRecordAbove) {
    ASSERT_TRUE(Choose(Targets(), 4));
    AnswerNext([](QDialog *panel) {
        EXPECT_EQ(panel->objectName(), QStringLiteral("uiRemovePanel"));
        EXPECT_EQ(panel->findChild<QLabel *>(QStringLiteral("uiRemoveTextName"))->text(),
                  QStringLiteral("beta"));
        QTest::keyClick(panel, Qt::Key_Return); // the default is to keep it
    });
    ASSERT_TRUE(ChooseCommand(kDelete));
    EXPECT_EQ(Titles(), kTitles);
    AnswerNext([](QDialog *panel) { Press(panel, QStringLiteral("Delete")); });
    ASSERT_TRUE(ChooseCommand(kDelete));
    EXPECT_EQ(Titles(), kTitles.mid(0, 4));
    EXPECT_EQ(Targets()->currentIndex(), 3);
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "alpha");
    EXPECT_EQ(Find<QLabel>("uiPaneTextDifferences")->text(), QStringLiteral("Unsaved changes"));
    EXPECT_EQ(fFolder.SavedNames().size(), 4U);
    fPane->willUnselect();
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "photo", "Alpha"}));
}

// Everything in the chooser from the keyboard: search, go down, take it.
TEST_F(List, New_AddsAnApplicationWithTheGlobalSettings) {
    const auto write = [&](const char *name, const std::string &shown) {
        std::filesystem::create_directories(fFolder.Path("data/applications/sub"));
        WriteWhole(fFolder.Path("data/applications/") + name,
                   "[Desktop Entry]\nType=Application\nName=" + shown + "\nName[de]=Nein\nExec=x\n");
    };
    write("org.example.Apple.desktop", "Apple <b>");
    write("sub/pear.desktop", "Aaaa Pear");
    write("peach.desktop", "Peach");
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(fFolder.Path("data")));
    qputenv("XDG_DATA_DIRS", "/nowhere");
    Click("uiSettingsBoxAllAxis"); // the new record copies what the global one is now
    AnswerNext([](QDialog *chooser) {
        EXPECT_EQ(chooser->windowTitle(), QStringLiteral("Select an Application"));
        auto *const list = chooser->findChild<QListView *>();
        EXPECT_EQ(list->model()->rowCount(), 3);
        auto *const search = chooser->findChild<QLineEdit *>();
        QTest::keyClicks(search, QStringLiteral("EA"));
        EXPECT_EQ(list->model()->rowCount(), 2);
        EXPECT_EQ(list->currentIndex().data().toString(), QStringLiteral("Aaaa Pear"));
        QTest::keyClick(search, Qt::Key_Down);
        QTest::keyClick(search, Qt::Key_Up);
        QTest::keyClick(search, Qt::Key_Return);
    });
    ASSERT_TRUE(ChooseCommand(kNew));
    AppPrefs expected = *GetAppPrefs(fPane->Base(), 0);
    EXPECT_EQ(expected.device[0].useSeparateNavSens, 1);
    const AppPrefs named = MakeRecord(kNoSignature, "pear");
    expected.application = kNoSignature;
    expected.appFileName = named.appFileName;
    expected.appName = MakeRecord(kNoSignature, "Aaaa Pear").appName;
    expected.active = 1;
    expected.factory = 0;
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected));
    EXPECT_EQ(Targets()->currentIndex(), 3) << "first of the user's own";
    EXPECT_EQ(Targets()->currentText(), QStringLiteral("Aaaa Pear *"));
    qunsetenv("XDG_DATA_HOME");
    qunsetenv("XDG_DATA_DIRS");
}

// "Other..." takes a folder "NAME.app" for an application.
TEST_F(List, New_TakesAnApplicationFolderAndAsksBeforeItReplaces) {
    std::filesystem::create_directories(fFolder.Path("ALPHA.app/Contents"));
    const QString path = QString::fromStdString(fFolder.Path("ALPHA.app"));
    for (const char *answer : {"Keep", "Replace"}) {
        AnswerNext([path, answer](QDialog *chooser) {
            AnswerNext([path](QDialog *panel) { EnterPath(panel, path, QStringLiteral("Open")); });
            Press(chooser, QStringLiteral("Other..."));
            AnswerNext([answer](QDialog *panel) {
                EXPECT_EQ(panel->objectName(), QStringLiteral("uiReplacePanel"));
                Press(panel, QLatin1String(answer));
            });
        });
        ASSERT_TRUE(ChooseCommand(kNew));
    }
    EXPECT_EQ(Titles(),
              QStringList({kTitles[0], kTitles[1], kTitles[2], QStringLiteral("ALPHA *"), kTitles[4]}));
    EXPECT_EQ(Targets()->currentIndex(), 3);
    EXPECT_EQ(Slot(4).keyCode, 4) << "the global record's actions";
}

TEST_F(List, Export_WritesTheWorkingCopyOrAll) {
    ASSERT_TRUE(Choose(Targets(), 2));
    Click("uiSettingsRadioDisabled");
    const std::string path = fFolder.Path("one.veltrana");
    AnswerNext([&](QDialog *panel) {
        EnterPath(panel, QString::fromStdString(fFolder.Path("one")), QStringLiteral("Save"));
    });
    ASSERT_TRUE(ChooseCommand(kExport));
    EXPECT_EQ(ExportedNames(path), Names({"photo"}));
    EXPECT_NE(ReadWhole(path).find("<key>active</key>\n\t\t<false/>"), std::string::npos)
        << "edits are exported";
    EXPECT_TRUE(CanApply());
    AnswerNext([&](QDialog *panel) {
        QTest::mouseClick(panel->findChild<QCheckBox *>(QStringLiteral("uiSaveBoxExportAll")), Qt::LeftButton,
                          {}, {8, 8});
        EnterPath(panel, QString::fromStdString(fFolder.Path("all.veltrana")), QStringLiteral("Save"));
    });
    ASSERT_TRUE(ChooseCommand(kExport));
    EXPECT_EQ(ExportedNames(fFolder.Path("all.veltrana")), Names({"", "photo", "Alpha", "beta"}));
    EXPECT_FALSE(CanApply()) << "the working copy was stored";
    EXPECT_NE(fPane->ExportCurrentAppPrefs(QStringLiteral("/nowhere/x.veltrana"), true), noErr);
    EXPECT_EQ(fProblem, QStringLiteral("The settings could not be exported: there is no such file."));
}

TEST_F(List, Import_AsksForEachRecordThatIsThere) {
    AppPrefs other = MakeFactoryRecord(kNoSignature, "ALPHA");
    other.device[0].navSpeed = 7;
    AppPrefs global = MakeFactoryRecord(0, "");
    global.device[0].navSpeed = 33;
    const QString path =
        WriteExport({global, MakeRecord(kPhoto, "photo"), MakeRecord(kNoSignature, "Zeta"), other});
    QStringList asked;
    const std::function<void(QDialog *)> answer = [&](QDialog *panel) {
        asked += panel->findChild<QLabel *>(QStringLiteral("uiReplaceTextName"))->text();
        if (asked.size() < 3) {
            AnswerNext(answer);
        }
        // The program goes to the background and comes back with the question open.
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        Press(panel, asked.size() == 2 ? QStringLiteral("Keep") : QStringLiteral("Replace"));
    };
    AnswerNext([&](QDialog *panel) {
        AnswerNext(answer);
        EnterPath(panel, path, QStringLiteral("Open"));
    });
    ASSERT_TRUE(ChooseCommand(kImport));
    EXPECT_EQ(asked, QStringList({QStringLiteral("Global Settings"), QStringLiteral("photo"),
                                  QStringLiteral("ALPHA")}));
    EXPECT_EQ(Titles().mid(2).join(QLatin1Char(',')).remove(QStringLiteral(" *")),
              QStringLiteral("photo,ALPHA,beta,Zeta"));
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 0)->device[0].navSpeed, 33)
        << "not overwritten by the old working copy";
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 1)->device[0].action[3].keyCode, 3);
    EXPECT_EQ(fPane->WorkingCopy().device[0].navSpeed, 7) << "the last one stored is shown";
    EXPECT_EQ(Targets()->currentText().left(5), QStringLiteral("ALPHA"));
}

TEST_F(List, Import_AnswersForAll) {
    const QString path =
        WriteExport({MakeRecord(kPhoto, "photo"), MakeRecord(0, "Alpha"), MakeRecord(kNoSignature, "beta")});
    const AppPrefs before = fPane->WorkingCopy();
    for (const char *button : {"Keep", "Replace"}) {
        AnswerNext([&](QDialog *panel) {
            QTest::mouseClick(panel->findChild<QCheckBox *>(), Qt::LeftButton, {}, {8, 8});
            Press(panel, QLatin1String(button));
        });
        EXPECT_EQ(fPane->ImportAppPrefs(path), noErr);
        EXPECT_EQ(SameBytes(*GetAppPrefs(fPane->Base(), 0), before), button == QLatin1String("Keep"));
    }
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 1)->factory, 1) << "a factory record stays one";
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 3)->device[0].click, 0);
}

TEST_F(List, Import_RefusesADamagedFileWhole) {
    WriteWhole(fFolder.Path("bad.veltrana"), "<plist><array><dict/>\n<dict><key>a</key></array></plist>");
    EXPECT_NE(fPane->ImportAppPrefs(QString::fromStdString(fFolder.Path("bad.veltrana"))), noErr);
    EXPECT_TRUE(fProblem.startsWith(QStringLiteral("The file could not be imported: line 2: ")))
        << fProblem.toStdString();
    EXPECT_EQ(Titles(), kTitles);
    EXPECT_EQ(fPane->ImportAppPrefs(WriteExport({})), noErr);
    EXPECT_TRUE(fProblem.isEmpty());
}

// 31 characters of every value a byte can have, eight records' worth; and the same as file names.
TEST_F(List, NamesOfEveryCharacter_AreShownAndKept) {
    std::vector<AppPrefs> records;
    for (int first = 1; first < 256; first += 31) {
        AppPrefs record = MakeRecord(kNoSignature, "x");
        record.appName[0] = 31;
        record.appFileName[0] = 63;
        for (std::size_t i = 1; i < 64; ++i) {
            record.appFileName[i] = static_cast<std::uint8_t>(first + static_cast<int>(i - 1) % 31);
        }
        std::copy_n(record.appFileName.begin() + 1, 31, record.appName.begin() + 1);
        records.push_back(record);
    }
    QBaseOwner base = MakeBase({MakeFactoryRecord(0, "")}, kPanelVersion);
    for (const AppPrefs &record : records) {
        ASSERT_NE(StoreAppPrefs(base.get(), record, kNoRecord), kNoRecord);
    }
    ASSERT_EQ(SaveDevicePrefsToPath(base.get(), fFolder.path), noErr);
    End();
    Start();
    ASSERT_EQ(Titles().size(), static_cast<qsizetype>(records.size()) + 2);
    for (int item = 2; item < Titles().size(); ++item) {
        ASSERT_TRUE(Choose(Targets(), item));
        Click("uiSettingsBoxAllAxis");
        EXPECT_EQ(Targets()->currentText().size(), 33) << "31 characters and the mark";
        EXPECT_TRUE(fPane->showRecord(QString()));
    }
    fPane->willUnselect();
    for (int i = 1; i <= static_cast<int>(records.size()); ++i) {
        const AppPrefs saved = Saved(i);
        EXPECT_EQ(saved.device[0].useSeparateNavSens, 1);
        EXPECT_EQ(std::ranges::count(records, saved.appFileName, &AppPrefs::appFileName), 1);
    }
}

} // namespace
} // namespace drevix::test
