// The session as a whole: locking, suspending, logging out. Never waits. Main thread only.
#pragma once

#include "platform/base/loop_watch.h"
#include "platform/bus/session_bus.h"

#include <functional>
#include <list>
#include <string>

struct sd_bus;
struct sd_bus_message;

namespace drevix {

struct SessionControlTasks {
    // The session was locked or unlocked, as reported by the login manager or a screen saver.
    std::function<void(bool isLocked)> setLocked;
    // A request cannot be done, in words.
    std::function<void(const std::string &problem)> fail;
};

class SessionControl final : public BusClient {
  public:
    // Watches the session's lock until destruction. A session without a login manager has only its screen
    // saver.
    explicit SessionControl(SessionControlTasks tasks);
    ~SessionControl();

    void Lock();
    void LogOut(); // asks the desktop's session manager, which may ask the person
    void Suspend();
    void Restart();
    void ShutDown();

    void BusOpened(sd_bus *bus) override;
    void BusLost() override;

  private:
    using Bus = std::unique_ptr<sd_bus, BusRelease>;

    bool ConnectSystem();
    void AskHint();
    void TurnSystem();
    void AskManager(const char *method, bool isOfSession);
    void TryLogOut();
    int TakeLogOut(sd_bus_message *reply);
    int TakeActive(sd_bus_message *message);
    int TakeProperties(sd_bus_message *message);
    int TakeHint(sd_bus_message *reply);
    int TakeAnswer(sd_bus_message *reply) const;
    void SetHint(bool isLocked);
    void TellLocked();

    SessionControlTasks fTasks;
    sd_bus *fSession = nullptr;
    std::list<BusSlot> fSessionSlots;
    BusSlot fLogOut;
    std::size_t fNextManager = 0; // of those that are asked to log out
    Bus fSystem;
    BusSlot fPropertyMatch;
    BusSlot fHintQuestion;
    LoopWatch fSystemWatch;
    bool fIsHinted = false;
    bool fIsSaverActive = false;
    bool fIsLocked = false; // as was told last
};

} // namespace drevix
