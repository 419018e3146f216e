// Where the files lie that come with the programs.
#pragma once

#include "platform/files/files.h"

namespace drevix {

// The resource folder: "share/drevix-settings" beside the folder that the running program is in, in an
// installed tree and in a build tree alike. fnfErr, with *folder unchanged, when it is not there.
[[nodiscard]] OSErr FindResourceFolder(FSRef *folder);

} // namespace drevix
