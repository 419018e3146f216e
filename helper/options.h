// The helper's command line.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace drevix {

struct HelperOptions {
    bool help = false;
    bool version = false;
    std::string devicesFile;          // empty: the user's
    std::vector<std::string> devices; // in the form of the file's lines; any: no file is read
    std::string prefs;                // empty: the user's
    std::string front;                // the file name of the application in front
};

// False, with the reason in *problem, for what is no option or lacks its value.
[[nodiscard]] bool ParseHelperOptions(std::span<const std::string> arguments, HelperOptions *options,
                                      std::string *problem);

// What --help prints.
[[nodiscard]] std::string HelperUsage();

} // namespace drevix
