#include "pane/undo_steps.h"

#include "pane/pane_text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>

namespace drevix {
namespace {

constexpr auto kSliderFields = std::to_array<std::uint8_t DevicePrefs::*>(
    {&DevicePrefs::navSensitivity, &DevicePrefs::navSensitivityX, &DevicePrefs::navSensitivityY,
     &DevicePrefs::navSensitivityZ, &DevicePrefs::navSpeed, &DevicePrefs::navSpeedX, &DevicePrefs::navSpeedY,
     &DevicePrefs::navSpeedZ, &DevicePrefs::toolSensitivity});

bool IsSame(const std::optional<AppPrefs> &a, const std::optional<AppPrefs> &b) {
    return a.has_value() == b.has_value() && (!a || IsSame(*a, *b));
}

// The index in kSliderFields of the only field that differs; its size if other fields do.
std::size_t MovedSlider(const UndoStep &step) {
    if (step.changes.size() != 1 || !step.changes[0].before || !step.changes[0].after) {
        return kSliderFields.size();
    }
    const auto &[before, after] = step.changes[0];
    std::size_t i = 0;
    for (; i < kSliderFields.size(); ++i) {
        AppPrefs moved = *before;
        moved.device[0].*kSliderFields[i] = after->device[0].*kSliderFields[i];
        if (IsSame(moved, *after)) {
            break;
        }
    }
    return i;
}

std::string NameOf(const StepChange &change) {
    return FoldedName(change.before ? *change.before : *change.after);
}

std::size_t CountChanges(const std::deque<UndoStep> &steps) {
    std::size_t count = 0;
    for (const UndoStep &step : steps) {
        count += step.changes.size();
    }
    return count;
}

} // namespace

bool IsSame(const AppPrefs &a, const AppPrefs &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void UndoSteps::Note(const AppPrefs *before, const AppPrefs *after, const AppPrefs &shown) {
    if (fMaking.changes.empty()) {
        fMaking.shownBefore = shown;
    }
    const auto copy = [](const AppPrefs *prefs) {
        return prefs == nullptr ? std::nullopt : std::optional(*prefs);
    };
    StepChange change = {copy(before), copy(after)};
    const auto earlier = std::ranges::find_if(fMaking.changes, [&](const StepChange &other) {
        return change.before && IsSame(other.after, change.before);
    });
    if (earlier != fMaking.changes.end()) {
        earlier->after = change.after;
    } else {
        fMaking.changes.push_back(change);
    }
}

void UndoSteps::EndStep(const AppPrefs &shown, SlotIndex control) {
    std::erase_if(fMaking.changes,
                  [](const StepChange &change) { return IsSame(change.before, change.after); });
    if (fMaking.changes.empty()) {
        return;
    }
    fMaking.shownAfter = shown;
    fMaking.control = control;
    fSteps.resize(fDone);
    if (!Join()) {
        fSteps.push_back(fMaking);
    }
    fMaking = {};
    fDone = fSteps.size();
    fMayJoin = true;
    DropOldest();
}

// A slider moved back to where it was leaves no step.
bool UndoSteps::Join() {
    const std::size_t slider = MovedSlider(fMaking);
    if (!fMayJoin || fSteps.empty() || slider == kSliderFields.size() ||
        MovedSlider(fSteps.back()) != slider ||
        !IsSame(fSteps.back().changes[0].after, fMaking.changes[0].before)) {
        return false;
    }
    StepChange &joined = fSteps.back().changes[0];
    joined.after = fMaking.changes[0].after;
    fSteps.back().shownAfter = fMaking.shownAfter;
    if (IsSame(joined.before, joined.after)) {
        fSteps.pop_back();
    }
    return true;
}

void UndoSteps::DropOldest() {
    while (fSteps.size() > kMostUndoSteps || (fSteps.size() > 1 && CountChanges(fSteps) > kMostUndoChanges)) {
        fSteps.pop_front();
        --fDone;
    }
}

const UndoStep *UndoSteps::ToUndo() const {
    return fDone == 0 ? nullptr : &fSteps[fDone - 1];
}

const UndoStep *UndoSteps::ToRedo() const {
    return fDone == fSteps.size() ? nullptr : &fSteps[fDone];
}

void UndoSteps::WasUndone() {
    --fDone;
    fMayJoin = false;
}

void UndoSteps::WasRedone() {
    ++fDone;
    fMayJoin = false;
}

// A record is now as its last step left it, or as the first undone step found it.
void UndoSteps::DropChangedElsewhere(const Question &isThere, const Question &isGone) {
    std::map<std::string, bool> isChanged;
    const auto look = [&](const StepChange &change, const std::optional<AppPrefs> &now) {
        if (const auto [seen, isNew] = isChanged.try_emplace(NameOf(change)); isNew) {
            seen->second = now ? !isThere(*now) : !isGone(change.before ? *change.before : *change.after);
        }
    };
    for (std::size_t i = fDone; i-- > 0;) {
        for (const StepChange &change : fSteps[i].changes) {
            look(change, change.after);
        }
    }
    for (std::size_t i = fDone; i < fSteps.size(); ++i) {
        for (const StepChange &change : fSteps[i].changes) {
            look(change, change.before);
        }
    }
    for (std::size_t i = fSteps.size(); i-- > 0;) {
        std::erase_if(fSteps[i].changes,
                      [&](const StepChange &change) { return isChanged.at(NameOf(change)); });
        if (fSteps[i].changes.empty()) {
            fSteps.erase(fSteps.begin() + static_cast<std::ptrdiff_t>(i));
            fDone -= i < fDone ? 1 : 0;
        }
    }
}

} // namespace drevix
