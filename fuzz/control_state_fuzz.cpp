// Streams of raw events, on their way to keys: whatever a device sends and whenever the front changes, controls go down
// and up by turns, keys too, and when the device has gone none is down.
#include "device/control_state.h"
#include "device/held_keys.h"
#include "device/repeat.h"
#include "fuzz/fuzzing.h"

#include <algorithm>
#include <span>

namespace drevix {
namespace {

using fuzz::Check;

constexpr const char *kMapText =
    "device name=x\n"
    "ringX axis=ABS_X\nringY axis=ABS_Y reverse=1 centre=10 travel=100\n"
    "ringZ axis=ABS_RZ\nringZ dial=REL_DIAL rest=200\nringX dial=REL_HWHEEL per=3\n"
    "ringLeft key=BTN_0\nringCW key=BTN_1\nringUp key=BTN_2\ntunerCW key=BTN_3\n"
    "tuner dial=ABS_WHEEL wraps=256\ntuner dial=REL_WHEEL reverse=1 per=120\n"
    "buttonV key=BTN_4\nbuttonP key=BTN_5\nbuttonI key=BTN_6\nbuttonI key=BTN_7\n"
    "buttonII key=BTN_8\nbuttonIII key=BTN_9\n";

constexpr int kEnoughTimes =
    3; // of the same keys in a row, which leave nothing behind that the next time would meet

struct Setup {
    std::vector<DeviceMap> maps;
    InputDescription device;

    Setup() {
        std::vector<MapProblem> problems;
        maps = ParseDeviceMaps(kMapText, &problems);
        Check(problems.empty() && maps.size() == 1);
        device.axes = {{0, 0, 255, 127}, {1, 0, 255, 0}, {5, -350, 350, 0}, {8, 0, 255, 3}};
    }
};

// Every second slot keeps a chord down that shares keys with the others; the rest repeat, wait or are done at once.
ActionPlan PlanOf(SlotIndex slot) {
    constexpr auto kHoldings = std::to_array<Holding>(
        {Holding::Kept, Holding::Repeats, Holding::Kept, Holding::LongPress, Holding::Once});
    const auto index = static_cast<std::size_t>(slot);
    const auto modifiers = static_cast<std::uint16_t>((slot & 7) << 8);
    return {SendKeys{{static_cast<std::uint16_t>(30 + slot % 3), modifiers}},
            kHoldings.at(index % kHoldings.size()), static_cast<std::uint16_t>(1 + slot), false};
}

// The bytes that drive a run; zeros when they are used up.
struct Bytes {
    std::span<const std::uint8_t> rest;

    std::uint8_t Take() {
        const std::uint8_t byte = rest.empty() ? std::uint8_t{0} : rest.front();
        rest = rest.subspan(rest.empty() ? 0 : 1);
        return byte;
    }
    std::int32_t TakeValue() {
        const auto kind = static_cast<std::int8_t>(Take());
        if (kind > -100) {
            return kind;
        }
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8 | Take();
        }
        return static_cast<std::int32_t>(value);
    }
};

class Run {
  public:
    Run(const Setup &setup, Bytes bytes)
        : fSetup(setup), fBytes(bytes), fState(setup.maps[0], setup.device) {}

    void Play() {
        while (!fBytes.rest.empty()) {
            Step();
        }
        TakeRaw();
        fState.EndAll(&fEvents);
        TakeEvents();
        Check(std::ranges::count(fIsDown, true) == 0);
        Check(fKeys.IsNoneDown() && !fState.NextTime() && !fHeld.NextTime());
        Check(std::ranges::count(fIsKeyDown, true) == 0);
    }

  private:
    void Step() {
        const std::uint8_t what = fBytes.Take();
        const auto &inputs = fSetup.maps[0].inputs;
        if (what < 160) {
            const EventCode event = inputs[what % inputs.size()].event;
            fRaw.push_back({event.type, event.code, fBytes.TakeValue()});
        } else if (what < 210) {
            fRaw.push_back({kSyncEvents, what < 200 ? kSyncReport : kSyncDropped, 0});
        } else if (what < 220) {
            fRaw.push_back({what, fBytes.Take(), fBytes.TakeValue()}); // of another kind
        } else if (what < 245) {
            TakeRaw();
            fNow += std::chrono::milliseconds(fBytes.Take() * (what % 5 == 0 ? 10000 : 5));
            fState.TakeTime(fNow, &fEvents);
            TakeEvents();
            fHeld.TakeTime(fNow, &fDeeds);
            TakeDeeds();
            Check(!fState.NextTime() || *fState.NextTime() > fNow);
            Check(!fHeld.NextTime() || *fHeld.NextTime() > fNow);
        } else if (what < 250) {
            fSensitivities = {fBytes.Take(), fBytes.Take(), fBytes.Take(), fBytes.Take()};
        } else { // the front changes, or the session ends
            TakeRaw();
            fHeld.EndAll(&fDeeds);
            TakeDeeds();
            Check(fKeys.IsNoneDown() && !fHeld.NextTime());
        }
    }

    void TakeRaw() {
        fState.Take(fRaw, fSensitivities, fNow, &fEvents);
        fRaw.clear();
        TakeEvents();
    }

    void TakeEvents() {
        for (const ControlEvent &event : fEvents) {
            Check(FindControlSlot(event.slot) != nullptr && event.times >= 1 && event.times <= kMostSteps);
            bool &isDown = fIsDown.at(static_cast<std::size_t>(event.slot));
            if (event.phase != ControlPhase::Step) {
                Check(isDown == (event.phase == ControlPhase::Up) && event.times == 1);
                isDown = !isDown;
            }
            fHeld.Take(0, event, PlanOf(event.slot), fSensitivities.x, fNow, &fDeeds);
        }
        fEvents.clear();
        TakeDeeds();
    }

    void TakeDeeds() {
        for (const Deed &deed : fDeeds) {
            if (const auto *keys = std::get_if<SendKeys>(&deed.plan.step); keys != nullptr) {
                for (int i = 0; i < std::min(deed.times, kEnoughTimes); ++i) {
                    TakeKeys(deed.kind, keys->chord);
                }
            }
        }
        fDeeds.clear();
    }

    void TakeKeys(DeedKind kind, const KeyChord &chord) {
        fSteps.clear();
        if (kind != DeedKind::LetGo) {
            fKeys.Press(chord, &fSteps);
        }
        if (kind != DeedKind::Hold) {
            fKeys.Release(chord, &fSteps);
        }
        for (const KeyStep &step : fSteps) {
            bool &isDown = fIsKeyDown.at(step.scanCode);
            Check(isDown != step.isDown);
            isDown = step.isDown;
        }
    }

    const Setup &fSetup;
    Bytes fBytes;
    ControlState fState;
    HeldActions fHeld;
    HeldKeys fKeys;
    Sensitivities fSensitivities{100, 100, 100, 100};
    SteadyTime fNow{};
    std::vector<RawEvent> fRaw;
    std::vector<ControlEvent> fEvents;
    std::vector<Deed> fDeeds;
    std::vector<KeyStep> fSteps;
    std::array<bool, kActionSlots> fIsDown{};
    std::array<bool, kMostScanCode + 1> fIsKeyDown{};
};

} // namespace
} // namespace drevix

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const drevix::Setup kSetup;
    drevix::Run(kSetup, {{data, size}}).Play();
    return 0;
}
