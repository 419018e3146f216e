// Maps of devices: which of a device's axes, dials and keys is which control. A person writes them as text, whose form
// is in docs/device-maps.md.
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

// How an input tells of its control.
enum class InputKind : std::uint8_t {
    Axis, // is pushed away from a middle and comes back: by how far it stands
    Dial, // is turned, without a middle: by how far it has moved
    Key,  // is down or up
};

// The longest silence after which a dial rests.
inline constexpr std::chrono::milliseconds kLongestRest{10000};

// One line of a map: an input and the slots that it acts for.
struct MappedInput {
    EventCode event;
    InputKind kind;
    SlotIndex low;  // to the left, up, counter-clockwise: values below the middle, or falling
    SlotIndex high; // the other way; a key acts for this one, and its `low` is kNoSlot
    bool isReversed;
    std::optional<std::int32_t> middle; // of an axis; else that between the device's least and most
    std::optional<std::int32_t> travel; // from there to the end, 1 or more; else half the way between these
    std::int32_t countsPerStep;         // of a dial, 1 or more
    std::int32_t wraps; // a counter's values begin anew after so many, 2 or more; 0: they do not
    std::chrono::milliseconds restsAfter{}; // silence after which a dial on the ring rests
};

// What a device must be. What is empty may be anything, but not all is.
struct DeviceMatch {
    std::optional<std::uint16_t> vendor;
    std::optional<std::uint16_t> product;
    std::optional<std::string> name;
};

struct DeviceMap {
    std::vector<DeviceMatch> devices; // it is for each that fits one of these
    std::vector<MappedInput> inputs;  // no two of one event
};

// What is wrong with a line, in words for its writer ("there is no control "ringx"").
struct MapProblem {
    int line; // from 1
    std::string text;
};

// The longest text of maps that is worth reading, in bytes.
inline constexpr std::size_t kMostMapBytes = 65536;

// The maps of a text, made of the lines that make sense; the others are told in *problems, by line. A map without a
// device or without an input is left out, and told. May throw std::bad_alloc.
[[nodiscard]] std::vector<DeviceMap> ParseDeviceMaps(std::string_view text,
                                                     std::vector<MapProblem> *problems);

// Whether a device must be left alone: a keyboard for typing, by its keys A and Space, which its user would miss, and
// the device that we make ourselves.
[[nodiscard]] bool MustLeaveAlone(const InputDescription &device);

// The first map that is for a device and has an input which this has; null for none, and for a device that must be
// left alone. The other parts of a piece of hardware, such as its keys for the volume, are not taken along by this.
[[nodiscard]] const DeviceMap *FindDeviceMap(std::span<const DeviceMap> maps, const InputDescription &device);

// The device's axis with a code, null for none.
[[nodiscard]] const InputAxis *FindAxis(const InputDescription &device, std::uint16_t code);

} // namespace drevix
