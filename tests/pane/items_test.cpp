// Items to open: chosen, dropped, shown, missing; and what other programs change meanwhile.
#include "pane/item_field.h"
#include "settings/pascal_strings.h"
#include "tests/pane/panel.h"
#include "util/items_folder.h"

#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include <fstream>

namespace drevix::test {
namespace {

namespace fs = std::filesystem;

constexpr SlotIndex kButtonII = 19;

class Items : public PanelTest {
  protected:
    std::string MakeFile(const char *name) const {
        const std::string path = fFolder.Path(name);
        std::ofstream(path) << name;
        return path;
    }
    // Drags a file over the widget to the point and lets it go. False if it was not taken.
    static bool Drop(QWidget *widget, const QPoint &point, const std::string &path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
        QDragEnterEvent enter(point, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &enter);
        QDragMoveEvent move(point, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &move);
        if (!enter.isAccepted() || !move.isAccepted()) {
            return false;
        }
        QDropEvent drop(point, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &drop);
        return drop.isAccepted();
    }
    bool DropOnControl(SlotIndex slot, const std::string &path) const {
        auto *const picture = Find<DevicePicture>("uiSettingsTabsImages");
        const int index = static_cast<int>(std::ranges::find(kPictureSlots, slot) - kPictureSlots.begin());
        return Drop(picture, picture->controlPoint(index), path);
    }
    [[nodiscard]] std::string ItemOf(SlotIndex slot) const { return ResolveDrevixItem(Slot(slot).data).path; }
    [[nodiscard]] QString Field() const { return Find<QLineEdit>("uiSettingsFieldOpenItem")->text(); }
};

TEST_F(Items, Drop_MakesTheControlOpenIt) {
    Start();
    const std::string notes = MakeFile("notes.txt");
    const std::string greek = MakeFile("λόγος.txt"); // Mac OS Roman has no such letters
    ASSERT_TRUE(DropOnControl(kButtonII, notes));
    EXPECT_EQ(Slot(kButtonII).command, kActionOpenItem);
    EXPECT_EQ(ItemOf(kButtonII), notes);
    EXPECT_EQ(Field(), QStringLiteral("notes.txt"));
    EXPECT_TRUE(CanApply());

    auto *const field = Find<QWidget>("uiSettingsFieldOpenItem"); // of the control that was dropped on
    ASSERT_TRUE(Drop(field, field->rect().center(), greek));
    EXPECT_EQ(ItemOf(kButtonII), greek);
    EXPECT_EQ(Field(), QString::fromUtf8("λόγος.txt"));

    const AppPrefs before = fPane->WorkingCopy();
    auto *const picture = Find<QWidget>("uiSettingsTabsImages");
    EXPECT_FALSE(Drop(picture, QPoint(1, 1), notes)); // beside all controls
    EXPECT_TRUE(DropOnControl(kButtonII, fFolder.Path("nowhere")));
    EXPECT_FALSE(fProblem.isEmpty());
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before));
}

TEST_F(Items, ChooseButton_TakesAFolderToo) {
    Start();
    const std::string folder = fFolder.Path("a folder");
    fs::create_directory(folder);
    ASSERT_TRUE(fPane->showControl(QStringLiteral("buttonII")));
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("first.txt")));
    for (const std::string &path : {folder, MakeFile("second.txt")}) {
        AnswerNext([&](QDialog *dialog) {
            auto *const name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
            ASSERT_NE(name, nullptr);
            name->setText(QString::fromStdString(path));
            Press(dialog, QStringLiteral("Choose"));
        });
        Click("uiSettingsButtonChooseItem");
        EXPECT_EQ(ItemOf(kButtonII), path);
    }
}

TEST_F(Items, ItemThatIsGone_IsShownAsSuch) {
    Start();
    const std::string path = MakeFile("letter.txt");
    ASSERT_TRUE(DropOnControl(kButtonII, path));
    auto *const openNow = Find<QWidget>("uiSettingsButtonOpenItem");
    auto *const text = Find<QLabel>("uiSettingsTextOpenItem");
    EXPECT_TRUE(openNow->isEnabled());
    EXPECT_EQ(text->text(), QString::fromStdString(path));
    fs::remove(path);
    ASSERT_TRUE(fPane->showControl(QStringLiteral("buttonI")));
    ASSERT_TRUE(fPane->showControl(QStringLiteral("buttonII")));
    EXPECT_FALSE(openNow->isEnabled());
    EXPECT_EQ(text->text(), QStringLiteral("There is no %1 any more.").arg(QString::fromStdString(path)));
    EXPECT_EQ(Field(), QStringLiteral("letter.txt"));
}

TEST_F(Items, Leaving_RemovesWhatNoRecordOpens) {
    Start();
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("old.txt")));
    const Str31 old = Slot(kButtonII).data;
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("new.txt")));
    EXPECT_FALSE(ResolveDrevixItem(old).path.empty()); // until then, for a revert
    fPane->willUnselect();
    EXPECT_TRUE(ResolveDrevixItem(old).path.empty());
    EXPECT_EQ(ItemOf(kButtonII), fFolder.Path("new.txt"));
}

TEST_F(Items, Leaving_KeepsAllWhenTheFileCannotBeWritten) {
    Start();
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("old.txt")));
    const Str31 old = Slot(kButtonII).data;
    Click("uiPaneButtonApply");
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("new.txt")));
    fs::remove(fFolder.path);
    fs::create_directory(fFolder.path); // what is in the way of the file
    fPane->willUnselect();
    EXPECT_FALSE(fProblem.isEmpty());
    EXPECT_FALSE(ResolveDrevixItem(old).path.empty());
}

// The panel once wrote its older settings over what drevixctl had saved meanwhile.
TEST_F(Items, AnotherProgramsChange_IsShownAndNotWrittenOver) {
    Start();
    const auto changeOutside = [this](const char *name) {
        QTest::qWait(5); // the next tick of the file system's clock
        AppPrefs record = MakeFactoryRecord(kPhoto, name);
        Save({MakeFactoryRecord(0, ""), record});
    };
    changeOutside("outside");
    fPane->willUnselect();
    EXPECT_EQ(stringWithPascalString(Saved(1).appFileName.data()), "outside");
    EXPECT_TRUE(Titles().contains(QStringLiteral("outside"))) << Titles().join(u' ').toStdString();

    fPane->didSelect();
    ASSERT_TRUE(fPane->showControl(QStringLiteral("buttonII")));
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("mine.txt")));
    changeOutside("later"); // now the user's own change counts
    fPane->willUnselect();
    EXPECT_EQ(stringWithPascalString(Saved(1).appFileName.data()), "outside");
    EXPECT_EQ(Saved(0).device[0].action[kButtonII].command, kActionOpenItem);
}

// The companion's hotkeys of the global record.
class Companion : public Items {
  protected:
    Companion() {
        const fs::path folder = fFolder.Path("Library/Preferences/Drevix Tarnix Preferences/_System_");
        fs::create_directories(folder);
        fHotKeys = folder / "~hotkeys";
        std::ofstream(fHotKeys) << R"(<?xml version="1.0"?>
<HotKeys TargetApp="System">
  <HotKey><Menu>Empty Trash</Menu></HotKey>
  <HotKey><Menu>Log Out…</Menu><Key>2</Key><Device>pyralis</Device></HotKey>
</HotKeys>)";
    }
    [[nodiscard]] std::string HotKeys() const { return ReadWhole(fHotKeys); }
    std::string fHotKeys;
};

TEST_F(Companion, MenuEntries_GoBothWays) {
    constexpr SlotIndex kButtonIII = 20;
    Start();
    EXPECT_EQ(Slot(kButtonIII).command, kActionToolMenu); // key 2 of the file
    ASSERT_TRUE(fPane->showControl(QStringLiteral("buttonII")));
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 3));
    auto *const menu = Menu("uiSettingsMenuToolMenu");
    ASSERT_EQ(menu->count(), 3);
    ASSERT_TRUE(Choose(menu, 1));
    EXPECT_EQ(menu->currentText(), QStringLiteral("Empty Trash"));
    Click("uiPaneButtonApply");
    EXPECT_NE(HotKeys().find("<Key>3</Key>"), std::string::npos) << HotKeys(); // button II
    EXPECT_NE(HotKeys().find("<Key>2</Key>"), std::string::npos) << HotKeys();

    std::string changed = HotKeys(); // the companion frees button II
    changed.replace(changed.find("<Device>pyralis"), 15, "<Device>");
    WriteWhole(fHotKeys, changed);
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationInactive);
    WriteWhole(fHotKeys, changed);
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_EQ(Slot(kButtonII).command, kActionNone);
    EXPECT_EQ(Slot(kButtonIII).command, kActionToolMenu);
}

} // namespace
} // namespace drevix::test
