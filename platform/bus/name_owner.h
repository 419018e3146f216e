// Knows which connection has a name on the session bus. Internal to this folder. Main thread only.
#pragma once

#include "platform/bus/session_bus.h"

#include <functional>
#include <string>

namespace drevix {

class NameOwner {
  public:
    // Calls whenever another connection has the name, or none.
    NameOwner(std::string name, std::function<void()> changed);

    void Open(sd_bus *bus);
    void Close();
    // The connection's own name; empty while none has the name, and until the bus has told.
    [[nodiscard]] const std::string &Get() const { return fOwner; }

  private:
    int TakeAnswer(sd_bus_message *answer);
    int TakeChange(sd_bus_message *signal);
    void Set(const char *owner);

    std::string fName;
    std::function<void()> fChanged;
    BusSlot fChanges;
    BusSlot fQuestion;
    std::string fOwner;
};

} // namespace drevix
