// Events sent to other processes, and their answers. Internal to this folder.
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
    // A pending or past request to a process.
    struct Question {
        BusSlot slot; // none: no answer pending
        ProcessSerialNumber asked{};
        std::string owner; // the connection that may answer; empty: the name's owner at that time
        std::chrono::steady_clock::time_point since;
        std::chrono::milliseconds patience{0};

        int TakeAnswer(sd_bus_message *message);
        [[nodiscard]] bool IsFrom(const char *sender) const;
    };
    // Process, class and id. A map, because the library keeps the addresses of the questions.
    using Key = std::tuple<std::uint32_t, AEEventClass, AEEventID>;

    EventRequests();
    OSErr Ask(const AppleEvent &event, sd_bus_message *message);

    std::map<Key, Question> fAsked;
    sd_bus *fBus = nullptr;
};

} // namespace drevix
