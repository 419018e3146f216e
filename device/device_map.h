// Device maps: which axis, dial or key of a device is which control. They are text files; docs/device-maps.md
// has the format.
#pragma once

#include "platform/input/input_codes.h"
#include "platform/input/input_device.h"
#include "settings/app_prefs.h"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// How an input reports its control.
enum class InputKind : std::uint8_t {
    Axis, // pushed away from a middle and springs back: reports its position
    Dial, // turned, without a middle: reports its movement
    Key,  // down or up
};

// The longest allowed pause before a dial counts as at rest.
inline constexpr std::chrono::milliseconds kLongestRest{10000};

// One line of a map: an input and its slots.
struct MappedInput {
    EventCode event;
    InputKind kind;
    SlotIndex low;  // left, up, counterclockwise: values below the middle, or falling
    SlotIndex high; // the other way; a key uses this one, with `low` kNoSlot
    bool isReversed;
    std::optional<std::int32_t>
        middle; // of an axis; default: halfway between the device's minimum and maximum
    std::optional<std::int32_t> travel; // from there to the end, 1 or more; default: half the range
    std::int32_t countsPerStep;         // of a dial, 1 or more
    std::int32_t wraps;                 // a counter wraps around after this many values, 2 or more; 0: never
    std::chrono::milliseconds restsAfter{}; // pause after which a dial on the ring counts as at rest
};

// The device to match. An empty field matches anything, but at least one is set.
struct DeviceMatch {
    std::optional<std::uint16_t> vendor;
    std::optional<std::uint16_t> product;
    std::optional<std::string> name;
};

struct DeviceMap {
    std::vector<DeviceMatch> devices; // matches a device that fits any of these
    std::vector<MappedInput> inputs;  // no two with the same event
};

// An error in a line, with a message for its author.
struct MapProblem {
    int line; // from 1
    std::string text;
};

// The largest map file that is read, in bytes.
inline constexpr std::size_t kMostMapBytes = 65536;

// Parses the maps in a text from its valid lines; *problems gets the invalid ones, by line. A map without a
// device or an input is left out and reported. May throw std::bad_alloc.
[[nodiscard]] std::vector<DeviceMap> ParseDeviceMaps(std::string_view text,
                                                     std::vector<MapProblem> *problems);

// Whether a device must not be used: a typing keyboard (one with keys A and Space), which its user needs, or
// the virtual device that we create ourselves.
[[nodiscard]] bool MustLeaveAlone(const InputDescription &device);

// The first map that matches a device and has an input that the device has; null if none, or for a device
// that must be left alone. So other parts of the same hardware, such as volume keys, are not taken over.
[[nodiscard]] const DeviceMap *FindDeviceMap(std::span<const DeviceMap> maps, const InputDescription &device);

// The device's axis with a code, or null.
[[nodiscard]] const InputAxis *FindAxis(const InputDescription &device, std::uint16_t code);

} // namespace drevix
