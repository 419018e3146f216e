// A private session bus for a test, and other processes on it.
#pragma once

#include "tests/support/scratch.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace drevix::test {

// A process, started with the current $DBUS_SESSION_BUS_ADDRESS and killed at destruction. The constructor
// returns once it has written its first line.
class TestProcess {
  public:
    explicit TestProcess(const std::vector<std::string> &command);
    TestProcess(const TestProcess &) = delete;
    TestProcess &operator=(const TestProcess &) = delete;
    ~TestProcess();

    [[nodiscard]] pid_t Id() const { return fId; }
    void Signal(int number) const;
    // What it has written after its first line so far.
    [[nodiscard]] std::string Output();

  private:
    pid_t fId = -1;
    int fOutput = -1;
    std::string fText;
};

// Runs a dbus-daemon with $DBUS_SESSION_BUS_ADDRESS set to it, until destruction.
class PrivateBus {
  public:
    explicit PrivateBus(const std::string &folder);
    [[nodiscard]] const TestProcess &Daemon() const { return fDaemon; }

  private:
    TestProcess fDaemon;
    ScopedVariable fAddress;
};

} // namespace drevix::test
