// Actions of controls that are down: repeating ones, held keys, delayed ones.
#pragma once

#include "device/action_plan.h"
#include "device/control_state.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace drevix {

// The time of an action's n-th repeat: n x `ticks` x 100 / `speed` ticks of 1/60 s after the press, at least
// one tick each. Measured from the press, so rounding errors do not add up. A speed of 0 counts as 1; `ticks`
// must not be 0.
[[nodiscard]] SteadyTime RepetitionTime(SteadyTime pressed, std::uint16_t ticks, int speed, std::int64_t n);

// How long a control must be down for a delayed action (Holding::LongPress).
inline constexpr std::chrono::milliseconds kLongPress{1000};

enum class DeedKind : std::uint8_t {
    Act,   // carry out the plan `times` times; keys go down and up
    Hold,  // press the plan's keys and leave them down
    LetGo, // release them
};
struct Deed {
    DeedKind kind;
    ActionPlan plan;
    int times;                // 1 or more
    SlotIndex slot = kNoSlot; // of the control that it is for
};

// The source of a control event: a device, or a program that simulates one. Numbered by the caller's loop.
using ControlSource = int;

// The controls that are down, from all sources. Each Hold is always followed by one LetGo of the same keys,
// at the latest from EndAll.
class HeldActions {
  public:
    // Processes a control's event, with its plan and repeat speed, and appends what to do now to *deeds. A
    // Down of a control that is already down ends it first; an Up of one that is not down does nothing. An Up
    // ignores the plan and ends what its Down started.
    void Take(ControlSource source, const ControlEvent &event, const ActionPlan &plan, int speed,
              SteadyTime now, std::vector<Deed> *deeds);

    // When the next thing is due; nullopt if nothing is.
    [[nodiscard]] std::optional<SteadyTime> NextTime() const;
    // Appends what is due: each repeat once. Skips repeats missed because of a late call, since nobody wants
    // a burst of them.
    void TakeTime(SteadyTime now, std::vector<Deed> *deeds);

    // Ends what a source's controls started, or everything. Controls still down then do nothing until pressed
    // again.
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
