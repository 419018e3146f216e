#include "helper/device_readers.h"

#include "helper/devices_file.h"
#include "platform/base/plain_text.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <utility>

namespace drevix {
namespace {

OSErr OpenStandIn(const std::string &path, const InputDescription &description,
                  std::unique_ptr<InputDevice> *device) {
    SystemDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (descriptor.Get() < 0) {
        return LastError();
    }
    // A stand-in cannot be asked for its state: it counts as at rest.
    const InputStateQuestion question = [axes = description.axes](InputState *state) {
        *state = {{}, axes};
        return true;
    };
    *device = std::make_unique<InputDevice>(std::move(descriptor), description, question);
    return noErr;
}

} // namespace

DeviceReaders::DeviceReaders(std::vector<DeviceMap> maps, DeviceReaderTasks tasks)
    : fMaps(std::move(maps)), fTasks(std::move(tasks)), fNextSource(kSimulatedSource + 1),
      fWatch([this] { TakeNewDevices(); }) {}

void DeviceReaders::WatchAll() {
    fDevices.emplace();
    fWatch.Watch(fDevices->Descriptor(), POLLIN, std::nullopt);
    TakeNewDevices();
}

void DeviceReaders::TakeNewDevices() {
    for (const std::string &path : fDevices->TakeNew()) {
        // A device that was removed and came back in between is seen as removed first.
        const auto known = std::ranges::find(fReaders, path, &Reader::path);
        if (known != fReaders.end()) {
            Take(known);
        }
        if (std::ranges::find(fReaders, path, &Reader::path) == fReaders.end()) {
            Open(path);
        }
    }
}

// Most devices of a computer are not readable for the user and do not concern us, so this says nothing about
// them.
void DeviceReaders::Open(const std::string &path) {
    std::unique_ptr<InputDevice> device;
    if (OpenInputDevice(path, &device) != noErr) {
        return;
    }
    const DeviceMap *map = FindDeviceMap(fMaps, device->Description());
    if (map == nullptr) {
        return;
    }
    if (!device->Grab()) {
        fTasks.complain(Translated("another program keeps %1 (%2) for itself", path,
                                   PlainText(device->Description().name)));
    }
    Add(path, false, std::move(device), *map);
}

bool DeviceReaders::AddStandIn(const std::string &path, const InputDescription &description,
                               std::string *problem) {
    const DeviceMap *map = FindDeviceMap(fMaps, description);
    std::unique_ptr<InputDevice> device;
    const OSErr status = map != nullptr ? OpenStandIn(path, description, &device) : noErr;
    if (map == nullptr || status != noErr) {
        *problem = Translated(map == nullptr ? ToTranslate("no map is for this device") : StatusText(status));
        return false;
    }
    Add(path, true, std::move(device), *map);
    return true;
}

void DeviceReaders::Add(const std::string &path, bool isStandIn, std::unique_ptr<InputDevice> device,
                        const DeviceMap &map) {
    const ControlState state(map, device->Description());
    const int descriptor = device->Descriptor();
    const auto reader = fReaders.insert(
        fReaders.end(), Reader{path, isStandIn, std::move(device), state, fNextSource++, LoopWatch([] {})});
    reader->watch = LoopWatch([this, reader] { Take(reader); });
    reader->watch.Watch(descriptor, POLLIN, std::nullopt);
    fTasks.changed();
}

void DeviceReaders::Take(Place reader) {
    std::vector<RawEvent> raw;
    std::vector<ControlEvent> events;
    const InputStatus status = reader->device->Take(&raw);
    fTasks.before();
    reader->state.Take(raw, fTasks.sensitivities(), std::chrono::steady_clock::now(), &events);
    TakeEvents(*reader, events);
    if (status == InputStatus::Gone) {
        Remove(reader);
    }
}

void DeviceReaders::TakeEvents(const Reader &reader, const std::vector<ControlEvent> &events) const {
    for (const ControlEvent &event : events) {
        fTasks.take(reader.source, event);
    }
}

void DeviceReaders::Remove(Place reader) {
    std::vector<ControlEvent> events;
    reader->state.EndAll(&events);
    TakeEvents(*reader, events);
    fTasks.gone(reader->source);
    const std::string path = reader->path;
    const InputDescription description = reader->device->Description();
    const bool isStandIn = reader->isStandIn;
    fReaders.erase(reader);
    fTasks.changed();
    std::string problem;
    if (isStandIn && !AddStandIn(path, description, &problem)) {
        fTasks.complain(Translated("cannot open %1 again: %2", path, problem));
    }
}

std::optional<SteadyTime> DeviceReaders::NextTime() const {
    std::optional<SteadyTime> next;
    for (const Reader &reader : fReaders) {
        const std::optional<SteadyTime> time = reader.state.NextTime();
        if (time && (!next || *time < *next)) {
            next = time;
        }
    }
    return next;
}

void DeviceReaders::TakeTime(SteadyTime now) {
    for (Reader &reader : fReaders) {
        std::vector<ControlEvent> events;
        reader.state.TakeTime(now, &events);
        TakeEvents(reader, events);
    }
}

std::vector<ConnectedDevice> DeviceReaders::Devices() const {
    std::vector<ConnectedDevice> devices;
    devices.reserve(fReaders.size());
    for (const Reader &reader : fReaders) {
        devices.push_back(DeviceOfDescription(reader.device->Description()));
    }
    return devices;
}

} // namespace drevix
