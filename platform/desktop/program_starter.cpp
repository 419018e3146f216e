#include "platform/desktop/program_starter.h"

#include "platform/base/status.h"
#include "platform/desktop/app_folder.h"
#include "platform/desktop/desktop_entries.h"
#include "platform/files/disk.h"
#include "platform/files/paths.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <utility>

extern char **environ; // NOLINT(readability-redundant-declaration): no header of the standard has it

namespace drevix {
namespace {

constexpr int kSignalled = 128; // as shells count

// The environment of a new program: no signals of this program blocked or ignored, the home folder, no input.
class Spawning {
  public:
    Spawning() {
        posix_spawnattr_init(&fAttributes);
        posix_spawn_file_actions_init(&fActions);
    }
    Spawning(const Spawning &) = delete;
    Spawning &operator=(const Spawning &) = delete;
    ~Spawning() {
        posix_spawn_file_actions_destroy(&fActions);
        posix_spawnattr_destroy(&fAttributes);
    }

    // An error number, 0 for none.
    int Run(const std::vector<std::string> &command, pid_t *process) {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&fAttributes, &none);
        posix_spawnattr_setsigdefault(&fAttributes, &all);
        posix_spawnattr_setflags(&fAttributes,
                                 POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
        posix_spawn_file_actions_addopen(&fActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        const std::string home = HomeFolder();
        if (struct stat found{}; CurrentDisk().StatusAt(home.c_str(), &found) == 0) {
            posix_spawn_file_actions_addchdir_np(&fActions, home.c_str());
        }
        std::vector<char *> words;
        words.reserve(command.size() + 1);
        for (const std::string &word : command) {
            words.push_back(
                const_cast<char *>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast)
        }
        words.push_back(nullptr);
        return posix_spawnp(process, words.front(), &fActions, &fAttributes, words.data(), environ);
    }

  private:
    posix_spawnattr_t fAttributes{};
    posix_spawn_file_actions_t fActions{};
};

} // namespace

std::vector<std::string> CommandToOpen(const std::string &path) {
    struct stat found {};
    DesktopEntry entry;
    const bool isFolder = CurrentDisk().StatusAt(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode);
    if (const std::string program = ProgramOfAppFolder(path); isFolder && !program.empty()) {
        return {program};
    }
    if (!isFolder && ReadDesktopEntry(path, MessagesLocale(), &entry) == noErr) {
        return CommandOfEntry(entry);
    }
    const bool isProgram = !isFolder && ::access(path.c_str(), X_OK) == 0;
    return isProgram ? std::vector{path} : std::vector<std::string>{kOpener, path};
}

OSErr ProgramStarter::Start(const std::vector<std::string> &command, EndedFunction ended) {
    if (command.empty()) {
        return paramErr;
    }
    pid_t process = -1;
    if (const int error = Spawning().Run(command, &process); error != 0) {
        errno = error;
        return LastError();
    }
    const auto child = fChildren.insert(
        fChildren.end(),
        Child{process, std::move(ended),
              SystemDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0))), LoopWatch([] {})});
    child->watch = LoopWatch([this, child] { TakeEnd(child); });
    child->watch.Watch(child->descriptor.Get(), POLLIN, std::nullopt);
    return noErr;
}

void ProgramStarter::TakeEnd(std::list<Child>::iterator child) {
    int status = 0;
    if (::waitpid(child->process, &status, WNOHANG) != child->process) {
        return;
    }
    const EndedFunction ended = std::move(child->ended);
    fChildren.erase(child);
    ended(WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status));
}

} // namespace drevix
