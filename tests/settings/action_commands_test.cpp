#include "settings/action_commands.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

// clang-format off
// What the menus hold, written once more from the agreement with the device helper. 0 is a separator.
struct ExpectedMenu {
    std::string outlet;
    int entry; // position of its group in the action menu
    int tab;
    std::vector<int> codes;
};
const std::vector<ExpectedMenu> kMenus = {
    {"uiSettingsMenuAppNav", 2, 2, {37, 38, 39, 40, 41, 42, 43}},
    {"uiSettingsMenuAppTool", 2, 3, {35, 36}},
    {"uiSettingsMenuShortcuts", 7, 5,
     {176, 177, 178, 179, 0, 180, 181, 189, 190, 0, 183, 184, 185, 186, 0, 182, 208, 187, 188, 0,
      160, 161, 162}},
    {"uiSettingsMenuSpecialKeys", 8, 6, {128, 130, 129, 132, 131, 134, 133}},
    {"uiSettingsMenuPredefined", 15, 7,
     {69, 68, 67, 0, 102, 103, 104, 105, 106, 0, 80, 81, 82, 83, 84, 85, 86, 87, 88, 89, 90, 91, 92, 93,
      94, 95, 96}},
    {"uiSettingsMenuITunes", 18, 9, {144, 145, 146, 147, 151, 152}},
};
// The action menu's commands for a slot that is not the tuner's, and the detail tabs that they show.
const std::vector<int> kActionMenu = {
    0, 4, 37, 34, 7, 0, 32, 176, 128, 0, 224, 225, 226, 227, 0, 69, 64, 0, 144};
const std::vector<int> kTabs = {
    0, 0, 2,  4,  0, 0, 1,  5,   6,   0, 10,  10,  10,  10,  0, 7,  8,  0, 9};
const std::set<int> kSeparators = {5, 9, 14, 17};
// clang-format on

// The entry at a position, 0 outside.
int At(const std::vector<int> &entries, int position) {
    const auto at = static_cast<std::size_t>(position);
    return at < entries.size() ? entries[at] : 0;
}

// Position in the action menu, tab, group menu and position there.
using Place = std::tuple<int, int, const GroupMenu *, int>;

TEST(Actions, EveryPositionAndEvery16BitCode_LeadToEachOther) {
    std::map<int, Place> places; // where each offered code is shown
    for (int position = -3; position < 25; ++position) {
        for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
            const bool isToolSize = position == 2 && (slot == 6 || slot == 7);
            EXPECT_EQ(CommandForActionMenu(position, slot), isToolSize ? 35 : At(kActionMenu, position))
                << position << ' ' << slot;
        }
        const bool isEntry = position >= 0 && position < 19 && !kSeparators.contains(position);
        EXPECT_EQ(ActionMenuTitle(position).empty(), !isEntry) << position;
        places.try_emplace(At(kActionMenu, position), std::max(position, 0), At(kTabs, position), nullptr,
                           -1);
    }
    ASSERT_EQ(GroupMenus().size(), kMenus.size());
    for (std::size_t m = 0; m < kMenus.size(); ++m) {
        const auto &[outlet, entry, tab, codes] = kMenus[m];
        const GroupMenu *menu = FindGroupMenu(outlet);
        ASSERT_EQ(menu, &GroupMenus()[m]) << outlet;
        for (int at = -1; at <= static_cast<int>(codes.size()); ++at) {
            EXPECT_EQ(CommandForGroupMenu(*menu, at), At(codes, at)) << outlet << ' ' << at;
            if (At(codes, at) != 0) {
                places[At(codes, at)] = {entry, tab, menu, at};
            }
        }
    }
    for (int code = 0; code < 0x10000; ++code) {
        const auto command = static_cast<ActionCommand>(code);
        const auto place = places.find(code);
        ASSERT_EQ(FindAction(command) != nullptr, place != places.end()) << code;
        // 228 to 231 are in no menu, but that they scroll can be seen and edited.
        const Place none = {0, code >= 228 && code <= 231 ? 10 : 0, nullptr, -1};
        const ActionPlace found = ClassifyAction(command);
        ASSERT_EQ(
            Place(found.actionMenuPosition, static_cast<int>(found.tab), found.menu, found.menuPosition),
            place != places.end() ? place->second : none)
            << code;
    }
}

} // namespace
} // namespace drevix
