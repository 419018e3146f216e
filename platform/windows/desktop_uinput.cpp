#include "platform/windows/desktop_uinput.h"

#include "platform/input/input_device.h"
#include "platform/windows/wayland_link.h"

#include <array>
#include <bitset>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/uinput.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace drevix {
namespace {

constexpr const char *kMaker = "/dev/uinput";
constexpr std::size_t kUinputKeys = 248; // as on X11
constexpr int kPartsOfNotch = 120;       // in which a fine wheel counts

// A notch of the wheel, in whole and in fine steps.
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

class UinputDesktop final : public Desktop {
  public:
    UinputDesktop(SystemDescriptor keyboard, SystemDescriptor compositor)
        : fKeyboard(std::move(keyboard)), fCompositor(std::move(compositor)) {}
    ~UinputDesktop() override {
        for (std::size_t key = 0; key < kUinputKeys; ++key) {
            if (fDown.test(key)) {
                std::ignore = Key(static_cast<std::uint16_t>(key), false);
            }
        }
        std::ignore = Flush(); // else the kernel lets them go with the keyboard
    }

    [[nodiscard]] int Descriptor() const override { return fCompositor.Get(); }
    // Without the compositor our keys would go to the console.
    [[nodiscard]] bool Take() override {
        pollfd look = {.fd = fCompositor.Get(), .events = 0, .revents = 0};
        fIsLost = fIsLost || (poll(&look, 1, 0) > 0 && look.revents != 0);
        return !fIsLost;
    }
    [[nodiscard]] const FrontWindow &Front() const override { return fFront; }
    [[nodiscard]] bool Key(std::uint16_t scanCode, bool down) override {
        if (scanCode == KEY_RESERVED || scanCode >= kUinputKeys) {
            return false;
        }
        fDown.set(scanCode, down);
        Add(EV_KEY, scanCode, down ? 1 : 0);
        Add(EV_SYN, SYN_REPORT, 0); // a press and a release in one report may be taken for nothing
        return true;
    }
    [[nodiscard]] bool Scroll(ScrollDirection direction, int steps) override {
        const WheelMove &move = kWheelMoves.at(static_cast<std::size_t>(direction));
        for (int step = 0; step < steps; ++step) {
            Add(EV_REL, move.fineDial, move.sign * kPartsOfNotch);
            Add(EV_REL, move.dial, move.sign);
            Add(EV_SYN, SYN_REPORT, 0);
        }
        return true;
    }
    [[nodiscard]] bool Ask(WindowRequest) override { return false; }
    [[nodiscard]] bool Flush() override {
        const std::size_t size = fUnsent.size() * sizeof(input_event);
        const bool isSent =
            size == 0 || write(fKeyboard.Get(), fUnsent.data(), size) == static_cast<ssize_t>(size);
        fIsLost = fIsLost || !isSent;
        fUnsent.clear();
        return !fIsLost;
    }

  private:
    void Add(std::uint16_t type, std::uint16_t code, int value) {
        fUnsent.push_back({.time = {}, .type = type, .code = code, .value = value});
    }

    SystemDescriptor fKeyboard;
    SystemDescriptor fCompositor;
    FrontWindow fFront; // never any
    std::bitset<kUinputKeys> fDown;
    std::vector<input_event> fUnsent;
    bool fIsLost = false;
};

bool Allow(int maker, unsigned long kind, std::size_t code) {
    return ioctl(maker, kind, static_cast<int>(code)) == 0;
}

bool MakeKeyboard(int maker) {
    bool isMade = Allow(maker, UI_SET_EVBIT, EV_KEY) && Allow(maker, UI_SET_EVBIT, EV_REL);
    for (std::size_t key = KEY_RESERVED + 1; key < kUinputKeys; ++key) {
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

std::unique_ptr<Desktop> MakeUinputDesktop(SystemDescriptor keyboard, SystemDescriptor compositor) {
    return std::make_unique<UinputDesktop>(std::move(keyboard), std::move(compositor));
}

std::unique_ptr<Desktop> OpenUinputDesktop(std::string *problem) {
    SystemDescriptor compositor = ConnectedToWayland();
    if (!compositor) {
        *problem = "the Wayland compositor cannot be reached";
        return nullptr;
    }
    SystemDescriptor keyboard(open(kMaker, O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (!keyboard || !MakeKeyboard(keyboard.Get())) {
        *problem =
            std::string(
                "the Wayland compositor takes no keys from programs, and no keyboard can be made by ") +
            kMaker + ": " + std::strerror(errno) + "; see DrevixHelper(1)";
        return nullptr;
    }
    return MakeUinputDesktop(std::move(keyboard), std::move(compositor));
}

} // namespace drevix
