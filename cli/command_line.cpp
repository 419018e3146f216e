#include "cli/command_line.h"

#include "platform/base/translation.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

using Line = CommandLine;

// clang-format off
constexpr auto kOptions = std::to_array<OptionInfo>({
    {"--app",     "APP",  kAppOption,     ToTranslate("a record, by file name, NAME:SIGNATURE or number"), nullptr, &Line::app},
    {"--all",     "",     kAllOption,     ToTranslate("every record"),                                      &Line::all, nullptr},
    {"--replace", "",     kReplaceOption, ToTranslate("replace existing records"),              &Line::replace, nullptr},
    {"--repeat",  "TICKS", kRepeatOption, ToTranslate("repeat every TICKS/60 second while held; 0: once"), nullptr, &Line::repeat},
    {"--raw",     "",     kRawOption,     ToTranslate("what devices send, whether they have a map or not"),  &Line::raw, nullptr},
    {"--to",      "FILE", kToOption,      ToTranslate("the file to write; it must not exist yet"),           nullptr, &Line::to},
    {"--json",    "",     0,              ToTranslate("print JSON for other programs to read"),             &Line::json, nullptr},
    {"--prefs",   "FILE", 0,              ToTranslate("use this settings file instead of your own"),  nullptr, &Line::prefs},
    {"--help",    "",     0,              ToTranslate("print help"),                                        &Line::help, nullptr},
    {"--verbose", "",     0,              ToTranslate("log what is done to standard error"),               &Line::verbose, nullptr},
    {"--version", "",     0,              ToTranslate("print the version"),                                 &Line::version, nullptr},
});
// clang-format on
static_assert(std::ranges::all_of(kOptions, [](const OptionInfo &option) {
    return (option.flag == nullptr) != (option.parameter == nullptr) &&
           (option.parameter == nullptr) == option.value.empty();
}));

Outcome NeedsValue(const OptionInfo &option) {
    return WrongUsage(Translated("%1 needs a value: %2", option.name, option.value));
}

// Parses the option at `i`, whose value follows '=' or is the next argument. `i` ends at the last argument
// used.
Outcome ParseOption(std::span<const std::string> arguments, std::size_t &i, CommandLine *line) {
    const std::string_view argument = arguments[i] == "-h" ? std::string_view("--help") : arguments[i];
    const std::size_t equals = argument.find('=');
    const OptionInfo *option = FindOption(argument.substr(0, equals));
    if (option == nullptr) {
        return WrongUsage(Translated("unknown option %1", QuotedText(argument.substr(0, equals))));
    }
    line->given |= option->bit;
    if (option->flag != nullptr) {
        line->*option->flag = true;
        return equals == argument.npos ? Done() : WrongUsage(Translated("%1 takes no value", option->name));
    }
    if (equals == argument.npos && ++i == arguments.size()) {
        return NeedsValue(*option);
    }
    const std::string value(equals == argument.npos ? arguments[i] : argument.substr(equals + 1));
    // A record's name may be empty, a file's may not: a script's variable was not set.
    if (value.empty() && option->value == "FILE") {
        return NeedsValue(*option);
    }
    line->*option->parameter = value;
    return Done();
}

} // namespace

std::span<const OptionInfo> AllOptions() {
    return kOptions;
}

const OptionInfo *FindOption(std::string_view name) {
    const auto *option = std::ranges::find(kOptions, name, &OptionInfo::name);
    return option == kOptions.end() ? nullptr : option;
}

Outcome ParseCommandLine(std::span<const std::string> arguments, CommandLine *line) {
    *line = {};
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string &argument = arguments[i];
        if (!optionsEnded && argument == "--") {
            optionsEnded = true;
        } else if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
            line->words.push_back(argument);
        } else if (Outcome outcome = ParseOption(arguments, i, line); !outcome.IsDone()) {
            return outcome;
        }
    }
    return Done();
}

} // namespace drevix
