#include "pane/save_bar.h"

#include <gtest/gtest.h>

namespace drevix::test {
namespace {

TEST(SaveBar, EachStateOfTheFacts_HasItsNextStep) {
    static constexpr struct {
        SaveFacts facts; // edited, unsaved, failed
        SaveState state;
    } kRows[] = {
        {{false, false, false}, SaveState::Saved}, {{false, true, false}, SaveState::Kept},
        {{false, false, true}, SaveState::Failed}, {{false, true, true}, SaveState::Failed},
        {{true, false, false}, SaveState::Edited}, {{true, true, false}, SaveState::Edited},
        {{true, false, true}, SaveState::Edited},  {{true, true, true}, SaveState::Edited},
    };
    for (const auto &[facts, state] : kRows) {
        EXPECT_EQ(SaveStateOf(facts), state) << facts.isEdited << facts.hasUnsaved << facts.hasFailed;
        const bool isDone = !facts.isEdited && !facts.hasUnsaved && !facts.hasFailed;
        EXPECT_EQ(CanApply(state) + OffersSave(state), isDone ? 0 : 1) << "one button, and only one";
    }
}

} // namespace
} // namespace drevix::test
