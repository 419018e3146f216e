// The device as the session's programs see it, besides the driver messages: they simulate its controls, watch
// what these do, and report which window is in front if a compositor tells that only to its own extensions.
// docs/device-bus.md describes the object and its methods. Main thread only.
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
    // Does with a control what `how` says, that many times. False, with the reason in *text, for invalid
    // input; else *text is the result.
    std::function<bool(const std::string &control, const std::string &how, std::uint32_t times,
                       std::string *text)>
        act;
    // nullopt: the last report is no longer valid.
    std::function<void(const std::optional<ReportedFront> &front)> setFront;
    std::function<NamedTexts()> front;
    // Whether a watcher that responds wants the device to report but not to act.
    std::function<void(bool isQuiet)> setQuiet;
};

class DeviceBus final : public BusClient {
  public:
    // Serves the object on the session bus, whenever the program is connected, until destruction. Calls wait
    // for Begin.
    explicit DeviceBus(DeviceBusTasks tasks);
    ~DeviceBus();
    // The process of the window in front, 0 if unknown. A watcher that was quiet becomes quiet again as soon
    // as its own window comes to the front, because its own request takes a while.
    void SetFrontProcess(std::uint32_t process);
    // Carries out the calls received so far, and later ones at once.
    void Begin();

    // Reports to the watchers what a control has done and how many times: at once, but at most 30 times a
    // second per control. TakeTime reports what comes in between, added up, with its last text.
    void TellActed(const std::string &control, const std::string &what, int times);
    // Reports to the watchers that a control is down or up, as often at most; omits a change that is undone
    // at once. New watchers get the controls that are down.
    void TellPressed(const std::string &control, bool isDown);
    // When something held back is due; nullopt if nothing is.
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
