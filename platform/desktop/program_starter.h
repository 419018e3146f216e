// Starts programs that outlive this one.
#pragma once

#include "platform/base/loop_watch.h"
#include "platform/base/types.h"
#include "platform/files/owners.h"

#include <functional>
#include <list>
#include <string>
#include <sys/types.h>
#include <vector>

namespace drevix {

// The command that opens an item as a double click does: starts an application (an entry, an ".app" folder or
// a program), and passes anything else to the desktop's opener. Empty for an application without a command.
// On some disks every file counts as a program; one that cannot be started is opened with kOpener.
inline constexpr const char *kOpener = "xdg-open";
[[nodiscard]] std::vector<std::string> CommandToOpen(const std::string &path);

class ProgramStarter {
  public:
    // Gets the exit status of a program that has ended, or 128 plus the number of the signal that ended it.
    using EndedFunction = std::function<void(int exitStatus)>;

    // Starts a program, looked up in $PATH, in its own session, in the user's home folder, without input.
    // noErr, fnfErr, permErr, memFullErr, ...; the event loop calls `ended`, but only while this object
    // exists.
    [[nodiscard]] OSErr Start(const std::vector<std::string> &command, EndedFunction ended);

  private:
    struct Child {
        pid_t process;
        EndedFunction ended;
        SystemDescriptor descriptor; // can be read when it has ended
        LoopWatch watch;
    };
    void TakeEnd(std::list<Child>::iterator child);

    std::list<Child> fChildren; // the watches stay where they are
};

} // namespace drevix
