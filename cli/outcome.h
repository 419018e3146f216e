// The result of a command.
#pragma once

#include "platform/base/status.h"
#include "platform/base/translation.h"

#include <string>
#include <string_view>
#include <utility>

namespace drevix {

// The end of a message about a change that was not made.
inline constexpr std::string_view kUnchanged = ToTranslate("nothing was changed");

// The program's exit statuses.
enum class ExitStatus : int {
    Done = 0,
    Failed = 1,     // the command failed
    WrongUsage = 2, // the command line is invalid
};

// The status and, unless it is Done, the message for standard error: what failed, what was left unchanged, what
// to do next.
struct [[nodiscard]] Outcome {
    ExitStatus status = ExitStatus::Done;
    std::string message;

    [[nodiscard]] bool IsDone() const { return status == ExitStatus::Done; }
};

inline Outcome Done() {
    return {};
}

inline Outcome Failed(std::string message) {
    return {ExitStatus::Failed, std::move(message)};
}

inline Outcome WrongUsage(std::string message) {
    return {ExitStatus::WrongUsage, std::move(message)};
}

// Quotes a name or word for a message.
inline std::string QuotedText(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

// "cannot read FILE: the disk is full; nothing was changed", from "cannot read %1", FILE and the rest. Both texts are English.
inline Outcome FailedFile(std::string_view what, std::string_view file, OSErr status,
                          std::string_view unchanged) {
    std::string message = Translated(what, file.empty() ? R"("")" : file);
    message.append(": ").append(Translated(StatusText(status))).append("; ").append(Translated(unchanged));
    return Failed(std::move(message));
}

// The same for a file that was to be created: only its folder can be missing.
inline Outcome FailedNewFile(std::string_view file, OSErr status, std::string_view unchanged) {
    return FailedFile("cannot write %1", file, status == fnfErr ? dirNFErr : status, unchanged);
}

} // namespace drevix
