// Starts programs that live on when this one ends.
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

// The command that opens an item as a double click does: an application (an entry, an ".app" folder or a program) is
// started, anything else goes to the desktop's opener. Empty for an application that says nothing to start. On some disks
// every file counts as a program; one that is none cannot be started, and kOpener opens it.
inline constexpr const char *kOpener = "xdg-open";
[[nodiscard]] std::vector<std::string> CommandToOpen(const std::string &path);

class ProgramStarter {
  public:
    // Told the exit status of a program that has ended, or 128 and the signal that ended it.
    using EndedFunction = std::function<void(int exitStatus)>;

    // Starts a program, its name looked up in $PATH, in a session of its own, in the user's home folder, without
    // input. noErr, fnfErr, permErr, memFullErr, ...; `ended` is called by the event loop, and only while this lives.
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
