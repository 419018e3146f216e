// Files of other programs, which may be reading or writing them right now.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace drevix {

// Reads a regular file of at most `most` bytes. noErr; -1 if it is longer or not a regular file (does not
// block on a pipe); fBsyErr if it grew meanwhile; memFullErr; or the file's error.
[[nodiscard]] OSErr ReadSharedFile(const std::string &path, std::size_t most, std::string *bytes);

// Writes the bytes to the file itself, so that its links, owner and mode stay, or makes it. Before the first byte its
// old ones are kept in the user's state folder ("platform/files/kept_bytes.h"), so what is not done to the end, by a
// death or a power cut, is put right by the next program. noErr; fBsyErr while another program of ours writes a file so
// for longer than a second; or the file's error. After a failure the old bytes are back, or FindKeptCopy says where
// they are; without room for that copy nothing is touched. A file that holds these very bytes is written over them, and
// at no moment holds anything else.
// With `old`, a copy of other bytes that were replaced stays for a month; *old gets its path, or is empty.
[[nodiscard]] OSErr WriteSharedFile(const std::string &path, std::string_view bytes,
                                    std::string *old = nullptr);

} // namespace drevix
