#include "helper/options.h"

#include "platform/base/translation.h"

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
    {"--devices", "FILE", ToTranslate("read the connected devices from this file, again whenever it changes"),
     [](const std::string &value, HelperOptions *options) { options->devicesFile = value; }},
    {"--device", "DEVICE", ToTranslate("say that this device is connected; may be given four times"),
     [](const std::string &value, HelperOptions *options) { options->devices.push_back(value); }},
    {"--describe", "", ToTranslate("print what the controls would do, and do nothing"),
     [](const std::string & /*value*/, HelperOptions *options) { options->describe = true; }},
    {"--dry-run", "", ToTranslate("print each action instead of doing it"),
     [](const std::string & /*value*/, HelperOptions *options) { options->dryRun = true; }},
    {"--stand-in", "DEVICE", ToTranslate("read this pipe as if it were a device; see DrevixHelper(1)"),
     [](const std::string &value, HelperOptions *options) { options->standIns.push_back(value); }},
    {"--front", "APP", ToTranslate("apply the settings of this application, whatever is in front"),
     [](const std::string &value, HelperOptions *options) { options->front = value; }},
    {"--prefs", "FILE", ToTranslate("read this settings file instead of the user's"),
     [](const std::string &value, HelperOptions *options) { options->prefs = value; }},
    {"--help", "", ToTranslate("print this"),
     [](const std::string & /*value*/, HelperOptions *options) { options->help = true; }},
    {"--version", "", ToTranslate("print the version"),
     [](const std::string & /*value*/, HelperOptions *options) { options->version = true; }},
});

} // namespace

bool ParseHelperOptions(std::span<const std::string> arguments, HelperOptions *options,
                        std::string *problem) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto *option = std::ranges::find(kOptions, arguments[i], &Option::name);
        if (option == kOptions.end()) {
            *problem = Translated("unknown option %1", "\"" + arguments[i] + "\"");
            return false;
        }
        if (option->value.empty()) {
            option->take({}, options);
        } else if (++i < arguments.size()) {
            option->take(arguments[i], options);
        } else {
            *problem = Translated("%1 needs %2", option->name, option->value);
            return false;
        }
    }
    return true;
}

std::string HelperUsage() {
    constexpr std::size_t kHelpColumn = 22;
    std::string usage = Translated("usage: %1", "DrevixHelper [OPTION ...]");
    usage.append("\n\n").append(
        Translated("Carries out what the settings say for the device's controls, and tells the settings\n"
                   "panel which devices are connected.\n\n"));
    for (const Option &option : kOptions) {
        std::string line = "  " + std::string(option.name) + " " + std::string(option.value);
        line.resize(std::max(line.size(), kHelpColumn), ' ');
        usage.append(line).append(Translated(option.help)).append("\n");
    }
    return usage;
}

} // namespace drevix
