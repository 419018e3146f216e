// What nearly every test includes.
#pragma once

#include "platform/base/status.h"
#include "tests/support/faults.h"
#include "tests/support/scratch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace drevix::test {

namespace fs = std::filesystem;

using Names = std::vector<std::string>; // of files, mostly

// The time on a clock that stands still while this thread waits for a processor, as on a busy machine.
inline std::chrono::milliseconds OwnTime() {
    std::int64_t waited = 0;                                          // nanoseconds
    std::ifstream("/proc/thread-self/schedstat") >> waited >> waited; // the first number is how long it ran
    const auto now = std::chrono::steady_clock::now().time_since_epoch() - std::chrono::nanoseconds(waited);
    return std::chrono::duration_cast<std::chrono::milliseconds>(now);
}

} // namespace drevix::test
