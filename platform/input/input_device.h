// Input devices as the kernel shows them (its evdev interface): what a device is, and what it sends.
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

// An absolute axis, or a counter: the least and the most that it can send, and what it stood at when it was asked.
struct InputAxis {
    std::uint16_t code;
    std::int32_t least;
    std::int32_t most;
    std::int32_t value;
};

inline constexpr std::size_t kKeyCodes = 0x300; // the kernel's KEY_CNT
inline constexpr std::size_t kDialCodes = 0x10; // REL_CNT

// A device: who it is and what it can send. One piece of hardware may be several devices of the kernel.
struct InputDescription {
    std::string name; // as the kernel has it, bytes of any kind
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::uint16_t version = 0;
    std::string serial;
    std::bitset<kKeyCodes> keys;
    std::bitset<kDialCodes> dials;
    std::vector<InputAxis> axes;
};

// The name of the device that we make ourselves to type with, so that it is never taken for one to listen to.
inline constexpr std::string_view kOwnInputDeviceName = "Drevix virtual keyboard";

// How a device stands at a moment.
struct InputState {
    std::bitset<kKeyCodes> keys; // those that are down
    std::vector<InputAxis> axes; // those of the description, with their values
};
// Asks for it. False, with *state unchanged, when the device does not say, as when it is gone.
using InputStateQuestion = std::function<bool(InputState *state)>;

enum class InputStatus : std::uint8_t {
    Open, // all that was sent so far has been taken, or as much as is taken at a time
    Gone, // unplugged, or it cannot be read any more; nothing more will come
};

// One device behind a descriptor, from which only read(2) reads, so that a pipe can stand in for it.
class InputDevice {
  public:
    // Takes the descriptor over; it must not block. `question` is for a stand-in; without one the kernel is asked.
    InputDevice(SystemDescriptor descriptor, InputDescription description, InputStateQuestion question = {});

    [[nodiscard]] int Descriptor() const { return fDescriptor.Get(); }
    [[nodiscard]] const InputDescription &Description() const { return fDescription; }

    // Appends what the device has sent to *events, without waiting: some thousand events at most, so that one device
    // cannot keep the others waiting. Where the kernel has dropped events, what is left of the report around them is
    // replaced by kSyncDropped and the state as it is asked anew: each key, each axis, and the end of a report. After
    // Gone no release is sent for what was down.
    [[nodiscard]] InputStatus Take(std::vector<RawEvent> *events);

    // Keeps the device's events from every other reader until this ends. False when it cannot be had, as when another
    // program has it.
    [[nodiscard]] bool Grab() const;

  private:
    bool TakeOne(const RawEvent &event, std::vector<RawEvent> *events);
    bool TellState(std::vector<RawEvent> *events) const;

    SystemDescriptor fDescriptor;
    InputDescription fDescription;
    InputStateQuestion fQuestion;
    std::string fPart;     // of an event that has not come whole
    bool fHasLost = false; // events, up to the end of this report
};

// Opens the device at a path such as /dev/input/event3 and asks what it is. noErr; fnfErr or permErr as for a file;
// paramErr, with *device unchanged, for a file that is no input device.
[[nodiscard]] OSErr OpenInputDevice(const std::string &path, std::unique_ptr<InputDevice> *device);

} // namespace drevix
