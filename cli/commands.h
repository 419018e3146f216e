// drevixctl: the settings from a terminal. One table has all commands; help, usage and completion come from
// it.
#pragma once

#include "cli/command_line.h"
#include "cli/outcome.h"
#include "cli/text_table.h"
#include "platform/files/files.h"

#include <array>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

namespace drevix {

// The program's environment.
struct Surroundings {
    std::ostream &out;
    std::ostream &err;
    FSRef resources;                        // contains the factory defaults
    std::size_t columns = kTerminalColumns; // width of the terminal for `out`
};

struct Command;

// A command to run.
struct Request {
    const Command &command;
    const CommandLine &line;
    std::span<const std::string> arguments; // the words after the command's name
    const Surroundings &surroundings;

    [[nodiscard]] std::ostream &Out() const { return surroundings.out; }
    // A table as wide as the terminal.
    [[nodiscard]] std::string Table(const TableRow &headings, std::span<const TableRow> rows) const {
        return TableText(headings, rows, surroundings.columns);
    }
};

// The kinds of argument, for completion.
enum class ArgumentKind : std::uint8_t { None, Control, Action, Key, Value, Group, File, CommandName };

inline constexpr std::size_t kAnyNumber = SIZE_MAX;

// One command.
struct Command {
    std::string_view name;
    std::string_view arguments; // as shown in usage
    std::string_view summary;   // in one line
    std::string_view help;      // paragraphs of at most 80 columns, each line ended
    std::size_t minArguments;
    std::size_t maxArguments;
    OptionSet options; // accepted
    OptionSet needs;   // required
    std::array<ArgumentKind, 2>
        completes; // completion of the first two arguments; the last kind also applies to further ones
    Outcome (*run)(const Request &request);
};

// All commands, in the order of help. Static storage.
[[nodiscard]] std::span<const Command> AllCommands();
// The command of that name, or null.
[[nodiscard]] const Command *FindCommand(std::string_view name);

// Runs the program with the arguments after its name. A failure prints one line to `err`, wrong usage a second
// one with the usage.
[[nodiscard]] ExitStatus RunDrevixctl(std::span<const std::string> arguments,
                                      const Surroundings &surroundings);

// The commands

Outcome ListRecords(const Request &request);
Outcome ShowRecord(const Request &request);
Outcome ListActions(const Request &request);
Outcome ListMenu(const Request &request);
Outcome AssignAction(const Request &request);
Outcome SetValue(const Request &request);
Outcome AddApplication(const Request &request);
Outcome DeleteApplication(const Request &request);
Outcome RestoreDefaults(const Request &request);
Outcome ShowHistory(const Request &request);
Outcome RestoreEarlier(const Request &request);
Outcome ExportRecords(const Request &request);
Outcome ImportRecords(const Request &request);
Outcome CheckSettingsFile(const Request &request);
Outcome RecoverSettingsFile(const Request &request);
Outcome ListDevices(const Request &request);
Outcome PressControl(const Request &request);
Outcome HoldControl(const Request &request);
Outcome ReleaseControl(const Request &request);
Outcome TurnControl(const Request &request);
Outcome WatchControls(const Request &request);
Outcome ShowFront(const Request &request);
Outcome CheckMaps(const Request &request);
Outcome PrintHelp(const Request &request);

// The first word that makes the program print completions for the shell.
inline constexpr std::string_view kCompletionCommand = "__complete";

// Prints the completions of the last word of a command line, one per line; ":" means file names.
void PrintCompletions(std::span<const std::string> typed, const Surroundings &surroundings);

} // namespace drevix
