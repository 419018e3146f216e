#include "platform/bus/processes.h"

#include "platform/base/status.h"
#include "platform/bus/event_server.h"
#include "platform/bus/process_list.h"

#include <new>
#include <utility>

namespace drevix {

OSErr GetNextProcess(ProcessSerialNumber *psn) try {
    ProcessList &list = ProcessList::Instance();
    // A walk through the list sees a single state.
    if (psn->low == kNoProcess) {
        list.BringUpToDate();
    }
    const NamedProcess *next = list.After(psn->low);
    if (next == nullptr) {
        return procNotFound;
    }
    *psn = {0, next->id};
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr GetProcessInformation(const ProcessSerialNumber &psn, ProcessInfoRec *info) try {
    if (info->processInfoLength != kProcessInfoLength) {
        return paramErr;
    }
    const NamedProcess *process = ProcessList::Instance().Find(psn.low);
    if (psn.high != 0 || process == nullptr) {
        return procNotFound;
    }
    if (info->processName != nullptr) {
        const Str255 name = PascalProcessName(process->name);
        std::copy_n(name.begin(), 1 + name[0], info->processName);
    }
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr RegisterProcess(std::string_view name, RegisteredFunction registered) try {
    return EventServer::Instance().Register(name, std::move(registered));
} catch (const std::bad_alloc &) {
    return memFullErr;
}

void WaitForAppleEvents(std::chrono::milliseconds timeout, std::span<const int> descriptors) try {
    SessionBus::Instance().RunOnce(timeout, descriptors);
} catch (const std::bad_alloc &) {
    // The current message is lost, as if it had never arrived.
    return;
}

bool HasSessionBus() {
    return SessionBus::Instance().IsConnected();
}

void LeaveSessionBus() {
    EventServer::Instance().Forget();
    SessionBus::Instance().Leave();
}

} // namespace drevix
