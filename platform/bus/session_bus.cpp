#include "platform/bus/session_bus.h"

#include "platform/base/log.h"

#include <algorithm>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <utility>

namespace drevix {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

BusTimes gBusTimes;

namespace {

// Keeps each event loop iteration short however much arrives.
constexpr int kMostMessagesAtOnce = 64;

// The bus library's times are microseconds on the clock of std::chrono::steady_clock.
milliseconds UntilBusTime(std::uint64_t time) {
    const auto now = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch());
    const auto wait = std::chrono::microseconds(static_cast<std::int64_t>(time)) - now;
    return std::max(std::chrono::ceil<milliseconds>(wait), milliseconds(0));
}

// The shorter of two waits; nullopt means forever.
std::optional<milliseconds> Earlier(std::optional<milliseconds> a, std::optional<milliseconds> b) {
    return a && b ? std::min(*a, *b) : a ? a : b;
}

milliseconds Until(Clock::time_point time) {
    return std::max(std::chrono::ceil<milliseconds>(time - Clock::now()), milliseconds(0));
}

} // namespace

void BusRelease::operator()(sd_bus *bus) const {
    // No flush, which would block on a hung bus.
    sd_bus_close_unref(bus);
}

void BusRelease::operator()(sd_bus_message *message) const {
    sd_bus_message_unref(message);
}

void BusRelease::operator()(sd_bus_slot *slot) const {
    sd_bus_slot_unref(slot);
}

void BusRelease::operator()(sd_bus_track *track) const {
    sd_bus_track_unref(track);
}

BusTrack SessionBus::TrackSender(sd_bus_message *message, int (*left)(sd_bus_track *track, void *object),
                                 void *object) {
    sd_bus_track *created = nullptr;
    if (sd_bus_track_new(sd_bus_message_get_bus(message), &created, left, object) < 0) {
        return nullptr;
    }
    BusTrack track(created);
    return sd_bus_track_add_sender(created, message) >= 0 ? std::move(track) : nullptr;
}

SessionBus &SessionBus::Instance() {
    static auto &instance = *new SessionBus;
    return instance;
}

SessionBus::SessionBus() : fWatch([this] { Turn(); }) {}

void SessionBus::AddClient(BusClient *client) {
    fClients.push_back(client);
    if (fBus) {
        client->BusOpened(fBus.get());
        Rearm();
    }
}

sd_bus *SessionBus::Connection() {
    const Clock::time_point now = Clock::now();
    if (fBus || (fLastAttempt && now - *fLastAttempt < gBusTimes.betweenAttempts)) {
        return fBus.get();
    }
    fLastAttempt = now;
    sd_bus *bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        Rearm();
        return nullptr;
    }
    fBus.reset(bus);
    for (BusClient *client : fClients) {
        client->BusOpened(bus);
    }
    Rearm();
    return bus;
}

void SessionBus::TakeMessages() {
    for (int taken = 0; fBus && taken < kMostMessagesAtOnce; ++taken) {
        const int result = sd_bus_process(fBus.get(), nullptr);
        if (result < 0) {
            Lose();
        }
        if (result <= 0) {
            break;
        }
    }
    Rearm();
}

void SessionBus::WaitUntil(milliseconds timeout, const std::function<bool()> &isDone) {
    const Clock::time_point end = Clock::now() + timeout;
    for (TakeMessages(); fBus && !isDone() && Clock::now() < end; TakeMessages()) {
        std::uint64_t busTime = UINT64_MAX;
        sd_bus_get_timeout(fBus.get(), &busTime);
        const milliseconds wait =
            busTime == UINT64_MAX ? Until(end) : std::min(Until(end), UntilBusTime(busTime));
        pollfd waited{sd_bus_get_fd(fBus.get()), static_cast<short>(sd_bus_get_events(fBus.get())), 0};
        ::poll(&waited, 1, static_cast<int>(wait.count()));
    }
}

void SessionBus::Post(std::function<void()> function) {
    fPosted.push_back(std::move(function));
    Rearm();
}

void SessionBus::RunOnce(milliseconds timeout, std::span<const int> descriptors) {
    if (fKeepsConnected) {
        Connection();
    }
    TakeMessages();
    if (fPosted.empty()) {
        std::vector<pollfd> waited;
        for (const int descriptor : descriptors) {
            waited.push_back({descriptor, POLLIN, 0});
        }
        if (fBus) {
            waited.push_back(
                {sd_bus_get_fd(fBus.get()), static_cast<short>(sd_bus_get_events(fBus.get())), 0});
        }
        const milliseconds wait = *Earlier(timeout, TimeToWait());
        ::poll(waited.data(), waited.size(), static_cast<int>(wait.count()));
        TakeMessages();
    }
    RunPosted();
}

void SessionBus::Leave() {
    fKeepsConnected = false;
    fLastAttempt.reset();
    Lose();
    fPosted.clear();
    Rearm();
}

BusMessage SessionBus::NewCall(sd_bus *bus, const std::string &destination, const char *object,
                               const char *interface, const char *method) {
    sd_bus_message *message = nullptr;
    if (sd_bus_message_new_method_call(bus, &message, destination.c_str(), object, interface, method) < 0) {
        return nullptr;
    }
    BusMessage result(message);
    // The bus must not start a program to deliver the message.
    sd_bus_message_set_auto_start(message, 0);
    return result;
}

BusMessage SessionBus::NewCallToBus(sd_bus *bus, const char *method, const std::string &argument) {
    BusMessage call =
        NewCall(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method);
    if (call && !argument.empty() && sd_bus_message_append(call.get(), "s", argument.c_str()) < 0) {
        return nullptr;
    }
    return call;
}

void SessionBus::Turn() try {
    if (fKeepsConnected) {
        Connection();
    }
    TakeMessages();
    RunPosted();
} catch (const std::bad_alloc &) {
    // The current message is lost, as if it had never arrived; its sender is asked again at the next tick.
    Rearm();
}

void SessionBus::RunPosted() {
    // Functions posted by a handler wait for the next iteration.
    for (std::size_t count = fPosted.size(); count > 0 && !fPosted.empty(); --count) {
        const std::function<void()> function = std::move(fPosted.front());
        fPosted.pop_front();
        function();
    }
    Rearm();
}

// The time until something is due without a descriptor becoming ready.
std::optional<milliseconds> SessionBus::TimeToWait() const {
    if (!fPosted.empty()) {
        return milliseconds(0);
    }
    if (fBus) {
        std::uint64_t busTime = UINT64_MAX;
        sd_bus_get_timeout(fBus.get(), &busTime);
        return busTime == UINT64_MAX ? std::nullopt : std::optional(UntilBusTime(busTime));
    }
    return fKeepsConnected && fLastAttempt ? std::optional(Until(*fLastAttempt + gBusTimes.betweenAttempts))
                                           : std::nullopt;
}

void SessionBus::Rearm() {
    const int descriptor = fBus ? sd_bus_get_fd(fBus.get()) : -1;
    const int events = descriptor >= 0 ? sd_bus_get_events(fBus.get()) : 0;
    fWatch.Watch(descriptor, static_cast<short>(std::max(events, 0)), TimeToWait());
}

void SessionBus::Lose() {
    if (!fBus) {
        return;
    }
    Log("bus", "lost the session bus");
    fWatch.Watch(-1, 0, std::nullopt);
    for (BusClient *client : fClients) {
        client->BusLost();
    }
    fBus.reset();
}

} // namespace drevix
