#include "settings/action_commands.h"
#include "tests/settings/settings_files.h"

namespace drevix::test {
namespace {

const std::string kTree = DREVIX_TEST_DATA "/../..";

std::vector<AppPrefs> FactoryRecords() {
    std::vector<AppPrefs> records;
    PropertyListProblem problem;
    EXPECT_EQ(ReadAppPrefsFile(
                  kTree + "/resources/" + kDefaultsFileName,
                  [&](const AppPrefs &record) { records.push_back(record); }, &problem),
              noErr)
        << problem.text;
    return records;
}

// Whether the actions are two directions of one thing, what is left, up or counter-clockwise first. The same
// key is with Shift on one side.
bool AreOpposite(const ActionSlot &a, const ActionSlot &b) {
    // Tool size, moving, zooming, volume, scrolling.
    static const std::set<std::pair<int, int>> kCommands = {{35, 36},   {37, 38},   {39, 40},   {41, 42},
                                                            {131, 132}, {224, 225}, {225, 224}, {226, 227}};
    // Arrows, page up and down, home and end, zoom signs, brackets, comma and period, F2 and F1, the digits
    // 3 and 1, backspace and space, the keypad's arrows.
    static const std::set<std::pair<int, int>> kKeys = {
        {123, 124}, {126, 125}, {116, 121}, {121, 116}, {115, 119}, {119, 115}, {78, 69}, {27, 24},
        {33, 30},   {43, 47},   {120, 122}, {20, 18},   {51, 49},   {86, 88},   {91, 84}};
    if (a.command != b.command) {
        return a.modifiers == b.modifiers && kCommands.contains({a.command, b.command});
    }
    const bool isReversedByShift = a.keyCode == b.keyCode && (a.modifiers ^ b.modifiers) == kShiftModifier;
    return a.command == kActionKeystroke && (isReversedByShift || kKeys.contains({a.keyCode, b.keyCode}));
}

TEST(FactoryDefaults, Page_MakesTheFile) {
    EXPECT_EQ(std::system(("/usr/bin/python3 " + kTree + "/scripts/make_defaults.py --check").c_str()), 0);
}

TEST(FactoryDefaults, Records_AreTheGlobalOneTheCompanionsAndPrograms) {
    const std::vector<AppPrefs> records = FactoryRecords();
    ASSERT_GE(records.size(), 17U);
    const std::vector<std::pair<OSType, std::string>> first = {
        {kGlobalSignature, ""},
        {FourCharCode("8BIM"), "Adobe Photoshop CS2"},
        {FourCharCode("ART5"), "Adobe Illustrator CS2"},
        {FourCharCode("InDn"), "Adobe InDesign CS2"},
        {FourCharCode("8ELE"), "Adobe Photoshop Elements 4.0"},
    };
    for (std::size_t i = 0; i < records.size(); ++i) {
        const AppPrefs &record = records[i];
        const std::pair<OSType, std::string> application(record.application, NameOf(record));
        EXPECT_EQ(application, i < first.size() ? first[i] : std::pair(kWildcardSignature, NameOf(record)));
        EXPECT_FALSE(application.second.ends_with(".desktop")) << application.second;
        AppPrefs plain = gDefaultGlobalPrefs; // whose device values every record has
        plain.application = record.application;
        plain.appFileName = record.appFileName;
        plain.appName = record.appName;
        plain.factory = 1;
        std::memcpy(plain.device[0].action, record.device[0].action, sizeof plain.device[0].action);
        EXPECT_TRUE(SameBytes(plain, record)) << application.second;
    }
}

TEST(FactoryDefaults, Slots_KeepTheRulesAndOppositesAreOpposite) {
    for (const AppPrefs &record : FactoryRecords()) {
        const auto &slots = record.device[0].action;
        for (const ControlSlot &control : kControlSlots) {
            SCOPED_TRACE(NameOf(record) + " " + std::string(control.key));
            const ActionSlot &slot = slots[control.slot];
            const bool rest = control.key.ends_with("Rest");
            EXPECT_EQ(slot.command == kActionNone, rest);
            EXPECT_NE(slot.command, kActionToolMenu);
            EXPECT_EQ(CheckAction(record, control.slot, slot.command), ActionRefusal::None);
            EXPECT_EQ(slot.command == kActionKeystroke, slot.keyCode < 128);

            AppPrefs settled = record; // what choosing the command again would make of the record
            UpdateOppositeAction(settled, control.slot);
            EXPECT_TRUE(SameBytes(settled, record));
            const SlotIndex opposite = OppositeSlot(control.slot);
            EXPECT_TRUE(opposite < control.slot || AreOpposite(slot, slots[opposite]));
        }
    }
}

} // namespace
} // namespace drevix::test
