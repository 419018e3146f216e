// Which window programs on the bus say is in front. Internal to this folder. Main thread only.
#pragma once

#include "platform/bus/name_owner.h"
#include "platform/bus/session_bus.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace drevix {

// The window in front, as a program tells it. Texts that it does not know are empty.
struct ReportedFront {
    std::string entry, windowClass, windowName;
    std::uint32_t process = 0;
};

class FrontReports {
  public:
    // Called with each report, and with nothing when the last one counts no longer.
    using SetFrontFunction = std::function<void(const std::optional<ReportedFront> &front)>;
    explicit FrontReports(SetFrontFunction setFront);

    void BusOpened(sd_bus *bus);
    void BusLost();

    // Takes a call of SetFront and answers it. The last report counts until its sender leaves the bus. While a compositor that
    // has a reporter is on the bus, nobody else is believed.
    int Take(sd_bus_message *message);
    // The report is about to be used: asks KWin whether its script still runs, which cannot say that it was switched off. Ten
    // times a second at most, so a report may be used once when it is old.
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
