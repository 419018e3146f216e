#include "helper/options.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace drevix {
namespace {

struct Option {
    std::string_view name;
    std::string_view value; // what its value is called; empty: it has none
    std::string_view help;
    void (*take)(const std::string &value, HelperOptions *options);
};

constexpr auto kOptions = std::to_array<Option>({
    {"--devices", "FILE", "read the connected devices from this file, again whenever it changes",
     [](const std::string &value, HelperOptions *options) { options->devicesFile = value; }},
    {"--device", "DEVICE", "say that this device is connected; may be given four times",
     [](const std::string &value, HelperOptions *options) { options->devices.push_back(value); }},
    {"--front", "APP", "apply the settings of this application; default: those of no application",
     [](const std::string &value, HelperOptions *options) { options->front = value; }},
    {"--prefs", "FILE", "read this settings file instead of the user's",
     [](const std::string &value, HelperOptions *options) { options->prefs = value; }},
    {"--help", "", "print this",
     [](const std::string & /*value*/, HelperOptions *options) { options->help = true; }},
    {"--version", "", "print the version",
     [](const std::string & /*value*/, HelperOptions *options) { options->version = true; }},
});

} // namespace

bool ParseHelperOptions(std::span<const std::string> arguments, HelperOptions *options,
                        std::string *problem) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto *option = std::ranges::find(kOptions, arguments[i], &Option::name);
        if (option == kOptions.end()) {
            *problem = "there is no option \"" + arguments[i] + "\"";
            return false;
        }
        if (option->value.empty()) {
            option->take({}, options);
        } else if (++i < arguments.size()) {
            option->take(arguments[i], options);
        } else {
            *problem = std::string(option->name) + " needs " + std::string(option->value);
            return false;
        }
    }
    return true;
}

std::string HelperUsage() {
    constexpr std::size_t kHelpColumn = 20;
    std::string usage =
        "usage: DrevixHelper [OPTION ...]\n\nTells the settings panel which devices are connected, "
        "and reads the settings\nagain when it says so.\n\n";
    for (const Option &option : kOptions) {
        std::string line = "  " + std::string(option.name) + " " + std::string(option.value);
        line.resize(std::max(line.size(), kHelpColumn), ' ');
        usage.append(line).append(option.help).append("\n");
    }
    return usage;
}

} // namespace drevix
