// Finds the files that come with the programs.
#pragma once

#include "platform/files/files.h"

namespace drevix {

// The resource folder: "share/drevix-settings" beside the running program's folder, in an installed tree and
// a build tree alike. noErr, or fnfErr with *folder unchanged if it is missing.
[[nodiscard]] OSErr FindResourceFolder(FSRef *folder);

} // namespace drevix
