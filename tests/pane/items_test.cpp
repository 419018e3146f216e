// Items to open: chosen, dropped, shown, missing; and what other programs change meanwhile.
#include "pane/item_field.h"
#include "tests/pane/panel.h"
#include "util/items_folder.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

namespace drevix::test {
namespace {

namespace fs = std::filesystem;

constexpr SlotIndex kButtonII = 19;
constexpr SlotIndex kButtonIII = 20;

class Items : public PanelTest {
  protected:
    std::string MakeFile(const char *name) const {
        WriteWhole(fFolder.Path(name), name);
        return fFolder.Path(name);
    }
    // Drags a file over the widget to the point and lets it go. False if it was not taken.
    static bool Drop(QWidget *widget, const QPoint &point, const std::string &path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(TextOf(path))});
        QDragEnterEvent enter(point, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &enter);
        QDragMoveEvent move(point, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &move);
        QDropEvent drop(point, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &drop);
        EXPECT_EQ(enter.isAccepted() && move.isAccepted(), drop.isAccepted());
        return drop.isAccepted();
    }
    bool DropOnControl(SlotIndex slot, const std::string &path) const {
        auto *const picture = Find<DevicePicture>("uiSettingsTabsImages");
        const int index = static_cast<int>(std::ranges::find(kPictureSlots, slot) - kPictureSlots.begin());
        return Drop(picture, picture->controlPoint(index), path);
    }
    [[nodiscard]] std::string ItemOf(SlotIndex slot) const { return ResolveDrevixItem(Slot(slot).data).path; }
};

TEST_F(Items, Drop_MakesTheControlOpenItWhileItIsThere) {
    const std::string notes = MakeFile("notes.txt");
    const std::string greek = MakeFile("λόγος.txt"); // Mac OS Roman has no such letters
    ASSERT_TRUE(DropOnControl(kButtonII, notes));
    EXPECT_EQ(Slot(kButtonII).command, kActionOpenItem);
    EXPECT_EQ(ItemOf(kButtonII), notes);
    EXPECT_EQ(Text("uiSettingsFieldOpenItem"), u"notes.txt"_s);
    EXPECT_TRUE(CanApply());

    auto *const field = Find<QWidget>("uiSettingsFieldOpenItem"); // of the control that was dropped on
    ASSERT_TRUE(Drop(field, field->rect().center(), greek));
    EXPECT_EQ(ItemOf(kButtonII), greek);

    const AppPrefs before = fPane->WorkingCopy();
    auto *const picture = Find<QWidget>("uiSettingsTabsImages");
    EXPECT_FALSE(Drop(picture, QPoint(1, 1), notes)); // beside all controls
    EXPECT_TRUE(DropOnControl(kButtonII, fFolder.Path("nowhere")));
    EXPECT_FALSE(fProblem.isEmpty());
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before));

    for (const bool isThere : {true, false}) {
        SelectControl(2, 0);
        SelectControl(2, 4);
        EXPECT_EQ(Find<QWidget>("uiSettingsButtonOpenItem")->isEnabled(), isThere);
        EXPECT_EQ(Text("uiSettingsTextOpenItem"),
                  (isThere ? u"%1"_s : u"There is no %1 any more."_s).arg(TextOf(greek)));
        EXPECT_EQ(Text("uiSettingsFieldOpenItem"), u"λόγος.txt"_s);
        fs::remove(greek);
    }
}

TEST_F(Items, ChooseButton_TakesFoldersAndFiles) {
    SelectControl(2, 4);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 16));
    for (const std::string &path : {fFolder.Preferences(), MakeFile("second.txt")}) {
        AnswerNext([&](QDialog *dialog) {
            dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(TextOf(path));
            Press(dialog, u"Choose"_s);
        });
        Click("uiSettingsButtonChooseItem");
        EXPECT_EQ(ItemOf(kButtonII), path);
    }
}

TEST_F(Items, Leaving_RemovesWhatNoRecordOpensOnceTheFileIsWritten) {
    for (const bool isInTheWay : {true, false}) {
        Start();
        ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("old.txt")));
        const Str31 old = Slot(kButtonII).data;
        Click("uiPaneButtonApply");
        ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("new.txt")));
        EXPECT_FALSE(ResolveDrevixItem(old).path.empty()); // for a revert
        if (isInTheWay) {
            fs::remove(fFolder.path);
            fs::create_directory(fFolder.path);
        }
        fPane->willUnselect();
        EXPECT_EQ(fProblem.isEmpty(), !isInTheWay);
        EXPECT_EQ(ResolveDrevixItem(old).path.empty(), !isInTheWay);
        EXPECT_EQ(ItemOf(kButtonII), fFolder.Path("new.txt"));
        fs::remove(fFolder.path);
    }
}

// The panel once wrote its older settings over what drevixctl had saved meanwhile.
TEST_F(Items, AnotherProgramsChange_IsShownAndNotWrittenOver) {
    const auto changeOutside = [this](const char *name) {
        QTest::qWait(5); // the next tick of the file system's clock
        Save({MakeFullRecord(0, ""), MakeFullRecord(kPhoto, name)});
    };
    changeOutside("outside");
    fPane->willUnselect();
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "outside"}));
    EXPECT_TRUE(Titles().contains(u"outside"_s)) << Titles().join(u' ');

    fPane->didSelect();
    ASSERT_TRUE(fPane->showControl(u"buttonII"_s));
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("mine.txt")));
    changeOutside("later"); // now the user's own change counts
    fPane->willUnselect();
    EXPECT_TRUE(fProblem.startsWith(u"Another program had changed"_s)) << fProblem;
    EXPECT_EQ(fFolder.SavedNames(), Names({"", "outside"}));
    EXPECT_EQ(Saved(0).device[0].action[kButtonII].command, kActionOpenItem);
}

TEST_F(Items, CompanionsMenuEntries_GoBothWays) {
    const fs::path folder = fFolder.Path("Library/Preferences/Drevix Tarnix Preferences/_System_");
    fs::create_directories(folder);
    const std::string hotKeys = folder / "~hotkeys";
    WriteWhole(hotKeys, R"(<?xml version="1.0"?>
<HotKeys TargetApp="System">
  <HotKey><Menu>Empty Trash</Menu></HotKey>
  <HotKey><Menu>Log Out…</Menu><Key>2</Key><Device>pyralis</Device></HotKey>
</HotKeys>)");
    Start();
    EXPECT_EQ(Slot(kButtonIII).command, kActionToolMenu); // key 2 of the file
    ASSERT_TRUE(fPane->showControl(u"buttonII"_s));
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 3));
    auto *const menu = Menu("uiSettingsMenuToolMenu");
    ASSERT_TRUE(Choose(menu, 1));
    EXPECT_EQ(menu->currentText(), u"Empty Trash"_s);
    Click("uiPaneButtonApply");
    EXPECT_NE(ReadWhole(hotKeys).find("<Key>3</Key>"), std::string::npos); // button II
    EXPECT_NE(ReadWhole(hotKeys).find("<Key>2</Key>"), std::string::npos);

    std::string changed = ReadWhole(hotKeys); // the companion frees button II
    changed.replace(changed.find("<Device>pyralis"), 15, "<Device>");
    WriteWhole(hotKeys, changed);
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationInactive);
    WriteWhole(hotKeys, changed);
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_EQ(Slot(kButtonII).command, kActionNone);
    EXPECT_EQ(Slot(kButtonIII).command, kActionToolMenu);
    EXPECT_EQ(menu->count(), 3);
}

} // namespace
} // namespace drevix::test
