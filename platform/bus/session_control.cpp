#include "platform/bus/session_control.h"

#include "platform/base/translation.h"
#include "platform/bus/bus_callback.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace drevix {
namespace {

constexpr const char *kLogin = "org.freedesktop.login1";
constexpr const char *kLoginObject = "/org/freedesktop/login1";
constexpr const char *kOwnSession = "/org/freedesktop/login1/session/auto";
constexpr const char *kManagerInterface = "org.freedesktop.login1.Manager";
constexpr const char *kSessionInterface = "org.freedesktop.login1.Session";
constexpr const char *kHint = "LockedHint";

// Screen savers send ActiveChanged(b), each under its own name.
constexpr auto kSavers = std::to_array<const char *>({
    "org.freedesktop.ScreenSaver",
    "org.gnome.ScreenSaver",
    "org.cinnamon.ScreenSaver",
    "org.mate.ScreenSaver",
    "org.xfce.ScreenSaver",
});

// Session managers, and how to ask each to log out.
struct Manager {
    const char *name, *object, *interface, *method;
    bool (*append)(sd_bus_message *call);
};
constexpr auto kManagers = std::to_array<Manager>({
    {"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager", "Logout",
     [](sd_bus_message *call) { return sd_bus_message_append(call, "u", 0) >= 0; }},
    {"org.kde.Shutdown", "/Shutdown", "org.kde.Shutdown", "logout",
     [](sd_bus_message * /*call*/) { return true; }},
    {"org.xfce.SessionManager", "/org/xfce/SessionManager", "org.xfce.Session.Manager", "Logout",
     [](sd_bus_message *call) { return sd_bus_message_append(call, "bb", 1, 1) >= 0; }},
    {"org.lxqt.session", "/LXQtSession", "org.lxqt.session", "logout",
     [](sd_bus_message * /*call*/) { return true; }},
});

} // namespace

SessionControl::SessionControl(SessionControlTasks tasks)
    : fTasks(std::move(tasks)), fSystemWatch([this] { TurnSystem(); }) {
    SessionBus::Instance().AddClient(this);
    ConnectSystem();
}

SessionControl::~SessionControl() {
    SessionBus::Instance().RemoveClient(this);
}

void SessionControl::BusOpened(sd_bus *bus) {
    fSession = bus;
    for (const char *saver : kSavers) {
        sd_bus_slot *slot = nullptr;
        if (sd_bus_match_signal_async(bus, &slot, nullptr, nullptr, saver, "ActiveChanged",
                                      BusCallback<&SessionControl::TakeActive>, nullptr, this) >= 0) {
            fSessionSlots.emplace_back(slot);
        }
    }
}

void SessionControl::BusLost() {
    fSessionSlots.clear();
    fLogOut.reset();
    fSession = nullptr;
    fIsSaverActive = false;
    TellLocked();
}

int SessionControl::TakeActive(sd_bus_message *message) {
    int isActive = 0;
    if (sd_bus_message_read(message, "b", &isActive) > 0) {
        fIsSaverActive = isActive != 0;
        TellLocked();
    }
    return 0;
}

void SessionControl::TellLocked() {
    const bool isLocked = fIsHinted || fIsSaverActive;
    if (isLocked != fIsLocked) {
        fIsLocked = isLocked;
        fTasks.setLocked(isLocked);
    }
}

// Queries the hint, and subscribes to its changes.
bool SessionControl::ConnectSystem() {
    sd_bus *bus = nullptr;
    if (fSystem || sd_bus_open_system(&bus) < 0) {
        return fSystem != nullptr;
    }
    fSystem.reset(bus);
    sd_bus_slot *slot = nullptr;
    if (sd_bus_match_signal_async(bus, &slot, kLogin, nullptr, kProperties, "PropertiesChanged",
                                  BusCallback<&SessionControl::TakeProperties>, nullptr, this) >= 0) {
        fPropertyMatch.reset(slot);
    }
    AskHint();
    TurnSystem();
    return true;
}

void SessionControl::TurnSystem() {
    int result = 1;
    while (fSystem && (result = sd_bus_process(fSystem.get(), nullptr)) > 0) {
    }
    if (!fSystem || result < 0) {
        fSystemWatch.Watch(-1, 0, std::nullopt);
        fPropertyMatch.reset();
        fHintQuestion.reset();
        fSystem.reset();
        SetHint(false);
        return;
    }
    std::uint64_t time = UINT64_MAX;
    sd_bus_get_timeout(fSystem.get(), &time);
    // A call that is never answered is dropped a little late.
    const auto wait = time == UINT64_MAX ? std::nullopt : std::optional(std::chrono::milliseconds(5000));
    fSystemWatch.Watch(sd_bus_get_fd(fSystem.get()),
                       static_cast<short>(std::max(sd_bus_get_events(fSystem.get()), 0)), wait);
}

int SessionControl::TakeHint(sd_bus_message *reply) {
    int isLocked = 0;
    if (!sd_bus_message_is_method_error(reply, nullptr) &&
        sd_bus_message_read(reply, "v", "b", &isLocked) > 0) {
        SetHint(isLocked != 0);
    }
    return 0;
}

// Changes of other sessions arrive too, so asks whether it was ours that was locked.
int SessionControl::TakeProperties(sd_bus_message * /*message*/) {
    AskHint();
    return 0;
}

void SessionControl::AskHint() {
    sd_bus_slot *slot = nullptr;
    if (sd_bus_call_method_async(fSystem.get(), &slot, kLogin, kOwnSession, kProperties, "Get",
                                 BusCallback<&SessionControl::TakeHint>, this, "ss", kSessionInterface,
                                 kHint) >= 0) {
        fHintQuestion.reset(slot);
    }
}

void SessionControl::SetHint(bool isLocked) {
    fIsHinted = isLocked;
    TellLocked();
}

int SessionControl::TakeAnswer(sd_bus_message *reply) const {
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) {
        const sd_bus_error *error = sd_bus_message_get_error(reply);
        fTasks.fail(Translated("the login manager refuses: %1",
                               error->message != nullptr ? error->message : error->name));
    }
    return 0;
}

void SessionControl::AskManager(const char *method, bool isOfSession) {
    if (!ConnectSystem()) {
        fTasks.fail(Translated("there is no login manager"));
        return;
    }
    const char *object = isOfSession ? kOwnSession : kLoginObject;
    const char *interface = isOfSession ? kSessionInterface : kManagerInterface;
    // Without a slot the answer can come as long as the connection lives, which this object outlives.
    const int result =
        isOfSession ? sd_bus_call_method_async(fSystem.get(), nullptr, kLogin, object, interface, method,
                                               BusCallback<&SessionControl::TakeAnswer>, this, "")
                    : sd_bus_call_method_async(fSystem.get(), nullptr, kLogin, object, interface, method,
                                               BusCallback<&SessionControl::TakeAnswer>, this, "b", 1);
    if (result < 0) {
        fTasks.fail(Translated("the login manager cannot be asked"));
    }
    TurnSystem();
}

void SessionControl::Lock() {
    AskManager("Lock", true);
}
void SessionControl::Suspend() {
    AskManager("Suspend", false);
}
void SessionControl::Restart() {
    AskManager("Reboot", false);
}
void SessionControl::ShutDown() {
    AskManager("PowerOff", false);
}

void SessionControl::LogOut() {
    fNextManager = 0;
    TryLogOut();
}

// Tries one after the other, until one is running.
void SessionControl::TryLogOut() {
    fLogOut.reset();
    while (fSession != nullptr && fNextManager < kManagers.size()) {
        const Manager &manager = kManagers.at(fNextManager++);
        const BusMessage call =
            SessionBus::NewCall(fSession, manager.name, manager.object, manager.interface, manager.method);
        sd_bus_slot *slot = nullptr;
        if (call && manager.append(call.get()) &&
            sd_bus_call_async(fSession, &slot, call.get(), BusCallback<&SessionControl::TakeLogOut>, this,
                              0) >= 0) {
            fLogOut.reset(slot);
            return;
        }
    }
    fTasks.fail(Translated("this desktop has no session manager that can be asked to log out"));
}

int SessionControl::TakeLogOut(sd_bus_message *reply) {
    if (sd_bus_message_is_method_error(reply, nullptr) > 0) {
        SessionBus::Instance().Post([this] { TryLogOut(); });
    }
    return 0;
}

} // namespace drevix
