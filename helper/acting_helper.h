// Joins the parts of the acting helper in the program's event loop: the session's desktop, the devices, the
// programs that simulate and watch them, and the actions of controls.
#pragma once

#include "helper/action_sender.h"
#include "helper/control_actions.h"
#include "helper/device_readers.h"
#include "helper/front_settings.h"
#include "helper/options.h"
#include "platform/base/loop_watch.h"
#include "platform/bus/device_bus.h"
#include "platform/bus/media_players.h"
#include "platform/bus/session_control.h"
#include "platform/desktop/program_starter.h"
#include "platform/windows/desktop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace drevix {

class ActingHelper {
  public:
    struct Surroundings {
        std::string settings;    // path of the settings file
        std::string preferences; // the preferences folder
        FSRef resources;
        std::function<void(const std::string &problem)> complain;
        std::function<void()> devicesChanged;
        std::function<std::unique_ptr<Desktop>(std::string *problem)> openDesktop;
    };

    // Needs the event loop to be set. The options stay the caller's. Calls from the bus wait for Begin.
    ActingHelper(const HelperOptions &options, Surroundings surroundings);
    // Releases all keys.
    ~ActingHelper();
    ActingHelper(const ActingHelper &) = delete;
    ActingHelper &operator=(const ActingHelper &) = delete;

    // Reads settings and maps, and starts working. False, after a complaint, for a stand-in that cannot be
    // used.
    [[nodiscard]] bool Begin();
    // Another program has changed the settings.
    void LoadSettings();

    // Call before and after each wait of the loop: does what is due and sends what is queued. Returns how
    // long the loop may wait; nullopt: for ever.
    [[nodiscard]] std::optional<std::chrono::microseconds> Turn();

    [[nodiscard]] std::vector<ConnectedDevice> Devices() const {
        return fReaders ? fReaders->Devices() : std::vector<ConnectedDevice>();
    }

  private:
    void LookForDesktop(SteadyTime now);
    void TakeDesktop();
    void UseFront();
    void FlushDesktop();
    void LoseDesktop();
    void TakeControl(ControlSource source, const ControlEvent &event);
    void TellPressed(ControlSource source, const ControlEvent &event);
    void TakeTold(SlotIndex slot, const std::string &what, int times);
    void ComplainOnce(const std::string &problem);
    [[nodiscard]] FrontWindow FrontNow() const;
    [[nodiscard]] bool AddStandIns();

    void AskSession(SessionRequest request);
    [[nodiscard]] bool AskPlayer(PlayerRequest request);
    [[nodiscard]] ActionOutlets MakeOutlets();
    [[nodiscard]] DeviceReaderTasks MakeReaderTasks();
    [[nodiscard]] DeviceBusTasks MakeBusTasks();
    [[nodiscard]] bool Act(const std::string &control, const std::string &how, std::uint32_t times,
                           std::string *text);
    [[nodiscard]] NamedTexts DescribeFront() const;

    const HelperOptions &fOptions;
    Surroundings fSurroundings;
    FrontSettings fSettings;
    ProgramStarter fStarter;
    ActionSender fSender;
    ControlActions fActions;
    std::optional<DeviceReaders> fReaders;
    std::optional<SessionControl> fSession;
    std::optional<MediaPlayers> fPlayers;
    std::unique_ptr<Desktop> fDesktop;
    LoopWatch fDesktopWatch;
    unsigned fLayoutChanges = 0; // of the desktop, as of the last look
    std::string fNoDesktop;      // why there is none; empty while there is one
    SteadyTime fNextLook{};
    FrontWindow fReported;             // by a program, for a desktop that does not tell
    std::set<std::string> fComplaints; // that were told
    std::string fLastTold;             // what the last control did
    std::vector<std::pair<SlotIndex, ControlSource>> fDown;
    DeviceBus fBus;
};

} // namespace drevix
