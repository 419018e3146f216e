// The command watch --raw: what devices send, in the words of a device map.

#include "cli/raw_watch.h"

#include "device/device_map.h"
#include "platform/base/plain_text.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/input/input_codes.h"
#include "platform/input/input_devices.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <poll.h>
#include <string_view>
#include <vector>

namespace drevix {
namespace {

constexpr auto kInputKinds = std::to_array<std::string_view>({"", "key", "dial", "axis"}); // by type of event

std::string HexText(std::uint16_t number) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "0x%04x", number);
    return text.data();
}

// The devices that can be read, by their paths.
class RawWatch {
  public:
    explicit RawWatch(std::ostream &out) : fOut(out) {}

    Outcome Run() {
        AddNew();
        if (fDevices.empty() && fIsRefused) {
            return Failed(Translated("no device may be read: the udev rule 70-drevix.rules says who may, and "
                                     "docs/device-maps.md how to install it"));
        }
        if (fDevices.empty() && fFolder.Descriptor() < 0) {
            return Failed(Translated("there is no device, and none can be waited for"));
        }
        if (fDevices.empty()) {
            fOut << Translated("no device can be read yet; waiting for one") << std::endl;
        }
        // Until the user ends it, or nothing more can be read.
        while (Wait()) {
            AddNew();
            TakeEvents();
        }
        return Done();
    }

  private:
    void AddNew() {
        for (const std::string &path : fFolder.TakeNew()) {
            std::unique_ptr<InputDevice> device;
            const OSErr status = fDevices.contains(path) ? paramErr : OpenInputDevice(path, &device);
            fIsRefused = fIsRefused || status == permErr;
            if (status != noErr) {
                continue; // is known, no input device, or not readable yet: that it becomes so is told
            }
            const bool isLeftAlone = MustLeaveAlone(device->Description());
            fOut << PlainText(path) << ": " << RawDeviceText(device->Description())
                 << (isLeftAlone ? "   # " + Translated("left alone: a keyboard for typing") : "")
                 << std::endl;
            if (!isLeftAlone) {
                fDevices.emplace(path, std::move(device));
            }
        }
    }

    bool Wait() {
        fPolled.assign(1, {fFolder.Descriptor(), POLLIN, 0});
        for (const auto &[path, device] : fDevices) {
            fPolled.push_back({device->Descriptor(), POLLIN, 0});
        }
        return fOut.good() && ::poll(fPolled.data(), fPolled.size(), -1) > 0;
    }

    void TakeEvents() {
        for (auto place = fDevices.begin(); place != fDevices.end();) {
            const auto &[path, device] = *place;
            std::vector<RawEvent> events;
            const bool isGone = device->Take(&events) == InputStatus::Gone;
            for (const RawEvent &event : events) {
                if (const std::string text = RawEventText(event); !text.empty()) {
                    fOut << PlainText(path) << ": " << text << std::endl;
                }
            }
            if (isGone) {
                fOut << PlainText(Translated("%1: unplugged", path)) << std::endl;
            }
            place = isGone ? fDevices.erase(place) : std::next(place);
        }
    }

    std::ostream &fOut;
    InputDevices fFolder;
    std::map<std::string, std::unique_ptr<InputDevice>> fDevices;
    std::vector<pollfd> fPolled;
    bool fIsRefused = false;
};

} // namespace

std::string RawDeviceText(const InputDescription &device) {
    std::string text = "device vendor=" + HexText(device.vendor) + " product=" + HexText(device.product);
    // A map has no way to write a quote, and the numbers are enough.
    const bool canBeWritten = !device.name.empty() && device.name.find('"') == std::string::npos;
    return canBeWritten ? text + " name=\"" + PlainText(device.name) + '"' : text;
}

std::string RawEventText(const RawEvent &event) {
    const std::string_view name = EventCodeName({event.type, event.code});
    if (event.type >= kInputKinds.size() || kInputKinds.at(event.type).empty() || name.empty()) {
        return {};
    }
    return std::string(kInputKinds.at(event.type))
        .append("=")
        .append(name)
        .append("   # ")
        .append(std::to_string(event.value));
}

Outcome WatchRawEvents(std::ostream &out) {
    return RawWatch(out).Run();
}

} // namespace drevix
