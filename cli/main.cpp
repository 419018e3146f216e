#include "cli/commands.h"
#include "platform/base/terminal.h"
#include "platform/base/translation.h"
#include "platform/desktop/resources.h"

#include <cstdio>
#include <iostream>
#include <new>
#include <string>
#include <tuple>
#include <vector>

int main(int argc, char **argv) try {
    drevix::Surroundings surroundings{std::cout, std::cerr, {}};
    surroundings.columns = drevix::TerminalColumns(drevix::kTerminalColumns);
    // Without the folder only the settings file is used; a command that needs factory values reports it.
    if (drevix::FindResourceFolder(&surroundings.resources) == drevix::noErr) {
        drevix::TranslateMessages(surroundings.resources.path + "/../locale");
    }
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return static_cast<int>(drevix::RunDrevixctl(arguments, surroundings));
} catch (const std::bad_alloc &) {
    // Before the first command word was looked at, or with no memory left even for the message.
    std::fputs("drevixctl: not enough memory; try again\n", stderr);
    return static_cast<int>(drevix::ExitStatus::Failed);
}
