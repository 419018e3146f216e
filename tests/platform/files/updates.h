// Updates of files as every caller makes them.
#pragma once

#include "platform/files/file_update.h"

#include <string>

namespace drevix::test {

inline OSErr Put(const FileUpdate &update, std::string text) {
    IOParam transfer = {update.File(), text.data(), static_cast<std::int32_t>(text.size()), 0, fsAtMark, 0};
    return PBWriteSync(&transfer);
}

// Opens, writes and commits.
inline OSErr UpdateFile(const std::string &path, UpdateMethod method, const std::string &text) {
    FileUpdate update;
    OSErr status = update.Open(path, method);
    status = status == noErr ? Put(update, text) : status;
    return status == noErr ? update.Commit() : status;
}

} // namespace drevix::test
