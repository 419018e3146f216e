// DrevixHelper: the program that works with the device.
#include "helper/helper.h"
#include "keyboard/key_names.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"

#include <csignal>
#include <exception>
#include <iostream>
#include <sys/signalfd.h>
#include <tuple>
#include <unistd.h>

using namespace drevix;

namespace {

constexpr int kWrongUsage = 2;

// The folder that contains the application's own folder, NAME.app/Contents/Linux. An installed program is in
// PREFIX/lib/drevix-settings, with only a link to it in the application's folder, because PREFIX/share is for
// all architectures.
FSRef ResourcesAround(const std::string &program) {
    const std::string above = FolderOfPath(FolderOfPath(FolderOfPath(program)));
    return {above.ends_with(".app") ? FolderOfPath(above) : above + "/share/drevix-settings"};
}

// A descriptor that becomes readable when the program is asked to end.
int OpenEndRequests() {
    sigset_t requests;
    sigemptyset(&requests);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaddset(&requests, number);
    }
    sigprocmask(SIG_BLOCK, &requests, nullptr);
    // The reader of the output may end first, such as the terminal of the panel that started the helper.
    std::ignore = std::signal(SIGPIPE, SIG_IGN);
    return ::signalfd(-1, &requests, SFD_CLOEXEC | SFD_NONBLOCK);
}

enum class Next : std::uint8_t { Exit, StartAnew };

int Start(std::span<const std::string> arguments, const std::string &program, Next *next) {
    HelperOptions options;
    std::string problem;
    if (!ParseHelperOptions(arguments, &options, &problem)) {
        std::cerr << "DrevixHelper: " << Translated("%1; 'DrevixHelper --help' lists the options", problem)
                  << "\n";
        return kWrongUsage;
    }
    if (options.help || options.version) {
        std::cout << (options.help ? HelperUsage() : "DrevixHelper " DREVIX_VERSION "\n");
        return 0;
    }
    const int endRequests = OpenEndRequests();
    GetKeyboardInformation();
    const FSRef resources = ResourcesAround(program);
    Helper helper(options, resources, program);
    const int status = helper.Run(endRequests);
    *next = helper.IsReplaced() ? Next::StartAnew : Next::Exit;
    return status;
}

} // namespace

int main(int argc, char **argv) try {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    std::string program;
    // Without it the factory settings are not found, and the settings file must do.
    std::ignore = FollowLinks("/proc/self/exe", &program);
    TranslateMessages(ResourcesAround(program).path + "/../locale");
    Next next = Next::Exit;
    const int status = Start(arguments, program, &next);
    if (next == Next::StartAnew) {
        ::execv(program.c_str(), argv);
        std::cerr << "DrevixHelper: " << Translated("its new version could not be started") << "\n";
        return 1;
    }
    return status;
} catch (const std::exception &) {
    std::cerr << "DrevixHelper: there is not enough memory\n";
    return 1;
}
