// Paths: their parts, and what they lead to. All may throw std::bad_alloc but where a status says memFullErr.
#pragma once

#include "platform/base/types.h"
#include "platform/files/paths.h"

#include <string>
#include <string_view>

namespace drevix {

// The parts of a path before its last slash ("." without one, "/" for one in the root) and behind it.
[[nodiscard]] std::string FolderOfPath(const std::string &path);
[[nodiscard]] std::string LeafOfPath(const std::string &path);
// The path of an entry of a folder.
[[nodiscard]] std::string JoinPath(std::string_view folder, std::string_view name);

// The path of what `path` leads to with every link of its last component followed, whether or not the end
// exists. noErr; bdNamErr for links that go round in a circle; memFullErr.
[[nodiscard]] OSErr FollowLinks(const std::string &path, std::string *target);

// Makes a folder, for the user alone, and those above it that are missing. noErr, also for one that is there.
[[nodiscard]] OSErr MakeFolders(const std::string &path);

// Whether a folder that is looked for is made when it is missing.
enum class FolderCreation : bool { Never = false, IfMissing = true };
inline constexpr FolderCreation kDontCreateFolder = FolderCreation::Never;
inline constexpr FolderCreation kCreateFolder = FolderCreation::IfMissing;

// The user's home folder: $HOME when that is an absolute path, else the account's. Empty when there is none.
[[nodiscard]] std::string HomeFolder();

} // namespace drevix
