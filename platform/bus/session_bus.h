// The connection to the session bus. It is made, used and given up without ever waiting, but for WaitUntil.
// For the other files of this folder. Main thread only.
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

namespace drevix {

// How long things take. A test may be in more of a hurry.
struct BusTimes {
    std::chrono::milliseconds betweenAttempts{1000}; // to connect
    std::chrono::milliseconds firstListInLoop{25};   // for the list of processes after connecting
    std::chrono::milliseconds firstListOutside{250}; // the same when no event loop runs yet
    std::chrono::milliseconds firstSilence{5000};    // after which a silent process is asked again
    std::chrono::milliseconds longestSilence{60000}; // it is doubled up to this
};
extern BusTimes gBusTimes;

// Releases what the bus library counts references of.
struct BusRelease {
    void operator()(sd_bus *bus) const;
    void operator()(sd_bus_message *message) const;
    void operator()(sd_bus_slot *slot) const;
};
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease>;

// Who uses the connection and must know when there is a new one.
class BusClient {
  public:
    BusClient() = default;
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;
    // Messages may be sent at once. A slot must not outlive BusLost.
    virtual void BusOpened(sd_bus *bus) = 0;
    virtual void BusLost() = 0;

  protected:
    ~BusClient() = default;
};

class SessionBus {
  public:
    // Lives as long as the program, so that nothing is left to release at its end.
    static SessionBus &Instance();

    // The client lives as long, or until it is removed. Tells it of a connection that is there already.
    void AddClient(BusClient *client);
    // The client must have no slots left.
    void RemoveClient(BusClient *client) { std::erase(fClients, client); }

    // The connection; made now when there is none and the last attempt is long enough ago. Null when it cannot
    // be. It takes messages from the start, before the bus has answered at all.
    sd_bus *Connection();
    [[nodiscard]] bool IsConnected() const { return fBus != nullptr; }
    // Connects again by itself whenever the connection is lost.
    void KeepConnected() { fKeepsConnected = true; }

    // Takes a bounded number of the messages that have come, without waiting; their callbacks run.
    void TakeMessages();
    // The same until `isDone` or the time is over. Nothing that was posted runs meanwhile.
    void WaitUntil(std::chrono::milliseconds timeout, const std::function<bool()> &isDone);
    // Has the event loop call a function, in the order of the posts.
    void Post(std::function<void()> function);
    // One turn of a program without an event loop: as WaitForAppleEvents.
    void RunOnce(std::chrono::milliseconds timeout, std::span<const int> descriptors);

    // Gives the connection up, forgets what was posted, and stops connecting by itself.
    void Leave();

    // A call of a method; null without memory or for names that are none.
    [[nodiscard]] static BusMessage NewCall(sd_bus *bus, const std::string &destination, const char *object,
                                            const char *interface, const char *method);
    static BusMessage NewCallToBus(sd_bus *bus, const char *method, const std::string &argument = {});

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
