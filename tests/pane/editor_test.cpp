// The editor: every control changes what it should and nothing else, and shows what is in the working copy.
#include "tests/pane/panel.h"

#include <QRandomGenerator>
#include <QRegularExpression>

namespace drevix::test {
namespace {

class Editor : public PanelTest {
  protected:
    void SetUp() override {
        Start();
        ASSERT_TRUE(Choose(Targets(), 2)); // "photo", which may have every action
    }
    // Starts again with another record of "photo".
    void StartWith(const AppPrefs &photo) {
        Save({MakeFullRecord(0, ""), photo});
        SetUp();
    }
    [[nodiscard]] int Tab() const { return Find<QStackedWidget>("uiSettingsTabsAction")->currentIndex(); }
};

TEST_F(Editor, ActionMenu_StoresAndShowsWhatRecordAndControlMayHave) {
    static constexpr struct {
        int page, position;
        SlotIndex slot;
        int picture;
    } kControls[] = {{0, 0, 5, 0},   {0, 1, 4, 1},   {0, 2, 9, 2},   {0, 3, 1, 4},   {0, 4, 0, 3},
                     {0, 5, 2, 5},   {0, 6, 3, 6},   {0, 7, 8, 7},   {1, 0, 7, 8},   {1, 1, 6, 9},
                     {2, 0, 16, 13}, {2, 1, 17, 14}, {2, 2, 18, 10}, {2, 3, 20, 11}, {2, 4, 19, 12}};
    static constexpr int kTabs[] = {0, 0, 2, 4, 0, -1, 1, 5, 6, -1, 10, 10, 10, 10, -1, 7, 8, -1, 9};
    for (const int record : {0, 2, 3}) { // the second may have every action
        ASSERT_TRUE(Choose(Targets(), record));
        for (const auto &[page, position, slot, picture] : kControls) {
            SelectControl(page, position);
            EXPECT_EQ(Find<DevicePicture>("uiSettingsTabsImages")->currentIndex(), picture) << slot;
            for (int item = 0; item < 19; ++item) {
                SCOPED_TRACE(::testing::Message()
                             << "record " << record << ", " << slot << ", item " << item);
                const bool isOffered = item == 1   ? record != 0
                                       : item == 2 ? record == 2
                                       : item == 3 ? record != 3 && slot >= 18
                                                   : kTabs[item] >= 0;
                AppPrefs expected = fPane->WorkingCopy();
                EXPECT_EQ(Choose("uiSettingsMenuAction", item), isOffered);
                if (isOffered) {
                    ChooseAction(expected, slot, CommandForActionMenu(item, slot));
                    EXPECT_EQ(Menu("uiSettingsMenuAction")->currentIndex(), item);
                    EXPECT_EQ(Tab(), item == 2 && page == 1 ? 3 : kTabs[item]);
                }
                EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected));
            }
        }
    }
}

TEST_F(Editor, GroupMenus_StoreTheCodeOfEachPosition) {
    for (const GroupMenu &group : GroupMenus()) {
        const bool isOfTuner = group.outlet == "uiSettingsMenuAppTool";
        const SlotIndex slot = isOfTuner ? 6 : 0;
        SelectControl(isOfTuner ? 1 : 0, isOfTuner ? 1 : 4);
        ASSERT_TRUE(Choose("uiSettingsMenuAction", static_cast<int>(group.entry)));
        QComboBox *menu = Menu(std::string(group.outlet).c_str());
        ASSERT_EQ(menu->count(), std::ssize(group.codes));
        for (int i = 0; i < menu->count(); ++i) {
            const ActionCommand code = CommandForGroupMenu(group, i);
            AppPrefs expected = fPane->WorkingCopy();
            if (code != 0) {
                expected.device[0].action[slot].command = code;
                UpdateOppositeAction(expected, slot);
            }
            EXPECT_EQ(Choose(menu, i), code != 0) << group.outlet << i;
            EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << group.outlet << i;
        }
    }
}

TEST_F(Editor, ModifierBoxesAndRepeatMenus_ChangeTheirFieldAlone) {
    static constexpr std::pair<const char *, std::uint16_t> kModifiers[] = {
        {"Control", 0x1000}, {"Option", 0x0800}, {"Command", 0x0100}, {"Shift", 0x0200}, {"Caps", 0x0400}};
    const struct {
        int item;
        std::string boxes;
        const char *menu;
        std::vector<std::uint16_t> delays;
        int ofTuner; // which has no repeat
    } rows[] = {{6, "uiSettingsBoxKey", "uiSettingsMenuKeyRepeat", {0xFFFF, 0, 6, 15, 30}, 1},
                {11, "uiSettingsBoxScroll", "uiSettingsMenuAutoRepeat", {0, 3, 6, 15}, 0}};
    for (const auto &row : rows) {
        SelectControl(0, 4);
        ASSERT_TRUE(Choose("uiSettingsMenuAction", row.item));
        AppPrefs expected = fPane->WorkingCopy();
        ActionSlot &slot = expected.device[0].action[0];
        for (int i = 0; i < 10; ++i) { // all on, all off
            const auto &[modifier, mask] = kModifiers[i % 5];
            Click((row.boxes + modifier).c_str());
            slot.modifiers ^= mask;
            EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << row.boxes << modifier;
        }
        for (std::size_t i = row.delays.size(); i-- > 0;) {
            ASSERT_TRUE(Choose(row.menu, static_cast<int>(i)));
            slot.delay = row.delays[i];
            EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << row.menu << i;
            EXPECT_EQ(Menu(row.menu)->currentIndex(), static_cast<int>(i));
        }
        SelectControl(1, 1);
        ASSERT_TRUE(Choose("uiSettingsMenuAction", row.item));
        EXPECT_EQ(Menu(row.menu)->currentIndex(), row.ofTuner);
        EXPECT_FALSE(Menu(row.menu)->isEnabled());
    }
}

TEST_F(Editor, KeyMenuAndCapture_ChangeAKeystrokeAlone) {
    static constexpr std::uint8_t kKeys[] = {0xFF, 0xFF, 0xFF, 0x35, 0x33, 0x24, 0x30, 0x4C, 0x72, 0x75, 0x73,
                                             0x77, 0x74, 0x79, 0x47, 0xFF, 0x7A, 0x78, 0x63, 0x76, 0x60, 0x61,
                                             0x62, 0x64, 0x65, 0x6D, 0x67, 0x6F, 0x69, 0x6B, 0x71};
    SelectControl(0, 4);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 6));
    EXPECT_EQ(Text("uiSettingsFieldKeystroke"), u"(none)"_s);
    AppPrefs expected = fPane->WorkingCopy();
    for (int i = 0; i < 31; ++i) {
        const bool isOffered = i != 1 && i != 15;
        EXPECT_EQ(Choose("uiSettingsMenuExtraKeys", i), isOffered);
        ActionSlot &slot = expected.device[0].action[0];
        slot.keyCode = isOffered ? kKeys[i] : slot.keyCode;
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << i;
    }
    EXPECT_EQ(Text("uiSettingsFieldKeystroke"), u"F15"_s);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 10));
    expected = fPane->WorkingCopy();
    gDrevixPane->ReceiveKeystroke(1, 0x0300);
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << "this is no longer a keystroke";
}

TEST_F(Editor, DeviceControls_ChangeTheFieldOfTheSelectedAxisAlone) {
    using Field = std::uint8_t DevicePrefs::*;
    static constexpr struct {
        int position;
        Field sensitivity, speed;
    } kRows[] = {{0, &DevicePrefs::navSensitivityZ, &DevicePrefs::navSpeedZ},
                 {3, &DevicePrefs::navSensitivityX, &DevicePrefs::navSpeedX},
                 {6, &DevicePrefs::navSensitivityY, &DevicePrefs::navSpeedY}};
    AppPrefs expected = fPane->WorkingCopy();
    DevicePrefs &device = expected.device[0];
    const auto move = [&](const char *slider, Field field, Qt::Key key, int change) {
        QTest::keyClick(Find<QSlider>(slider), key);
        device.*field = static_cast<std::uint8_t>(device.*field + change);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << slider;
        EXPECT_EQ(Find<QSlider>(slider)->value(), device.*field);
    };
    for (const bool isSeparate : {false, true}) {
        for (const auto &[position, sensitivity, speed] : kRows) {
            SelectControl(0, position);
            move("uiSettingsSliderNavSens", isSeparate ? sensitivity : &DevicePrefs::navSensitivity,
                 Qt::Key_Right, 1);
            move("uiSettingsSliderNavSpeed", isSeparate ? speed : &DevicePrefs::navSpeed, Qt::Key_PageDown,
                 -10);
        }
        Click("uiSettingsBoxAllAxis");
        device.useSeparateNavSens = device.useSeparateNavSpeed = isSeparate ? 0 : 1;
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected));
    }
    SelectControl(1, 0);
    move("uiSettingsSliderToolSens", &DevicePrefs::toolSensitivity, Qt::Key_PageUp, 10);
    EXPECT_EQ(Text("uiSettingsTextToolSens"), u"110 %"_s);
    Click("uiSettingsBoxClickSound");
    device.click = 0;
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected));
}

// Every byte of the record differs from the factory's; each button brings back its own and no other.
TEST_F(Editor, DefaultsButtons_RestoreTheirSlotsAndFields) {
    AppPrefs strange = *GetAppPrefs(fPane->Base(), 1);
    std::memset(&strange.device[0], 0x40, sizeof strange.device[0]);
    StartWith(strange);
    static constexpr const char *kButtons[] = {"uiSettingsButtonNavDefaults", "uiSettingsButtonToolDefaults",
                                               "uiSettingsButtonTriggerDefaults"};
    AppPrefs expected = fPane->WorkingCopy();
    for (std::uint8_t page = 0; page < 3; ++page) {
        SelectControl(page, 0);
        CopyGroupFromDefaultPrefs(expected, MakeFullRecord(kPhoto, "photo"), ControlGroup{page});
        Click(kButtons[page]);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << page;
    }
}

TEST_F(Editor, ValuesOtherThanTheFactorys_AreMarked) {
    SelectControl(0, 0);
    const auto isBold = [this](const char *name) { return Find<QWidget>(name)->font().bold(); };
    const auto *picture = Find<DevicePicture>("uiSettingsTabsImages");
    const auto *back = Find<QPushButton>("uiSettingsButtonFactory");
    EXPECT_FALSE(isBold("uiSettingsTextNavSens") || picture->controlText(0).isChanged || back->isVisible());
    QTest::keyClick(Find<QSlider>("uiSettingsSliderNavSens"), Qt::Key_Left);
    EXPECT_TRUE(isBold("uiSettingsTextNavSens"));
    EXPECT_TRUE(Find<QWidget>("uiSettingsSliderNavSens")->toolTip().contains(u"100 %"_s));
    ASSERT_TRUE(Choose("uiSettingsMenuExtraKeys", 3));
    EXPECT_TRUE(picture->controlText(0).isChanged && back->isVisible());
    EXPECT_TRUE(picture->controlText(0).note.contains(u"Shift+"_s)) << "says what the factory's action is";
    EXPECT_TRUE(Find<QWidget>("uiSettingsButtonNavDefaults")->toolTip().contains(u"<b>Turn right: Shift+"_s));
    Click("uiSettingsButtonNavDefaults");
    EXPECT_FALSE(isBold("uiSettingsTextNavSens") || back->isVisible() || CanApply());
}

TEST_F(Editor, UnknownValues_AreShownAndKept) {
    AppPrefs strange = *GetAppPrefs(fPane->Base(), 1);
    ActionSlot *slots_ = strange.device[0].action;
    slots_[5].command = 50;
    slots_[4].command = 230; // scrolls, but no menu offers it
    slots_[9] = {kActionKeystroke, 0, 0x24, 0, 777, 0, 0, {}};
    slots_[19] = {kActionToolMenu, 0, 0xFF, 0, 0, 0x12345678, 0, {}};
    slots_[31] = {kActionOpenItem, 0, 0xFF, 0, 0, 0, 0, {}};
    slots_[8] = {kActionOpenItem, 0, 0xFF, 0, 0, 0, 0, {0xFF}}; // a length beyond the field
    StartWith(strange);
    static constexpr struct {
        int page, position, item, tab;
    } kRows[] = {{0, 0, 0, 0}, {0, 1, 0, 10}, {0, 2, 6, 1}, {2, 4, 3, 4}, {0, 7, 16, 8}};
    for (const auto &row : kRows) {
        SelectControl(row.page, row.position);
        EXPECT_EQ(Menu("uiSettingsMenuAction")->currentIndex(), row.item);
        EXPECT_EQ(Tab(), row.tab);
    }
    EXPECT_EQ(Menu("uiSettingsMenuKeyRepeat")->currentIndex(), -1) << "no item has this delay";
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), strange));
    EXPECT_FALSE(CanApply());
}

// What every visible control shows, by its name, but for those of the session's steps.
QStringList Shown(const QWidget &window) {
    QStringList shown;
    for (const auto *widget :
         window.findChildren<QWidget *>(QRegularExpression(u"^ui(?!PaneButton(Un|Re)do)"_s))) {
        QStringList state;
        for (const char *property : {"objectName", "enabled", "font", "toolTip", "text", "checked",
                                     "currentText", "placeholderText", "value"}) {
            state += widget->property(property).toString();
        }
        if (widget->isVisible()) {
            shown += state.join(u' ');
        }
    }
    return shown;
}

// After any number of edits the panel looks as one that has just been started on the same settings.
TEST_F(Editor, ControlsHoldNothingThatTheRecordDoesNotHold) {
    QRandomGenerator random(20);
    const auto upTo = [&](int end) { return static_cast<int>(random.bounded(end)); };
    static constexpr const char *kButtons[] = {"uiSettingsBoxAllAxis",        "uiSettingsBoxClickSound",
                                               "uiSettingsRadioDisabled",     "uiSettingsRadioActive",
                                               "uiSettingsButtonNavDefaults", "uiPaneButtonRevert"};
    static constexpr int kControlsOfPages[] = {8, 2, 5};
    for (int round = 0; round < 12; ++round) {
        int page = 0;
        int position = 0;
        for (int edit = 0; edit < 12; ++edit) {
            page = upTo(3);
            position = upTo(kControlsOfPages[page]);
            SelectControl(page, position);
            std::ignore = Choose("uiSettingsMenuAction", upTo(19)); // perhaps nothing that can be chosen
            const auto *details = Find<QStackedWidget>("uiSettingsTabsAction")->currentWidget();
            for (QComboBox *menu : details->findChildren<QComboBox *>()) {
                std::ignore = menu->isEnabled() && Choose(menu, upTo(menu->count()));
            }
            if (const auto boxes = details->findChildren<QCheckBox *>(); !boxes.isEmpty()) {
                boxes[upTo(static_cast<int>(boxes.size()))]->click();
            }
            if (const char *button = kButtons[upTo(6)]; Find<QWidget>(button)->isVisible()) {
                Click(button);
            }
        }
        Click("uiPaneButtonApply");
        const QStringList shown = Shown(*fWindow);
        ASSERT_EQ(shown.filter(u"uiSettingsMenuAction "_s).size(), 1);
        SetUp();
        SelectControl(page, position);
        ASSERT_EQ(Shown(*fWindow), shown) << round;
    }
}

} // namespace
} // namespace drevix::test
