// A parsed command line.
#pragma once

#include "cli/outcome.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// Options that only some commands take; bits of Command::options.
using OptionSet = std::uint8_t;
inline constexpr OptionSet kAppOption = 0x01;
inline constexpr OptionSet kAllOption = 0x02;
inline constexpr OptionSet kReplaceOption = 0x04;
inline constexpr OptionSet kToOption = 0x08;
inline constexpr OptionSet kRepeatOption = 0x10;
inline constexpr OptionSet kRawOption = 0x20;

// A command line: options, which may appear anywhere before "--", and the other words in order.
struct CommandLine {
    std::vector<std::string> words; // the command's name first
    bool json = false;
    bool help = false;
    bool verbose = false;
    bool version = false;
    bool all = false;
    bool replace = false;
    bool raw = false;
    std::optional<std::string> prefs; // the settings file; nullopt: the user's
    std::optional<std::string> app;   // a record, as for Session::Find; nullopt: the global record
    std::optional<std::string> to;
    std::optional<std::string> repeat;
    OptionSet given = 0; // which of the options above were given
};

// One option.
struct OptionInfo {
    std::string_view name;  // "--app"
    std::string_view value; // its value's name in help ("APP"); empty if it takes none
    OptionSet bit;          // 0: every command takes it
    std::string_view help;
    bool CommandLine::*flag;                            // the flag it sets, or
    std::optional<std::string> CommandLine::*parameter; // the parameter it sets
};

// All options, in the order of help. Static storage.
[[nodiscard]] std::span<const OptionInfo> AllOptions();
// The option of that name, or null.
[[nodiscard]] const OptionInfo *FindOption(std::string_view name);

// Parses the arguments, without the program's name. WrongUsage for an unknown option, a missing value, an
// empty file name, or an unexpected value. If an option is repeated, the last counts.
Outcome ParseCommandLine(std::span<const std::string> arguments, CommandLine *line);

} // namespace drevix
