// Input devices through the kernel's evdev interface: their description and their events.
#pragma once

#include "platform/base/types.h"
#include "platform/files/owners.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// One event, with the numbers of "platform/input/input_codes.h".
struct RawEvent {
    std::uint16_t type;
    std::uint16_t code;
    std::int32_t value;
    friend bool operator==(const RawEvent &, const RawEvent &) = default;
};

// An absolute axis or a counter: its range, and its value when queried.
struct InputAxis {
    std::uint16_t code;
    std::int32_t least;
    std::int32_t most;
    std::int32_t value;
};

inline constexpr std::size_t kKeyCodes = 0x300; // the kernel's KEY_CNT
inline constexpr std::size_t kDialCodes = 0x10; // REL_CNT

// A device's identity and capabilities. One piece of hardware may be several kernel devices.
struct InputDescription {
    std::string name; // as the kernel reports it, arbitrary bytes
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::uint16_t version = 0;
    std::string serial;
    std::bitset<kKeyCodes> keys;
    std::bitset<kDialCodes> dials;
    std::vector<InputAxis> axes;
};

// The name of the virtual device that we create for typing, so that we never listen to it.
inline constexpr std::string_view kOwnInputDeviceName = "Drevix virtual keyboard";

// A device's state at one moment.
struct InputState {
    std::bitset<kKeyCodes> keys; // the keys that are down
    std::vector<InputAxis> axes; // the axes of the description, with their values
};
// Queries the state. False, with *state unchanged, if the device does not answer, for example because it is
// gone.
using InputStateQuestion = std::function<bool(InputState *state)>;

enum class InputStatus : std::uint8_t {
    Open, // everything sent so far was taken, or as much as is taken at a time
    Gone, // unplugged or no longer readable; nothing more will come
};

// One device behind a descriptor. Uses only read(2), so that a pipe can stand in for it in tests.
class InputDevice {
  public:
    // Takes ownership of the descriptor, which must be nonblocking. `question` is for a stand-in; without one
    // the kernel is queried.
    InputDevice(SystemDescriptor descriptor, InputDescription description, InputStateQuestion question = {});

    [[nodiscard]] int Descriptor() const { return fDescriptor.Get(); }
    [[nodiscard]] const InputDescription &Description() const { return fDescription; }

    // Appends what the device has sent to *events, without blocking: at most a few thousand events, so that
    // one device cannot starve the others. If the kernel dropped events, all that is queued from there on is
    // replaced by kSyncDropped and the newly queried state: each key, each axis, and the end of a report.
    // After Gone, no release is sent for what was down.
    [[nodiscard]] InputStatus Take(std::vector<RawEvent> *events);

    // Grabs the device, hiding its events from all other readers, until destruction. False if that fails, for
    // example because another program has grabbed it.
    [[nodiscard]] bool Grab() const;

  private:
    void TakeBytes(std::string_view bytes, std::vector<RawEvent> *events);
    bool TellState(std::vector<RawEvent> *events);

    SystemDescriptor fDescriptor;
    InputDescription fDescription;
    InputStateQuestion fQuestion;
    std::string fPart;     // of an event read only in part
    bool fHasLost = false; // events were lost, and the queue is not empty since
};

// Opens the device at a path such as /dev/input/event3 and queries its description. noErr; fnfErr or permErr
// as for a file; paramErr for a file that is not an input device. *device is set only on success.
[[nodiscard]] OSErr OpenInputDevice(const std::string &path, std::unique_ptr<InputDevice> *device);

} // namespace drevix
