#include "settings/action_commands.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <set>
#include <vector>

namespace drevix {
namespace {

const std::set<OSType> kAppSignatures = {1, 0x3842494D, 0x41525435, 0x496E446E, 0x38454C45};

// A slot with something in every field, so that a field that changes shows.
ActionSlot FullSlot(ActionCommand command) {
    ActionSlot slot;
    std::memset(static_cast<void *>(&slot), 0x5A, sizeof slot);
    slot.command = command;
    return slot;
}

AppPrefs FullRecord() {
    AppPrefs prefs = gDefaultGlobalPrefs;
    std::ranges::fill(prefs.device[0].action, FullSlot(0));
    return prefs;
}

bool SameBytes(const AppPrefs &a, const AppPrefs &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(OppositeSlots, RingAndTunerPairs) {
    for (int slot = -3; slot < 40; ++slot) {
        const int expected[] = {1, 0, 3, 2, 5, 4, 7, 6};
        EXPECT_EQ(OppositeSlot(static_cast<SlotIndex>(slot)), slot < 0 || slot > 7 ? -1 : expected[slot]);
    }
}

TEST(UpdateOppositeAction, OtherSlots_FollowInTheirCommandOnly) {
    struct Row {
        SlotIndex slot;
        ActionCommand command;
        SlotIndex other;
        ActionCommand before, after;
    };
    const Row rows[] = {
        // partners on the ring
        {0, 37, 1, 0, 38},
        {1, 37, 0, 50, 38},
        {0, 38, 1, 7, 37},
        {2, 39, 3, 32, 40},
        {3, 40, 2, 0, 39},
        {4, 41, 5, 4, 42},
        {5, 42, 4, 43, 41},
        {2, 42, 3, 0, 41},
        // the partner of a command that is gone goes too; tool sizes are no partners here
        {0, 32, 1, 38, 0},
        {0, 0, 1, 42, 0},
        {1, 4, 0, 37, 0},
        {0, 43, 1, 37, 0},
        {0, 36, 1, 38, 0},
        {0, 32, 1, 35, 35},
        {0, 32, 1, 43, 43},
        {0, 35, 1, 0, 0},
        {0, 32, 1, 64, 64},
        // partners on the tuner
        {7, 36, 6, 0, 35},
        {6, 36, 7, 32, 35},
        {6, 35, 7, 0, 36},
        {7, 32, 6, 35, 0},
        {7, 0, 6, 36, 0},
        {7, 32, 6, 37, 37},
        {7, 37, 6, 35, 0},
        {7, 42, 6, 0, 0},
        // no opposite: 8, 9, the buttons and the slots without a control
        {8, 37, 9, 0, 0},
        {9, 32, 8, 38, 38},
        {16, 37, 17, 0, 0},
        {18, 35, 19, 36, 36},
        {10, 37, 11, 0, 0},
        // neighbours that are no opposites
        {1, 37, 2, 38, 38},
        {5, 42, 6, 35, 35},
        // held by one slot
        {2, 43, 3, 43, 0},
        {18, 7, 0, 7, 0},
        {0, 7, 6, 7, 0},
        {19, 43, 31, 43, 0},
        {31, 7, 12, 7, 0},
        {18, 7, 0, 43, 43},
        {18, 32, 0, 32, 32},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message()
                     << row.command << " in " << row.slot << ", " << row.before << " in " << row.other);
        AppPrefs prefs = FullRecord();
        prefs.device[0].action[row.slot].command = row.command;
        AppPrefs expected = prefs;
        prefs.device[0].action[row.other].command = row.before;
        expected.device[0].action[row.other].command = row.after;
        // What the opposite does beside `other` is another row's matter.
        const SlotIndex opposite = OppositeSlot(row.slot);
        UpdateOppositeAction(prefs, row.slot);
        if (opposite != kNoSlot && opposite != row.other) {
            expected.device[0].action[opposite].command = prefs.device[0].action[opposite].command;
        }
        EXPECT_TRUE(SameBytes(prefs, expected)) << prefs.device[0].action[row.other].command;
    }
}

TEST(UpdateToolMenuAction, SameEntry_StaysOnOneButton) {
    for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
        for (SlotIndex other = 0; other < kActionSlots; ++other) {
            for (const bool sameEntry : {false, true}) {
                for (const ActionCommand command : {kActionToolMenu, kActionKeystroke}) {
                    AppPrefs prefs = FullRecord();
                    prefs.device[0].action[slot] = FullSlot(kActionToolMenu);
                    if (other != slot) {
                        prefs.device[0].action[other] = FullSlot(command);
                        prefs.device[0].action[other].crc += sameEntry ? 0 : 1;
                    }
                    AppPrefs expected = prefs;
                    const bool buttons =
                        slot >= 18 && slot <= 20 && other >= 18 && other <= 20 && other != slot;
                    if (buttons && sameEntry && command == kActionToolMenu) {
                        expected.device[0].action[other].command = 0;
                    }
                    UpdateToolMenuAction(prefs, slot);
                    ASSERT_TRUE(SameBytes(prefs, expected)) << slot << ' ' << other;
                }
            }
        }
    }
}

TEST(ChooseAction, AnyOrderOfChoices_KeepsTheRules) {
    std::mt19937 random(20);
    const auto pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    AppPrefs prefs = FullRecord();
    auto &slots = prefs.device[0].action;
    for (int step = 0; step < 20'000; ++step) {
        const auto slot = static_cast<SlotIndex>(pick(kActionSlots));
        const ActionCommand command = AllActions()[static_cast<std::size_t>(pick(15))].code;
        ChooseAction(prefs, slot, command);

        const ActionSlot chosen = slots[slot];
        ActionSlot expected = {};
        expected.command = command;
        expected.keyCode = 255;
        ASSERT_EQ(std::memcmp(&chosen, &expected, sizeof chosen), 0) << step;
        for (const int single : {7, 43}) {
            ASSERT_LE(
                std::ranges::count(slots, single, [](const ActionSlot &each) { return int{each.command}; }),
                1);
        }
        for (int a = 0; a < 8; ++a) {
            const int from = a < 6 ? 37 : 35;
            const int to = a < 6 ? 42 : 36;
            const int held = slots[a].command;
            if (held >= from && held <= to) {
                ASSERT_EQ(slots[a ^ 1].command, held % 2 == 1 ? held + 1 : held - 1)
                    << step << ": slot " << a;
            }
        }
    }
    const AppPrefs before = prefs;
    for (const SlotIndex slot : {-1, 32, 1000}) {
        ChooseAction(prefs, slot, 7);
        UpdateOppositeAction(prefs, slot);
        UpdateToolMenuAction(prefs, slot);
    }
    EXPECT_TRUE(SameBytes(prefs, before)) << "a slot outside the record";
}

TEST(CheckAction, EveryCommandSlotAndRecord_AsTheEditorOffersThem) {
    const auto expected = [](OSType application, int slot, int code) {
        const bool app = kAppSignatures.contains(application);
        const bool tuner = slot == 6 || slot == 7;
        if (slot < 0 || slot > 20 || (slot > 9 && slot < 16)) {
            return ActionRefusal::NoControl;
        }
        if (code == 4 && application == 0) {
            return ActionRefusal::NotInGlobalRecord;
        }
        if ((code >= 35 && code <= 43 && !app) || (code == 34 && !app && application != 0)) {
            return ActionRefusal::NotInThisRecord;
        }
        const bool wrongControl = code == 34 ? slot < 18 : code < 37 ? !tuner : tuner;
        return code >= 34 && code <= 43 && wrongControl ? ActionRefusal::NotOnThisControl
                                                        : ActionRefusal::None;
    };
    std::set<OSType> applications = kAppSignatures;
    applications.insert({0, 2, kNoSignature, FourCharCode("8bim"), 0x4D494238});
    AppPrefs prefs = gDefaultGlobalPrefs;
    for (const OSType application : applications) {
        prefs.application = application;
        for (int slot = -1; slot <= 32; ++slot) {
            for (const ActionInfo &action : AllActions()) {
                ASSERT_EQ(CheckAction(prefs, static_cast<SlotIndex>(slot), action.code),
                          expected(application, slot, action.code))
                    << application << ' ' << slot << ' ' << action.code;
            }
        }
        for (const int code : {1, 33, 44, 50, 228, 231, 65534}) {
            EXPECT_EQ(CheckAction(prefs, 0, static_cast<ActionCommand>(code)), ActionRefusal::UnknownCommand);
        }
    }
}

} // namespace
} // namespace drevix
