// Watches the device object of a helper, in a program with an event loop. Never waits for the helper: one that hangs is
// silent. Main thread only.
#pragma once

#include "platform/bus/session_bus.h"

#include <cstdint>
#include <functional>
#include <string>

namespace drevix {

// None may be empty.
struct DeviceWatchTasks {
    std::function<void(const std::string &control, bool isDown)> pressed;
    // What a control has done, so many times.
    std::function<void(const std::string &control, const std::string &what, std::uint32_t times)> acted;
    // The helper has gone; what was down is no longer known to be.
    std::function<void()> lost;
};

class DeviceWatch final : public BusClient {
  public:
    // For the process of this name (UTF-8, letter case of ASCII ignored). Watches nothing before Watch.
    DeviceWatch(std::string processName, DeviceWatchTasks tasks);
    DeviceWatch(const DeviceWatch &) = delete;
    DeviceWatch &operator=(const DeviceWatch &) = delete;
    ~DeviceWatch();

    // Watches from now on: at once, or as soon as Look finds the helper. While quiet, its device does nothing; nor does it, once
    // this was quiet, with a window of this process in front.
    void Watch(bool isQuiet) { Want(isQuiet ? Part::Quiet : Part::Watcher); }
    void Stop() { Want(Part::None); }
    // Finds a helper that has come, gone, or not taken the watcher yet. To be called once a second; costs what
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
