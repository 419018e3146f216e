// What the save bar says and the next step it offers, derived from three facts alone, so that no state is
// left without a button.
#pragma once

#include <cstdint>

namespace drevix {

struct SaveFacts {
    bool isEdited;   // the working copy differs from its record
    bool hasUnsaved; // the file lacks something that was changed here
    bool hasFailed;  // the last save failed, and none has worked since
};

enum class SaveState : std::uint8_t {
    Saved,  // the file holds everything
    Edited, // Apply and Revert are for the working copy
    Kept,   // in memory, where neither Apply nor Revert reaches it: Save Now
    Failed, // the same, and the last try failed: Retry
};

// An edit comes first, because Apply then saves all the rest too, including a failed save's changes.
[[nodiscard]] constexpr SaveState SaveStateOf(const SaveFacts &facts) {
    if (facts.isEdited) {
        return SaveState::Edited;
    }
    if (facts.hasFailed) {
        return SaveState::Failed;
    }
    return facts.hasUnsaved ? SaveState::Kept : SaveState::Saved;
}

[[nodiscard]] constexpr bool CanApply(SaveState state) {
    return state == SaveState::Edited;
}
// Whether an extra button must save what Apply does not.
[[nodiscard]] constexpr bool OffersSave(SaveState state) {
    return state == SaveState::Kept || state == SaveState::Failed;
}

} // namespace drevix
