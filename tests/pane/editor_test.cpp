// The editor: every control changes what it should in the working copy and nothing else, and shows what is
// there.
#include "tests/pane/panel.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QStackedWidget>

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
        End();
        Save({MakeFactoryRecord(0, ""), photo});
        Start();
        ASSERT_TRUE(Choose(Targets(), 2));
    }
    [[nodiscard]] int Tab() const { return Find<QStackedWidget>("uiSettingsTabsAction")->currentIndex(); }
};

TEST_F(Editor, PagesAndLists_SelectTheirSlots) {
    static constexpr struct {
        int page, position;
        SlotIndex slot;
        int picture;
    } kRows[] = {{0, 0, 5, 0},   {0, 1, 4, 1},   {0, 2, 9, 2},   {0, 3, 1, 4},   {0, 4, 0, 3},
                 {0, 5, 2, 5},   {0, 6, 3, 6},   {0, 7, 8, 7},   {1, 0, 7, 8},   {1, 1, 6, 9},
                 {2, 0, 16, 13}, {2, 1, 17, 14}, {2, 2, 18, 10}, {2, 3, 20, 11}, {2, 4, 19, 12}};
    for (const auto &row : kRows) {
        SelectControl(row.page, row.position);
        EXPECT_EQ(Find<DevicePicture>("uiSettingsTabsImages")->currentIndex(), row.picture) << row.slot;
        AppPrefs expected = fPane->WorkingCopy();
        ASSERT_TRUE(Choose("uiSettingsMenuAction", 10));
        ChooseAction(expected, row.slot, 224);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << row.slot;
    }
}

TEST_F(Editor, ActionMenu_StoresAndShowsEachEntry) {
    static constexpr struct {
        int item, tab, tunerTab;
    } kRows[] = {{6, 1, 1},    {1, 0, 0},    {2, 2, 3},  {4, 0, 0},  {7, 5, 5},  {8, 6, 6}, {10, 10, 10},
                 {11, 10, 10}, {13, 10, 10}, {15, 7, 7}, {16, 8, 8}, {18, 9, 9}, {0, 0, 0}};
    for (const auto &row : kRows) {
        const auto check = [&](int page, int position, SlotIndex slot, int tab) {
            SelectControl(page, position);
            ASSERT_TRUE(Choose("uiSettingsMenuAction", row.item)) << row.item;
            ActionSlot expected = {0, 0, 0xFF, 0, 0, 0, 0, {}};
            expected.command = CommandForActionMenu(row.item, slot);
            EXPECT_EQ(std::memcmp(&Slot(slot), &expected, sizeof expected), 0)
                << slot << " item " << row.item;
            EXPECT_EQ(Menu("uiSettingsMenuAction")->currentIndex(), row.item);
            EXPECT_EQ(Tab(), tab);
        };
        check(0, 5, 2, row.tab);
        check(1, 0, 7, row.tunerTab);
        check(2, 4, 19, row.tab);
    }
    for (const int separator : {5, 9, 14, 17}) {
        EXPECT_FALSE(Choose("uiSettingsMenuAction", separator));
    }
}

TEST_F(Editor, ActionMenu_OffersWhatTheRecordAndTheControlMayHave) {
    static constexpr struct {
        int record, page, position;
        bool useGlobal, application, toolMenu;
    } kRows[] = {{0, 2, 2, false, false, true}, {0, 2, 0, false, false, false}, {2, 2, 3, true, true, true},
                 {2, 0, 0, true, true, false},  {3, 2, 4, true, false, false},  {2, 2, 1, true, true, false}};
    for (const auto &row : kRows) {
        ASSERT_TRUE(Choose(Targets(), row.record));
        SelectControl(row.page, row.position);
        EXPECT_EQ(Choose("uiSettingsMenuAction", 1), row.useGlobal) << row.record;
        EXPECT_EQ(Choose("uiSettingsMenuAction", 2), row.application) << row.record;
        EXPECT_EQ(Choose("uiSettingsMenuAction", 3), row.toolMenu) << row.record;
    }
}

TEST_F(Editor, GroupMenus_StoreTheCodeOfEachPosition) {
    static constexpr struct {
        int page, position;
        SlotIndex slot;
    } kRows[] = {{0, 4, 0}, {1, 1, 6}, {2, 3, 20}, {0, 4, 0}, {0, 4, 0}, {1, 1, 6}}; // one for each menu
    ASSERT_EQ(GroupMenus().size(), std::size(kRows));
    for (std::size_t m = 0; m < std::size(kRows); ++m) {
        const auto &[page, position, slot] = kRows[m];
        const GroupMenu &group = GroupMenus()[m];
        SelectControl(page, position);
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

TEST_F(Editor, ModifierBoxes_ChangeTheirBitAlone) {
    static constexpr struct {
        const char *modifier;
        std::uint16_t mask;
    } kModifiers[] = {
        {"Control", 0x1000}, {"Option", 0x0800}, {"Command", 0x0100}, {"Shift", 0x0200}, {"Caps", 0x0400}};
    SelectControl(0, 4);
    for (const auto &[area, item] :
         {std::pair("uiSettingsBoxKey", 6), std::pair("uiSettingsBoxScroll", 11)}) {
        ASSERT_TRUE(Choose("uiSettingsMenuAction", item));
        AppPrefs expected = fPane->WorkingCopy();
        for (int i = 0; i < 10; ++i) { // all on, all off
            const auto &[modifier, mask] = kModifiers[i % 5];
            Click((std::string(area) + modifier).c_str());
            expected.device[0].action[0].modifiers ^= mask;
            EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << area << modifier;
        }
    }
}

TEST_F(Editor, KeyAndRepeatMenus_ChangeTheirFieldAlone) {
    static constexpr std::uint8_t kKeys[] = {0xFF, 0xFF, 0xFF, 0x35, 0x33, 0x24, 0x30, 0x4C, 0x72, 0x75, 0x73,
                                             0x77, 0x74, 0x79, 0x47, 0xFF, 0x7A, 0x78, 0x63, 0x76, 0x60, 0x61,
                                             0x62, 0x64, 0x65, 0x6D, 0x67, 0x6F, 0x69, 0x6B, 0x71};
    SelectControl(0, 4);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 6));
    EXPECT_EQ(Find<QLineEdit>("uiSettingsFieldKeystroke")->text(), QStringLiteral("(none)"));
    AppPrefs expected = fPane->WorkingCopy();
    ActionSlot &slot = expected.device[0].action[0];
    for (int i = 0; i < 31; ++i) {
        const bool isSeparator = i == 1 || i == 15;
        EXPECT_EQ(Choose("uiSettingsMenuExtraKeys", i), !isSeparator);
        slot.keyCode = isSeparator ? slot.keyCode : kKeys[i];
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << i;
    }
    EXPECT_EQ(Find<QLineEdit>("uiSettingsFieldKeystroke")->text(), QStringLiteral("F15"));
    const auto chooseEach = [&](const char *menu, std::initializer_list<std::uint16_t> delays) {
        for (int i = static_cast<int>(delays.size()) - 1; i >= 0; --i) {
            ASSERT_TRUE(Choose(menu, i));
            slot.delay = delays.begin()[i];
            EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << menu << i;
            EXPECT_EQ(Menu(menu)->currentIndex(), i);
        }
    };
    chooseEach("uiSettingsMenuKeyRepeat", {0xFFFF, 0, 6, 15, 30});
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 11));
    expected = fPane->WorkingCopy();
    chooseEach("uiSettingsMenuAutoRepeat", {0, 3, 6, 15});
}

TEST_F(Editor, TunerHasNoRepeat) {
    SelectControl(1, 1);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 6));
    EXPECT_EQ(Menu("uiSettingsMenuKeyRepeat")->currentIndex(), 1);
    EXPECT_FALSE(Menu("uiSettingsMenuKeyRepeat")->isEnabled());
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 12));
    EXPECT_EQ(Menu("uiSettingsMenuAutoRepeat")->currentIndex(), 0);
    EXPECT_FALSE(Menu("uiSettingsMenuAutoRepeat")->isEnabled());
}

TEST_F(Editor, Sliders_EditTheFieldsOfTheSelectedAxis) {
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
        for (const auto &row : kRows) {
            SelectControl(0, row.position);
            move("uiSettingsSliderNavSens", isSeparate ? row.sensitivity : &DevicePrefs::navSensitivity,
                 Qt::Key_Right, 1);
            move("uiSettingsSliderNavSpeed", isSeparate ? row.speed : &DevicePrefs::navSpeed,
                 Qt::Key_PageDown, -10);
        }
        Click("uiSettingsBoxAllAxis");
        device.useSeparateNavSens = device.useSeparateNavSpeed = isSeparate ? 0 : 1;
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected));
    }
    SelectControl(1, 0);
    move("uiSettingsSliderToolSens", &DevicePrefs::toolSensitivity, Qt::Key_PageUp, 10);
    EXPECT_EQ(Find<QLabel>("uiSettingsTextToolSens")->text(), QStringLiteral("110 %"));
    Click("uiSettingsBoxClickSound");
    device.click = 0;
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected));
}

// Every byte of the record differs from the factory's; each button brings back its own and no other.
TEST_F(Editor, DefaultsButtons_RestoreTheirSlotsAndFields) {
    AppPrefs strange = *GetAppPrefs(fPane->Base(), 1);
    std::memset(&strange.device[0], 0x40, sizeof strange.device[0]);
    StartWith(strange);
    static constexpr std::pair<const char *, ControlGroup> kRows[] = {
        {"uiSettingsButtonNavDefaults", ControlGroup::Ring},
        {"uiSettingsButtonToolDefaults", ControlGroup::Tuner},
        {"uiSettingsButtonTriggerDefaults", ControlGroup::Buttons}};
    AppPrefs expected = fPane->WorkingCopy();
    for (int page = 0; page < 3; ++page) {
        const auto &[button, group] = kRows[page];
        SelectControl(page, 0);
        CopyGroupFromDefaultPrefs(expected, MakeFactoryRecord(kPhoto, "photo"), group);
        Click(button);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << button;
    }
}

TEST_F(Editor, ValuesOtherThanTheFactorys_AreMarked) {
    SelectControl(0, 0);
    const auto isBold = [this](const char *name) { return Find<QWidget>(name)->font().bold(); };
    const QTreeWidgetItem *line = Find<QTreeWidget>("uiSettingsMenuNavRing")->topLevelItem(0);
    EXPECT_FALSE(isBold("uiSettingsTextNavSens") || line->font(1).bold());
    QTest::keyClick(Find<QSlider>("uiSettingsSliderNavSens"), Qt::Key_Left);
    EXPECT_TRUE(isBold("uiSettingsTextNavSens"));
    EXPECT_TRUE(Find<QWidget>("uiSettingsSliderNavSens")->toolTip().contains(QStringLiteral("100 %")));
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 10));
    EXPECT_TRUE(line->font(1).bold());
    EXPECT_TRUE(line->toolTip(1).contains(QStringLiteral("shift+"))) << "says what the factory's action is";
    EXPECT_TRUE(Find<QWidget>("uiSettingsButtonNavDefaults")
                    ->toolTip()
                    .contains(QStringLiteral("<b>Turn right: shift+")));
    Click("uiSettingsButtonNavDefaults");
    EXPECT_FALSE(isBold("uiSettingsTextNavSens") || line->font(1).bold() || CanApply());
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

TEST_F(Editor, CapturedKeystroke_GoesToAKeystrokeOnly) {
    SelectControl(2, 4);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 10));
    const AppPrefs before = fPane->WorkingCopy();
    gDrevixPane->ReceiveKeystroke(1, 0x0300);
    EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), before));
}

// What every visible control shows, by its name.
QStringList Shown(const QWidget &window) {
    QStringList shown;
    for (const auto *widget : window.findChildren<QWidget *>()) {
        if (!widget->isVisible() || !widget->objectName().startsWith(QLatin1String("ui"))) {
            continue;
        }
        QString state = widget->objectName() +
                        (widget->isEnabled() ? QStringLiteral(" on ") : QStringLiteral(" off ")) +
                        QString::number(widget->font().bold()) + widget->toolTip();
        if (const auto *menu = qobject_cast<const QComboBox *>(widget)) {
            state += menu->currentText();
        } else if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
            state += button->isChecked() ? QStringLiteral("checked") : QString();
        } else if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            state += label->text();
        } else if (const auto *field = qobject_cast<const QLineEdit *>(widget)) {
            state += field->text();
        } else if (const auto *slider = qobject_cast<const QSlider *>(widget)) {
            state += QString::number(slider->value());
        } else if (const auto *list = qobject_cast<const QTreeWidget *>(widget)) {
            for (int i = 0; i < list->topLevelItemCount(); ++i) {
                state +=
                    list->topLevelItem(i)->text(1) + QString::number(list->topLevelItem(i)->font(1).bold());
            }
        }
        shown += state;
    }
    return shown;
}

// After any number of edits the panel looks as one that has just been started on the same settings.
TEST_F(Editor, ControlsHoldNothingThatTheRecordDoesNotHold) {
    QRandomGenerator random(20);
    const auto upTo = [&](int end) { return static_cast<int>(random.bounded(end)); };
    static constexpr auto kMenus = std::to_array<const char *>(
        {"uiSettingsMenuAction", "uiSettingsMenuAppNav", "uiSettingsMenuAppTool", "uiSettingsMenuShortcuts",
         "uiSettingsMenuKeyRepeat", "uiSettingsMenuAutoRepeat", "uiSettingsMenuExtraKeys",
         "uiSettingsMenuITunes"});
    static constexpr auto kButtons = std::to_array<const char *>(
        {"uiSettingsBoxKeyShift", "uiSettingsBoxScrollCaps", "uiSettingsBoxAllAxis",
         "uiSettingsBoxClickSound", "uiSettingsRadioDisabled", "uiSettingsRadioActive",
         "uiSettingsButtonNavDefaults", "uiPaneButtonRevert"});
    static constexpr int kControlsOfPages[] = {8, 2, 5};
    for (int round = 0; round < 12; ++round) {
        int page = 0;
        int position = 0;
        for (int edit = 0; edit < 12; ++edit) {
            page = upTo(3);
            position = upTo(kControlsOfPages[page]);
            SelectControl(page, position);
            std::ignore =
                Choose("uiSettingsMenuAction", upTo(19)); // a separator or what is not offered: no change
            if (QComboBox *menu = Menu(kMenus[static_cast<std::size_t>(upTo(8))]);
                menu->isVisible() && menu->isEnabled()) {
                std::ignore = Choose(menu, upTo(menu->count()));
            }
            if (const char *button = kButtons[static_cast<std::size_t>(upTo(8))];
                Find<QWidget>(button)->isVisible()) {
                Click(button);
            }
        }
        Click("uiPaneButtonApply");
        const QStringList shown = Shown(*fWindow);
        ASSERT_EQ(shown.filter(QStringLiteral("uiSettingsMenuAction")).size(), 1);
        End();
        Start();
        ASSERT_TRUE(Choose(Targets(), 2));
        SelectControl(page, position);
        ASSERT_EQ(Shown(*fWindow), shown) << round;
    }
}

} // namespace
} // namespace drevix::test
