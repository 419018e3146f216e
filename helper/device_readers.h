// Reads devices, each through its map, and reports events of their controls.
#pragma once

#include "device/control_state.h"
#include "device/device_map.h"
#include "device/repeat.h"
#include "helperlink/driver_messages.h"
#include "platform/base/loop_watch.h"
#include "platform/input/input_device.h"
#include "platform/input/input_devices.h"

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace drevix {

// Receivers of what devices send. None may be empty.
struct DeviceReaderTasks {
    std::function<void(ControlSource source, const ControlEvent &event)> take;
    std::function<void(ControlSource source)> gone; // its controls are up
    std::function<Sensitivities()> sensitivities;
    std::function<void(const std::string &problem)> complain;
    std::function<void()> changed; // a device came or went
    std::function<void()> before;  // called before what came in a turn is taken
};

class DeviceReaders {
  public:
    DeviceReaders(std::vector<DeviceMap> maps, DeviceReaderTasks tasks);

    // Reads the devices of /dev/input that have a map, including new ones; called by the event loop. No other
    // program gets the events of a device that is read.
    void WatchAll();
    // Reads a stand-in for a device at a path, and reopens it whenever its writer has gone. False, with the
    // reason in *problem, if it has no map or cannot be opened.
    [[nodiscard]] bool AddStandIn(const std::string &path, const InputDescription &description,
                                  std::string *problem);

    // When the next dial comes to rest; nullopt while none turns.
    [[nodiscard]] std::optional<SteadyTime> NextTime() const;
    void TakeTime(SteadyTime now);

    // The devices as reported to the panel, in the order in which they were connected.
    [[nodiscard]] std::vector<ConnectedDevice> Devices() const;

  private:
    struct Reader {
        std::string path;
        bool isStandIn;
        std::unique_ptr<InputDevice> device;
        ControlState state;
        ControlSource source;
        LoopWatch watch;
    };
    using Place = std::list<Reader>::iterator;

    void TakeNewDevices();
    void Open(const std::string &path);
    void Add(const std::string &path, bool isStandIn, std::unique_ptr<InputDevice> device,
             const DeviceMap &map);
    void Take(Place reader);
    void Remove(Place reader);
    void TakeEvents(const Reader &reader, const std::vector<ControlEvent> &events) const;

    std::vector<DeviceMap> fMaps;
    DeviceReaderTasks fTasks;
    std::list<Reader> fReaders; // the watches stay where they are
    ControlSource fNextSource;
    std::optional<InputDevices> fDevices;
    LoopWatch fWatch;
};

// The source of simulated controls; devices have greater numbers.
inline constexpr ControlSource kSimulatedSource = 0;

} // namespace drevix
