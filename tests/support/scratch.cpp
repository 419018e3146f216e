#include "tests/support/scratch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace drevix::test {
namespace {

std::string MakeFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "drevix-test-XXXXXX";
    return ::mkdtemp(pattern.data());
}

} // namespace

ScopedVariable::ScopedVariable(const char *name, const std::string &value) : fName(name) {
    const char *const before = std::getenv(name);
    fBefore = before == nullptr ? "" : before;
    ::setenv(name, value.c_str(), 1);
}

ScopedVariable::~ScopedVariable() {
    fBefore.empty() ? ::unsetenv(fName) : ::setenv(fName, fBefore.c_str(), 1);
}

ScratchFolder::ScratchFolder()
    : fPath(MakeFolder()), fConfig("XDG_CONFIG_HOME", Preferences()), fState("XDG_STATE_HOME", Path("state")),
      fHome("HOME", fPath) {
    std::filesystem::create_directory(Preferences());
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(fPath, ignored);
}

std::vector<std::string> ScratchFolder::Names(const std::string &folder) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

std::string ReadWhole(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteWhole(const std::string &path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    EXPECT_TRUE(file.good()) << path;
}

std::string FencedBlock(const std::string &path, const std::string &kind) {
    const std::string page = ReadWhole(path);
    const std::string fence = "```" + kind + "\n";
    const std::size_t start = page.find(fence);
    EXPECT_NE(start, std::string::npos) << path;
    const std::size_t inside = start + fence.size();
    return page.substr(inside, page.find("```", inside) - inside);
}

std::string FromHex(std::string_view digits) {
    std::string hex;
    std::ranges::copy_if(digits, std::back_inserter(hex),
                         [](unsigned char c) { return std::isxdigit(c) != 0; });
    EXPECT_EQ(hex.size() % 2, 0U) << "an odd number of digits";
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

} // namespace drevix::test
