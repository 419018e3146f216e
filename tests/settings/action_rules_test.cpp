#include "settings/action_commands.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>

namespace drevix {
namespace {

const std::set<OSType> kAppSignatures = {1, 0x3842494D, 0x41525435, 0x496E446E, 0x38454C45};
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

bool SameBytes(const AppPrefs &a, const AppPrefs &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
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

TEST(UpdateToolMenuAction, SameEntry_StaysOnOneButton) {
    for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
        for (const ActionCommand held : {kActionToolMenu, kActionKeystroke}) {
            for (const std::uint32_t difference : {0, 1}) {
                AppPrefs prefs = FullRecord(held);
                prefs.device[0].action[slot].crc += difference;
                AppPrefs expected = prefs;
                for (int button = 18; button <= 20; ++button) {
                    if (slot >= 18 && slot <= 20 && button != slot && held == 34 && difference == 0) {
                        expected.device[0].action[button].command = 0;
                    }
                }
                UpdateToolMenuAction(prefs, slot);
                ASSERT_TRUE(SameBytes(prefs, expected)) << slot;
            }
        }
    }
}

ActionRefusal ExpectedRefusal(OSType application, int slot, int code) {
    const bool app = kAppSignatures.contains(application);
    if (slot < 0 || slot > 20 || (slot > 9 && slot < 16)) {
        return ActionRefusal::NoControl;
    }
    if (code == 4 && application == 0) {
        return ActionRefusal::NotInGlobalRecord;
    }
    if ((code >= 35 && code <= 43 && !app) || (code == 34 && !app && application != 0)) {
        return ActionRefusal::NotInThisRecord;
    }
    const bool tuner = slot == 6 || slot == 7;
    const bool wrongControl = code == 34 ? slot < 18 : code < 37 ? !tuner : tuner;
    return code >= 34 && code <= 43 && wrongControl ? ActionRefusal::NotOnThisControl : ActionRefusal::None;
}

TEST(CheckAction, EveryCommandSlotAndRecord_AsTheEditorOffersThem) {
    std::set<OSType> applications = kAppSignatures;
    applications.insert({0, 2, kNoSignature, FourCharCode("8bim"), 0x4D494238});
    AppPrefs prefs = gDefaultGlobalPrefs;
    for (const OSType application : applications) {
        prefs.application = application;
        for (SlotIndex slot = -1; slot <= 32; ++slot) {
            for (const ActionInfo &action : AllActions()) {
                ASSERT_EQ(CheckAction(prefs, slot, action.code),
                          ExpectedRefusal(application, slot, action.code))
                    << application << ' ' << slot << ' ' << action.code;
            }
        }
        for (const unsigned code : {1U, 33U, 44U, 50U, 228U, 231U, 65534U}) {
            EXPECT_EQ(CheckAction(prefs, 0, static_cast<ActionCommand>(code)), ActionRefusal::UnknownCommand);
        }
    }
}

} // namespace
} // namespace drevix
