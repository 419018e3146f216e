// The factory defaults of each family of layouts, in real layouts of it.
#include "keyboard/layout_family.h"

#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

using FamilyTable = std::array<std::uint8_t, 128>;

const FSRef kResources = {DREVIX_TEST_DATA "/../../resources"};

FamilyTable FamilyTableOf(const char *layout, const char *variant = "") {
    KeyboardCharacters characters{};
    EXPECT_TRUE(KeyboardCharactersOfLayout({"", "", layout, variant, ""}, &characters)) << layout;
    return KeyCharacters(characters);
}

std::vector<AppPrefs> RecordsIn(const FSRef &folder) {
    std::vector<AppPrefs> records;
    EXPECT_EQ(ReadAppPrefsFile(folder.path + "/" + kDefaultsFileName,
                               [&](const AppPrefs &record) { records.push_back(record); }),
              noErr);
    return records;
}

// Every keystroke with a letter types in each layout what it types in the US.
TEST(LayoutFamilies, Letters_AreTypedAsInTheUnitedStates) {
    static constexpr std::tuple<const char *, const char *, const char *> kRows[] = {
        // clang-format off
        {"us", "", ""}, {"gb", "", ""}, {"es", "", ""}, {"ru", "", ""},
        {"de", "", "qwertz"}, {"ch", "", "qwertz"}, {"cz", "", "qwertz"}, {"fr", "", "azerty"}, {"be", "", "azerty"},
        {"us", "dvorak", "dvorak"}, {"us", "colemak", "colemak"},
        // clang-format on
    };
    const FamilyTable us = FamilyTableOf("us");
    const std::vector<AppPrefs> byUs = RecordsIn(kResources);
    for (const auto &[layout, variant, folder] : kRows) {
        const FamilyTable table = FamilyTableOf(layout, variant);
        ASSERT_EQ(FamilyOfLayout(table).folder, folder) << layout << " " << variant;
        const std::vector<AppPrefs> records = RecordsIn(FactoryFolder(kResources, FamilyOfLayout(table)));
        ASSERT_EQ(records.size(), byUs.size());
        for (std::size_t i = 0; i < records.size(); ++i) {
            for (const ControlSlot &control : kControlSlots) {
                const ActionSlot &there = byUs[i].device[0].action[control.slot];
                const ActionSlot &here = records[i].device[0].action[control.slot];
                const char letter = static_cast<char>(us[there.keyCode & 0x7F]);
                ASSERT_EQ(std::pair(here.command, here.modifiers), std::pair(there.command, there.modifiers));
                if (there.command == kActionKeystroke && letter >= 'a' && letter <= 'z') {
                    EXPECT_EQ(static_cast<char>(table[here.keyCode & 0x7F]), letter)
                        << layout << " " << variant << ", record " << i << ", " << control.key;
                }
            }
        }
    }
}

TEST(LayoutFamilies, Folder_IsTheResourceFolderWhereThereIsNoneForTheFamily) {
    const LayoutFamily nowhere = {"nowhere", {}};
    EXPECT_EQ(FactoryFolder(kResources, nowhere).path, kResources.path);
    EXPECT_EQ(FamilyOfLayout(FamilyTable{}).folder, "") << "before a layout is known";
}

TEST(LayoutFamilies, OtherFamilies_DoWhatTheirFilesSay) {
    constexpr SlotIndex kButtonI = 18;
    constexpr std::uint8_t kPlaceOfZ = 6;
    constexpr std::uint8_t kPlaceOfY = 16;
    AppPrefs record = RecordsIn(kResources).back();
    for (const AppPrefs &candidate : RecordsIn(kResources)) {
        const ActionSlot &slot = candidate.device[0].action[kButtonI];
        record = slot.keyCode == kPlaceOfZ && slot.modifiers == kControlModifier ? candidate : record;
    }
    const OtherFamilies others(kResources, record);
    ActionSlot slot = record.device[0].action[kButtonI];
    EXPECT_TRUE(others.Do(slot, kButtonI));
    slot.keyCode = kPlaceOfY;
    EXPECT_TRUE(others.Do(slot, kButtonI)) << "in Germany";
    slot.delay = 5;
    EXPECT_FALSE(others.Do(slot, kButtonI));
    slot = {};
    EXPECT_FALSE(others.Do(slot, kButtonI)) << "only keys differ";
}

} // namespace
} // namespace drevix
