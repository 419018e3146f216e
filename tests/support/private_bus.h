// A session bus of a test's own, and other processes on it.
#pragma once

#include "tests/support/scratch.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace drevix::test {

// A process that is killed at destruction, started with $DBUS_SESSION_BUS_ADDRESS as it is. Its constructor
// returns when it has written its first line.
class TestProcess {
  public:
    explicit TestProcess(const std::vector<std::string> &command);
    TestProcess(const TestProcess &) = delete;
    TestProcess &operator=(const TestProcess &) = delete;
    ~TestProcess();

    [[nodiscard]] pid_t Id() const { return fId; }
    void Signal(int number) const;
    // What it has written since its first line, as far as that has come.
    [[nodiscard]] std::string Output();

  private:
    pid_t fId = -1;
    int fOutput = -1;
    std::string fText;
};

// Runs a dbus-daemon, to which $DBUS_SESSION_BUS_ADDRESS leads while it lives.
class PrivateBus {
  public:
    explicit PrivateBus(const std::string &folder);
    [[nodiscard]] const TestProcess &Daemon() const { return fDaemon; }

  private:
    TestProcess fDaemon;
    ScopedVariable fAddress;
};

} // namespace drevix::test
