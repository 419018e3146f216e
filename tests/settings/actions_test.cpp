// The menus of actions, and what choosing one changes.
#include "settings/action_commands.h"

#include "settings/action_paste.h"
#include "tests/settings/settings_files.h"

namespace drevix::test {
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

const std::map<int, int> kToolPartners = {{35, 36}, {36, 35}};
const std::map<int, int> kNavPartners = {{37, 38}, {38, 37}, {39, 40}, {40, 39}, {41, 42}, {42, 41}};

// A record with something in every field of every slot, so that a field that changes shows.
AppPrefs FullRecord(ActionCommand command) {
    AppPrefs prefs;
    std::memset(static_cast<void *>(&prefs), 0x5A, sizeof prefs);
    for (ActionSlot &slot : prefs.device[0].action) {
        slot.command = command;
    }
    return prefs;
}

// What another slot that holds `held` holds once `chosen` was chosen for `slot`.
int ExpectedAfter(int slot, int chosen, int other, int held) {
    if ((chosen == 7 || chosen == 43) && held == chosen) {
        return 0;
    }
    const int opposites[] = {1, 0, 3, 2, 5, 4, 7, 6};
    if (slot > 7 || opposites[slot] != other) {
        return held;
    }
    const auto &partners = slot < 6 ? kNavPartners : kToolPartners;
    const auto partner = partners.find(chosen);
    return partner != partners.end() ? partner->second : partners.contains(held) ? 0 : held;
}

TEST(ChooseAction, EverySlotCommandAndOtherCommand_ChangesWhatTheRulesSay) {
    const ActionCommand commands[] = {0, 4, 7, 32, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 64, 231};
    for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
        for (const ActionCommand chosen : commands) {
            for (const ActionCommand held : commands) {
                AppPrefs prefs = FullRecord(held);
                AppPrefs expected = prefs;
                for (int other = 0; other < kActionSlots; ++other) {
                    expected.device[0].action[other].command =
                        static_cast<ActionCommand>(ExpectedAfter(slot, chosen, other, held));
                }
                expected.device[0].action[slot] = {};
                expected.device[0].action[slot].command = chosen;
                expected.device[0].action[slot].keyCode = 255;
                ChooseAction(prefs, slot, chosen);
                ASSERT_TRUE(SameBytes(prefs, expected)) << chosen << " for " << slot << " beside " << held;
            }
        }
    }
}

TEST(ChooseAction, SlotThatIsNone_ChangesNothing) {
    for (const SlotIndex slot : std::initializer_list<SlotIndex>{kNoSlot, kActionSlots}) {
        AppPrefs prefs = FullRecord(7);
        ChooseAction(prefs, slot, 7);
        UpdateOppositeAction(prefs, slot);
        EXPECT_TRUE(SameBytes(prefs, FullRecord(7)));
        EXPECT_EQ(OppositeSlot(slot), kNoSlot);
    }
}

TEST(PasteAssignments, ActionsThatAreAllowed_AreTakenAndOthersNamed) {
    AppPrefs prefs = MakeRecord(kGlobalSignature, "");
    AppPrefs source = prefs;
    source.device[0].action[18].command = kActionToolMenu;
    source.device[0].action[19].command = 231;
    const std::vector<RefusedAction> refused = PasteAssignments(prefs, source);
    ASSERT_EQ(refused.size(), 1U);
    EXPECT_EQ(refused[0].slot, 19);
    EXPECT_EQ(prefs.device[0].action[18].command, kActionToolMenu);
    EXPECT_EQ(prefs.device[0].action[19].command, 0);
}

TEST(UpdateToolMenuAction, SameEntry_StaysOnOneButton) {
    for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
        for (const ActionCommand held : {kActionToolMenu, kActionKeystroke}) {
            AppPrefs prefs = FullRecord(held);
            prefs.device[0].action[20].crc += 1; // another entry
            AppPrefs expected = prefs;
            if (held == kActionToolMenu && (slot == 18 || slot == 19)) {
                expected.device[0].action[37 - slot].command = kActionNone;
            }
            UpdateToolMenuAction(prefs, slot);
            EXPECT_TRUE(SameBytes(prefs, expected)) << slot;
        }
    }
}

TEST(CheckAction, Commands_AreRefusedAsTheEditorLacksThem) {
    using enum ActionRefusal;
    constexpr OSType kPhotoshop = FourCharCode("8BIM");
    constexpr OSType kForeign = FourCharCode("8bim");
    const std::tuple<OSType, SlotIndex, ActionCommand, ActionRefusal> rows[] = {
        // clang-format off
        {kPhotoshop, -1, 0, NoControl}, {kPhotoshop, 10, 0, NoControl}, {kPhotoshop, 21, 34, NoControl},
        {kPhotoshop, 9, 176, None}, {kPhotoshop, 16, 7, None}, {kPhotoshop, 16, 37, None}, {kPhotoshop, 20, 34, None},
        {kForeign, 18, 4, None}, {0, 18, 34, None}, {kWildcardSignature, 6, 36, None},
        {0, 18, 4, NotInGlobalRecord}, {0, 6, 35, NotInThisRecord},
        {kForeign, 0, 43, NotInThisRecord}, {kForeign, 18, 34, NotInThisRecord},
        {kPhotoshop, 5, 36, NotOnThisControl}, {kPhotoshop, 7, 43, NotOnThisControl}, {0, 17, 34, NotOnThisControl},
        {0, 0, 44, UnknownCommand}, {0, 0, 228, UnknownCommand},
        // clang-format on
    };
    AppPrefs prefs = gDefaultGlobalPrefs;
    for (const auto &[application, slot, code, refusal] : rows) {
        prefs.application = application;
        EXPECT_EQ(CheckAction(prefs, slot, code), refusal) << application << ' ' << slot << ' ' << code;
    }
}

} // namespace
} // namespace drevix::test
