#include "helper/program_watch.h"

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace drevix {
namespace {

constexpr std::chrono::seconds kRest{5};

} // namespace

ProgramWatch::ProgramWatch(const std::string &path) : fPath(path), fWatch(path) {
    struct stat file {};
    if (::stat("/proc/self/exe", &file) == 0) { // its path may be another's by now
        fDevice = file.st_dev;
        fFile = file.st_ino;
    }
}

void ProgramWatch::TakeChange() {
    if (fWatch.TakeChange()) {
        fLookAt = Clock::now() + kRest;
    }
}

std::optional<std::chrono::microseconds> ProgramWatch::Wait() const {
    if (!fLookAt) {
        return std::nullopt;
    }
    const auto wait = std::chrono::ceil<std::chrono::microseconds>(*fLookAt - Clock::now());
    return std::max(wait, std::chrono::microseconds(0));
}

ProgramFile ProgramWatch::Look() {
    if (!fLookAt || Clock::now() < *fLookAt) {
        return ProgramFile::Same;
    }
    fLookAt.reset();
    struct stat file {};
    if (::stat(fPath.c_str(), &file) != 0) {
        return ProgramFile::Removed;
    }
    const bool isSame = file.st_dev == fDevice && file.st_ino == fFile;
    return isSame || ::access(fPath.c_str(), X_OK) != 0 ? ProgramFile::Same : ProgramFile::Replaced;
}

} // namespace drevix
