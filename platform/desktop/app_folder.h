// Application folders: "NAME.app" with "Contents/Info.plist", which describes the application, and its
// program for this system, "Contents/Linux/NAME".
#pragma once

#include "platform/base/types.h"

#include <string>
#include <string_view>

namespace drevix {

// What an information list says. A text is empty when the list does not have it.
struct AppFolderInfo {
    std::string version;   // CFBundleVersion
    std::string signature; // CFBundleSignature, whatever its length
};

// Reads an information list, "Info.plist", in XML or binary. noErr, though a text may be empty; -1 for a list
// that is damaged or no dictionary; memFullErr; or the file's error. *info is set on success only.
[[nodiscard]] OSErr ReadInfoList(const std::string &path, AppFolderInfo *info);

// Where the information list of an application folder lies.
[[nodiscard]] std::string InfoListOfAppFolder(std::string_view folder);

// NAME of a path that ends in "/NAME.app", with slashes behind it or none, and where the folder's program
// lies; both empty for another path. No check of the disk is made.
[[nodiscard]] std::string NameOfAppFolder(std::string_view folder);
[[nodiscard]] std::string ProgramOfAppFolder(std::string_view folder);

} // namespace drevix
