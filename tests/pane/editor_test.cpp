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
        int item;
        ActionCommand onRing, onTuner, onButton; // where the menus differ
        int tab, tunerTab;
    } kRows[] = {{6, 32, 32, 32, 1, 1},       {1, 4, 4, 4, 0, 0},          {2, 37, 35, 37, 2, 3},
                 {4, 7, 7, 7, 0, 0},          {7, 176, 176, 176, 5, 5},    {8, 128, 128, 128, 6, 6},
                 {10, 224, 224, 224, 10, 10}, {11, 225, 225, 225, 10, 10}, {12, 226, 226, 226, 10, 10},
                 {13, 227, 227, 227, 10, 10}, {15, 69, 69, 69, 7, 7},      {16, 64, 64, 64, 8, 8},
                 {18, 144, 144, 144, 9, 9},   {0, 0, 0, 0, 0, 0}};
    static constexpr ActionSlot kEmptied = {0, 0, 0xFF, 0, 0, 0, 0, {}};
    for (const auto &row : kRows) {
        const auto check = [&](int page, int position, SlotIndex slot, ActionCommand command, int tab) {
            SelectControl(page, position);
            ASSERT_TRUE(Choose("uiSettingsMenuAction", row.item)) << row.item;
            ActionSlot expected = kEmptied;
            expected.command = command;
            EXPECT_EQ(std::memcmp(&Slot(slot), &expected, sizeof expected), 0)
                << slot << " item " << row.item;
            EXPECT_EQ(Menu("uiSettingsMenuAction")->currentIndex(), row.item);
            EXPECT_EQ(Tab(), tab);
        };
        check(0, 5, 2, row.onRing, row.tab);
        check(1, 0, 7, row.onTuner, row.tunerTab);
        check(2, 4, 19, row.onButton, row.tab);
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
    static const struct {
        const char *menu;
        int page, entry;
        std::vector<int> codes; // 0: a separator
    } kRows[] = {
        {"uiSettingsMenuAppNav", 0, 2, {37, 38, 39, 40, 41, 42, 43}},
        {"uiSettingsMenuAppTool", 1, 2, {35, 36}},
        {"uiSettingsMenuShortcuts", 2, 7, {176, 177, 178, 179, 0,   180, 181, 189, 190, 0,   183, 184,
                                           185, 186, 0,   182, 208, 187, 188, 0,   160, 161, 162}},
        {"uiSettingsMenuSpecialKeys", 0, 8, {128, 130, 129, 132, 131, 134, 133}},
        {"uiSettingsMenuPredefined", 0, 15, {69, 68, 67, 0,  102, 103, 104, 105, 106, 0,  80, 81, 82, 83,
                                             84, 85, 86, 87, 88,  89,  90,  91,  92,  93, 94, 95, 96}},
        {"uiSettingsMenuITunes", 1, 18, {144, 145, 146, 147, 151, 152}},
    };
    static constexpr SlotIndex kSlots[] = {0, 6, 20}; // at position 4, 1 and 3 of their pages
    static constexpr int kPositions[] = {4, 1, 3};
    for (const auto &row : kRows) {
        const SlotIndex slot = kSlots[row.page];
        SelectControl(row.page, kPositions[row.page]);
        ASSERT_TRUE(Choose("uiSettingsMenuAction", row.entry));
        ASSERT_EQ(Menu(row.menu)->count(), static_cast<int>(row.codes.size()));
        for (int i = 0; i < Menu(row.menu)->count(); ++i) {
            const int code = row.codes[static_cast<std::size_t>(i)];
            AppPrefs expected = fPane->WorkingCopy();
            if (code != 0) {
                expected.device[0].action[slot].command = static_cast<ActionCommand>(code);
                UpdateOppositeAction(expected, slot);
            }
            EXPECT_EQ(Choose(row.menu, i), code != 0) << row.menu << i;
            EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << row.menu << i;
        }
    }
}

TEST_F(Editor, OppositeAndSoleActions_GiveWay) {
    SelectControl(0, 4);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 2));
    EXPECT_EQ(Slot(1).command, 38);
    EXPECT_EQ(Slot(1).keyCode, 1) << "only the command changes";
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 6));
    EXPECT_EQ(Slot(1).command, 0);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 4));
    SelectControl(2, 1);
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 4));
    EXPECT_EQ(Slot(0).command, 0) << "one control alone switches the ring mode";
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
                 {1, &DevicePrefs::navSensitivityZ, &DevicePrefs::navSpeedZ},
                 {2, &DevicePrefs::navSensitivityZ, &DevicePrefs::navSpeedZ},
                 {3, &DevicePrefs::navSensitivityX, &DevicePrefs::navSpeedX},
                 {4, &DevicePrefs::navSensitivityX, &DevicePrefs::navSpeedX},
                 {5, &DevicePrefs::navSensitivityY, &DevicePrefs::navSpeedY},
                 {6, &DevicePrefs::navSensitivityY, &DevicePrefs::navSpeedY},
                 {7, &DevicePrefs::navSensitivityX, &DevicePrefs::navSpeedX}};
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
    const DevicePrefs factory = MakeFactoryRecord(kPhoto, "photo").device[0];
    static const struct {
        const char *button;
        int page;
        std::vector<SlotIndex> slots;
    } kRows[] = {{"uiSettingsButtonNavDefaults", 0, {5, 4, 9, 1, 0, 3, 2, 8}},
                 {"uiSettingsButtonToolDefaults", 1, {7, 6}},
                 {"uiSettingsButtonTriggerDefaults", 2, {16, 17, 18, 20, 19}}};
    AppPrefs expected = fPane->WorkingCopy();
    for (const auto &row : kRows) {
        SelectControl(row.page, 0);
        DevicePrefs &device = expected.device[0];
        for (const SlotIndex slot : row.slots) {
            device.action[slot] = factory.action[slot];
        }
        if (row.page == 0) {
            device.navSensitivity = device.navSpeed = 100;
            device.navSensitivityX = device.navSensitivityY = device.navSensitivityZ = 100;
            device.navSpeedX = device.navSpeedY = device.navSpeedZ = 100;
            device.useSeparateNavSens = device.useSeparateNavSpeed = 0;
        } else if (row.page == 1) {
            device.toolSensitivity = 100;
            device.click = 1;
        }
        Click(row.button);
        EXPECT_TRUE(SameBytes(fPane->WorkingCopy(), expected)) << row.button;
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
    ASSERT_TRUE(Choose("uiSettingsMenuAction", 6));
    auto *const field = Find<QLineEdit>("uiSettingsFieldKeystroke");
    EXPECT_FALSE(gDrevixPane->OverrideKeysIsActive());
    QTest::mouseClick(field, Qt::LeftButton);
    EXPECT_TRUE(gDrevixPane->OverrideKeysIsActive());
    gDrevixPane->ReceiveKeystroke(0x24, 0x0300);
    EXPECT_EQ(Slot(19).keyCode, 0x24);
    EXPECT_EQ(Slot(19).modifiers, 0x0300);
    EXPECT_EQ(field->text(), QStringLiteral("cmd+shift+return"));
    EXPECT_FALSE(gDrevixPane->OverrideKeysIsActive());
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
