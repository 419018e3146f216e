#include "platform/bus/device_bus.h"

#include "platform/base/translation.h"
#include "platform/bus/bus_callback.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;

constexpr Clock::duration kBetweenSignals = std::chrono::microseconds(1'000'000 / 30);
constexpr Clock::duration kLongestSilence =
    std::chrono::seconds(2);              // of a program that is asked whether it hangs
constexpr std::size_t kMostWatchers = 32; // whoever watches more often than that has lost count
constexpr std::size_t kMostEarly = 64;    // more is not called in the moment of a start
constexpr const char *kWrongCall = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char *kDeviceDescription = R"(<node><interface name="com.halcyra.drevix.Device1">
<method name="Act"><arg name="control" type="s" direction="in"/><arg name="how" type="s" direction="in"/>
<arg name="times" type="u" direction="in"/><arg name="what" type="s" direction="out"/></method>
<method name="SetFront"><arg name="entry" type="s" direction="in"/><arg name="class" type="s" direction="in"/>
<arg name="name" type="s" direction="in"/><arg name="process" type="u" direction="in"/></method>
<method name="Front"><arg name="front" type="a{ss}" direction="out"/></method>
<method name="Watch"><arg name="quiet" type="b" direction="in"/></method><method name="Unwatch"/>
<signal name="Pressed"><arg name="control" type="s"/><arg name="down" type="b"/></signal>
<signal name="Acted"><arg name="control" type="s"/><arg name="what" type="s"/><arg name="times" type="u"/></signal>
</interface></node>)";

std::string SenderOf(sd_bus_message *message) {
    const char *sender = sd_bus_message_get_sender(message);
    return sender != nullptr ? sender : "";
}

} // namespace

DeviceBus::DeviceBus(DeviceBusTasks tasks)
    : fTasks(std::move(tasks)),
      fFronts([this](const std::optional<ReportedFront> &front) { fTasks.setFront(front); }) {
    SessionBus::Instance().AddClient(this);
}

DeviceBus::~DeviceBus() {
    SessionBus::Instance().RemoveClient(this);
}

void DeviceBus::BusOpened(sd_bus *bus) {
    fBus = bus;
    sd_bus_slot *slot = nullptr;
    if (sd_bus_add_object(bus, &slot, kDeviceObject, BusCallback<&DeviceBus::TakeMessage>, this) >= 0) {
        fObject.reset(slot);
    }
    fFronts.BusOpened(bus);
}

void DeviceBus::BusLost() {
    fObject.reset();
    fWatchers.clear();
    fTold.clear();
    fEarly.clear();
    fBus = nullptr;
    fFronts.BusLost();
    TellQuiet();
}

void DeviceBus::Begin() {
    fHasBegun = true;
    for (const BusMessage &message : std::exchange(fEarly, {})) {
        if (TakeMessage(message.get()) == 0) {
            sd_bus_reply_method_errorf(message.get(), kWrongCall, "there is no such call");
        }
    }
}

// A compositor's reporter calls as soon as our name appears, and would not call again.
int DeviceBus::TakeMessage(sd_bus_message *message) {
    if (!fHasBegun && fEarly.size() < kMostEarly) {
        fEarly.emplace_back(sd_bus_message_ref(message));
        return 1;
    }
    struct Method {
        const char *name;
        const char *signature;
        int (DeviceBus::*take)(sd_bus_message *message);
    };
    static constexpr auto kMethods = std::to_array<Method>({
        {"Act", "ssu", &DeviceBus::TakeAct},
        {"SetFront", "sssu", &DeviceBus::TakeSetFront},
        {"SetFront", "sssi", &DeviceBus::TakeSetFront}, // KWin's scripts have no other numbers
        {"Front", "", &DeviceBus::TakeFront},
        {"Watch", "b", &DeviceBus::TakeWatch},
        {"Unwatch", "", &DeviceBus::TakeUnwatch},
    });
    if (sd_bus_message_is_method_call(message, kIntrospectable, "Introspect") > 0) {
        return sd_bus_reply_method_return(message, "s", kDeviceDescription);
    }
    for (const Method &method : kMethods) {
        if (sd_bus_message_is_method_call(message, kDeviceInterface, method.name) > 0 &&
            sd_bus_message_has_signature(message, method.signature) > 0) {
            return (this->*method.take)(message);
        }
    }
    return 0; // the library refuses it in its own words
}

// NOLINTNEXTLINE(readability-make-member-function-const): one table holds all methods
int DeviceBus::TakeAct(sd_bus_message *message) {
    const char *control = nullptr;
    const char *how = nullptr;
    std::uint32_t times = 0;
    if (sd_bus_message_read(message, "ssu", &control, &how, &times) <= 0) {
        return 0;
    }
    std::string text;
    return fTasks.act(control, how, times, &text)
               ? sd_bus_reply_method_return(message, "s", text.c_str())
               : sd_bus_reply_method_errorf(message, kWrongCall, "%s", text.c_str());
}

// NOLINTNEXTLINE(readability-make-member-function-const): as above
int DeviceBus::TakeFront(sd_bus_message *message) {
    fFronts.Check(Clock::now());
    sd_bus_message *created = nullptr;
    if (sd_bus_message_new_method_return(message, &created) < 0) {
        return 0;
    }
    const BusMessage reply(created);
    sd_bus_message_open_container(created, 'a', "{ss}");
    for (const auto &[name, text] : fTasks.front()) {
        sd_bus_message_append(created, "{ss}", name.c_str(), text.c_str());
    }
    sd_bus_message_close_container(created);
    return sd_bus_send(nullptr, created, nullptr);
}

int DeviceBus::TakeWatch(sd_bus_message *message) {
    int isQuiet = 0;
    if (sd_bus_message_read(message, "b", &isQuiet) <= 0) {
        return 0;
    }
    const auto known = std::ranges::find(fWatchers, SenderOf(message), &Watcher::name);
    const bool isNew = known == fWatchers.end();
    Watcher *const watcher = isNew ? AddWatcher(message) : &*known;
    if (watcher == nullptr) {
        return sd_bus_reply_method_errorf(message, "org.freedesktop.DBus.Error.LimitsExceeded", "%s",
                                          ToTranslate("there are too many watchers"));
    }
    watcher->isQuiet = isQuiet != 0;
    watcher->hasBeenQuiet = watcher->hasBeenQuiet || watcher->isQuiet;
    watcher->question.reset();
    watcher->isHung = false;
    TellQuiet();
    const int result = sd_bus_reply_method_return(message, "");
    if (isNew) {
        for (const auto &[control, told] : fTold) {
            if (told.isToldDown) {
                SendPressed(*watcher, control, true);
            }
        }
    }
    return result;
}

DeviceBus::Watcher *DeviceBus::AddWatcher(sd_bus_message *message) {
    BusTrack track =
        fWatchers.size() < kMostWatchers ? SessionBus::TrackSender(message, CallTakeLeft, this) : nullptr;
    if (!track) {
        return nullptr;
    }
    Watcher &watcher = fWatchers.emplace_back();
    watcher.name = SenderOf(message);
    watcher.track = std::move(track);
    const BusMessage call = SessionBus::NewCallToBus(fBus, "GetConnectionUnixProcessID", watcher.name);
    sd_bus_slot *slot = nullptr;
    if (call &&
        sd_bus_call_async(fBus, &slot, call.get(), BusCallback<&Watcher::TakeProcess>, &watcher, 0) >= 0) {
        watcher.processQuestion.reset(slot);
    }
    return &watcher;
}

int DeviceBus::Watcher::TakeProcess(sd_bus_message *answer) {
    if (sd_bus_message_is_method_error(answer, nullptr) == 0) {
        sd_bus_message_read(answer, "u", &process); // else it stays unknown
    }
    processQuestion.reset();
    return 0;
}

int DeviceBus::TakeUnwatch(sd_bus_message *message) {
    std::erase_if(fWatchers, [&](const Watcher &watcher) { return watcher.name == SenderOf(message); });
    TellQuiet();
    return sd_bus_reply_method_return(message, "");
}

// The library keeps the track alive while it calls.
int DeviceBus::CallTakeLeft(sd_bus_track *track, void *object) {
    static_cast<DeviceBus *>(object)->TakeLeft(track);
    return 0;
}

void DeviceBus::TakeLeft(sd_bus_track *track) {
    std::erase_if(fWatchers, [&](const Watcher &watcher) { return watcher.track.get() == track; });
    TellQuiet();
}

void DeviceBus::SetFrontProcess(std::uint32_t process) {
    fFrontProcess = process;
    TellQuiet();
}

bool DeviceBus::IsQuiet(const Watcher &watcher) const {
    const bool isInFront = watcher.hasBeenQuiet && watcher.process != 0 && watcher.process == fFrontProcess;
    return watcher.isQuiet || isInFront;
}

void DeviceBus::TellQuiet() {
    const bool isQuiet = std::ranges::any_of(
        fWatchers, [&](const Watcher &watcher) { return IsQuiet(watcher) && !watcher.isHung; });
    if (isQuiet != fIsQuiet) {
        fIsQuiet = isQuiet;
        fTasks.setQuiet(isQuiet);
    }
}

// A hung panel must not stop the device for ever. Checks when a control is touched, so that nothing wakes up
// an idle program.
void DeviceBus::AskQuiet(Time now) {
    for (Watcher &watcher : fWatchers) {
        if (!IsQuiet(watcher) || watcher.question || now - watcher.asked < kLongestSilence) {
            continue;
        }
        const BusMessage call =
            SessionBus::NewCall(fBus, watcher.name, "/", "org.freedesktop.DBus.Peer", "Ping");
        sd_bus_slot *slot = nullptr;
        // An answer counts whenever it comes.
        if (call && sd_bus_call_async(fBus, &slot, call.get(), BusCallback<&DeviceBus::TakeAnswer>, this,
                                      UINT64_MAX) >= 0) {
            watcher.question.reset(slot);
            watcher.asked = now;
        }
    }
}

int DeviceBus::TakeAnswer(sd_bus_message *message) {
    const auto known = std::ranges::find(fWatchers, SenderOf(message), &Watcher::name);
    if (known != fWatchers.end()) { // else it has left
        known->question.reset();
        known->isHung = false;
        TellQuiet();
    }
    return 0;
}

void DeviceBus::TellActed(const std::string &control, const std::string &what, int times) {
    fFronts.Check(Clock::now());
    if (fWatchers.empty()) {
        return;
    }
    AskQuiet(Clock::now());
    Told &told = fTold[control];
    told.what = what;
    told.waiting += times;
    SendDue(control, &told, Clock::now());
}

void DeviceBus::TellPressed(const std::string &control, bool isDown) {
    Told &told = fTold[control];
    told.isDown = isDown;
    SendDue(control, &told, Clock::now());
}

std::optional<DeviceBus::Time> DeviceBus::NextTime() const {
    std::optional<Time> next;
    const auto take = [&](bool isWaiting, Time due) {
        if (isWaiting && (!next || due < *next)) {
            next = due;
        }
    };
    for (const auto &[control, told] : fTold) {
        take(told.waiting > 0, told.last + kBetweenSignals);
        take(told.isDown != told.isToldDown, told.lastPressed + kBetweenSignals);
    }
    for (const Watcher &watcher : fWatchers) {
        take(watcher.question && !watcher.isHung, watcher.asked + kLongestSilence);
    }
    return next;
}

void DeviceBus::TakeTime(Time now) {
    for (auto &[control, told] : fTold) {
        SendDue(control, &told, now);
    }
    for (Watcher &watcher : fWatchers) {
        watcher.isHung = watcher.question && now - watcher.asked >= kLongestSilence;
    }
    TellQuiet();
}

void DeviceBus::SendDue(const std::string &control, Told *told, Time now) const {
    if (told->isDown != told->isToldDown && now - told->lastPressed >= kBetweenSignals) {
        for (const Watcher &watcher : fWatchers) {
            SendPressed(watcher, control, told->isDown);
        }
        told->isToldDown = told->isDown;
        told->lastPressed = now;
    }
    if (told->waiting > 0 && now - told->last >= kBetweenSignals) {
        for (const Watcher &watcher : fWatchers) {
            SendActed(watcher, control, *told);
        }
        told->waiting = 0;
        told->last = now;
    }
}

BusMessage DeviceBus::NewSignal(const Watcher &watcher, const char *name) const {
    sd_bus_message *created = nullptr;
    if (sd_bus_message_new_signal(fBus, &created, kDeviceObject, kDeviceInterface, name) < 0) {
        return nullptr; // a picture that does not light up once
    }
    BusMessage signal(created);
    sd_bus_message_set_destination(created, watcher.name.c_str());
    return signal;
}

void DeviceBus::SendPressed(const Watcher &watcher, const std::string &control, bool isDown) const {
    const BusMessage signal = NewSignal(watcher, "Pressed");
    if (signal && sd_bus_message_append(signal.get(), "sb", control.c_str(), isDown ? 1 : 0) >= 0) {
        sd_bus_send(fBus, signal.get(), nullptr);
    }
}

void DeviceBus::SendActed(const Watcher &watcher, const std::string &control, const Told &told) const {
    const BusMessage signal = NewSignal(watcher, "Acted");
    if (signal && sd_bus_message_append(signal.get(), "ssu", control.c_str(), told.what.c_str(),
                                        static_cast<std::uint32_t>(told.waiting)) >= 0) {
        sd_bus_send(fBus, signal.get(), nullptr);
    }
}

} // namespace drevix
