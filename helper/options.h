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
    std::string front;     // the file name of the application in front; empty: as the desktop tells
    bool describe = false; // print the settings that apply instead of acting
    bool dryRun = false;   // print actions instead of doing them
    std::vector<std::string> standIns; // for devices, as "helper/stand_in.h" reads them
};

// False, with the reason in *problem, for an unknown option or one without its value.
[[nodiscard]] bool ParseHelperOptions(std::span<const std::string> arguments, HelperOptions *options,
                                      std::string *problem);

// What --help prints.
[[nodiscard]] std::string HelperUsage();

} // namespace drevix
