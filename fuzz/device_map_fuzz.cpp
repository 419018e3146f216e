// Maps of devices: whatever a file holds, what is read of it can be used, and what is wrong is told by line. A device
// that sends the events of a map ends with no control down.
#include "device/control_state.h"
#include "device/device_map.h"
#include "fuzz/fuzzing.h"

#include <algorithm>
#include <set>

namespace drevix {
namespace {

using fuzz::Check;

bool IsKnownOrNone(SlotIndex slot) {
    return slot == kNoSlot || FindControlSlot(slot) != nullptr;
}

void CheckInput(const MappedInput &input) {
    Check(!EventCodeName(input.event).empty() && FindControlSlot(input.high) != nullptr &&
          IsKnownOrNone(input.low));
    Check((input.kind == InputKind::Key) == (input.event.type == kKeyEvents));
    Check(input.countsPerStep >= 1 && (input.wraps == 0 || input.wraps >= 2) &&
          input.travel.value_or(1) >= 1);
    Check(input.restsAfter.count() >= 0 && input.restsAfter <= kLongestRest);
}

InputDescription DeviceOf(const DeviceMap &map) {
    InputDescription device;
    device.vendor = map.devices.front().vendor.value_or(0);
    device.product = map.devices.front().product.value_or(0);
    device.name = map.devices.front().name.value_or("");
    for (const MappedInput &input : map.inputs) {
        if (input.event.type == kAxisEvents) {
            device.axes.push_back({input.event.code, INT32_MIN, INT32_MAX, 0});
        } else if (input.event.type == kKeyEvents) {
            device.keys.set(input.event.code);
        } else {
            device.dials.set(input.event.code);
        }
    }
    return device;
}

void Play(const DeviceMap &map, const InputDescription &device) {
    ControlState state(map, device);
    std::vector<ControlEvent> events;
    SteadyTime now{};
    for (const std::int32_t value : {1, INT32_MAX, INT32_MIN, 0, -1, INT32_MIN, INT32_MAX}) {
        std::vector<RawEvent> raw;
        for (const MappedInput &input : map.inputs) {
            raw.push_back({input.event.type, input.event.code, value});
        }
        raw.push_back({kSyncEvents, kSyncReport, 0});
        state.Take(raw, {0, 100, 255, 255}, now += std::chrono::milliseconds(100), &events);
    }
    state.EndAll(&events);
    const auto count = [&](ControlPhase phase) {
        return std::ranges::count(events, phase, &ControlEvent::phase);
    };
    Check(count(ControlPhase::Down) == count(ControlPhase::Up) && !state.NextTime());
}

} // namespace
} // namespace drevix

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using namespace drevix;
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    std::vector<MapProblem> problems;
    const std::vector<DeviceMap> maps = ParseDeviceMaps(text, &problems);
    const auto lines = std::ranges::count(text, '\n') + 1;
    for (const MapProblem &problem : problems) {
        Check(problem.line >= 1 && problem.line <= lines && !problem.text.empty());
    }
    for (const DeviceMap &map : maps) {
        Check(!map.devices.empty() && !map.inputs.empty());
        std::set<std::pair<int, int>> codes;
        for (const MappedInput &input : map.inputs) {
            CheckInput(input);
            Check(codes.emplace(input.event.type, input.event.code).second);
        }
        const InputDescription device = DeviceOf(map);
        Check(MustLeaveAlone(device) || FindDeviceMap(maps, device) != nullptr);
        Play(map, device);
    }
    return 0;
}
