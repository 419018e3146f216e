// Turns the events that a device sends into events of its controls.
#pragma once

#include "device/device_map.h"
#include "platform/input/input_device.h"
#include "settings/app_prefs.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace drevix {

using SteadyTime = std::chrono::steady_clock::time_point;

enum class ControlPhase : std::uint8_t {
    Down, // pushed or pressed, until Up
    Up,
    Step, // happened `times` times and is over: a dial's steps, the ring released
};

struct ControlEvent {
    SlotIndex slot; // of a control ("settings/app_prefs.h")
    ControlPhase phase;
    int times; // 1, or for a dial's steps 1 to kMostSteps
    friend bool operator==(const ControlEvent &, const ControlEvent &) = default;
};

// The most dial steps reported at a time; nobody turns a dial faster than that.
inline constexpr int kMostSteps = 50;

// The current sensitivities, 0 to 255 as in records.
struct Sensitivities {
    std::uint8_t x, y, z; // of the ring's axes
    std::uint8_t tuner;
};

// One device. Down and Up always come in pairs: whatever the device sends, a slot goes Down only when it is
// up and Up only when it is down, and EndAll releases those that are down. A control with several inputs,
// such as two keys, is down while any of them is.
//
// A push starts at (0.85 - 0.0035 x sensitivity) of the travel from the middle, at least 0.10, and ends below
// 0.6 of that, so that a trembling hand pushes once. A rest of the ring is reported when no side of that part
// of the ring is down and no dial on it turns, and between two sides pushed one right after the other.
class ControlState {
  public:
    // For a device that matches the map. Its axes are assumed to be at rest, its counters at the values in
    // the description. Copies both arguments.
    ControlState(const DeviceMap &map, const InputDescription &device);

    // Processes device events and appends the resulting events to *events, in order. Call it once per loop
    // iteration with everything received. Axes are evaluated at the end of a report. After kSyncDropped, the
    // following events up to the report must give the newly queried state of keys and axes; counters continue
    // from their new values.
    void Take(std::span<const RawEvent> raw, const Sensitivities &sensitivities, SteadyTime now,
              std::vector<ControlEvent> *events);

    // When a dial on the ring comes to rest if nothing more is sent; nullopt if none is turning.
    [[nodiscard]] std::optional<SteadyTime> NextTime() const;
    // Appends the rests that are due. Call it at that time; Take also does it first.
    void TakeTime(SteadyTime now, std::vector<ControlEvent> *events);

    // Appends an Up for each slot that is down, because the device is gone or must stop acting. Reports no
    // rests, because nobody released the ring.
    void EndAll(std::vector<ControlEvent> *events);

  private:
    struct Input {
        MappedInput mapped;
        SlotIndex down = kNoSlot; // the slot held down
        // For an axis. In half units, because the middle may lie between two values.
        std::int64_t doubleMiddle = 0;
        std::int64_t doubleTravel = 0;
        std::int32_t value = 0;
        bool hasMoved = false; // since the last report
        // For a dial.
        std::optional<std::int32_t> counter; // last value
        std::int64_t remainder = 0;          // counts x sensitivity left over, too few for a step
        int stepsTold = 0;                   // in this loop iteration
        std::optional<SteadyTime> rests;     // while it turns
    };
    struct Move; // an axis that changed sides in one report

    void Report(const Sensitivities &sensitivities, std::vector<ControlEvent> *events);
    void TakeKey(Input &input, std::int32_t value, std::vector<ControlEvent> *events);
    void TakePlace(Input &input, std::int32_t value, const Sensitivities &sensitivities, SteadyTime now,
                   std::vector<ControlEvent> *events);
    void Turn(Input &input, std::int64_t counts, const Sensitivities &sensitivities, SteadyTime now,
              std::vector<ControlEvent> *events);
    void LoseEvents();
    void Press(Input &input, SlotIndex slot, std::vector<ControlEvent> *events);
    void Release(Input &input, std::vector<ControlEvent> *events);
    void TellRest(SlotIndex rest, std::vector<ControlEvent> *events) const;

    std::vector<Input> fInputs;
    std::array<int, kActionSlots> fHolders{}; // inputs holding each slot down
};

} // namespace drevix
