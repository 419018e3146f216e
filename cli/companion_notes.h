// Messages about the companion dial's hotkey files.
#pragma once

#include "cli/outcome.h"
#include "companion/korvane_sync.h"

#include <ostream>
#include <string>

namespace drevix {

// Writes a line to `err` for each file that was read only in part or not at all.
void NoteKorvaneReading(const KorvaneResults &results, std::ostream &err);

// Writes a line to `err` for each file in which a write replaced what another program had changed.
void NoteKorvaneReplacing(const KorvaneResults &results, std::ostream &err);

// Done, or Failed for the first file that does not match the saved settings.
Outcome OutcomeOfKorvaneWriting(const KorvaneResults &results);

// "; what FILE held is kept as COPY" for each file of the companion that a write left incomplete, or empty.
[[nodiscard]] std::string KeptHotKeys();

} // namespace drevix
