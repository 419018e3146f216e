#include "platform/bus/event_server.h"

#include "platform/base/status.h"
#include "platform/bus/bus_callback.h"
#include "platform/bus/event_bytes.h"
#include "platform/bus/process_list.h"

#include <memory>
#include <optional>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

constexpr const char *kProcessDescription = R"(<node><interface name="com.halcyra.drevix.Process1">
<method name="HandleEvent"><arg name="class" type="u" direction="in"/><arg name="id" type="u" direction="in"/>
<arg name="direct" type="ay" direction="in"/><arg name="type" type="u" direction="out"/>
<arg name="direct" type="ay" direction="out"/></method></interface></node>)";
constexpr const char *kNotHandled = "com.halcyra.drevix.Error.NotHandled";

void Reply(sd_bus_message *call, const AppleEvent &answer) {
    sd_bus_message *created = nullptr;
    if (sd_bus_message_new_method_return(call, &created) < 0) {
        return;
    }
    const BusMessage message(created);
    const AEDesc &direct = answer.directObject;
    if (sd_bus_message_append(created, "u", direct.descriptorType) >= 0 &&
        sd_bus_message_append_array(created, 'y', direct.data.data(), direct.data.size()) >= 0) {
        sd_bus_send(nullptr, created, nullptr);
    }
}

void Handle(sd_bus_message *call, const AppleEvent &event) {
    AppleEvent answer;
    const OSErr status = AEProcessEvent(event, &answer);
    if (sd_bus_message_get_expect_reply(call) <= 0) {
        return;
    }
    if (status == noErr) {
        Reply(call, answer);
    } else {
        sd_bus_reply_method_errorf(call, kNotHandled, "status %d", status);
    }
}

} // namespace

EventServer &EventServer::Instance() {
    static auto &instance = *new EventServer;
    return instance;
}

EventServer::EventServer() {
    // Request the process list before taking the name.
    ProcessList::Instance();
    SessionBus::Instance().AddClient(this);
}

OSErr EventServer::Register(std::string_view name, RegisteredFunction registered) {
    SessionBus &bus = SessionBus::Instance();
    fSelf = {static_cast<std::uint32_t>(::getpid()), std::string(name)};
    fRegistered = std::move(registered);
    bus.KeepConnected();
    const bool wasConnected = bus.IsConnected();
    sd_bus *connection = bus.Connection();
    if (wasConnected) {
        BusOpened(connection);
    }
    return connection != nullptr ? noErr : procNotFound;
}

void EventServer::BusOpened(sd_bus *bus) {
    if (!fRegistered) {
        return;
    }
    sd_bus_add_object(bus, nullptr, kProcessObject, BusCallback<&EventServer::TakeMessage>, this);
    sd_bus_request_name_async(bus, nullptr, BusNameOfProcess(fSelf).c_str(), 0,
                              BusCallback<&EventServer::TakeRegistered>, this);
}

int EventServer::TakeRegistered(sd_bus_message *message) {
    if (sd_bus_message_is_method_error(message, nullptr) != 0) {
        return 0;
    }
    // The bus reports in order: exactly those in the list now were there before this process.
    const NamedProcess *namesake = ProcessList::Instance().Namesake(fSelf);
    const auto earlier =
        namesake != nullptr ? std::optional(ProcessSerialNumber{0, namesake->id}) : std::nullopt;
    SessionBus::Instance().Post([this, earlier] { fRegistered(earlier ? &*earlier : nullptr); });
    return 0;
}

int EventServer::TakeMessage(sd_bus_message *message) {
    if (sd_bus_message_is_method_call(message, kIntrospectable, "Introspect") > 0) {
        return sd_bus_reply_method_return(message, "s", kProcessDescription);
    }
    // The library rejects anything not accepted here.
    const bool isEvent = sd_bus_message_is_method_call(message, kProcessInterface, kHandleEventMethod) > 0 &&
                         sd_bus_message_has_signature(message, "uuay") > 0;
    return isEvent ? TakeEvent(message) : 0;
}

int EventServer::TakeEvent(sd_bus_message *message) {
    AppleEvent event;
    if (sd_bus_message_read(message, "uu", &event.eventClass, &event.eventID) <= 0 ||
        !ReadEventBytes(message, &event.directObject.data)) {
        return 0;
    }
    if (event.eventClass == kCoreEventClass && event.eventID == kAnswerEvent) {
        // Accept answers only from processes that were asked.
        return sd_bus_reply_method_errorf(message, kNotHandled, "nothing was asked");
    }
    if (!event.directObject.data.empty()) {
        event.directObject.descriptorType = typeWildCard;
    }
    const std::shared_ptr<sd_bus_message> call(sd_bus_message_ref(message), BusRelease());
    SessionBus::Instance().Post([call, event = std::move(event)] { Handle(call.get(), event); });
    return 1;
}

} // namespace drevix
