// Watches the device object of a helper, in a program with an event loop. Never waits for the helper: a hung
// one is just silent. Main thread only.
#pragma once

#include "platform/bus/session_bus.h"

#include <cstdint>
#include <functional>
#include <string>

namespace drevix {

// None may be empty.
struct DeviceWatchTasks {
    std::function<void(const std::string &control, bool isDown)> pressed;
    // What a control has done and how many times.
    std::function<void(const std::string &control, const std::string &what, std::uint32_t times)> acted;
    // The helper has gone; which controls are down is no longer known.
    std::function<void()> lost;
};

class DeviceWatch final : public BusClient {
  public:
    // For the process of this name (UTF-8, letter case of ASCII ignored). Watches nothing before Watch.
    DeviceWatch(std::string processName, DeviceWatchTasks tasks);
    DeviceWatch(const DeviceWatch &) = delete;
    DeviceWatch &operator=(const DeviceWatch &) = delete;
    ~DeviceWatch();

    // Starts watching: at once, or as soon as Look finds the helper. While quiet, its device does nothing.
    // Once this was quiet, the device also does nothing while a window of this process is in front.
    void Watch(bool isQuiet) { Want(isQuiet ? Part::Quiet : Part::Watcher); }
    void Stop() { Want(Part::None); }
    // Finds a helper that has come, gone, or not accepted the watcher yet. Call once a second; costs what
    // GetNextProcess does.
    void Look();

    void BusOpened(sd_bus *bus) override;
    void BusLost() override;

  private:
    enum class Part : std::uint8_t { None, Watcher, Quiet };

    void Want(Part part);
    int TakePressed(sd_bus_message *message);
    int TakeActed(sd_bus_message *message);
    int TakeReply(sd_bus_message *message);
    [[nodiscard]] bool IsFromHelper(sd_bus_message *message) const;
    void SetHelper(const std::string &owner);
    void Ask();

    std::string fProcessName;
    DeviceWatchTasks fTasks;
    sd_bus *fBus = nullptr;
    BusSlot fPressed;
    BusSlot fActed;
    BusSlot fAsked;      // while the helper owes an answer
    std::string fHelper; // its connection; empty while there is none
    Part fWanted = Part::None;
    Part fAsking = Part::None; // with fAsked
    Part fTaken = Part::None;  // what the helper has confirmed
};

} // namespace drevix
