#include "platform/bus/device_client.h"

#include "platform/base/ascii.h"
#include "platform/bus/process_names.h"

#include <cstring>
#include <systemd/sd-bus.h>

namespace drevix {
namespace {

constexpr std::uint64_t kPatience = 2'000'000; // microseconds
constexpr const char *kBusName = "org.freedesktop.DBus";
constexpr const char *kBusObject = "/org/freedesktop/DBus";

struct ErrorOwner {
    sd_bus_error error{}; // holds nothing
    ErrorOwner() = default;
    ErrorOwner(const ErrorOwner &) = delete;
    ErrorOwner &operator=(const ErrorOwner &) = delete;
    ~ErrorOwner() { sd_bus_error_free(&error); }
};

struct Watching {
    const DeviceClient::ActedFunction &acted;
    bool hasEnded = false;
};

int TakeActed(sd_bus_message *message, void *watching, sd_bus_error * /*error*/) {
    const char *control = nullptr;
    const char *what = nullptr;
    std::uint32_t times = 0;
    if (sd_bus_message_read(message, "ssu", &control, &what, &times) > 0) {
        static_cast<Watching *>(watching)->acted(control, what, times);
    }
    return 0;
}

int TakeEnd(sd_bus_message *message, void *watching, sd_bus_error * /*error*/) {
    const char *name = nullptr;
    const char *before = nullptr;
    const char *after = nullptr;
    const bool isRead = sd_bus_message_read(message, "sss", &name, &before, &after) > 0;
    static_cast<Watching *>(watching)->hasEnded = isRead && *after == '\0';
    return 0;
}

// If two processes have the name, the first one gets the messages.
std::string FindBusName(sd_bus_message *names, const std::string &processName) {
    NamedProcess first{UINT32_MAX, {}};
    std::string found;
    const char *name = nullptr;
    sd_bus_message_enter_container(names, 'a', "s");
    while (sd_bus_message_read(names, "s", &name) > 0) {
        NamedProcess process{};
        if (ParseBusName(name, &process) && process.id < first.id &&
            WithSmallLetters(process.name) == WithSmallLetters(processName)) {
            first = process;
            found = name;
        }
    }
    return found;
}

} // namespace

bool DeviceClient::Connect(const std::string &processName) {
    sd_bus *created = nullptr;
    if (sd_bus_open_user(&created) < 0) {
        return false;
    }
    fBus.reset(created);
    sd_bus_set_method_call_timeout(fBus.get(), kPatience);
    std::string unused;
    const BusMessage names = Call(SessionBus::NewCallToBus(fBus.get(), "ListNames"), &unused);
    const std::string busName = names ? FindBusName(names.get(), processName) : std::string();
    const BusMessage owner =
        busName.empty() ? nullptr
                        : Call(SessionBus::NewCallToBus(fBus.get(), "GetNameOwner", busName), &unused);
    const char *name = nullptr;
    if (!owner || sd_bus_message_read(owner.get(), "s", &name) <= 0) {
        return false;
    }
    fName = name;
    return true;
}

BusMessage DeviceClient::NewCall(const char *method) const {
    return SessionBus::NewCall(fBus.get(), fName, kDeviceObject, kDeviceInterface, method);
}

BusMessage DeviceClient::Call(const BusMessage &call, std::string *problem) const {
    ErrorOwner owner;
    sd_bus_message *reply = nullptr;
    if (!call || sd_bus_call(fBus.get(), call.get(), 0, &owner.error, &reply) < 0) {
        *problem = owner.error.message != nullptr ? owner.error.message : "there is not enough memory";
        return nullptr;
    }
    return BusMessage(reply);
}

bool DeviceClient::Act(const std::string &control, const std::string &how, std::uint32_t times,
                       std::string *what, std::string *problem) {
    const BusMessage call = NewCall("Act");
    if (call) {
        sd_bus_message_append(call.get(), "ssu", control.c_str(), how.c_str(), times);
    }
    const BusMessage reply = Call(call, problem);
    const char *text = nullptr;
    if (!reply || sd_bus_message_read(reply.get(), "s", &text) <= 0) {
        return false;
    }
    *what = text;
    return true;
}

bool DeviceClient::Front(NamedTexts *front, std::string *problem) {
    const BusMessage reply = Call(NewCall("Front"), problem);
    if (!reply || sd_bus_message_enter_container(reply.get(), 'a', "{ss}") <= 0) {
        return false;
    }
    const char *name = nullptr;
    const char *text = nullptr;
    while (sd_bus_message_read(reply.get(), "{ss}", &name, &text) > 0) {
        front->emplace_back(name, text);
    }
    return true;
}

bool DeviceClient::Watch(const ActedFunction &acted, std::string *problem) {
    Watching watching{acted};
    sd_bus_match_signal(fBus.get(), nullptr, fName.c_str(), kDeviceObject, kDeviceInterface, "Acted",
                        TakeActed, &watching);
    const std::string gone = "type='signal',sender='" + std::string(kBusName) + "',path='" + kBusObject +
                             "',member='NameOwnerChanged',arg0='" + fName + "'";
    sd_bus_add_match(fBus.get(), nullptr, gone.c_str(), TakeEnd, &watching);
    const BusMessage call = NewCall("Watch");
    if (call) {
        sd_bus_message_append(call.get(), "b", 0);
    }
    if (!Call(call, problem)) {
        return false;
    }
    while (!watching.hasEnded) {
        const int result = sd_bus_process(fBus.get(), nullptr);
        if (result < 0 || (result == 0 && sd_bus_wait(fBus.get(), UINT64_MAX) < 0 && errno != EINTR)) {
            return true; // the bus has ended, and the helper with it
        }
    }
    return true;
}

} // namespace drevix
