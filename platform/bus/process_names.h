// The bus names under which processes can be found: com.halcyra.drevix.Process.LABEL.pPID.
#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace drevix {

// What all of them begin with, and the object, interface and method by which they take events.
inline constexpr const char *kProcessNamespace = "com.halcyra.drevix.Process";
inline constexpr const char *kProcessObject = "/com/halcyra/drevix/Process";
inline constexpr const char *kProcessInterface = "com.halcyra.drevix.Process1";
inline constexpr const char *kHandleEventMethod = "HandleEvent";

// A process as its bus name tells of it.
struct NamedProcess {
    std::uint32_t id;
    std::string name; // UTF-8, as whoever took the bus name meant it
};

// The bus name. The process name (UTF-8) must not be empty, and short enough for a bus name of 255 bytes.
[[nodiscard]] std::string BusNameOfProcess(const NamedProcess &process);
// Reads a bus name. False, with *process unchanged, for one that BusNameOfProcess does not make: no two bus names
// stand for the same process.
[[nodiscard]] bool ParseBusName(std::string_view busName, NamedProcess *process);

// A process name as a Pascal string, with '?' for what Mac OS Roman lacks.
[[nodiscard]] Str255 PascalProcessName(std::string_view name);

} // namespace drevix
