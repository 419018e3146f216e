// Files that are made under a name of their own, to be renamed or removed before the work is done.
#pragma once

#include "platform/files/owners.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace drevix {

// Makes an empty file PREFIX followed by 16 random hexadecimal digits and SUFFIX in a folder. Nobody can foresee the
// name, and nothing that stands there already is opened. noErr, or the file's error. *path and *file are set only on
// success. May throw std::bad_alloc.
[[nodiscard]] OSErr MakeTemporaryFile(std::string_view folder, std::string_view prefix,
                                      std::string_view suffix, mode_t mode, std::string *path,
                                      DiskDescriptor *file);

// As MakeTemporaryFile, and locked until its descriptor is closed, so that ClearTemporaryFiles leaves it alone.
[[nodiscard]] OSErr MakeLockedTemporaryFile(std::string_view folder, std::string_view prefix,
                                            std::string_view suffix, mode_t mode, std::string *path,
                                            DiskDescriptor *file);

// Removes files with such names that dead programs left in a folder: regular files of this user that have no
// other name and are not locked. Anything else stays: other users' files, links, folders, and all of them on
// a file system without locks. May throw std::bad_alloc.
void ClearTemporaryFiles(const std::string &folder, std::string_view prefix, std::string_view suffix);

// Opens for reading, and locks, a file that a dead program of this user left, by the rules of
// ClearTemporaryFiles. False for any other.
[[nodiscard]] bool OpenLeftOver(const std::string &path, DiskDescriptor *file);

// Whether a name is PREFIX, 16 lower-case hexadecimal digits and SUFFIX.
[[nodiscard]] bool IsTemporaryName(std::string_view name, std::string_view prefix, std::string_view suffix);

} // namespace drevix
