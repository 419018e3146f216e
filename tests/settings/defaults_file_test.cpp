#include "platform/status.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"
#include "tests/settings/settings_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(FactoryDefaults, Page_MakesTheFile) {
    EXPECT_EQ(std::system(("/usr/bin/python3 " + kTree + "/scripts/make_defaults.py --check").c_str()), 0);
}

TEST(FactoryDefaults, Records_AreTheGlobalOneTheCompanionsAndPrograms) {
    const std::vector<AppPrefs> records = FactoryRecords();
    ASSERT_GE(records.size(), 17U);
    std::vector<std::pair<OSType, std::string>> names;
    for (const AppPrefs &record : records) {
        names.emplace_back(record.application, NameOf(record));
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

TEST(FactoryDefaults, Slots_KeepTheRules) {
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
        }
    }
}

} // namespace
} // namespace drevix
