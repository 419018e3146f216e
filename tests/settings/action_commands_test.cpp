#include "settings/action_commands.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace drevix {
namespace {

// What a menu holds, written once more from the agreement with the device helper. 0 is a separator.
using Codes = std::vector<int>;

struct ExpectedMenu {
    const char *outlet;
    int entry; // position of its group in the action menu
    int tab;
    ActionGroup group;
    Codes codes;
};

// clang-format off
const std::vector<ExpectedMenu> kMenus = {
    {"uiSettingsMenuAppNav", 2, 2, ActionGroup::ActionAppNav, {37, 38, 39, 40, 41, 42, 43}},
    {"uiSettingsMenuAppTool", 2, 3, ActionGroup::ActionAppTool, {35, 36}},
    {"uiSettingsMenuShortcuts", 7, 5, ActionGroup::ActionShortcut,
     {176, 177, 178, 179, 0, 180, 181, 189, 190, 0, 183, 184, 185, 186, 0, 182, 208, 187, 188, 0, 160, 161, 162}},
    {"uiSettingsMenuSpecialKeys", 8, 6, ActionGroup::ActionSpecialKey, {128, 130, 129, 132, 131, 134, 133}},
    {"uiSettingsMenuPredefined", 15, 7, ActionGroup::ActionPredefined,
     {69, 68, 67, 0, 102, 103, 104, 105, 106, 0, 80, 81, 82, 83, 84, 85, 86, 87, 88, 89, 90, 91, 92, 93, 94, 95, 96}},
    {"uiSettingsMenuITunes", 18, 9, ActionGroup::ActionITunes, {144, 145, 146, 147, 151, 152}},
};
// The action menu's commands for a slot that is not the tuner's, and the detail tabs that they show.
const Codes kActionMenu = {0, 4, 37, 34, 7, 0, 32, 176, 128, 0, 224, 225, 226, 227, 0, 69, 64, 0, 144};
const Codes kTabs       = {0, 0, 2,  4,  0, 0, 1,  5,   6,   0, 10,  10,  10,  10,  0, 7,  8,  0, 9};
// clang-format on
const std::set<int> kSeparators = {5, 9, 14, 17};

struct Place {
    int position;
    int tab;
    std::string outlet;
    int menuPosition;
    bool operator==(const Place &) const = default;
};

// Where each offered code is shown.
std::map<int, Place> ExpectedPlaces() {
    std::map<int, Place> places;
    for (int position = static_cast<int>(kActionMenu.size()) - 1; position >= 0; --position) {
        const auto at = static_cast<std::size_t>(position);
        places[kActionMenu[at]] = {position, kTabs[at], "", kMenuNotFound};
    }
    for (const ExpectedMenu &menu : kMenus) {
        for (std::size_t i = 0; i < menu.codes.size(); ++i) {
            if (menu.codes[i] != 0) {
                places[menu.codes[i]] = {menu.entry, menu.tab, menu.outlet, static_cast<int>(i)};
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
    EXPECT_EQ(ActionMenuTitle(12), FindAction(226)->title) << "a single command shows its own title";
    EXPECT_EQ(ActionMenuTitle(18), ActionGroupTitle(ActionGroup::ActionITunes)) << "a group shows its title";

    ASSERT_EQ(GroupMenus().size(), kMenus.size());
    for (std::size_t m = 0; m < kMenus.size(); ++m) {
        const ExpectedMenu &expected = kMenus[m];
        const GroupMenu &menu = GroupMenus()[m];
        EXPECT_EQ(menu.outlet, expected.outlet);
        EXPECT_EQ(FindGroupMenu(expected.outlet), &menu);
        EXPECT_EQ(menu.group, expected.group);
        ASSERT_EQ(menu.codes.size(), expected.codes.size()) << expected.outlet;
        for (int i = 0; i < static_cast<int>(expected.codes.size()); ++i) {
            const int code = expected.codes[static_cast<std::size_t>(i)];
            EXPECT_EQ(CommandForGroupMenu(menu, i), code) << expected.outlet << ' ' << i;
            EXPECT_EQ(menu.codes[static_cast<std::size_t>(i)], code == 0 ? kMenuSeparator : code);
        }
        EXPECT_EQ(CommandForGroupMenu(menu, -1), 0);
        EXPECT_EQ(CommandForGroupMenu(menu, static_cast<int>(expected.codes.size())), 0);
    }
    EXPECT_EQ(FindGroupMenu("uiSettingsMenuToolMenu"), nullptr);
}

TEST(ClassifyAction, Every16BitCode_IsShownInItsPlace) {
    const std::map<int, Place> places = ExpectedPlaces();
    for (int code = 0; code < 0x10000; ++code) {
        const ActionPlace found = ClassifyAction(static_cast<ActionCommand>(code));
        const Place actual = {found.actionMenuPosition, static_cast<int>(found.tab),
                              found.menu == nullptr ? "" : std::string(found.menu->outlet),
                              found.menuPosition};
        // 228 to 231 are in no menu, but their scrolling can be seen and edited.
        Place expected = {0, code >= 228 && code <= 231 ? 10 : 0, "", kMenuNotFound};
        if (const auto place = places.find(code); place != places.end()) {
            expected = place->second;
        }
        ASSERT_EQ(actual, expected) << code;
    }
}

TEST(Actions, TableHoldsExactlyWhatIsOffered_UnderTitlesThatDiffer) {
    const std::map<int, Place> places = ExpectedPlaces();
    std::set<std::string_view> titles;
    for (int code = 0; code < 0x10000; ++code) {
        ASSERT_EQ(FindAction(static_cast<ActionCommand>(code)) != nullptr, places.contains(code)) << code;
    }
    ASSERT_EQ(AllActions().size(), places.size());
    for (const ActionInfo &action : AllActions()) {
        EXPECT_EQ(FindAction(action.code), &action);
        EXPECT_TRUE(titles.insert(action.title).second) << action.title << " stands twice";
        EXPECT_FALSE(action.title.empty());
        EXPECT_LE(action.title.size(), 28U) << action.title;
        EXPECT_FALSE(ActionGroupTitle(action.group).empty());
    }
}

} // namespace
} // namespace drevix
