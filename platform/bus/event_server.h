// Makes this process visible to others and receives their events. Internal to this folder.
#pragma once

#include "platform/bus/apple_events.h"
#include "platform/bus/process_names.h"
#include "platform/bus/session_bus.h"

#include <string_view>

namespace drevix {

class EventServer final : public BusClient {
  public:
    static EventServer &Instance();

    // As RegisterProcess.
    OSErr Register(std::string_view name, RegisteredFunction registered);

    // Stops registering on new connections.
    void Forget() { fRegistered = nullptr; }

    void BusOpened(sd_bus *bus) override;
    void BusLost() override {}

  private:
    EventServer();
    int TakeRegistered(sd_bus_message *message);
    int TakeMessage(sd_bus_message *message);
    int TakeEvent(sd_bus_message *message);

    NamedProcess fSelf;
    RegisteredFunction fRegistered; // none: not registered
};

} // namespace drevix
