#include "settings/action_commands.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

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

// Position in the action menu, tab, group menu and position there.
using Place = std::tuple<int, int, std::string, int>;

// Where each offered code is shown.
std::map<int, Place> ExpectedPlaces() {
    std::map<int, Place> places;
    for (std::size_t at = 0; at < kActionMenu.size(); ++at) {
        places.emplace(kActionMenu[at], Place{static_cast<int>(at), kTabs[at], "", -1});
    }
    for (const ExpectedMenu &menu : kMenus) {
        for (std::size_t at = 0; at < menu.codes.size(); ++at) {
            if (menu.codes[at] != 0) {
                places[menu.codes[at]] = {menu.entry, menu.tab, menu.outlet, static_cast<int>(at)};
            }
        }
    }
    return places;
}

TEST(ActionMenus, EveryPosition_StoresItsCommand) {
    for (int position = -3; position < 25; ++position) {
        const bool inside = position >= 0 && position < 19;
        const int expected = inside ? kActionMenu[static_cast<std::size_t>(position)] : 0;
        for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
            const bool toolSize = position == 2 && (slot == 6 || slot == 7);
            EXPECT_EQ(CommandForActionMenu(position, slot), toolSize ? 35 : expected)
                << position << ' ' << slot;
        }
        EXPECT_EQ(ActionMenuTitle(position).empty(), !inside || kSeparators.contains(position)) << position;
    }
    ASSERT_EQ(GroupMenus().size(), kMenus.size());
    for (std::size_t m = 0; m < kMenus.size(); ++m) {
        const ExpectedMenu &expected = kMenus[m];
        const GroupMenu *menu = FindGroupMenu(expected.outlet);
        ASSERT_EQ(menu, &GroupMenus()[m]) << expected.outlet;
        for (int at = -1; at <= static_cast<int>(expected.codes.size()); ++at) {
            const bool inside = at >= 0 && at < static_cast<int>(expected.codes.size());
            const int code = inside ? expected.codes[static_cast<std::size_t>(at)] : 0;
            EXPECT_EQ(CommandForGroupMenu(*menu, at), code) << expected.outlet << ' ' << at;
        }
    }
}

TEST(Actions, Every16BitCode_IsKnownAndShownInItsPlace) {
    const std::map<int, Place> places = ExpectedPlaces();
    for (int code = 0; code < 0x10000; ++code) {
        const auto command = static_cast<ActionCommand>(code);
        const ActionPlace found = ClassifyAction(command);
        // 228 to 231 are in no menu, but that they scroll can be seen and edited.
        Place expected = {0, code >= 228 && code <= 231 ? 10 : 0, "", -1};
        if (const auto place = places.find(code); place != places.end()) {
            expected = place->second;
        }
        const std::string outlet(found.menu == nullptr ? "" : found.menu->outlet);
        ASSERT_EQ(Place(found.actionMenuPosition, static_cast<int>(found.tab), outlet, found.menuPosition),
                  expected)
            << code;
        ASSERT_EQ(FindAction(command) != nullptr, places.contains(code)) << code;
    }
}

} // namespace
} // namespace drevix
