// What happens while a control is down: actions that repeat, keys that are held, actions that wait.
#pragma once

#include "device/action_plan.h"
#include "device/control_state.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace drevix {

// When an action that repeats comes the n-th time after the press: n x `ticks` x 100 / `speed` ticks of 1/60 s later, a
// tick each at least. Counted from the press, so rounding does not add up. A speed of 0 counts as 1; `ticks` is not 0.
[[nodiscard]] SteadyTime RepetitionTime(SteadyTime pressed, std::uint16_t ticks, int speed, std::int64_t n);

// How long a control must be down for an action that waits (Holding::LongPress).
inline constexpr std::chrono::milliseconds kLongPress{1000};

enum class DeedKind : std::uint8_t {
    Act,   // carry the plan out, `times` times; keys go down and up
    Hold,  // press the plan's keys and leave them down
    LetGo, // release them
};
struct Deed {
    DeedKind kind;
    ActionPlan plan;
    int times; // 1 or more
};

// Where a control event comes from: a device, or a program that simulates one. The loop numbers them.
using ControlSource = int;

// The controls that are down, of all sources. Whatever comes, each Hold is followed by one LetGo of the same keys, at
// the latest by that of EndAll.
class HeldActions {
  public:
    // Takes a control's event, with the plan for it and the speed of repetition there, and appends what is to be done
    // now to *deeds. A Down of a control that is down already ends it first; an Up of one that is not does nothing.
    // For an Up the plan is not looked at: what its Down began is ended.
    void Take(ControlSource source, const ControlEvent &event, const ActionPlan &plan, int speed,
              SteadyTime now, std::vector<Deed> *deeds);

    // When something is due; nothing while nothing is.
    [[nodiscard]] std::optional<SteadyTime> NextTime() const;
    // Appends what is due: each repetition once. Those that a late call has missed are left out, since a burst of them
    // is not what the hand meant.
    void TakeTime(SteadyTime now, std::vector<Deed> *deeds);

    // Ends what a source's controls began, or everything. Controls that are still down then do nothing until they are
    // pressed again.
    void EndSource(ControlSource source, std::vector<Deed> *deeds);
    void EndAll(std::vector<Deed> *deeds);

  private:
    struct Held {
        ControlSource source;
        SlotIndex slot;
        ActionPlan plan;
        int speed;
        SteadyTime pressed;
        std::optional<SteadyTime> due;
    };
    void Begin(Held held, std::vector<Deed> *deeds);
    static void End(const Held &held, std::vector<Deed> *deeds);

    std::vector<Held> fHeld;
};

} // namespace drevix
