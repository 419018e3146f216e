// Events on their way to other processes, and their answers on the way back.
// For the other files of this folder.
#pragma once

#include "platform/bus/apple_events.h"
#include "platform/bus/session_bus.h"

#include <chrono>
#include <map>
#include <string>
#include <tuple>

namespace drevix {

class EventRequests final : public BusClient {
  public:
    static EventRequests &Instance();

    // As AESendMessage.
    OSErr Send(const AppleEvent &event, AESendMode mode);

    void BusOpened(sd_bus *bus) override { fBus = bus; }
    void BusLost() override {
        fAsked.clear();
        fBus = nullptr;
    }

  private:
    // What a process was asked.
    struct Question {
        BusSlot slot; // none: it owes nothing
        ProcessSerialNumber asked{};
        std::string owner; // the connection that may answer; empty: whoever owns the name by then
        std::chrono::steady_clock::time_point since;
        std::chrono::milliseconds patience{0};

        int TakeAnswer(sd_bus_message *message);
        [[nodiscard]] bool IsFrom(const char *sender) const;
    };
    // Process, class and id. The questions stay where they are: the library knows their addresses.
    using Key = std::tuple<std::uint32_t, AEEventClass, AEEventID>;

    EventRequests();
    OSErr Ask(const AppleEvent &event, sd_bus_message *message);

    std::map<Key, Question> fAsked;
    sd_bus *fBus = nullptr;
};

} // namespace drevix
