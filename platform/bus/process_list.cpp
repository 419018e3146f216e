#include "platform/bus/process_list.h"

#include "platform/base/equal_string.h"
#include "platform/bus/bus_callback.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

constexpr const char *kNameChanges =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0namespace='com.halcyra.drevix.Process'";

bool AreNamesakes(const std::string &a, const std::string &b) {
    return EqualString(PascalProcessName(a).data(), PascalProcessName(b).data(), LetterCase::Ignored);
}

} // namespace

ProcessList &ProcessList::Instance() {
    static auto &instance = *new ProcessList;
    return instance;
}

ProcessList::ProcessList() {
    SessionBus::Instance().AddClient(this);
}

void ProcessList::BringUpToDate() {
    SessionBus &bus = SessionBus::Instance();
    // Twice: a dead connection is noticed only on reading, and there may already be a new bus.
    for (int attempt = 0; attempt < 2 && bus.Connection() != nullptr; ++attempt) {
        if (fIsKnown || fHasWaited) {
            bus.TakeMessages();
        } else {
            fHasWaited = true;
            bus.WaitUntil(LoopWatch::IsInLoop() ? gBusTimes.firstListInLoop : gBusTimes.firstListOutside,
                          [this] { return fIsKnown; });
        }
        if (bus.IsConnected()) {
            return;
        }
    }
}

const NamedProcess *ProcessList::After(std::uint32_t id) const {
    const auto found =
        std::ranges::find_if(fEntries, [id](const auto &entry) { return entry.first.first > id; });
    return found == fEntries.end() ? nullptr : &found->second.named;
}

const ProcessList::Entry *ProcessList::EntryOf(std::uint32_t id) const {
    const auto found = fEntries.lower_bound({id, {}});
    return found == fEntries.end() || found->first.first != id ? nullptr : &found->second;
}

const NamedProcess *ProcessList::Find(std::uint32_t id) const {
    const Entry *entry = EntryOf(id);
    return entry == nullptr ? nullptr : &entry->named;
}

const ProcessList::Process *ProcessList::Connection(std::uint32_t id) const {
    const Entry *entry = EntryOf(id);
    return entry == nullptr ? nullptr : &entry->process;
}

const NamedProcess *ProcessList::Namesake(const NamedProcess &own) const {
    const auto found = std::ranges::find_if(fEntries, [&own](const auto &entry) {
        const NamedProcess &other = entry.second.named;
        return other.id != own.id && AreNamesakes(other.name, own.name);
    });
    return found == fEntries.end() ? nullptr : &found->second.named;
}

void ProcessList::BusOpened(sd_bus *bus) {
    fBus = bus;
    fHasWaited = false;
    // The bus answers in order, so no change is lost between the list and the reports. Slots that are not
    // requested live as long as the connection. If the call fails the list stays empty, as without a bus.
    sd_bus_add_match_async(bus, nullptr, kNameChanges, BusCallback<&ProcessList::TakeOwnerChange>, nullptr,
                           this);
    if (const BusMessage call = SessionBus::NewCallToBus(bus, "ListNames")) {
        sd_bus_call_async(bus, nullptr, call.get(), BusCallback<&ProcessList::TakeNames>, this, 0);
    }
}

void ProcessList::BusLost() {
    fBus = nullptr;
    fIsKnown = false;
    fEntries.clear();
}

int ProcessList::TakeNames(sd_bus_message *message) {
    if (sd_bus_message_is_method_error(message, nullptr) != 0 ||
        sd_bus_message_enter_container(message, 'a', "s") < 0) {
        return 0;
    }
    const char *name = nullptr;
    while (sd_bus_message_read(message, "s", &name) > 0) {
        NamedProcess process;
        if (ParseBusName(name, &process)) {
            SetOwner(name, {});
            AskForOwner(name);
        }
    }
    fIsKnown = true;
    return 0;
}

int ProcessList::TakeOwnerChange(sd_bus_message *message) {
    const char *name = nullptr;
    const char *before = nullptr;
    const char *after = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &after) <= 0) {
        return 0;
    }
    NamedProcess process;
    if (*after != '\0') {
        SetOwner(name, after);
    } else if (ParseBusName(name, &process)) {
        fEntries.erase({process.id, name});
    }
    return 0;
}

void ProcessList::SetOwner(const std::string &busName, const std::string &owner) {
    NamedProcess named;
    if (ParseBusName(busName, &named)) {
        const std::pair key{named.id, busName};
        fEntries[key] = {std::move(named), {busName, owner}};
    }
}

// Asks which connection owns a name, for each name in the first list. The answer does not repeat the name, so
// the question keeps it.
struct ProcessList::OwnerQuestion {
    ProcessList *list;
    std::string busName;

    int TakeOwner(sd_bus_message *message) const {
        const char *owner = nullptr;
        if (sd_bus_message_is_method_error(message, nullptr) == 0 &&
            sd_bus_message_read(message, "s", &owner) > 0) {
            list->SetOwner(busName, owner);
        }
        return 0;
    }
    static void Forget(void *question) { delete static_cast<OwnerQuestion *>(question); }
};

void ProcessList::AskForOwner(const std::string &busName) {
    auto question = std::make_unique<OwnerQuestion>(OwnerQuestion{this, busName});
    const BusMessage call = SessionBus::NewCallToBus(fBus, "GetNameOwner", busName);
    sd_bus_slot *slot = nullptr;
    if (call && sd_bus_call_async(fBus, &slot, call.get(), BusCallback<&OwnerQuestion::TakeOwner>,
                                  question.get(), 0) >= 0) {
        sd_bus_slot_set_destroy_callback(slot, OwnerQuestion::Forget);
        // A floating slot is owned by the connection; this drops our reference.
        sd_bus_slot_set_floating(slot, 1);
        sd_bus_slot_unref(slot);
        std::ignore = question.release(); // the slot frees it
    }
}

} // namespace drevix
