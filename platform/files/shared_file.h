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

// Writes the bytes into the file itself, so that its links, owner and mode stay, or creates it. First keeps
// the old bytes in the user's state folder ("platform/files/kept_bytes.h"), so that the next program can
// repair what a death or a power cut interrupted. noErr; fBsyErr while another of our programs writes a file
// like this for longer than a second; or the file's error. After a failure the old bytes are back, or
// FindKeptCopy says where they are; without room for the copy nothing is touched. A file that already holds
// these bytes is rewritten with them and never holds anything else. With `old`, a copy of other bytes that
// were replaced stays for a month; *old gets its path, or is empty.
[[nodiscard]] OSErr WriteSharedFile(const std::string &path, std::string_view bytes,
                                    std::string *old = nullptr);

} // namespace drevix
