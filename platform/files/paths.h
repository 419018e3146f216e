// Paths: their parts and their targets. All may throw std::bad_alloc, except functions that return
// memFullErr.
#pragma once

#include "platform/base/types.h"
#include "platform/files/paths.h"

#include <string>
#include <string_view>

namespace drevix {

// The parts of a path before its last slash ("." if there is none, "/" in the root) and after it.
[[nodiscard]] std::string FolderOfPath(const std::string &path);
[[nodiscard]] std::string LeafOfPath(const std::string &path);
// The path of an entry of a folder.
[[nodiscard]] std::string JoinPath(std::string_view folder, std::string_view name);

// Follows all links at the last component of `path`, whether or not the target exists. noErr; bdNamErr for a
// cycle of links; memFullErr; or the error of a path that may be a link and cannot be read.
[[nodiscard]] OSErr FollowLinks(const std::string &path, std::string *target);

// Creates a folder, accessible only to the user, and missing ones above it, each on the disk for good. noErr, also if it
// exists.
[[nodiscard]] OSErr MakeFolders(const std::string &path);

// Whether to create a missing folder.
enum class FolderCreation : bool { Never = false, IfMissing = true };
inline constexpr FolderCreation kDontCreateFolder = FolderCreation::Never;
inline constexpr FolderCreation kCreateFolder = FolderCreation::IfMissing;

// The user's home folder: $HOME if that is an absolute path, else the account's. Empty if there is none.
[[nodiscard]] std::string HomeFolder();

} // namespace drevix
