// Files that belong to other programs, which may read or write them at this very moment.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace drevix {

// The bytes of a regular file of at most `most`. noErr; -1 for a longer file or one that is none (a pipe is not
// waited for); fBsyErr when it grew meanwhile; memFullErr; or the file's error.
[[nodiscard]] OSErr ReadSharedFile(const std::string &path, std::size_t most, std::string *bytes);

// Writes the bytes to the file itself, so that its links, owner and mode stay, or makes it. Killed at any point,
// or cut off from power, the file holds the old bytes or the new ones whole, with others before or behind them
// until all is done. noErr, or the file's error; after a failure its old bytes and length are back. A file that
// holds these very bytes is written over them, and at no moment holds anything else.
[[nodiscard]] OSErr WriteSharedFile(const std::string &path, std::string_view bytes);

} // namespace drevix
