// The device object of a helper that runs, for a program without an event loop. Calls wait, at most two seconds each.
#pragma once

#include "platform/bus/device_bus.h"

#include <functional>
#include <memory>
#include <string>

struct sd_bus;

namespace drevix {

class DeviceClient {
  public:
    // What a control has done, so many times.
    using ActedFunction =
        std::function<void(const std::string &control, const std::string &what, std::uint32_t times)>;

    // Finds the process of this name (UTF-8, letter case of ASCII ignored) on the session bus. False when there is none.
    [[nodiscard]] bool Connect(const std::string &processName);

    // Each gives false, with the reason for people in *problem, when the helper refuses or does not answer.

    // *what becomes what came of it.
    [[nodiscard]] bool Act(const std::string &control, const std::string &how, std::uint32_t times,
                           std::string *what, std::string *problem);
    [[nodiscard]] bool Front(NamedTexts *front, std::string *problem);
    // Calls for each action until the helper ends, which is no failure.
    [[nodiscard]] bool Watch(const ActedFunction &acted, std::string *problem);

  private:
    using Bus = std::unique_ptr<sd_bus, BusRelease>;
    [[nodiscard]] BusMessage NewCall(const char *method) const;
    [[nodiscard]] BusMessage Call(const BusMessage &call, std::string *problem) const;

    Bus fBus;
    std::string fName; // of the helper's connection, its own and no one's after it
};

} // namespace drevix
