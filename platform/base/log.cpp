#include "platform/base/log.h"

#include "platform/base/plain_text.h"
#include "platform/base/status.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace drevix {
namespace {

// Read once: a program's environment is fixed at its start.
const std::string &Categories() {
    static const std::string categories = [] {
        const char *asked = std::getenv(kVerboseVariable);
        return std::string(asked != nullptr ? asked : "");
    }();
    return categories;
}

double SecondsSinceStart() {
    static const auto start = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

void BeVerbose() {
    ::setenv(kVerboseVariable, "1", 1);
}

bool IsLogged(std::string_view category) {
    const std::string &asked = Categories();
    if (asked.empty() || asked == "1") {
        return !asked.empty();
    }
    return ("," + asked + ",").find("," + std::string(category) + ",") != std::string::npos;
}

void Log(std::string_view category, std::string_view text) {
    if (IsLogged(category)) {
        const std::string name(category);
        std::fprintf(stderr, "%8.3f %s: %s\n", SecondsSinceStart(), name.c_str(), PlainText(text).c_str());
    }
}

void LogStep(std::string_view category, std::string_view step, std::string_view object, OSErr status) {
    if (IsLogged(category)) {
        Log(category, std::string(step).append(" ").append(object).append(": ").append(StatusText(status)));
    }
}

} // namespace drevix
