// What happens to the controls of one device, from the events that the device sends.
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
    Down, // pushed or pressed; stays so until Up
    Up,
    Step, // has happened `times` times and is over: a dial's steps, the ring back at rest
};

struct ControlEvent {
    SlotIndex slot; // of a control ("settings/app_prefs.h")
    ControlPhase phase;
    int times; // 1 but for the steps of a dial, 1 to kMostSteps
    friend bool operator==(const ControlEvent &, const ControlEvent &) = default;
};

// The steps of a dial that are told at a time; what a dial sends beyond that at once is no one's wish.
inline constexpr int kMostSteps = 50;

// The sensitivities in force, 0 to 255 as records hold them.
struct Sensitivities {
    std::uint8_t x, y, z; // of the ring's axes
    std::uint8_t tuner;
};

// One device. Pushes and presses come in pairs: whatever the device sends, a slot is told Down only when it is not
// down, Up only when it is, and EndAll ends those that are down. A control with several inputs, such as two keys, is
// down while one of them is.
//
// A push begins at (0.85 - 0.0035 x sensitivity) of the way from the middle to the end, 0.10 of it at least, and ends
// below 0.6 of that, so that a hand that trembles pushes once. The ring's rests are told when no side of that part of
// the ring is down and no dial on it turns, and between two sides of which one follows the other at once.
class ControlState {
  public:
    // Of a device that fits the map. Its axes are taken to be at rest, its counters where the description says. Both
    // are copied.
    ControlState(const DeviceMap &map, const InputDescription &device);

    // Takes what the device has sent, to be called once a turn of the loop with all of it, and appends what happens to
    // *events, in its order. Axes count when a report ends. After kSyncDropped the events that follow must tell the
    // state of keys and axes as it was asked anew, up to the report; where counters stand then is where they go on.
    void Take(std::span<const RawEvent> raw, const Sensitivities &sensitivities, SteadyTime now,
              std::vector<ControlEvent> *events);

    // When a dial on the ring will rest if nothing is sent until then; nothing while none turns.
    [[nodiscard]] std::optional<SteadyTime> NextTime() const;
    // Appends the rests that are due. To be called when that time has come; Take does the same first.
    void TakeTime(SteadyTime now, std::vector<ControlEvent> *events);

    // The device is gone, or is not to act any more: appends an Up for each slot that is down. Rests are not told, as
    // nobody has let go of the ring.
    void EndAll(std::vector<ControlEvent> *events);

  private:
    struct Input {
        MappedInput mapped;
        SlotIndex down = kNoSlot; // the slot that it holds down
        // An axis, in halves of its unit, since the middle may lie between two values.
        std::int64_t doubleMiddle = 0;
        std::int64_t doubleTravel = 0;
        std::int32_t value = 0;
        bool hasMoved = false; // since the last report
        // A dial.
        std::optional<std::int32_t> counter; // where it stood last
        std::int64_t remainder = 0;          // of counts x sensitivity, too few for a step
        int stepsTold = 0;                   // in this turn of the loop
        std::optional<SteadyTime> rests;     // while it turns
    };
    struct Move; // an axis that has changed sides in one report

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
    std::array<int, kActionSlots> fHolders{}; // inputs that hold a slot down
};

} // namespace drevix
