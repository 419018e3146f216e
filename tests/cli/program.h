// drevixctl run inside the test, on a scratch folder with a factory file of its own: the global record,
// "Painter" with a signature that has application commands, and "Browser" without.
#pragma once

#include "cli/commands.h"
#include "settings/app_prefs.h"
#include "tests/support/testing.h"

namespace drevix::test {

struct Result {
    ExitStatus status;
    std::string out;
    std::string err;
};

class ProgramTest : public testing::Test {
  protected:
    ProgramTest();
    // Runs a command line, split at blanks; a word in which '_' stands for a blank keeps it.
    Result Run(const std::string &line);
    Result Run(const std::vector<std::string> &arguments);
    // Runs a line that must succeed and say nothing on standard error; gives what it prints.
    std::string Do(const std::string &line);
    // Runs a line that must fail with this status, leave the settings file's bytes as they are, print nothing
    // and say one line on standard error, and a second one for wrong usage; gives that first line.
    std::string Refused(const std::string &line, ExitStatus status = ExitStatus::Failed);

    [[nodiscard]] std::string SettingsFile() const {
        return fFolder.Preferences() + "/com.halcyra.drevix.prefs";
    }
    // The record of that file name in the settings file, the global one for none.
    [[nodiscard]] AppPrefs Record(const std::string &fileName = {}) const;

    ScratchFolder fFolder;
};

} // namespace drevix::test
