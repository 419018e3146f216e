// The programs of the user's session that accept events, found by the names they own on the session bus. A
// search may query the bus, never a process. Main thread only. docs/driver-messages.md has the names.
#pragma once

#include "platform/base/types.h"

#include <chrono>
#include <functional>
#include <span>
#include <string_view>

namespace drevix {

// A process by its number: {0, process id}. {0, kNoProcess} is before the first one.
struct ProcessSerialNumber {
    std::uint32_t high;
    std::uint32_t low;
    bool operator==(const ProcessSerialNumber &) const = default;
};
inline constexpr std::uint32_t kNoProcess = 0;

// Information about a process. The caller sets both fields.
struct ProcessInfoRec {
    std::uint32_t processInfoLength; // kProcessInfoLength
    StringPtr processName;           // room for a Str255, or null
};
inline constexpr std::uint32_t kProcessInfoLength = 68;

// Steps *psn to the next running process, in ascending order of process ids. procNotFound, with *psn
// unchanged, after the last one and without a session bus. The bus keeps the list current, so this costs
// almost nothing. Only the first call after connecting waits for the list: up to 250 ms before the program's
// event loop runs, up to 25 ms within it; after that it is empty until it arrives. A lost bus is tried again
// at most once a second.
[[nodiscard]] OSErr GetNextProcess(ProcessSerialNumber *psn);

// The process's name in Mac OS Roman, with '?' for unsupported characters. procNotFound if the process is not
// running, paramErr for a record of another length.
[[nodiscard]] OSErr GetProcessInformation(const ProcessSerialNumber &psn, ProcessInfoRec *info);

// Called once this process can be found: with null, or with an earlier process of the same name (ignoring
// letter case). If two register at the same time, exactly one gets null.
using RegisteredFunction = std::function<void(const ProcessSerialNumber *earlier)>;

// Registers this process under a name (UTF-8), so that events reach its handlers. If the bus is lost and
// comes back, registers and calls again. noErr, or procNotFound if there is no session bus now; either way it
// keeps trying once a second.
OSErr RegisterProcess(std::string_view name, RegisteredFunction registered);

// For programs without an event loop: waits up to `timeout` for events and dispatches them to their handlers.
// Returns early once something was dispatched or one of `descriptors` is readable. Not needed if an event
// loop runs.
void WaitForAppleEvents(std::chrono::milliseconds timeout, std::span<const int> descriptors = {});

// Whether this process is connected to the session bus, as far as it knows.
[[nodiscard]] bool HasSessionBus();

// Leaves the session bus and forgets this process's name and its pending requests; the next use reconnects.
void LeaveSessionBus();

} // namespace drevix
