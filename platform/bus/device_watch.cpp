#include "platform/bus/device_watch.h"

#include "platform/base/ascii.h"
#include "platform/bus/bus_callback.h"
#include "platform/bus/device_bus.h"
#include "platform/bus/process_list.h"

#include <utility>

namespace drevix {
namespace {

// If two processes have the name, the first one gets the messages. Empty while none is known.
std::string OwnerOfProcess(const std::string &name) {
    ProcessList &list = ProcessList::Instance();
    list.BringUpToDate();
    std::uint32_t id = kNoProcess;
    while (const NamedProcess *process = list.After(id)) {
        id = process->id;
        if (WithSmallLetters(process->name) == WithSmallLetters(name)) {
            return list.Connection(id)->owner;
        }
    }
    return {};
}

} // namespace

DeviceWatch::DeviceWatch(std::string processName, DeviceWatchTasks tasks)
    : fProcessName(std::move(processName)), fTasks(std::move(tasks)) {
    SessionBus::Instance().AddClient(this);
}

DeviceWatch::~DeviceWatch() {
    SessionBus::Instance().RemoveClient(this);
}

void DeviceWatch::Want(Part part) {
    fWanted = part;
    Ask();
}

void DeviceWatch::Look() {
    SetHelper(OwnerOfProcess(fProcessName));
    Ask();
}

void DeviceWatch::BusOpened(sd_bus *bus) {
    fBus = bus;
    const auto match = [&](const char *member, sd_bus_message_handler_t take) {
        sd_bus_slot *slot = nullptr;
        sd_bus_match_signal_async(bus, &slot, nullptr, kDeviceObject, kDeviceInterface, member, take, nullptr,
                                  this);
        return BusSlot(slot); // null without memory: the picture stays dark
    };
    fPressed = match("Pressed", BusCallback<&DeviceWatch::TakePressed>);
    fActed = match("Acted", BusCallback<&DeviceWatch::TakeActed>);
}

void DeviceWatch::BusLost() {
    fPressed.reset();
    fActed.reset();
    SetHelper({});
    fBus = nullptr;
}

void DeviceWatch::SetHelper(const std::string &owner) {
    if (owner == fHelper) {
        return;
    }
    const bool wasThere = !fHelper.empty();
    fHelper = owner;
    fAsked.reset();
    fTaken = Part::None;
    if (wasThere) {
        fTasks.lost();
    }
}

// At most one query is pending, however long a helper hangs.
void DeviceWatch::Ask() {
    if (fHelper.empty() || fAsked || fWanted == fTaken) {
        return;
    }
    const bool isWatching = fWanted != Part::None;
    const BusMessage call =
        SessionBus::NewCall(fBus, fHelper, kDeviceObject, kDeviceInterface, isWatching ? "Watch" : "Unwatch");
    sd_bus_slot *slot = nullptr;
    if (call &&
        (!isWatching || sd_bus_message_append(call.get(), "b", fWanted == Part::Quiet ? 1 : 0) >= 0) &&
        sd_bus_call_async(fBus, &slot, call.get(), BusCallback<&DeviceWatch::TakeReply>, this, 0) >= 0) {
        fAsked.reset(slot);
        fAsking = fWanted;
    }
    // The event loop sends what could not be written at once.
    SessionBus::Instance().Post([] {});
}

int DeviceWatch::TakeReply(sd_bus_message *message) {
    fAsked.reset();
    if (sd_bus_message_is_method_error(message, nullptr) == 0) {
        fTaken = fAsking;
        Ask(); // the panel may have come to the front meanwhile
    } else {
        fTaken = Part::None; // asked again at the next look
    }
    return 0;
}

// Every program of the session can send signals.
bool DeviceWatch::IsFromHelper(sd_bus_message *message) const {
    const char *sender = sd_bus_message_get_sender(message);
    return sender != nullptr && !fHelper.empty() && sender == fHelper;
}

int DeviceWatch::TakePressed(sd_bus_message *message) {
    const char *control = nullptr;
    int isDown = 0;
    if (IsFromHelper(message) && sd_bus_message_read(message, "sb", &control, &isDown) > 0) {
        fTasks.pressed(control, isDown != 0);
    }
    return 0;
}

int DeviceWatch::TakeActed(sd_bus_message *message) {
    const char *control = nullptr;
    const char *what = nullptr;
    std::uint32_t times = 0;
    if (IsFromHelper(message) && sd_bus_message_read(message, "ssu", &control, &what, &times) > 0) {
        fTasks.acted(control, what, times);
    }
    return 0;
}

} // namespace drevix
