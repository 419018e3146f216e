// The device as programs of the session see it, beside the driver messages: they simulate its controls, watch what
// these do, and tell which window is in front where a compositor tells only its own extensions.
// docs/device-bus.md has the object and its methods. Main thread only.
#pragma once

#include "platform/bus/front_reports.h"
#include "platform/bus/session_bus.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace drevix {

inline constexpr const char *kDeviceObject = "/com/halcyra/drevix/Device";
inline constexpr const char *kDeviceInterface = "com.halcyra.drevix.Device1";

// Lines of a name and a value.
using NamedTexts = std::vector<std::pair<std::string, std::string>>;

// What the program does on behalf of the bus.
struct DeviceBusTasks {
    // Does with a control what `how` says, so many times. False, with the reason in *text, for what is not valid;
    // else *text is what came of it.
    std::function<bool(const std::string &control, const std::string &how, std::uint32_t times,
                       std::string *text)>
        act;
    // Nothing: the last report counts no longer.
    std::function<void(const std::optional<ReportedFront> &front)> setFront;
    std::function<NamedTexts()> front;
    // Whether a watcher that does not hang wants the device to tell, but not to act.
    std::function<void(bool isQuiet)> setQuiet;
};

class DeviceBus final : public BusClient {
  public:
    // Serves the object on the session bus, whenever the program is on it, as long as this lives. Calls wait for Begin.
    explicit DeviceBus(DeviceBusTasks tasks);
    ~DeviceBus();
    // The process of the window in front, 0 where that is not known: a watcher that has been quiet is so too as soon as its own
    // window comes to the front, since its word takes a while.
    void SetFrontProcess(std::uint32_t process);
    // Carries out the calls that have come, and from now on all at once.
    void Begin();

    // Tells the watchers what a control has done, so many times: at once, but for one control at most 30 times a
    // second; what comes in between is added up and told with its last text by TakeTime.
    void TellActed(const std::string &control, const std::string &what, int times);
    // Tells the watchers that a control is down or up; as often at most, and what is back at once is not told. New
    // watchers are told what is down.
    void TellPressed(const std::string &control, bool isDown);
    // When something that was held back is due; nothing while nothing is.
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> NextTime() const;
    void TakeTime(std::chrono::steady_clock::time_point now);

    void BusOpened(sd_bus *bus) override;
    void BusLost() override;

  private:
    struct Watcher {
        std::string name; // of its connection
        BusTrack track;
        bool isQuiet = false; // by its own last word
        bool hasBeenQuiet = false;
        std::uint32_t process = 0; // 0: not known
        BusSlot processQuestion;
        BusSlot question; // whether it hangs, while that is not answered
        std::chrono::steady_clock::time_point asked;
        bool isHung = false; // and does not count as quiet

        int TakeProcess(sd_bus_message *answer);
    };
    struct Told {
        std::string what;
        int waiting = 0; // times that have not been told
        std::chrono::steady_clock::time_point last;
        bool isDown = false;
        bool isToldDown = false;
        std::chrono::steady_clock::time_point lastPressed;
    };

    int TakeMessage(sd_bus_message *message);
    int TakeAct(sd_bus_message *message);
    int TakeSetFront(sd_bus_message *message) { return fFronts.Take(message); }
    int TakeFront(sd_bus_message *message);
    int TakeWatch(sd_bus_message *message);
    int TakeUnwatch(sd_bus_message *message);
    void TakeLeft(sd_bus_track *track);
    static int CallTakeLeft(sd_bus_track *track, void *object);
    using Time = std::chrono::steady_clock::time_point;
    void SendDue(const std::string &control, Told *told, Time now) const;
    BusMessage NewSignal(const Watcher &watcher, const char *name) const;
    void SendPressed(const Watcher &watcher, const std::string &control, bool isDown) const;
    void SendActed(const Watcher &watcher, const std::string &control, const Told &told) const;
    Watcher *AddWatcher(sd_bus_message *message);
    [[nodiscard]] bool IsQuiet(const Watcher &watcher) const;
    void TellQuiet();
    void AskQuiet(Time now);
    int TakeAnswer(sd_bus_message *message);

    DeviceBusTasks fTasks;
    sd_bus *fBus = nullptr;
    BusSlot fObject;
    std::list<Watcher> fWatchers;
    FrontReports fFronts;
    bool fHasBegun = false;
    std::vector<BusMessage> fEarly;    // calls that wait for Begin
    std::map<std::string, Told> fTold; // by control
    std::uint32_t fFrontProcess = 0;
    bool fIsQuiet = false;
};

} // namespace drevix
