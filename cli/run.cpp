#include "cli/commands.h"
#include "platform/base/log.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"

#include <algorithm>
#include <new>

namespace drevix {
namespace {

constexpr std::string_view kProgram = "drevixctl";
constexpr std::string_view kAllHelp = ToTranslate("'drevixctl help' lists all commands");
constexpr std::size_t kOptionColumn = 16;  // width of the options in help
constexpr std::size_t kSummaryColumn = 12; // and of the commands

std::string Column(std::string_view text, std::size_t width) {
    return "  " + std::string(text) + std::string(width - std::min(width, text.size()), ' ');
}

// "--app APP"
std::string Spelled(const OptionInfo &option) {
    return std::string(option.name) + (option.value.empty() ? "" : " ") + std::string(option.value);
}

// "drevixctl export FILE [--app APP|--all]"
std::string UsageOf(const Command &command) {
    std::string usage(kProgram);
    usage.append(" ").append(command.name);
    if (!command.arguments.empty()) {
        usage.append(" ").append(command.arguments);
    }
    std::string options;
    for (const OptionInfo &option : AllOptions()) {
        if ((command.options & option.bit) != 0) {
            // "--all" is an alternative to "--app".
            const std::string_view between = option.bit == kAllOption ? "|" : "] [";
            options.append(options.empty() ? "" : between).append(Spelled(option));
        }
    }
    if (!options.empty()) {
        usage += command.needs != 0 ? " " + options : " [" + options + "]";
    }
    return usage;
}

std::string OptionsHelp(OptionSet options) {
    std::string help;
    for (const OptionInfo &option : AllOptions()) {
        if (option.bit == 0 ? options == 0 : (options & option.bit) != 0) {
            help.append(Column(Spelled(option), kOptionColumn)).append(Translated(option.help)).append("\n");
        }
    }
    return help;
}

std::string HelpOf(const Command &command) {
    std::string help = Translated("usage: %1", UsageOf(command)) + "\n\n" + Translated(command.help);
    if (command.options != 0) {
        help += "\n" + OptionsHelp(command.options);
    }
    return help;
}

std::string HelpOfProgram() {
    std::string help = Translated("usage: %1", "drevixctl [--json] [--prefs FILE] COMMAND ...");
    help.append("\n\n").append(
        Translated("Shows and changes what the controls of the Drevix device do.\n\n"));
    for (const Command &command : AllCommands()) {
        help.append(Column(command.name, kSummaryColumn)).append(Translated(command.summary)).append("\n");
    }
    return help + Translated("\nWith every command:\n") + OptionsHelp(0) +
           Translated("\n'drevixctl help COMMAND' explains a command.\n");
}

// Checks that the command accepts these words and options.
Outcome CheckUsage(const Command &command, const CommandLine &line) {
    const std::size_t count = line.words.size() - 1;
    if (count < command.minArguments) {
        return WrongUsage(Translated("%1 needs %2", command.name, command.arguments));
    }
    if (count > command.maxArguments) {
        return WrongUsage(
            Translated("unexpected argument %1", QuotedText(line.words[1 + command.maxArguments])));
    }
    for (const OptionInfo &option : AllOptions()) {
        if ((line.given & option.bit & ~command.options) != 0) {
            return WrongUsage(Translated("%1 does not take %2", command.name, option.name));
        }
        if ((command.needs & option.bit & ~line.given) != 0) {
            return WrongUsage(Translated("%1 needs %2", command.name, Spelled(option)));
        }
    }
    return Done();
}

Outcome RunCommand(const Command &command, const CommandLine &line, const Surroundings &surroundings) {
    if (line.help) {
        surroundings.out << HelpOf(command);
        return Done();
    }
    Outcome outcome = CheckUsage(command, line);
    return outcome.IsDone() ? command.run({command, line, std::span(line.words).subspan(1), surroundings})
                            : outcome;
}

Outcome RunLine(const CommandLine &line, const Command **command, const Surroundings &surroundings) {
    if (line.version) {
        surroundings.out << kProgram << " " << DREVIX_VERSION << "\n";
        return Done();
    }
    if (line.words.empty()) {
        if (!line.help) {
            return WrongUsage(Translated("missing command"));
        }
        surroundings.out << HelpOfProgram();
        return Done();
    }
    *command = FindCommand(line.words[0]);
    return *command != nullptr ? RunCommand(**command, line, surroundings)
                               : WrongUsage(Translated("unknown command %1", QuotedText(line.words[0])));
}

} // namespace

ExitStatus RunDrevixctl(std::span<const std::string> arguments, const Surroundings &surroundings) try {
    if (!arguments.empty() && arguments[0] == kCompletionCommand) {
        PrintCompletions(arguments.subspan(1), surroundings);
        return ExitStatus::Done;
    }
    CommandLine line;
    const Command *command = nullptr;
    Outcome outcome = ParseCommandLine(arguments, &line);
    if (line.verbose) {
        BeVerbose();
    }
    if (outcome.IsDone()) {
        outcome = RunLine(line, &command, surroundings);
    } else if (!line.words.empty()) {
        command = FindCommand(line.words[0]);
    }
    if (outcome.IsDone() && !surroundings.out.flush()) {
        outcome =
            Failed(Translated("cannot write all of the output; any change that was asked for has been made"));
    }
    if (!outcome.IsDone()) {
        surroundings.err << kProgram << ": " << PlainText(outcome.message) << "\n";
    }
    if (outcome.status == ExitStatus::WrongUsage) {
        surroundings.err << (command != nullptr ? Translated("usage: %1", UsageOf(*command))
                                                : Translated(kAllHelp))
                         << "\n";
    }
    return outcome.status;
} catch (const std::bad_alloc &) {
    surroundings.err << kProgram << ": not enough memory; the settings file is intact; try again\n";
    return ExitStatus::Failed;
}

Outcome PrintHelp(const Request &request) {
    if (request.arguments.empty()) {
        request.Out() << HelpOfProgram();
        return Done();
    }
    const Command *command = FindCommand(request.arguments[0]);
    if (command == nullptr) {
        return WrongUsage(Translated("unknown command %1", QuotedText(request.arguments[0])));
    }
    request.Out() << HelpOf(*command);
    return Done();
}

} // namespace drevix
