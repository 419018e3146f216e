// The connection to the session bus. Never blocks, except in WaitUntil. Internal to this folder. Main thread
// only.
#pragma once

#include "platform/base/loop_watch.h"
#include "platform/base/types.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;
struct sd_bus_slot;
struct sd_bus_track;

namespace drevix {

// Interfaces that every object may have.
inline constexpr const char *kIntrospectable = "org.freedesktop.DBus.Introspectable";
inline constexpr const char *kProperties = "org.freedesktop.DBus.Properties";

// Timeouts; tests may shorten them.
struct BusTimes {
    std::chrono::milliseconds betweenAttempts{1000}; // to connect
    std::chrono::milliseconds firstListInLoop{25};   // for the list of processes after connecting
    std::chrono::milliseconds firstListOutside{250}; // the same before an event loop runs
    std::chrono::milliseconds firstSilence{5000};    // before a silent process is asked again
    std::chrono::milliseconds longestSilence{60000}; // doubles up to this
};
extern BusTimes gBusTimes;

// Releases the bus library's reference-counted objects.
struct BusRelease {
    void operator()(sd_bus *bus) const;
    void operator()(sd_bus_message *message) const;
    void operator()(sd_bus_slot *slot) const;
    void operator()(sd_bus_track *track) const;
};
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease>;
using BusTrack = std::unique_ptr<sd_bus_track, BusRelease>;

// A user of the connection that must know about new ones.
class BusClient {
  public:
    BusClient() = default;
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;
    // Messages may be sent from here on. A slot must not outlive BusLost.
    virtual void BusOpened(sd_bus *bus) = 0;
    virtual void BusLost() = 0;

  protected:
    ~BusClient() = default;
};

class SessionBus {
  public:
    // Lives as long as the program, so that nothing needs releasing at exit.
    static SessionBus &Instance();

    // The client must live as long, or until it is removed. Notifies it if already connected.
    void AddClient(BusClient *client);
    // The client must have no slots left.
    void RemoveClient(BusClient *client) { std::erase(fClients, client); }

    // The connection; connects now if there is none and the last attempt is long enough ago. Null if that
    // fails. Accepts messages at once, even before the bus has answered.
    sd_bus *Connection();
    [[nodiscard]] bool IsConnected() const { return fBus != nullptr; }
    // Reconnects automatically when the connection is lost.
    void KeepConnected() { fKeepsConnected = true; }

    // Processes a bounded number of received messages without blocking; runs their callbacks.
    void TakeMessages();
    // The same until `isDone` or the timeout. Posted functions do not run meanwhile.
    void WaitUntil(std::chrono::milliseconds timeout, const std::function<bool()> &isDone);
    // Queues a function for the event loop to call, in order.
    void Post(std::function<void()> function);
    // One iteration for a program without an event loop: as WaitForAppleEvents.
    void RunOnce(std::chrono::milliseconds timeout, std::span<const int> descriptors);

    // Closes the connection, drops posted functions, and stops reconnecting.
    void Leave();

    // A method call message; null if out of memory or for invalid names.
    [[nodiscard]] static BusMessage NewCall(sd_bus *bus, const std::string &destination, const char *object,
                                            const char *interface, const char *method);
    static BusMessage NewCallToBus(sd_bus *bus, const char *method, const std::string &argument = {});
    // Calls `left` with the object once the sender of a message has left the bus; null without memory.
    [[nodiscard]] static BusTrack TrackSender(sd_bus_message *message,
                                              int (*left)(sd_bus_track *track, void *object), void *object);

  private:
    SessionBus();
    void Turn();
    void RunPosted();
    void Rearm();
    void Lose();
    std::optional<std::chrono::milliseconds> TimeToWait() const;

    std::unique_ptr<sd_bus, BusRelease> fBus;
    std::vector<BusClient *> fClients;
    std::deque<std::function<void()>> fPosted;
    std::optional<std::chrono::steady_clock::time_point> fLastAttempt;
    bool fKeepsConnected = false;
    LoopWatch fWatch;
};

} // namespace drevix
