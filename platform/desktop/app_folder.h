// Application folders: "NAME.app" with "Contents/Info.plist", which describes the application, and the
// program for this system, "Contents/Linux/NAME".
#pragma once

#include "platform/base/types.h"

#include <string>
#include <string_view>

namespace drevix {

// Data from an Info.plist. Missing texts are empty.
struct AppFolderInfo {
    std::string version;   // CFBundleVersion
    std::string signature; // CFBundleSignature, whatever its length
};

// Reads an Info.plist, XML or binary. noErr, though texts may be empty; -1 if it is damaged or not a
// dictionary; memFullErr; or the file's error. *info is set only on success.
[[nodiscard]] OSErr ReadInfoList(const std::string &path, AppFolderInfo *info);

// The path of an application folder's Info.plist.
[[nodiscard]] std::string InfoListOfAppFolder(std::string_view folder);

// NAME of a path that ends in "/NAME.app", with or without trailing slashes, and the path of the folder's
// program; both empty for another path. Does not access the disk.
[[nodiscard]] std::string NameOfAppFolder(std::string_view folder);
[[nodiscard]] std::string ProgramOfAppFolder(std::string_view folder);

} // namespace drevix
