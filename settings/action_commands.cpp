#include "settings/action_commands.h"

#include "platform/base/marked_text.h"
#include "settings/action_list.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

using enum ActionGroup;

// clang-format off
// In the order of the enumeration.
constexpr auto kGroupTitles = std::to_array<std::string_view>({
    Marked("Engine", "No action"),
    Marked("Engine", "Global setting"),
    Marked("Engine", "Ring mode"),
    Marked("Engine", "Keystroke"),
    Marked("Engine", "Companion menu"),
    Marked("Engine", "Tool"),
    Marked("Engine", "Navigation"),
    Marked("Engine", "Item"),
    Marked("Engine", "Desktop"),
    Marked("Engine", "Special key"),
    Marked("Engine", "Media player"),
    Marked("Engine", "Standard command"),
    Marked("Engine", "Scroll"),
});
static_assert(kGroupTitles.size() == static_cast<std::size_t>(ActionScroll) + 1);

constexpr std::int16_t kSep = kMenuSeparator;
constexpr auto kAppNavCodes = std::to_array<std::int16_t>({37, 38, 39, 40, 41, 42, 43});
constexpr auto kAppToolCodes = std::to_array<std::int16_t>({35, 36});
constexpr auto kShortcutCodes = std::to_array<std::int16_t>({
    176, 177, 178, 179, kSep, 180, 181, 189, 190, kSep, 183, 184, 185, 186, kSep, 182, 208, 187, 188, kSep,
    160, 161, 162,
});
constexpr auto kSpecialKeyCodes = std::to_array<std::int16_t>({128, 130, 129, 132, 131, 134, 133});
constexpr auto kPredefinedCodes = std::to_array<std::int16_t>({
    69, 68, 67, kSep, 102, 103, 104, 105, 106, kSep,
    80, 81, 82, 83, 84, 85, 86, 87, 88, 89, 90, 91, 92, 93, 94, 95, 96,
});
constexpr auto kMediaCodes = std::to_array<std::int16_t>({144, 145, 146, 147, 151, 152});

using Tab = DetailTab;
using Entry = ActionMenuEntry;
constexpr auto kGroupMenus = std::to_array<GroupMenu>({
    {"uiSettingsMenuAppNav",      ActionAppNav,     Tab::AppNav,      Entry::Application, kAppNavCodes},
    {"uiSettingsMenuAppTool",     ActionAppTool,    Tab::AppTool,     Entry::Application, kAppToolCodes},
    {"uiSettingsMenuShortcuts",   ActionShortcut,   Tab::Shortcuts,   Entry::Shortcut,    kShortcutCodes},
    {"uiSettingsMenuSpecialKeys", ActionSpecialKey, Tab::SpecialKeys, Entry::SpecialKey,  kSpecialKeyCodes},
    {"uiSettingsMenuPredefined",  ActionPredefined, Tab::Predefined,  Entry::Predefined,  kPredefinedCodes},
    {"uiSettingsMenuITunes",      ActionITunes,     Tab::ITunes,      Entry::ITunes,      kMediaCodes},
});

// One position of the action menu.
struct ActionMenuRow {
    std::int16_t code; // for a group, its first command
    DetailTab tab;
    std::string_view title; // of a group; empty: the command's own title
};
constexpr auto kActionMenu = std::to_array<ActionMenuRow>({
    {0,    Tab::Empty,       {}},
    {4,    Tab::Empty,       {}},
    {37,   Tab::AppNav,      Marked("Engine", "Application command")},
    {34,   Tab::ToolMenu,    {}},
    {7,    Tab::Empty,       {}},
    {kSep, Tab::Empty,       {}},
    {32,   Tab::Keystroke,   {}},
    {176,  Tab::Shortcuts,   Marked("Engine", "Standard command")},
    {128,  Tab::SpecialKeys, Marked("Engine", "Special key")},
    {kSep, Tab::Empty,       {}},
    {224,  Tab::Scroll,      {}},
    {225,  Tab::Scroll,      {}},
    {226,  Tab::Scroll,      {}},
    {227,  Tab::Scroll,      {}},
    {kSep, Tab::Empty,       {}},
    {69,   Tab::Predefined,  Marked("Engine", "Desktop")},
    {64,   Tab::OpenItem,    {}},
    {kSep, Tab::Empty,       {}},
    {144,  Tab::ITunes,      Marked("Engine", "Media player")},
});
// clang-format on
static_assert(kActionMenu.size() == kActionMenuPositions);

constexpr const ActionInfo *FindRow(int code) {
    const auto *row = std::ranges::lower_bound(kActions, code, {}, &ActionInfo::code);
    return row != kActions.end() && row->code == code ? row : nullptr;
}

constexpr bool Holds(const GroupMenu &menu, int code) {
    return std::ranges::find(menu.codes, code) != menu.codes.end();
}

// Whether the title is unique, so that it can name the command, and fits in a menu.
constexpr bool HasGoodTitle(const ActionInfo &action) {
    constexpr std::size_t kLongestTitle = 32;
    return !action.title.empty() && action.title.size() <= kLongestTitle &&
           std::ranges::count(kActions, action.title, &ActionInfo::title) == 1;
}

// How often a command appears in all menus together.
constexpr auto TimesOffered(const ActionInfo &action) {
    return std::ranges::count_if(
               kActionMenu,
               [&](const ActionMenuRow &row) { return row.code == action.code && row.title.empty(); }) +
           std::ranges::count_if(kGroupMenus, [&](const GroupMenu &menu) {
               return menu.group == action.group && Holds(menu, action.code);
           });
}

constexpr bool IsKnown(std::int16_t code) {
    return code == kMenuSeparator || std::ranges::binary_search(kActions, code, {}, &ActionInfo::code);
}

// The group's entry of the action menu opens the menu's tab. The application entry stands for two menus and
// opens the one that most controls use; the slot decides in CommandForActionMenu.
constexpr bool AgreesWithActionMenu(const GroupMenu &menu) {
    const ActionMenuRow &row = kActionMenu[static_cast<std::size_t>(menu.entry)];
    return !row.title.empty() &&
           (menu.group == ActionAppTool || (row.tab == menu.tab && row.code == menu.codes.front()));
}

static_assert(std::ranges::is_sorted(kActions, std::ranges::less_equal{}, &ActionInfo::code),
              "ascending, each code once");
static_assert(std::ranges::all_of(kActions, [](const auto &action) { return TimesOffered(action) == 1; }),
              "each command is in one menu, and in its own group's");
static_assert(std::ranges::all_of(kActions, HasGoodTitle));
static_assert(std::ranges::all_of(kActionMenu, [](const auto &row) { return IsKnown(row.code); }));
static_assert(std::ranges::all_of(kGroupMenus,
                                  [](const auto &menu) { return std::ranges::all_of(menu.codes, IsKnown); }));
static_assert(std::ranges::all_of(kGroupMenus, AgreesWithActionMenu));

const ActionMenuRow *RowAt(int position) {
    return position < 0 || position >= kActionMenuPositions
               ? nullptr
               : &kActionMenu[static_cast<std::size_t>(position)];
}

} // namespace

std::span<const ActionInfo> AllActions() {
    return kActions;
}

const ActionInfo *FindAction(ActionCommand code) {
    return FindRow(code);
}

std::string_view ActionGroupTitle(ActionGroup group) {
    return kGroupTitles[static_cast<std::size_t>(group)];
}

std::string_view ActionMenuTitle(int position) {
    const ActionMenuRow *row = RowAt(position);
    if (row == nullptr || row->code == kMenuSeparator) {
        return {};
    }
    return row->title.empty() ? FindRow(row->code)->title : row->title;
}

ActionCommand CommandForActionMenu(int position, SlotIndex slot) {
    const ActionMenuRow *row = RowAt(position);
    if (row == nullptr || row->code == kMenuSeparator) {
        return kActionNone;
    }
    if (position == static_cast<int>(ActionMenuEntry::Application) && IsTunerSlot(slot)) {
        return kActionFirstAppTool;
    }
    return static_cast<ActionCommand>(row->code);
}

std::span<const GroupMenu> GroupMenus() {
    return kGroupMenus;
}

const GroupMenu *FindGroupMenu(std::string_view outlet) {
    const auto *menu = std::ranges::find(kGroupMenus, outlet, &GroupMenu::outlet);
    return menu == kGroupMenus.end() ? nullptr : menu;
}

ActionCommand CommandForGroupMenu(const GroupMenu &menu, int position) {
    if (position < 0 || static_cast<std::size_t>(position) >= menu.codes.size()) {
        return kActionNone;
    }
    const std::int16_t code = menu.codes[static_cast<std::size_t>(position)];
    return code == kMenuSeparator ? kActionNone : static_cast<ActionCommand>(code);
}

ActionPlace ClassifyAction(ActionCommand code) {
    for (const GroupMenu &menu : kGroupMenus) {
        if (const auto found = std::ranges::find(menu.codes, code); found != menu.codes.end()) {
            return {static_cast<int>(menu.entry), menu.tab, &menu,
                    static_cast<int>(found - menu.codes.begin())};
        }
    }
    if (const auto *row = std::ranges::find(kActionMenu, code, &ActionMenuRow::code);
        row != kActionMenu.end()) {
        return {static_cast<int>(row - kActionMenu.begin()), row->tab, nullptr, kMenuNotFound};
    }
    const bool scrolls = IsScrolling(code);
    return {0, scrolls ? DetailTab::Scroll : DetailTab::Empty, nullptr, kMenuNotFound};
}

} // namespace drevix
