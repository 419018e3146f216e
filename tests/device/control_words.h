// What a device sends and what its controls do, as short texts.
#pragma once

#include "device/control_state.h"
#include "tests/support/testing.h"

namespace drevix::test {

// A device with the axes X and Y from 0 to 255, RZ from -350 to 350, the counter WHEEL, all dials, and every key but
// those of a keyboard for typing.
inline InputDescription MakeDevice() {
    InputDescription device;
    device.name = "Test dial";
    device.vendor = 0x1234;
    device.product = 0x5678;
    for (std::size_t code = 0x68; code < kKeyCodes; ++code) {
        device.keys.set(code);
    }
    device.dials.set();
    for (const auto &[name, least, most, value] : {std::tuple{"ABS_X", 0, 255, 127},
                                                   {"ABS_Y", 0, 255, 127},
                                                   {"ABS_RZ", -350, 350, 0},
                                                   {"ABS_WHEEL", 0, 255, 250}}) {
        EventCode event{};
        EXPECT_TRUE(FindEventCode(name, &event));
        device.axes.push_back({event.code, least, most, value});
    }
    return device;
}

inline DeviceMap MakeMap(const std::string &lines) {
    std::vector<MapProblem> problems;
    const auto maps = ParseDeviceMaps("device vendor=0x1234\n" + lines, &problems);
    EXPECT_TRUE(problems.empty()) << problems.front().line << ": " << problems.front().text;
    return maps.at(0);
}

// "+ringLeft -ringLeft ringXYRest tunerCW*3".
inline std::string TextOf(const std::vector<ControlEvent> &events) {
    std::string text;
    for (const ControlEvent &event : events) {
        text += text.empty() ? "" : " ";
        text += event.phase == ControlPhase::Down ? "+" : event.phase == ControlPhase::Up ? "-" : "";
        text += FindControlSlot(event.slot)->key;
        text += event.times != 1 ? "*" + std::to_string(event.times) : "";
    }
    return text;
}

// Plays what a device sends: words "ABS_X=255", "|" for the end of a report, "lost" for dropped events, "~150" for
// silence of that many milliseconds, ">150" when the loop is late after it, and "end". What stands between two silences comes at once.
inline std::string Play(ControlState &state, const std::string &sent, const Sensitivities &sensitivities) {
    std::vector<ControlEvent> events;
    std::vector<RawEvent> raw;
    SteadyTime now{};
    const auto take = [&] {
        state.Take(raw, sensitivities, now, &events);
        raw.clear();
    };
    std::istringstream words(sent);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        EventCode event{kSyncEvents, word == "lost" ? kSyncDropped : kSyncReport};
        if (word.starts_with('~') || word.starts_with('>')) {
            take();
            now += std::chrono::milliseconds(std::stoi(word.substr(1)));
            if (word.starts_with('~')) {
                state.TakeTime(now, &events);
            }
        } else if (word == "end") {
            take();
            state.EndAll(&events);
        } else {
            EXPECT_TRUE(equals == word.npos || FindEventCode(word.substr(0, equals), &event)) << word;
            raw.push_back(
                {event.type, event.code, equals == word.npos ? 0 : std::stoi(word.substr(equals + 1))});
        }
    }
    take();
    return TextOf(events);
}

} // namespace drevix::test
