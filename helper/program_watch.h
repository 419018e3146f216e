// Notices that the running program's file was replaced, as an upgrade does, or removed.
#pragma once

#include "platform/files/file_watch.h"

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>

namespace drevix {

enum class ProgramFile : std::uint8_t { Same, Replaced, Removed };

class ProgramWatch {
  public:
    explicit ProgramWatch(const std::string &path);

    // Readable when something happened near the file; -1 if nothing is watched.
    [[nodiscard]] int Descriptor() const { return fWatch.Descriptor(); }
    // Call when it is readable.
    void TakeChange();
    // How long until Look has something to say; nullopt: nothing happened.
    [[nodiscard]] std::optional<std::chrono::microseconds> Wait() const;
    // The file's state, five seconds after the last change: until then the rest of an upgrade may be on its way.
    // Same before that.
    [[nodiscard]] ProgramFile Look();

  private:
    using Clock = std::chrono::steady_clock;

    std::string fPath;
    FileWatch fWatch;
    dev_t fDevice = 0;
    ino_t fFile = 0;
    std::optional<Clock::time_point> fLookAt;
};

} // namespace drevix
