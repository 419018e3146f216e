#include "platform/input/input_device.h"

#include "platform/base/status.h"
#include "platform/input/input_codes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

static_assert(kKeyCodes == KEY_CNT && kDialCodes == REL_CNT);

constexpr std::size_t kEventsAtATime = 64; // about the size of the kernel's queue per reader
constexpr int kMostReads = 32;

// The kernel's bit sets are arrays of longs.
using LongBits = std::array<unsigned long, kKeyCodes / (8 * sizeof(unsigned long))>;
static_assert(kKeyCodes % (8 * sizeof(unsigned long)) == 0);

bool HasBit(const LongBits &bits, std::size_t bit) {
    constexpr std::size_t kLong = 8 * sizeof(unsigned long);
    return (bits.at(bit / kLong) >> (bit % kLong) & 1) != 0;
}

template <std::size_t count>
std::bitset<count> SetOf(const LongBits &bits) {
    std::bitset<count> set;
    for (std::size_t bit = 0; bit < count; ++bit) {
        set.set(bit, HasBit(bits, bit));
    }
    return set;
}

// The text that a request returns; empty if the device has none.
std::string AskText(int descriptor, unsigned long request, std::size_t size) {
    std::string text(size, '\0');
    const int length = ::ioctl(descriptor, request, text.data());
    text.resize(length < 0 ? 0 : std::min(text.find('\0'), text.size()));
    return text;
}

bool AskAxis(int descriptor, std::uint16_t code, InputAxis *axis) {
    input_absinfo info{};
    if (::ioctl(descriptor, EVIOCGABS(code), &info) < 0) {
        return false;
    }
    *axis = {code, info.minimum, info.maximum, info.value};
    return true;
}

// False if the descriptor is not an input device.
bool AskDescription(int descriptor, InputDescription *description) {
    input_id id{};
    LongBits keys{};
    LongBits dials{};
    LongBits axes{};
    if (::ioctl(descriptor, EVIOCGID, &id) < 0 ||
        ::ioctl(descriptor, EVIOCGBIT(EV_KEY, sizeof keys), &keys) < 0 ||
        ::ioctl(descriptor, EVIOCGBIT(EV_REL, sizeof dials), &dials) < 0 ||
        ::ioctl(descriptor, EVIOCGBIT(EV_ABS, sizeof axes), &axes) < 0) {
        return false;
    }
    constexpr std::size_t kTextSize = 256;
    *description = {AskText(descriptor, EVIOCGNAME(kTextSize), kTextSize),
                    id.vendor,
                    id.product,
                    id.version,
                    AskText(descriptor, EVIOCGUNIQ(kTextSize), kTextSize),
                    SetOf<kKeyCodes>(keys),
                    SetOf<kDialCodes>(dials),
                    {}};
    for (std::uint16_t code = 0; code < ABS_CNT; ++code) {
        if (InputAxis axis{}; HasBit(axes, code) && AskAxis(descriptor, code, &axis)) {
            description->axes.push_back(axis);
        }
    }
    return true;
}

bool AskState(int descriptor, const InputDescription &description, InputState *state) {
    LongBits keys{};
    if (::ioctl(descriptor, EVIOCGKEY(sizeof keys), &keys) < 0) {
        return false;
    }
    InputState found{SetOf<kKeyCodes>(keys), description.axes};
    for (InputAxis &axis : found.axes) {
        if (!AskAxis(descriptor, axis.code, &axis)) {
            return false;
        }
    }
    *state = std::move(found);
    return true;
}

} // namespace

InputDevice::InputDevice(SystemDescriptor descriptor, InputDescription description,
                         InputStateQuestion question)
    : fDescriptor(std::move(descriptor)), fDescription(std::move(description)),
      fQuestion(std::move(question)) {}

InputStatus InputDevice::Take(std::vector<RawEvent> *events) {
    std::array<char, kEventsAtATime * sizeof(input_event)> bytes{};
    bool isEmpty = false; // a reader that gets less than it asks for has it all
    for (int reads = 0; reads < kMostReads && !isEmpty; ++reads) {
        std::memcpy(bytes.data(), fPart.data(), fPart.size());
        const std::size_t space = bytes.size() - fPart.size();
        const ssize_t count = ::read(Descriptor(), bytes.data() + fPart.size(), space);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count == 0 || (count < 0 && errno != EAGAIN)) {
            return InputStatus::Gone;
        }
        isEmpty = count < static_cast<ssize_t>(space);
        TakeBytes({bytes.data(), fPart.size() + static_cast<std::size_t>(std::max<ssize_t>(count, 0))},
                  events);
    }
    return !isEmpty || !fHasLost || TellState(events) ? InputStatus::Open : InputStatus::Gone;
}

void InputDevice::TakeBytes(std::string_view bytes, std::vector<RawEvent> *events) {
    for (; bytes.size() >= sizeof(input_event); bytes.remove_prefix(sizeof(input_event))) {
        input_event event{};
        std::memcpy(&event, bytes.data(), sizeof event);
        fHasLost = fHasLost || (event.type == kSyncEvents && event.code == kSyncDropped);
        if (!fHasLost) {
            events->push_back({event.type, event.code, event.value});
        }
    }
    fPart = bytes;
}

// Events still queued behind the loss are older than the queried state and would turn a counter back and
// forth, so drops them.
bool InputDevice::TellState(std::vector<RawEvent> *events) {
    fHasLost = false;
    InputState state;
    if (fQuestion ? !fQuestion(&state) : !AskState(Descriptor(), fDescription, &state)) {
        return false;
    }
    events->push_back({kSyncEvents, kSyncDropped, 0});
    for (std::uint16_t code = 0; code < kKeyCodes; ++code) {
        if (fDescription.keys.test(code)) {
            events->push_back({kKeyEvents, code, state.keys.test(code) ? 1 : 0});
        }
    }
    for (const InputAxis &axis : state.axes) {
        events->push_back({kAxisEvents, axis.code, axis.value});
    }
    events->push_back({kSyncEvents, kSyncReport, 0});
    return true;
}

bool InputDevice::Grab() const {
    return ::ioctl(Descriptor(), EVIOCGRAB, 1) == 0;
}

OSErr OpenInputDevice(const std::string &path, std::unique_ptr<InputDevice> *device) {
    SystemDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (descriptor.Get() < 0) {
        return LastError();
    }
    InputDescription description;
    if (!AskDescription(descriptor.Get(), &description)) {
        return paramErr;
    }
    *device = std::make_unique<InputDevice>(std::move(descriptor), std::move(description));
    return noErr;
}

} // namespace drevix
