#include "platform/bus/front_reports.h"

#include "platform/bus/bus_callback.h"

#include <cstring>
#include <utility>

namespace drevix {
namespace {

constexpr std::size_t kLongestName = 255; // bytes, as of a file
constexpr std::uint32_t kHighestProcess = 0x7FFF'FFFF;
constexpr std::chrono::milliseconds kBetweenChecks{100};
constexpr const char *kScript = "drevix-front"; // as its metadata.json has it

// Longer texts are not application names. A window can have any text, and must not keep the previous one in
// front.
std::string ShortName(const char *text) {
    return std::strlen(text) <= kLongestName ? text : std::string();
}

} // namespace

FrontReports::FrontReports(SetFrontFunction setFront)
    : fSetFront(std::move(setFront)), fShell("org.gnome.Shell", [this] { ForgetStranger(); }),
      fKWin("org.kde.KWin", [this] { ForgetStranger(); }) {}

void FrontReports::BusOpened(sd_bus *bus) {
    fBus = bus;
    fShell.Open(bus);
    fKWin.Open(bus);
}

void FrontReports::BusLost() {
    fBus = nullptr;
    fShell.Close();
    fKWin.Close();
    fQuestion.reset();
    Forget();
}

int FrontReports::Take(sd_bus_message *message) {
    const char *entry = nullptr;
    const char *windowClass = nullptr;
    const char *name = nullptr;
    std::uint32_t process = 0;
    // Both number types are read alike.
    if (sd_bus_message_read(message, "sss", &entry, &windowClass, &name) <= 0 ||
        sd_bus_message_read_basic(message, sd_bus_message_get_signature(message, 1)[3], &process) <= 0) {
        return 0;
    }
    const std::string sender = sd_bus_message_get_sender(message);
    if (!IsBelieved(sender)) {
        return sd_bus_reply_method_errorf(message, "org.freedesktop.DBus.Error.AccessDenied",
                                          "here the compositor tells which window is in front");
    }
    if (!fReporter || sender != fReporterName) {
        fReporter = SessionBus::TrackSender(message, CallTakeLeft, this);
        fReporterName = sender;
    }
    // Ignores a sender whose end would go unnoticed.
    if (fReporter) {
        fSetFront(ReportedFront{ShortName(entry), ShortName(windowClass), ShortName(name),
                                process <= kHighestProcess ? process : 0});
    }
    return sd_bus_reply_method_return(message, "");
}

bool FrontReports::IsBelieved(const std::string &sender) const {
    return (fShell.Get().empty() && fKWin.Get().empty()) || sender == fShell.Get() || sender == fKWin.Get();
}

// Forgets a sender that reported before the compositor was known.
void FrontReports::ForgetStranger() {
    if (!IsBelieved(fReporterName)) {
        Forget();
    }
}

void FrontReports::Forget() {
    if (std::exchange(fReporter, nullptr)) {
        fReporterName.clear();
        fSetFront(std::nullopt);
    }
}

// The library keeps the track alive while it calls.
int FrontReports::CallTakeLeft(sd_bus_track * /*track*/, void *object) {
    static_cast<FrontReports *>(object)->Forget();
    return 0;
}

void FrontReports::Check(std::chrono::steady_clock::time_point now) {
    if (!fReporter || fReporterName != fKWin.Get() || fQuestion || now - fAsked < kBetweenChecks) {
        return;
    }
    fAsked = now;
    const BusMessage call =
        SessionBus::NewCall(fBus, fReporterName, "/Scripting", "org.kde.kwin.Scripting", "isScriptLoaded");
    sd_bus_slot *slot = nullptr;
    if (call && sd_bus_message_append(call.get(), "s", kScript) >= 0 &&
        sd_bus_call_async(fBus, &slot, call.get(), BusCallback<&FrontReports::TakeIsLoaded>, this, 0) >= 0) {
        fQuestion.reset(slot);
    }
}

int FrontReports::TakeIsLoaded(sd_bus_message *answer) {
    fQuestion.reset();
    int isLoaded = 1;
    if (sd_bus_message_is_method_error(answer, nullptr) == 0 &&
        sd_bus_message_read(answer, "b", &isLoaded) > 0 && isLoaded == 0) {
        Forget();
    }
    return 0;
}

} // namespace drevix
