// The device object of a running helper, for a program without an event loop. Calls wait, for at most two
// seconds each.
#pragma once

#include "platform/bus/device_bus.h"

#include <functional>
#include <memory>
#include <string>

struct sd_bus;

namespace drevix {

class DeviceClient {
  public:
    // What a control has done and how many times.
    using ActedFunction =
        std::function<void(const std::string &control, const std::string &what, std::uint32_t times)>;

    // Finds the process with this name (UTF-8, ignoring ASCII letter case) on the session bus. False if there
    // is none.
    [[nodiscard]] bool Connect(const std::string &processName);

    // Each returns false, with the reason for people in *problem, if the helper refuses or does not answer.

    // *what gets the result.
    [[nodiscard]] bool Act(const std::string &control, const std::string &how, std::uint32_t times,
                           std::string *what, std::string *problem);
    [[nodiscard]] bool Front(NamedTexts *front, std::string *problem);
    // Calls back for each action until the helper ends, which is not a failure.
    [[nodiscard]] bool Watch(const ActedFunction &acted, std::string *problem);

  private:
    using Bus = std::unique_ptr<sd_bus, BusRelease>;
    [[nodiscard]] BusMessage NewCall(const char *method) const;
    [[nodiscard]] BusMessage Call(const BusMessage &call, std::string *problem) const;

    Bus fBus;
    std::string fName; // of the helper's connection, its own and no one's after it
};

} // namespace drevix
