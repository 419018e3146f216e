#include "platform/status.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"
#include "tests/settings/settings_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace drevix {
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

std::string NameOf(const AppPrefs &record) {
    return stringWithPascalString(record.appFileName.data());
}

using Pair = std::pair<int, int>; // what is on the left, upper or counter-clockwise side first

// Commands that undo each other: tool size, moving, zooming, volume, scrolling.
constexpr auto kOppositeCommands = std::to_array<Pair>(
    {{35, 36}, {37, 38}, {39, 40}, {41, 42}, {131, 132}, {224, 225}, {225, 224}, {226, 227}});

// Keys that do: arrows, page up and down, home and end, zoom signs, brackets, comma and period, F2 and F1, the
// digits 3 and 1, backspace and space, the keypad's arrows.
constexpr auto kOppositeKeys = std::to_array<Pair>({
    {123, 124},
    {126, 125},
    {116, 121},
    {121, 116},
    {115, 119},
    {119, 115},
    {78, 69},
    {27, 24},
    {33, 30},
    {43, 47},
    {120, 122},
    {20, 18},
    {51, 49},
    {86, 88},
    {91, 84},
});

// Whether the two actions are two directions of one thing. The same key with Shift on one side is.
bool AreOpposite(const ActionSlot &a, const ActionSlot &b) {
    if (a.command != b.command) {
        return a.modifiers == b.modifiers &&
               std::ranges::count(kOppositeCommands, Pair{a.command, b.command}) == 1;
    }
    const bool reversedByShift = a.keyCode == b.keyCode && (a.modifiers ^ b.modifiers) == kShiftModifier;
    return a.command == kActionKeystroke &&
           (reversedByShift || std::ranges::count(kOppositeKeys, Pair{a.keyCode, b.keyCode}) == 1);
}

TEST(FactoryDefaults, Page_MakesTheFile) {
    EXPECT_EQ(std::system(("/usr/bin/python3 " + kTree + "/scripts/make_defaults.py --check").c_str()), 0);
}

TEST(FactoryDefaults, Records_AreTheGlobalOneTheCompanionsAndPrograms) {
    const std::vector<AppPrefs> records = FactoryRecords();
    ASSERT_GE(records.size(), 17U);
    std::vector<std::pair<OSType, std::string>> names;
    for (const AppPrefs &record : records) {
        names.emplace_back(record.application, NameOf(record));
        EXPECT_EQ(std::ranges::count_if(
                      records,
                      [&](const AppPrefs &other) {
                          return PStringCmp(record.appFileName.data(), other.appFileName.data()) == 0 ||
                                 PStringCmp(record.appName.data(), other.appName.data()) == 0;
                      }),
                  1)
            << NameOf(record);
        AppPrefs plain = gDefaultGlobalPrefs; // whose device values every record has
        plain.application = record.application;
        plain.appFileName = record.appFileName;
        plain.appName = record.appName;
        plain.factory = 1;
        std::memcpy(plain.device[0].action, record.device[0].action, sizeof plain.device[0].action);
        EXPECT_EQ(std::memcmp(&plain, &record, sizeof plain), 0) << NameOf(record);
    }
    const std::vector<std::pair<OSType, std::string>> first = {
        {kGlobalSignature, ""},
        {FourCharCode("8BIM"), "Adobe Photoshop CS2"},
        {FourCharCode("ART5"), "Adobe Illustrator CS2"},
        {FourCharCode("InDn"), "Adobe InDesign CS2"},
        {FourCharCode("8ELE"), "Adobe Photoshop Elements 4.0"},
    };
    EXPECT_THAT(std::vector(names.begin(), names.begin() + 5), testing::ElementsAreArray(first));
    for (std::size_t i = first.size(); i < names.size(); ++i) {
        EXPECT_EQ(names[i].first, kWildcardSignature) << names[i].second;
        EXPECT_FALSE(names[i].second.ends_with(".desktop")) << names[i].second;
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
            EXPECT_EQ(std::memcmp(&settled, &record, sizeof record), 0);

            const SlotIndex opposite = OppositeSlot(control.slot);
            EXPECT_TRUE(opposite < control.slot || AreOpposite(slot, slots[opposite]));
        }
    }
}

TEST(FactoryDefaults, NewBase_NeedsNoRepair) {
    const test::SettingsFolder folder;
    const std::vector<AppPrefs> records = FactoryRecords();
    const QBaseOwner base = NewDrevixBase();
    ASSERT_EQ(GetDeviceDefaultPrefs(base.get(), kTree + "/resources/" + kDefaultsFileName), noErr);
    ASSERT_EQ(ValidateDevicePrefs(base.get()), noErr); // at stamp 0, where every rule applies
    ASSERT_EQ(QBaseCountRecords(base.get()), static_cast<RecordNumber>(records.size()));
    for (std::size_t i = 0; i < records.size(); ++i) {
        const AppPrefs *stored = GetAppPrefs(base.get(), static_cast<RecordNumber>(i));
        ASSERT_NE(stored, nullptr);
        EXPECT_EQ(std::memcmp(stored, &records[i], sizeof *stored), 0) << NameOf(records[i]);
    }
}

} // namespace
} // namespace drevix
