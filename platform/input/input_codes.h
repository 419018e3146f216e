// The kernel's names for input events (linux/input-event-codes.h), used in device maps and listings.
#pragma once

#include <cstdint>
#include <string_view>

namespace drevix {

// Event types: the kernel's EV_ numbers.
inline constexpr std::uint16_t kSyncEvents = 0;
inline constexpr std::uint16_t kKeyEvents = 1;  // keys and buttons: 1 down, 0 up, 2 repeated by the kernel
inline constexpr std::uint16_t kDialEvents = 2; // relative axes: movement
inline constexpr std::uint16_t kAxisEvents = 3; // absolute axes: position

// Codes of sync events.
inline constexpr std::uint16_t kSyncReport = 0;  // what came since the last report happened together
inline constexpr std::uint16_t kSyncDropped = 3; // events were lost

struct EventCode {
    std::uint16_t type;
    std::uint16_t code;
    friend bool operator==(const EventCode &, const EventCode &) = default;
};

// Looks up a name such as "ABS_X", "REL_DIAL", "KEY_F13" or "BTN_0" (case-sensitive). False, with *event
// unchanged, for an unknown name.
[[nodiscard]] bool FindEventCode(std::string_view name, EventCode *event);

// The name of an event, in static storage; empty if it has none. If there are several, the first in the
// kernel's list.
[[nodiscard]] std::string_view EventCodeName(EventCode event);

} // namespace drevix
