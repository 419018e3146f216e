// Which window is in front, as programs on the bus report it. Internal to this folder. Main thread only.
#pragma once

#include "platform/bus/name_owner.h"
#include "platform/bus/session_bus.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace drevix {

// The window in front, as a program reports it. Unknown texts are empty.
struct ReportedFront {
    std::string entry, windowClass, windowName;
    std::uint32_t process = 0;
};

class FrontReports {
  public:
    // Called with each report, and with nullopt when the last one is no longer valid.
    using SetFrontFunction = std::function<void(const std::optional<ReportedFront> &front)>;
    explicit FrontReports(SetFrontFunction setFront);

    void BusOpened(sd_bus *bus);
    void BusLost();

    // Processes a SetFront call and answers it. The report is valid until its sender leaves the bus. While a
    // compositor that has a reporter is on the bus, nobody else is believed.
    int Take(sd_bus_message *message);
    // Call before using the report: asks KWin whether its script still runs, because the script cannot report
    // that it was switched off. Asks at most ten times a second, so an outdated report may be used once.
    void Check(std::chrono::steady_clock::time_point now);

  private:
    int TakeIsLoaded(sd_bus_message *answer);
    static int CallTakeLeft(sd_bus_track *track, void *object);
    [[nodiscard]] bool IsBelieved(const std::string &sender) const;
    void ForgetStranger();
    void Forget();

    SetFrontFunction fSetFront;
    sd_bus *fBus = nullptr;
    NameOwner fShell;
    NameOwner fKWin;
    BusTrack fReporter; // null while there is none
    std::string fReporterName;
    BusSlot fQuestion;
    std::chrono::steady_clock::time_point fAsked;
};

} // namespace drevix
