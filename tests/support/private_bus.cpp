#include "tests/support/private_bus.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace drevix::test {
namespace {

[[noreturn]] void RunChild(const std::vector<std::string> &command, int output) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(output, STDOUT_FILENO);
    std::vector<char *> arguments;
    for (const std::string &word : command) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

} // namespace

TestProcess::TestProcess(const std::vector<std::string> &command) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    fId = ::fork();
    if (fId == 0) {
        RunChild(command, ends[1]);
    }
    ::close(ends[1]);
    fOutput = ends[0];
    char c = 0;
    while (c != '\n' && ::read(fOutput, &c, 1) == 1) {
    }
    EXPECT_EQ(c, '\n') << command[0] << " did not start";
    ::fcntl(fOutput, F_SETFL, O_NONBLOCK);
}

TestProcess::~TestProcess() {
    Signal(SIGKILL);
    ::waitpid(fId, nullptr, 0);
    ::close(fOutput);
}

void TestProcess::Signal(int number) const {
    EXPECT_EQ(::kill(fId, number), 0);
}

std::string TestProcess::Output() {
    std::array<char, 4096> bytes{};
    for (ssize_t size = 0; (size = ::read(fOutput, bytes.data(), bytes.size())) > 0;) {
        fText.append(bytes.data(), static_cast<std::size_t>(size));
    }
    return fText;
}

PrivateBus::PrivateBus(const std::string &folder)
    : fDaemon({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1",
               "--address=unix:path=" + folder + "/bus"}),
      fAddress("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder + "/bus") {}

} // namespace drevix::test
