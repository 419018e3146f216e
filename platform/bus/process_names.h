// The bus names under which processes can be found: com.halcyra.drevix.Process.LABEL.pPID.
#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace drevix {

// Their common prefix, and the object, interface and method that receive events.
inline constexpr const char *kProcessNamespace = "com.halcyra.drevix.Process";
inline constexpr const char *kProcessObject = "/com/halcyra/drevix/Process";
inline constexpr const char *kProcessInterface = "com.halcyra.drevix.Process1";
inline constexpr const char *kHandleEventMethod = "HandleEvent";

// A process as its bus name describes it.
struct NamedProcess {
    std::uint32_t id;
    std::string name; // UTF-8, as intended by the name's owner
};

// The bus name. The process name (UTF-8) must not be empty and must fit into a bus name of 255 bytes.
[[nodiscard]] std::string BusNameOfProcess(const NamedProcess &process);
// Parses a bus name. False, with *process unchanged, for one that BusNameOfProcess would not make, so that no
// two bus names mean the same process.
[[nodiscard]] bool ParseBusName(std::string_view busName, NamedProcess *process);

// A process name as a Pascal string, with '?' for characters that Mac OS Roman lacks.
[[nodiscard]] Str255 PascalProcessName(std::string_view name);

} // namespace drevix
