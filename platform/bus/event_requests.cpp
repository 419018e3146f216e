#include "platform/bus/event_requests.h"

#include "platform/base/status.h"
#include "platform/bus/bus_callback.h"
#include "platform/bus/event_bytes.h"
#include "platform/bus/process_list.h"

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t kForEver = UINT64_MAX;

OSErr StatusFromBus(int result) {
    if (result >= 0) {
        return noErr;
    }
    return result == -ENOTCONN || result == -ECONNRESET ? procNotFound : StatusFromErrno(-result);
}

BusMessage NewMessage(sd_bus *bus, const std::string &busName, const AppleEvent &event) {
    BusMessage message =
        SessionBus::NewCall(bus, busName, kProcessObject, kProcessInterface, kHandleEventMethod);
    const std::vector<std::uint8_t> &bytes = event.directObject.data;
    if (!message || sd_bus_message_append(message.get(), "uu", event.eventClass, event.eventID) < 0 ||
        sd_bus_message_append_array(message.get(), 'y', bytes.data(), bytes.size()) < 0) {
        return nullptr;
    }
    return message;
}

// There may be no handler for answers.
void HandleAnswer(const AppleEvent &answer) {
    AppleEvent unused;
    std::ignore = AEProcessEvent(answer, &unused);
}

} // namespace

EventRequests &EventRequests::Instance() {
    static auto &instance = *new EventRequests;
    return instance;
}

EventRequests::EventRequests() {
    SessionBus::Instance().AddClient(this);
}

OSErr EventRequests::Send(const AppleEvent &event, AESendMode mode) {
    const ProcessList::Process *process = ProcessList::Instance().Connection(event.address.low);
    if (fBus == nullptr || event.address.high != 0 || process == nullptr) {
        return procNotFound;
    }
    const BusMessage message = NewMessage(fBus, process->busName, event);
    if (!message) {
        return memFullErr;
    }
    OSErr status = noErr;
    if (mode == kAEQueueReply) {
        status = Ask(event, message.get());
    } else {
        sd_bus_message_set_expect_reply(message.get(), 0);
        status = StatusFromBus(sd_bus_send(fBus, message.get(), nullptr));
    }
    // The event loop sends what could not be written at once.
    SessionBus::Instance().TakeMessages();
    return status;
}

OSErr EventRequests::Ask(const AppleEvent &event, sd_bus_message *message) {
    std::erase_if(fAsked, [](const auto &question) {
        return ProcessList::Instance().Find(std::get<0>(question.first)) == nullptr;
    });
    Question &question = fAsked[{event.address.low, event.eventClass, event.eventID}];
    const Clock::time_point now = Clock::now();
    const bool isSilent = question.slot != nullptr;
    if (isSilent && now - question.since < question.patience) {
        return noErr;
    }
    question.slot.reset();
    sd_bus_slot *slot = nullptr;
    const int result =
        sd_bus_call_async(fBus, &slot, message, BusCallback<&Question::TakeAnswer>, &question, kForEver);
    if (result < 0) {
        return StatusFromBus(result);
    }
    question.slot.reset(slot);
    question.asked = event.address;
    question.owner = ProcessList::Instance().Connection(event.address.low)->owner;
    question.since = now;
    question.patience =
        isSilent ? std::min(2 * question.patience, gBusTimes.longestSilence) : gBusTimes.firstSilence;
    return noErr;
}

bool EventRequests::Question::IsFrom(const char *sender) const {
    if (!owner.empty()) {
        return sender != nullptr && owner == sender;
    }
    // The bus had not yet reported the name's owner. It has by now, because it answers in order.
    const ProcessList::Process *process = ProcessList::Instance().Connection(asked.low);
    return sender != nullptr && process != nullptr && process->owner == sender;
}

int EventRequests::Question::TakeAnswer(sd_bus_message *message) {
    // An error is not an answer, but nothing is pending now; likewise an answer in another format.
    slot.reset();
    AppleEvent answer{kCoreEventClass, kAnswerEvent, asked, {}};
    if (sd_bus_message_is_method_error(message, nullptr) != 0 ||
        !IsFrom(sd_bus_message_get_sender(message)) || sd_bus_message_has_signature(message, "uay") <= 0 ||
        sd_bus_message_read(message, "u", &answer.directObject.descriptorType) <= 0 ||
        !ReadEventBytes(message, &answer.directObject.data)) {
        return 0;
    }
    SessionBus::Instance().Post([answer = std::move(answer)] { HandleAnswer(answer); });
    return 0;
}

} // namespace drevix
