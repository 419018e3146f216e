#include "settings/action_commands.h"

#include "settings/action_paste.h"
#include "tests/settings/settings_files.h"

namespace drevix::test {
namespace {

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
