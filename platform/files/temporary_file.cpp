#include "platform/files/temporary_file.h"

#include "platform/base/status.h"
#include "platform/files/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace drevix {
namespace {

constexpr int kDigits = 16;
constexpr std::string_view kDigitSet = "0123456789abcdef";
constexpr int kMostTries = 8; // a name that is taken by chance is a wonder, twice is an attack

// False when the kernel has none to give.
bool AppendRandomDigits(std::string *out) {
    std::array<std::uint8_t, kDigits> random{};
    if (::getentropy(random.data(), random.size()) != 0) {
        return false;
    }
    for (const std::uint8_t byte : random) {
        *out += kDigitSet[byte % kDigitSet.size()];
    }
    return true;
}

} // namespace

OSErr MakeTemporaryFile(std::string_view folder, std::string_view prefix, std::string_view suffix,
                        mode_t mode, std::string *path, DiskDescriptor *file) {
    for (int tries = 0; tries < kMostTries; ++tries) {
        std::string name = JoinPath(folder, prefix);
        if (!AppendRandomDigits(&name)) {
            break;
        }
        name += suffix;
        DiskDescriptor made(
            CurrentDisk().Open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_NOCTTY, mode));
        if (made) {
            *file = std::move(made);
            *path = std::move(name);
            return noErr;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return LastError();
}

bool IsTemporaryName(std::string_view name, std::string_view prefix, std::string_view suffix) {
    if (name.size() != prefix.size() + kDigits + suffix.size() || !name.starts_with(prefix) ||
        !name.ends_with(suffix)) {
        return false;
    }
    return std::ranges::all_of(name.substr(prefix.size(), kDigits),
                               [](char c) { return kDigitSet.find(c) != kDigitSet.npos; });
}

} // namespace drevix
