// What is wrong with a settings file, in words. docs/record-base-file.md has the format.
#pragma once

#include "platform/base/types.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// One finding.
struct FileProblem {
    enum class Kind : std::uint8_t {
        Damage, // the file is refused for it
        Oddity, // the file is read all the same
    };
    Kind kind;
    std::string text; // a sentence without its full stop
};

// What a file holds.
struct FileFindings {
    OSErr status = 0;         // what reading the file gives; 0: it is valid
    std::int32_t records = 0; // as many as the header announces; 0 when it is not a settings file's
    std::vector<FileProblem> problems;
};

// Looks through the bytes of a file, as reading them as a settings file would. `status` is what that gave.
[[nodiscard]] FileFindings CheckFileBytes(std::string_view bytes, OSErr status);

} // namespace drevix
