#include "device/control_state.h"

#include "settings/action_commands.h"

#include <algorithm>
#include <cstdlib>

namespace drevix {
namespace {

constexpr SlotIndex kPushRest = 8;
constexpr SlotIndex kTurnRest = 9;

// The slot for the rest of a control's part of the ring; kNoSlot if the control is not on the ring.
SlotIndex RestOf(SlotIndex slot) {
    const ControlSlot *control = FindControlSlot(slot);
    if (control == nullptr || control->group != ControlGroup::Ring) {
        return kNoSlot;
    }
    return control->axis == Axis::Z ? kTurnRest : kPushRest;
}

std::int64_t SensitivityOf(const Sensitivities &sensitivities, SlotIndex slot) {
    const ControlSlot *control = FindControlSlot(slot);
    switch (control != nullptr ? control->axis : Axis::None) {
    case Axis::X:
        return sensitivities.x;
    case Axis::Y:
        return sensitivities.y;
    case Axis::Z:
        return sensitivities.z;
    case Axis::None:
        break;
    }
    return sensitivities.tuner;
}

// How far a push must go to count, in 1/10000 of the travel.
std::int64_t Threshold(std::int64_t sensitivity) {
    return std::max<std::int64_t>(8500 - 35 * sensitivity, 1000);
}

// The distance from one counter value to the next, the shorter way around.
std::int64_t Distance(std::int64_t from, std::int64_t to, std::int64_t wraps) {
    const std::int64_t counts = to - from;
    if (wraps == 0) {
        return counts;
    }
    const std::int64_t ahead = ((counts % wraps) + wraps) % wraps;
    return ahead * 2 > wraps ? ahead - wraps : ahead;
}

void Tell(SlotIndex slot, ControlPhase phase, std::vector<ControlEvent> *events) {
    events->push_back({slot, phase, 1});
}

} // namespace

struct ControlState::Move {
    Input *input;
    SlotIndex to; // the side it is on now, or kNoSlot
    SlotIndex from;
};

ControlState::ControlState(const DeviceMap &map, const InputDescription &device) {
    for (const MappedInput &mapped : map.inputs) {
        Input input;
        input.mapped = mapped;
        if (mapped.event.type == kAxisEvents) {
            const InputAxis *axis = FindAxis(device, mapped.event.code);
            const std::int64_t least = axis != nullptr ? axis->least : 0;
            const std::int64_t most = axis != nullptr ? axis->most : 0;
            input.doubleMiddle = mapped.middle ? 2 * std::int64_t{*mapped.middle} : least + most;
            input.doubleTravel = mapped.travel ? 2 * std::int64_t{*mapped.travel} : most - least;
            if (axis != nullptr) {
                input.counter = axis->value;
            }
        }
        fInputs.push_back(input);
    }
}

void ControlState::Take(std::span<const RawEvent> raw, const Sensitivities &sensitivities, SteadyTime now,
                        std::vector<ControlEvent> *events) {
    TakeTime(now, events);
    for (Input &input : fInputs) {
        input.stepsTold = 0;
    }
    for (const RawEvent &event : raw) {
        if (event.type == kSyncEvents) {
            if (event.code == kSyncReport) {
                Report(sensitivities, events);
            } else if (event.code == kSyncDropped) {
                LoseEvents();
            }
            continue;
        }
        const auto input = std::ranges::find_if(fInputs, [&event](const Input &candidate) {
            return candidate.mapped.event == EventCode{event.type, event.code};
        });
        if (input == fInputs.end()) {
            continue;
        }
        if (event.type == kKeyEvents) {
            TakeKey(*input, event.value, events);
        } else if (event.type == kDialEvents) {
            Turn(*input, event.value, sensitivities, now, events);
        } else {
            TakePlace(*input, event.value, sensitivities, now, events);
        }
    }
}

void ControlState::TakeKey(Input &input, std::int32_t value, std::vector<ControlEvent> *events) {
    const SlotIndex slot = input.mapped.high;
    if (value == 0 && input.down != kNoSlot) {
        Release(input, events);
        TellRest(RestOf(slot), events);
    } else if (value == 1 && IsTunerSlot(slot)) {
        Tell(slot, ControlPhase::Step, events); // the tuner turns, it is never held
    } else if (value == 1 && input.down == kNoSlot) {
        Press(input, slot, events);
    }
}

void ControlState::TakePlace(Input &input, std::int32_t value, const Sensitivities &sensitivities,
                             SteadyTime now, std::vector<ControlEvent> *events) {
    if (input.mapped.kind == InputKind::Axis) {
        input.value = value;
        input.hasMoved = true;
        return;
    }
    const std::int64_t counts = Distance(input.counter.value_or(value), value, input.mapped.wraps);
    input.counter = value;
    Turn(input, counts, sensitivities, now, events);
}

void ControlState::Turn(Input &input, std::int64_t counts, const Sensitivities &sensitivities, SteadyTime now,
                        std::vector<ControlEvent> *events) {
    if (counts == 0) {
        return;
    }
    const bool isLow = (counts < 0) != input.mapped.isReversed;
    const SlotIndex slot = isLow ? input.mapped.low : input.mapped.high;
    if ((input.remainder < 0) != (counts < 0)) {
        input.remainder = 0;
    }
    input.remainder += counts * std::max<std::int64_t>(SensitivityOf(sensitivities, slot), 1);
    const std::int64_t perStep = std::int64_t{input.mapped.countsPerStep} * 100;
    const std::int64_t steps = std::abs(input.remainder / perStep);
    input.remainder %= perStep;
    if (RestOf(slot) != kNoSlot) {
        input.rests = now + input.mapped.restsAfter;
    }
    const int told = static_cast<int>(std::min<std::int64_t>(steps, kMostSteps - input.stepsTold));
    if (told > 0) {
        input.stepsTold += told;
        events->push_back({slot, ControlPhase::Step, told});
    }
}

void ControlState::Report(const Sensitivities &sensitivities, std::vector<ControlEvent> *events) {
    std::vector<Move> moves;
    for (Input &input : fInputs) {
        if (!input.hasMoved) {
            continue;
        }
        input.hasMoved = false;
        const std::int64_t offset = 2 * std::int64_t{input.value} - input.doubleMiddle;
        const SlotIndex side = (offset < 0) != input.mapped.isReversed ? input.mapped.low : input.mapped.high;
        const std::int64_t threshold = Threshold(SensitivityOf(sensitivities, side));
        const bool staysDown = input.down == side;
        const std::int64_t needed = input.doubleTravel * threshold * (staysDown ? 6 : 10);
        const bool isDown = input.doubleTravel > 0 && std::abs(offset) * 100000 >= needed;
        const SlotIndex to = isDown ? side : kNoSlot;
        if (to != input.down) {
            moves.push_back({&input, to, input.down});
        }
    }
    for (const Move &move : moves) {
        if (move.from != kNoSlot) {
            Release(*move.input, events);
        }
    }
    for (const SlotIndex rest : {kPushRest, kTurnRest}) {
        // If the ring was pushed on in another direction, it was not at rest.
        const bool hasEnded = std::ranges::any_of(
            moves, [rest](const Move &move) { return move.from != kNoSlot && RestOf(move.from) == rest; });
        const bool goesOn = std::ranges::any_of(
            moves, [rest](const Move &move) { return move.from == kNoSlot && RestOf(move.to) == rest; });
        if (hasEnded && !goesOn) {
            TellRest(rest, events);
        }
    }
    for (const Move &move : moves) {
        if (move.to != kNoSlot) {
            Press(*move.input, move.to, events);
        }
    }
}

void ControlState::LoseEvents() {
    for (Input &input : fInputs) {
        input.hasMoved = false;
        input.counter.reset();
        input.remainder = 0;
    }
}

void ControlState::Press(Input &input, SlotIndex slot, std::vector<ControlEvent> *events) {
    input.down = slot;
    int &holders = fHolders.at(static_cast<std::size_t>(slot));
    if (++holders == 1) {
        Tell(slot, ControlPhase::Down, events);
    }
}

void ControlState::Release(Input &input, std::vector<ControlEvent> *events) {
    int &holders = fHolders.at(static_cast<std::size_t>(input.down));
    if (--holders == 0) {
        Tell(input.down, ControlPhase::Up, events);
    }
    input.down = kNoSlot;
}

void ControlState::TellRest(SlotIndex rest, std::vector<ControlEvent> *events) const {
    const bool isMoving = std::ranges::any_of(fInputs, [rest](const Input &input) {
        return (input.down != kNoSlot && RestOf(input.down) == rest) ||
               (input.rests && RestOf(input.mapped.high) == rest);
    });
    if (rest != kNoSlot && !isMoving) {
        Tell(rest, ControlPhase::Step, events);
    }
}

std::optional<SteadyTime> ControlState::NextTime() const {
    std::optional<SteadyTime> next;
    for (const Input &input : fInputs) {
        if (input.rests && (!next || *input.rests < *next)) {
            next = input.rests;
        }
    }
    return next;
}

void ControlState::TakeTime(SteadyTime now, std::vector<ControlEvent> *events) {
    for (Input &input : fInputs) {
        if (input.rests && *input.rests <= now) {
            input.rests.reset();
            input.remainder = 0;
            TellRest(RestOf(input.mapped.high), events);
        }
    }
}

void ControlState::EndAll(std::vector<ControlEvent> *events) {
    for (Input &input : fInputs) {
        if (input.down != kNoSlot) {
            Release(input, events);
        }
        input.rests.reset();
        input.remainder = 0;
        input.hasMoved = false;
    }
}

} // namespace drevix
