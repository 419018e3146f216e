// Items to open: chosen, dropped, shown, missing; and the companion's menu entries.
#include "companion/korvane_crc.h"
#include "tests/pane/panel.h"
#include "util/items/items_folder.h"

namespace drevix::test {
namespace {

constexpr SlotIndex kButtonII = 19;
constexpr SlotIndex kButtonIII = 20;

class Items : public PanelTest {
  protected:
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
    EXPECT_FALSE(DropOnControl(kButtonII, notes, Qt::MoveAction));
    EXPECT_TRUE(DropOnControl(kButtonII, fFolder.Path("nowhere")));
    EXPECT_FALSE(fProblem.isEmpty());
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before));

    // The file's program was once told that it was moved, and removed it.
    EXPECT_EQ(DropOnControl(kButtonII, greek, Qt::CopyAction | Qt::MoveAction), Qt::CopyAction);
    EXPECT_EQ(Drop(field, field->rect().center(), greek, Qt::LinkAction | Qt::MoveAction, Qt::ShiftModifier),
              Qt::LinkAction);

    for (const bool isThere : {true, false}) {
        SelectControl(2, 0);
        SelectControl(2, 4);
        EXPECT_EQ(Find<QWidget>("uiSettingsButtonOpenItem")->isEnabled(), isThere);
        EXPECT_EQ(Text("uiSettingsTextOpenItem"),
                  (isThere ? u"%1"_s : u"%1 no longer exists."_s).arg(TextOf(greek)));
        EXPECT_EQ(Text("uiSettingsFieldOpenItem"), u"λόγος.txt"_s);
        fs::remove(greek);
    }
}

TEST_F(Items, ChooseButton_TakesFoldersAndFiles) {
    SelectControl(2, 4);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 16));
    for (const std::string &path : {fFolder.Preferences(), MakeFile("second.txt")}) {
        AnswerNext([&](QDialog *panel) { EnterPath(panel, TextOf(path), u"Choose"_s); });
        Click("uiSettingsButtonChooseItem");
        EXPECT_EQ(ItemOf(kButtonII), path);
    }
}

TEST_F(Items, Leaving_RemovesWhatNoRecordOpens) {
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("old.txt")));
    const Str31 old = Slot(kButtonII).data;
    Click("uiPaneButtonApply");
    ASSERT_TRUE(DropOnControl(kButtonII, MakeFile("new.txt")));
    EXPECT_FALSE(ResolveDrevixItem(old).path.empty()) << "for a revert";
    fPane->willUnselect();
    EXPECT_FALSE(ResolveDrevixItem(old).path.empty()) << "earlier settings name it too";
    fs::remove_all(fFolder.Path("state/com.halcyra.drevix/history"));
    fPane->didSelect();
    fPane->willUnselect();
    EXPECT_TRUE(ResolveDrevixItem(old).path.empty());
    EXPECT_EQ(ItemOf(kButtonII), fFolder.Path("new.txt"));
}

TEST_F(Items, CompanionsMenuEntries_GoBothWays) {
    const std::string hotKeys =
        WriteMenu("<HotKey><Menu>Empty Trash</Menu></HotKey>"
                  "<HotKey><Menu>Log Out…</Menu><Key>2</Key><Device>pyralis</Device></HotKey>");
    Start();
    EXPECT_EQ(Slot(kButtonIII).command, kActionToolMenu); // key 2 of the file
    ASSERT_TRUE(ChooseEntry(u"buttonII"_s, 1));
    auto *const menu = Menu("uiSettingsMenuToolMenu");
    EXPECT_EQ(menu->currentText(), u"Empty Trash"_s);
    ASSERT_TRUE(Choose(menu, 0)); // no entry, and once no checksum either
    EXPECT_EQ(std::uint32_t{Slot(kButtonII).crc}, KorvaneStringCRC("Choose a menu entry"));
    ASSERT_TRUE(Choose(menu, 1));
    Click("uiPaneButtonApply");
    EXPECT_NE(ReadWhole(hotKeys).find("<Key>3</Key>"), std::string::npos); // button II
    EXPECT_NE(ReadWhole(hotKeys).find("<Key>2</Key>"), std::string::npos);

    std::string changed = ReadWhole(hotKeys); // the companion frees button II
    changed.replace(changed.find("<Device>pyralis"), 15, "<Device>");
    GoAway();
    WriteWhole(hotKeys, changed);
    ComeBack();
    EXPECT_EQ(Slot(kButtonII).command, kActionNone);
    EXPECT_EQ(Slot(kButtonIII).command, kActionToolMenu);
    EXPECT_EQ(menu->count(), 3);
}

} // namespace
} // namespace drevix::test
