#include "platform/bus/name_owner.h"

#include "platform/bus/bus_callback.h"

#include <utility>

namespace drevix {

NameOwner::NameOwner(std::string name, std::function<void()> changed)
    : fName(std::move(name)), fChanged(std::move(changed)) {}

void NameOwner::Open(sd_bus *bus) {
    const std::string match =
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + fName + "'";
    sd_bus_slot *slot = nullptr;
    if (sd_bus_add_match_async(bus, &slot, match.c_str(), BusCallback<&NameOwner::TakeChange>, nullptr,
                               this) >= 0) {
        fChanges.reset(slot);
    }
    const BusMessage call = SessionBus::NewCallToBus(bus, "GetNameOwner", fName);
    slot = nullptr;
    if (call &&
        sd_bus_call_async(bus, &slot, call.get(), BusCallback<&NameOwner::TakeAnswer>, this, 0) >= 0) {
        fQuestion.reset(slot);
    }
}

void NameOwner::Close() {
    fChanges.reset();
    fQuestion.reset();
    fOwner.clear();
}

int NameOwner::TakeAnswer(sd_bus_message *answer) {
    const char *owner = nullptr;
    if (sd_bus_message_is_method_error(answer, nullptr) == 0 &&
        sd_bus_message_read(answer, "s", &owner) > 0) {
        Set(owner);
    }
    return 0;
}

int NameOwner::TakeChange(sd_bus_message *signal) {
    const char *owner = nullptr;
    if (sd_bus_message_read(signal, "sss", nullptr, nullptr, &owner) > 0) {
        Set(owner);
    }
    return 0;
}

void NameOwner::Set(const char *owner) {
    if (fOwner != owner) {
        fOwner = owner;
        fChanged();
    }
}

} // namespace drevix
