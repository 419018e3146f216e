// The kernel's names of the events that input devices send (linux/input-event-codes.h), as maps of devices and
// listings have them.
#pragma once

#include <cstdint>
#include <string_view>

namespace drevix {

// Types of events, the kernel's EV_ numbers.
inline constexpr std::uint16_t kSyncEvents = 0;
inline constexpr std::uint16_t kKeyEvents = 1;  // keys and buttons: 1 down, 0 up, 2 repeated by the kernel
inline constexpr std::uint16_t kDialEvents = 2; // relative axes: how far it has moved
inline constexpr std::uint16_t kAxisEvents = 3; // absolute axes: where it stands

// Codes of sync events.
inline constexpr std::uint16_t kSyncReport = 0;  // what has come since the last one happened together
inline constexpr std::uint16_t kSyncDropped = 3; // events were lost

struct EventCode {
    std::uint16_t type;
    std::uint16_t code;
    friend bool operator==(const EventCode &, const EventCode &) = default;
};

// The event of a name such as "ABS_X", "REL_DIAL", "KEY_F13" or "BTN_0", in this spelling. False, with *event
// unchanged, for a name that the kernel does not give.
[[nodiscard]] bool FindEventCode(std::string_view name, EventCode *event);

// The name of an event, static storage; empty for one that has none. Of several names the one that stands first in
// the kernel's own list.
[[nodiscard]] std::string_view EventCodeName(EventCode event);

} // namespace drevix
