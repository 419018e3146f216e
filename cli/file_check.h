// Describes the damage in a settings file as text. docs/record-base-file.md has the format.
#pragma once

#include "platform/base/translation.h"
#include "platform/base/types.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// One finding.
struct FileProblem {
    enum class Kind : std::uint8_t {
        Damage, // the file is refused because of it
        Oddity, // the file can still be read
    };
    Kind kind;
    Text text; // a sentence without its full stop
};

// The results for a file.
struct FileFindings {
    OSErr status = 0;         // the status of reading the file; 0: valid
    std::int32_t records = 0; // the header's record count; 0 if it is not a settings file
    std::vector<FileProblem> problems;
};

// Checks a file's bytes as reading them as a settings file would; `status` is the status of that read.
[[nodiscard]] FileFindings CheckFileBytes(std::string_view bytes, OSErr status);

} // namespace drevix
