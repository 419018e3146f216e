// The edits of a session, for Undo and Redo. Each step holds the records that it changed, as they were before
// and after. Knows nothing of the base or the window; finds a record again by its bytes.
#pragma once

#include "settings/app_prefs.h"

#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace drevix {

inline constexpr std::size_t kMostUndoSteps = 100;
// For all steps together, so that large imports do not fill the memory; the latest step always stays.
inline constexpr std::size_t kMostUndoChanges = 20'000; // 3.3 KB each

struct StepChange {
    std::optional<AppPrefs> before; // nullopt: added
    std::optional<AppPrefs> after;  // nullopt: deleted
};

struct UndoStep {
    std::vector<StepChange> changes; // each record once
    AppPrefs shownBefore;            // the record in the window
    AppPrefs shownAfter;
    SlotIndex control = kNoSlot; // the control that was edited
};

[[nodiscard]] bool IsSame(const AppPrefs &a, const AppPrefs &b);

class UndoSteps {
  public:
    // Adds a change to the step being made; null: no record. `shown` is the record in the window.
    void Note(const AppPrefs *before, const AppPrefs *after, const AppPrefs &shown);
    // Ends the step, which is dropped if it has no changes. Drops the steps that could be redone. Joins a
    // slider's move with the previous move of the same slider.
    void EndStep(const AppPrefs &shown, SlotIndex control);
    // Makes the next move of a slider a step of its own.
    void EndJoining() { fMayJoin = false; }

    // The step to undo, or to redo; null if there is none.
    [[nodiscard]] const UndoStep *ToUndo() const;
    [[nodiscard]] const UndoStep *ToRedo() const;
    // Notes that this was done.
    void WasUndone();
    void WasRedone();

    // Drops the changes of every record that another program has changed. `isThere` tells whether a record
    // has these bytes, `isGone` whether none has its name.
    using Question = std::function<bool(const AppPrefs &)>;
    void DropChangedElsewhere(const Question &isThere, const Question &isGone);

  private:
    bool Join();
    void DropOldest();

    std::deque<UndoStep> fSteps;
    std::size_t fDone = 0; // of the steps, those that are not undone
    UndoStep fMaking{};
    bool fMayJoin = false;
};

} // namespace drevix
