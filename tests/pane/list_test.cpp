// The list of applications: choosing, adding, deleting, importing and exporting records.
#include "tests/pane/panel.h"

namespace drevix::test {
namespace {

using ::testing::Contains, ::testing::HasSubstr;

const QStringList kTitles = {u"Global Settings"_s, u"-"_s, u"photo"_s, u"Alpha"_s, u"beta"_s};

class List : public PanelTest {
  protected:
    // The names in a file of exported records.
    [[nodiscard]] Names ExportedNames(const char *file) const {
        Names names;
        const auto take = [&](const AppPrefs &record) { names.push_back(NameOf(record)); };
        EXPECT_EQ(ReadAppPrefsFile(fFolder.Path(file), take), noErr);
        return names;
    }
};

TEST_F(List, ChoosingARecord_StoresTheOneBefore) {
    Click("uiSettingsRadioDisabled");
    EXPECT_EQ(TitleOf(0), u"Global Settings (off) *"_s);
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 0)->active, 1);
    for (int item = 2; item < 5; ++item) {
        ASSERT_TRUE(Choose(Targets(), item));
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), *GetAppPrefs(fPane->Base(), item - 1)));
    }
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 0)->active, 0);
    EXPECT_EQ(Saved(0).active, 1) << "the file waits for a save";
    EXPECT_FALSE(CanApply());
    EXPECT_EQ(Text("uiPaneTextDifferences"), u"Unsaved changes in Global Settings"_s);
    ASSERT_TRUE(Choose(Targets(), 0));
    Click("uiSettingsRadioActive");
    EXPECT_EQ(fPane->WorkingCopy().active, 1);
}

TEST_F(List, OpenedFile_IsImportedWhenTheUserAgrees) {
    const QString path = WriteExport({MakeRecord(kNoSignature, "Zeta")});
    for (const auto &[answer, titles] :
         {std::pair{u"Cancel"_s, kTitles.size()}, {u"Import"_s, kTitles.size() + 1}}) {
        AnswerNext([&answer = answer](QDialog *panel) {
            EXPECT_EQ(panel->findChild<QLabel *>(u"uiImportTextName"_s)->text(), u"export.veltrana"_s);
            Press(panel, answer);
        });
        fPane->openFile(path);
        EXPECT_EQ(Titles().size(), titles);
    }
}

TEST_F(List, Delete_AsksAndShowsTheRecordAbove) {
    for (const int item : {10, kDelete, 7, 4, 3, 2}) { // the global record stays; there is no installer
        EXPECT_FALSE(ChooseCommand(item)) << item;
    }
    ASSERT_TRUE(Choose(Targets(), 2));
    EXPECT_FALSE(ChooseCommand(kDelete)) << "a factory record stays";
    ASSERT_TRUE(Choose(Targets(), 4));
    AnswerNext([](QDialog *panel) {
        EXPECT_EQ(panel->objectName(), u"uiRemovePanel"_s);
        EXPECT_EQ(panel->findChild<QLabel *>(u"uiRemoveTextName"_s)->text(), u"beta"_s);
        QTest::keyClick(panel, Qt::Key_Return); // the default is to keep it
    });
    ASSERT_TRUE(ChooseCommand(kDelete));
    EXPECT_EQ(Titles(), kTitles);
    EXPECT_EQ(Targets()->currentIndex(), 4);
    Delete();
    EXPECT_EQ(Titles(), kTitles.mid(0, 4));
    EXPECT_EQ(Targets()->currentIndex(), 3);
    EXPECT_EQ(FoldedName(fPane->WorkingCopy()), "alpha");
    EXPECT_EQ(Text("uiPaneTextDifferences"), u"Unsaved changes"_s);
    Click("uiPaneButtonSave"); // there was once no button for this
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "photo", "Alpha"}));
    EXPECT_EQ(Text("uiPaneTextDifferences") + SaveOffer(), u"All changes saved"_s);
}

// Everything in the chooser from the keyboard: search, go down, take it.
TEST_F(List, New_AddsAnApplicationWithTheGlobalSettings) {
    const InstalledApplications installed(fFolder);
    installed.Add("org.example.Apple.desktop", "Apple");
    installed.Add("sub/pear.desktop", "Pear");
    installed.Add("peach.desktop", "Aaaa Peach");
    Click("uiSettingsBoxAllAxis"); // the new record copies what the global one is now
    AnswerNext([](QDialog *chooser) {
        auto *const list = chooser->findChild<QListView *>();
        EXPECT_EQ(list->model()->rowCount(), 3);
        auto *const search = chooser->findChild<QLineEdit *>();
        QTest::keyClicks(search, u"EA"_s);
        EXPECT_EQ(list->model()->rowCount(), 2);
        EXPECT_EQ(list->currentIndex().data().toString(), u"Aaaa Peach"_s);
        QTest::keyClick(search, Qt::Key_Down);
        QTest::keyClick(search, Qt::Key_Return);
    });
    ASSERT_TRUE(ChooseCommand(kAdd));
    EXPECT_EQ(fPane->WorkingCopy().device[0].useSeparateNavSens, 1);
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), MakeAppPrefs(fPane->Base(), kNoSignature, "pear", "Pear")));
    EXPECT_EQ(Targets()->currentIndex(), 5) << "last of the user's own";
    EXPECT_EQ(TitleOf(5), u"Pear *"_s);
    EXPECT_EQ(SaveOffer(), u"Save Now"_s);
}

// "Other..." takes a folder "NAME.app" for an application.
TEST_F(List, New_TakesAnApplicationFolderAndAsksBeforeItReplaces) {
    fs::create_directories(fFolder.Path("ALPHA.app/Contents"));
    const QString path = TextOf(fFolder.Path("ALPHA.app"));
    for (const char *answer : {"Keep Old", "Replace"}) {
        Edit();
        AnswerNext([path, answer](QDialog *chooser) {
            AnswerNext([path](QDialog *panel) { EnterPath(panel, path, u"Open"_s); });
            Press(chooser, u"Other…"_s);
            AnswerNext([answer](QDialog *panel) {
                EXPECT_EQ(panel->objectName(), u"uiReplacePanel"_s);
                Press(panel, QLatin1String(answer));
            });
        });
        ASSERT_TRUE(ChooseCommand(kAdd));
        EXPECT_FALSE(CanApply()) << "the working copy was stored, whatever was answered";
    }
    EXPECT_EQ(Titles(),
              QStringList({u"Global Settings *"_s, kTitles[1], kTitles[2], u"ALPHA *"_s, kTitles[4]}));
    EXPECT_EQ(Targets()->currentIndex(), 3);
    EXPECT_EQ(Slot(4).keyCode, 4) << "the global record's actions";
}

TEST_F(List, Export_WritesTheWorkingCopyOrAll) {
    ASSERT_TRUE(Choose(Targets(), 2));
    Click("uiSettingsRadioDisabled");
    AnswerNext([&](QDialog *panel) { EnterPath(panel, TextOf(fFolder.Path("one")), u"Save"_s); });
    ASSERT_TRUE(ChooseCommand(kExport));
    EXPECT_EQ(ExportedNames("one.veltrana"), Names({"photo"}));
    EXPECT_THAT(ReadWhole(fFolder.Path("one.veltrana")), HasSubstr("<key>active</key>\n\t\t<false/>"));
    EXPECT_TRUE(CanApply());
    AnswerNext([&](QDialog *panel) {
        panel->findChild<QCheckBox *>(u"uiSaveBoxExportAll"_s)->click();
        EnterPath(panel, TextOf(fFolder.Path("all.veltrana")), u"Save"_s);
    });
    ASSERT_TRUE(ChooseCommand(kExport));
    EXPECT_EQ(ExportedNames("all.veltrana"), Names({"", "photo", "Alpha", "beta"}));
    EXPECT_FALSE(CanApply()) << "the working copy was stored";
    EXPECT_NE(fPane->ExportCurrentAppPrefs(u"/nowhere/x.veltrana"_s, true), noErr);
    EXPECT_EQ(fProblem, u"Couldn't export: there is no such file."_s);
}

TEST_F(List, Import_AsksForEachRecordThatIsThere) {
    const QString path =
        WriteExport({MakeFullRecord(0, "", 33), MakeRecord(kPhoto, "photo"), MakeRecord(kNoSignature, "Zeta"),
                     MakeFullRecord(kNoSignature, "ALPHA", 7)});
    QStringList asked;
    const std::function<void(QDialog *)> answer = [&](QDialog *panel) {
        asked += panel->findChild<QLabel *>(u"uiReplaceTextName"_s)->text();
        if (asked.size() < 3) {
            AnswerNext(answer);
        }
        // The program goes to the background and comes back with the question open.
        GoAway();
        ComeBack();
        Press(panel, asked.size() == 2 ? u"Keep Old"_s : u"Replace"_s);
    };
    AnswerNext([&](QDialog *panel) {
        AnswerNext(answer);
        EnterPath(panel, path, u"Open"_s);
    });
    ASSERT_TRUE(ChooseCommand(kImport));
    EXPECT_EQ(asked, QStringList({u"Global Settings"_s, u"photo"_s, u"ALPHA"_s}));
    EXPECT_EQ(Titles().mid(2).join(QLatin1Char(',')).remove(u" *"_s), u"photo,ALPHA,beta,Zeta"_s);
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 0)->device[0].navSpeed, 33)
        << "not overwritten by the old working copy";
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 1)->device[0].action[3].keyCode, 3);
    EXPECT_EQ(fPane->WorkingCopy().device[0].navSpeed, 7) << "the last one stored is shown";
    EXPECT_EQ(SaveOffer(), u"Save Now"_s);
}

TEST_F(List, Import_AnswersForAll) {
    const QString path =
        WriteExport({MakeRecord(kPhoto, "photo"), MakeRecord(0, "Alpha"), MakeRecord(kNoSignature, "beta")});
    Click("uiSettingsBoxAllAxis");
    const AppPrefs before = fPane->WorkingCopy();
    for (const char *button : {"Keep Old", "Replace"}) {
        AnswerNext([&](QDialog *panel) {
            QTest::mouseClick(panel->findChild<QCheckBox *>(), Qt::LeftButton, {}, {8, 8});
            Press(panel, QLatin1String(button));
        });
        EXPECT_EQ(fPane->ImportAppPrefs(path), noErr);
        EXPECT_EQ(SameBytes(*GetAppPrefs(fPane->Base(), 0), before), button == QLatin1String("Keep Old"));
    }
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 1)->factory, 1) << "a factory record stays one";
    EXPECT_EQ(GetAppPrefs(fPane->Base(), 3)->device[0].click, 0);
}

// While a question stood, another program changed the records: the panel once deleted the global record then,
// and replaced another application's.
TEST_F(List, Questions_FindTheirRecordAnew) {
    const AppPrefs global = MakeFullRecord(0, "");
    AppPrefs chess = MakeFullRecord(kNoSignature, "chess");
    chess.factory = 1; // so that it comes first
    const auto answerAfter = [](const std::function<void()> &change, const QString &button) {
        AnswerNext([change, button](QDialog *panel) {
            change();
            ComeBack();
            Press(panel, button);
        });
    };
    answerAfter(
        [&] {
            Save({global, chess, MakeFullRecord(kPhoto, "photo"), MakeFullRecord(kNoSignature, "Alpha")});
        },
        u"Replace"_s);
    EXPECT_EQ(fPane->ImportAppPrefs(WriteExport({MakeRecord(kPhoto, "photo")})), noErr);
    const QStringList expected = {kTitles[0], kTitles[1], u"chess"_s, u"photo *"_s, kTitles[3]};
    EXPECT_EQ(Titles(), expected);

    GoAway();
    ASSERT_TRUE(Choose(Targets(), 4));
    answerAfter([&] { Save({global, chess}); }, u"Delete"_s);
    ASSERT_TRUE(ChooseCommand(kDelete));
    EXPECT_EQ(Titles(), expected.mid(0, 3));
}

TEST_F(List, Import_RefusesADamagedFileWhole) {
    WriteWhole(fFolder.Path("bad.veltrana"), "<plist><array><dict/>\n<dict><key>a</key></array></plist>");
    EXPECT_NE(fPane->ImportAppPrefs(TextOf(fFolder.Path("bad.veltrana"))), noErr);
    EXPECT_TRUE(fProblem.startsWith(u"Couldn't import this file: line 2: "_s)) << fProblem;
    EXPECT_EQ(Titles(), kTitles);
    EXPECT_EQ(fPane->ImportAppPrefs(WriteExport({})), noErr);
    EXPECT_TRUE(fProblem.isEmpty());
}

// 31 characters of every value a byte can have, eight records' worth; and the same as file names. A record that is not
// 1668 bytes long was listed with an empty title, and what was edited there vanished.
TEST_F(List, NamesOfEveryCharacter_AreShownAndKept) {
    QBaseOwner base = MakeBase({MakeFullRecord(0, "")}, kPanelVersion);
    ASSERT_NE(QBaseAddRecord(base.get(), "other", 5), kNoRecord);
    for (int first = 1; first < 256; first += 31) {
        AppPrefs record = MakeRecord(kNoSignature, "x");
        for (std::size_t i = 0; i < 63; ++i) {
            record.appFileName[1 + i] = static_cast<std::uint8_t>(first + static_cast<int>(i % 31));
        }
        std::copy_n(record.appFileName.begin(), 32, record.appName.begin());
        record.appFileName[0] = 63;
        record.appName[0] = 31;
        ASSERT_NE(StoreAppPrefs(base.get(), record, kNoRecord), kNoRecord);
    }
    SortDrevixBase(base.get());
    ASSERT_EQ(SaveDevicePrefsToPath(base.get(), fFolder.path), noErr);
    const Names names = fFolder.SavedNames();
    EXPECT_THAT(names, Contains("?")) << "no settings";
    Start();
    ASSERT_EQ(Titles().size(), 2 + 9);
    for (int item = 2; item < Titles().size(); ++item) {
        ASSERT_TRUE(Choose(Targets(), item));
        Click("uiSettingsBoxAllAxis");
        EXPECT_EQ(Targets()->currentText().size(), 31);
        EXPECT_TRUE(fPane->showRecord(QString()));
    }
    fPane->willUnselect();
    EXPECT_EQ(fFolder.SavedNames(), names);
    for (RecordNumber i = 1; i <= 9; ++i) {
        EXPECT_EQ(Saved(i).device[0].useSeparateNavSens, 1);
    }
}

} // namespace
} // namespace drevix::test
