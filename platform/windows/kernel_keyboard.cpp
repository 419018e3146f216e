#include "platform/windows/kernel_keyboard.h"

#include "platform/base/translation.h"
#include "platform/input/input_device.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <linux/uinput.h>
#include <span>
#include <sys/ioctl.h>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace drevix {
namespace {

constexpr const char *kMaker = "/dev/uinput";
constexpr int kPartsOfNotch = 120; // in which a fine wheel counts

// A reader of the keyboard has a queue of 128 events, and loses all of them when it is full. So sends a part
// at a time, then gives the reader time to empty it. A key report has two events, a wheel report three.
constexpr std::size_t kReportsAtATime = 30;
constexpr std::chrono::milliseconds kTimeForReader{2};

// One notch of the wheel, in coarse and in fine steps.
struct WheelMove {
    std::uint16_t dial;
    std::uint16_t fineDial;
    int sign;
};
// In the order of ScrollDirection.
constexpr auto kWheelMoves = std::to_array<WheelMove>({
    {REL_WHEEL, REL_WHEEL_HI_RES, 1},
    {REL_WHEEL, REL_WHEEL_HI_RES, -1},
    {REL_HWHEEL, REL_HWHEEL_HI_RES, -1},
    {REL_HWHEEL, REL_HWHEEL_HI_RES, 1},
});

bool Allow(int maker, unsigned long kind, std::size_t code) {
    return ioctl(maker, kind, static_cast<int>(code)) == 0;
}

bool MakeKernelKeyboard(int maker, std::size_t keys) {
    bool isMade = Allow(maker, UI_SET_EVBIT, EV_KEY) && Allow(maker, UI_SET_EVBIT, EV_REL);
    for (std::size_t key = KEY_RESERVED + 1; key < keys; ++key) {
        isMade = isMade && Allow(maker, UI_SET_KEYBIT, key);
    }
    for (const WheelMove &move : kWheelMoves) {
        isMade =
            isMade && Allow(maker, UI_SET_RELBIT, move.dial) && Allow(maker, UI_SET_RELBIT, move.fineDial);
    }
    uinput_setup setup{};
    setup.id.bustype = BUS_VIRTUAL;
    kOwnInputDeviceName.copy(setup.name, sizeof setup.name - 1);
    return isMade && ioctl(maker, UI_DEV_SETUP, &setup) == 0 && ioctl(maker, UI_DEV_CREATE) == 0;
}

} // namespace

KernelKeyboard::~KernelKeyboard() {
    for (std::size_t key = 0; key < kKeys; ++key) {
        if (fDown.test(key)) {
            std::ignore = Key(static_cast<std::uint16_t>(key), false);
        }
    }
    std::ignore = Flush(); // else the kernel lets them go with the keyboard
}

std::unique_ptr<KernelKeyboard> KernelKeyboard::Make(std::string *problem) {
    SystemDescriptor maker(open(kMaker, O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (!maker || !MakeKernelKeyboard(maker.Get(), kKeys)) {
        *problem = Translated("no keyboard can be made by %1: %2; see DrevixHelper(1)", kMaker,
                              std::strerror(errno));
        return nullptr;
    }
    return std::make_unique<KernelKeyboard>(std::move(maker));
}

bool KernelKeyboard::Key(std::uint16_t scanCode, bool down) {
    if (scanCode == KEY_RESERVED || scanCode >= kKeys) {
        return false;
    }
    fDown.set(scanCode, down);
    Add(EV_KEY, scanCode, down ? 1 : 0);
    Add(EV_SYN, SYN_REPORT, 0); // a press and a release in one report may be taken for nothing
    return true;
}

void KernelKeyboard::Scroll(ScrollDirection direction, int steps) {
    const WheelMove &move = kWheelMoves.at(static_cast<std::size_t>(direction));
    for (int step = 0; step < steps; ++step) {
        Add(EV_REL, move.fineDial, move.sign * kPartsOfNotch);
        Add(EV_REL, move.dial, move.sign);
        Add(EV_SYN, SYN_REPORT, 0);
    }
}

bool KernelKeyboard::Flush() {
    const std::vector<input_event> events = std::exchange(fUnsent, {});
    for (std::span rest(events); !rest.empty();) {
        const auto part = rest.first(std::min(rest.size(), kReportsAtATime));
        if (write(fMade.Get(), part.data(), part.size_bytes()) != static_cast<ssize_t>(part.size_bytes())) {
            return false;
        }
        rest = rest.subspan(part.size());
        if (!rest.empty()) {
            std::this_thread::sleep_for(kTimeForReader);
        }
    }
    return true;
}

void KernelKeyboard::Add(std::uint16_t type, std::uint16_t code, int value) {
    fUnsent.push_back({.time = {}, .type = type, .code = code, .value = value});
}

} // namespace drevix
