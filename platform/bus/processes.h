// The programs of the user's session that can be sent events, found on the session bus by the names they own.
// A search asks the bus at most, never a process. Main thread only. docs/driver-messages.md has the names.
#pragma once

#include "platform/base/types.h"

#include <chrono>
#include <functional>
#include <span>
#include <string_view>

namespace drevix {

// A process by its number: {0, process id}. {0, kNoProcess} stands before the first one.
struct ProcessSerialNumber {
    std::uint32_t high;
    std::uint32_t low;
    bool operator==(const ProcessSerialNumber &) const = default;
};
inline constexpr std::uint32_t kNoProcess = 0;

// What is known of a process. The caller sets both fields.
struct ProcessInfoRec {
    std::uint32_t processInfoLength; // kProcessInfoLength
    StringPtr processName;           // room for a Str255, or null
};
inline constexpr std::uint32_t kProcessInfoLength = 68;

// Steps *psn to the next running process, in ascending order of process ids. procNotFound, with *psn
// unchanged, after the last one and when there is no session bus. The list is kept current by the bus, so this
// costs next to nothing. Only the first call after connecting waits for the list: up to 250 ms before the
// program's event loop runs, up to 25 ms within it; without a list by then, it is empty until it comes. A bus
// that was lost is looked for again, once a second at most.
[[nodiscard]] OSErr GetNextProcess(ProcessSerialNumber *psn);

// The process's name, in Mac OS Roman with '?' for what that lacks. procNotFound for a process that does not
// run (any more), paramErr for a record of another length.
[[nodiscard]] OSErr GetProcessInformation(const ProcessSerialNumber &psn, ProcessInfoRec *info);

// Called once this process can be found: with null, or with the process of the same name, letter case ignored,
// that could be found before it. Of two that register at the same time exactly one gets null.
using RegisteredFunction = std::function<void(const ProcessSerialNumber *earlier)>;

// Makes this process known under a name (UTF-8), so that events reach its handlers, and keeps it known: when
// the bus is lost and comes back, it registers again, and calls again. noErr, or procNotFound when there is no
// session bus now; it is looked for once a second from then on in either case.
OSErr RegisterProcess(std::string_view name, RegisteredFunction registered);

// For a program without an event loop of the application kit: waits up to `timeout` for something to happen,
// and hands what came to its handlers. Returns early once something was handed over or one of `descriptors` can
// be read. With an application object its loop does all this, and this is not needed.
void WaitForAppleEvents(std::chrono::milliseconds timeout, std::span<const int> descriptors = {});

// Whether this process is on the session bus, as far as it has noticed.
[[nodiscard]] bool HasSessionBus();

// Leaves the session bus and forgets the name of this process and whom it asked; the next use connects anew.
void LeaveSessionBus();

} // namespace drevix
