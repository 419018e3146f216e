#include "device/repeat.h"

#include "platform/base/marked_text.h"

#include <algorithm>

namespace drevix {
namespace {

using std::chrono::nanoseconds;

// A period as a reduced fraction of nanoseconds: ticks x 100 / speed x 10^9 / 60.
struct Period {
    std::int64_t numerator;
    std::int64_t denominator;
};
Period PeriodOf(std::uint16_t ticks, int speed) {
    constexpr std::int64_t kTickNumerator = 50'000'000; // over 3: a tick in nanoseconds
    const std::int64_t used = std::max(speed, 1);
    const std::int64_t hundredths = std::max<std::int64_t>(std::int64_t{ticks} * 100, used);
    return {hundredths * kTickNumerator, used * 3};
}

// The first repeat after a point in time.
SteadyTime NextRepetition(SteadyTime pressed, std::uint16_t ticks, int speed, SteadyTime now) {
    const Period period = PeriodOf(ticks, speed);
    const std::int64_t passed = std::chrono::duration_cast<nanoseconds>(now - pressed).count();
    // The period is rounded up, so this is exact or too small, never too large.
    std::int64_t n = std::max<std::int64_t>(passed / (period.numerator / period.denominator + 1), 0);
    do {
        ++n;
    } while (RepetitionTime(pressed, ticks, speed, n) <= now);
    return RepetitionTime(pressed, ticks, speed, n);
}

Deed TooShort(ActionPlan plan, SlotIndex slot) {
    plan.step = DoNothing{Marked("Engine", "hold the control down for a second")};
    return {DeedKind::Act, plan, 1, slot};
}

} // namespace

SteadyTime RepetitionTime(SteadyTime pressed, std::uint16_t ticks, int speed, std::int64_t n) {
    // Split at whole multiples of the denominator, so that no product overflows.
    const Period period = PeriodOf(ticks, speed);
    const std::int64_t whole = n / period.denominator;
    const std::int64_t rest = n % period.denominator;
    return pressed + nanoseconds{whole * period.numerator + rest * period.numerator / period.denominator};
}

void HeldActions::Take(ControlSource source, const ControlEvent &event, const ActionPlan &plan, int speed,
                       SteadyTime now, std::vector<Deed> *deeds) {
    if (event.phase == ControlPhase::Step) {
        deeds->push_back(plan.holding == Holding::LongPress
                             ? TooShort(plan, event.slot)
                             : Deed{DeedKind::Act, plan, event.times, event.slot});
        return;
    }
    const auto held = std::ranges::find_if(fHeld, [&](const Held &candidate) {
        return candidate.source == source && candidate.slot == event.slot;
    });
    if (held != fHeld.end()) {
        const Held ended = *held;
        fHeld.erase(held);
        End(ended, deeds);
        if (ended.due && ended.plan.holding == Holding::LongPress) {
            deeds->push_back(TooShort(ended.plan, ended.slot));
        }
    }
    if (event.phase == ControlPhase::Down) {
        Begin({source, event.slot, plan, speed, now, std::nullopt}, deeds);
    }
}

void HeldActions::Begin(Held held, std::vector<Deed> *deeds) {
    switch (held.plan.holding) {
    case Holding::Once:
        deeds->push_back({DeedKind::Act, held.plan, 1, held.slot});
        return;
    case Holding::Repeats:
        deeds->push_back({DeedKind::Act, held.plan, 1, held.slot});
        held.due = RepetitionTime(held.pressed, held.plan.ticks, held.speed, 1);
        break;
    case Holding::Kept:
        deeds->push_back({DeedKind::Hold, held.plan, 1, held.slot});
        break;
    case Holding::LongPress:
        held.due = held.pressed + kLongPress;
        break;
    }
    fHeld.push_back(held);
}

void HeldActions::End(const Held &held, std::vector<Deed> *deeds) {
    if (held.plan.holding == Holding::Kept) {
        deeds->push_back({DeedKind::LetGo, held.plan, 1, held.slot});
    }
}

std::optional<SteadyTime> HeldActions::NextTime() const {
    std::optional<SteadyTime> next;
    for (const Held &held : fHeld) {
        if (held.due && (!next || *held.due < *next)) {
            next = held.due;
        }
    }
    return next;
}

void HeldActions::TakeTime(SteadyTime now, std::vector<Deed> *deeds) {
    for (Held &held : fHeld) {
        if (!held.due || *held.due > now) {
            continue;
        }
        deeds->push_back({DeedKind::Act, held.plan, 1, held.slot});
        held.due = held.plan.holding == Holding::Repeats
                       ? std::optional(NextRepetition(held.pressed, held.plan.ticks, held.speed, now))
                       : std::nullopt;
    }
}

void HeldActions::EndSource(ControlSource source, std::vector<Deed> *deeds) {
    std::erase_if(fHeld, [&](const Held &held) {
        if (held.source != source) {
            return false;
        }
        End(held, deeds);
        return true;
    });
}

void HeldActions::EndAll(std::vector<Deed> *deeds) {
    for (const Held &held : fHeld) {
        End(held, deeds);
    }
    fHeld.clear();
}

} // namespace drevix
