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

std::string Variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

void PutBack(const char *name, const std::string &value) {
    if (value.empty()) {
        ::unsetenv(name);
    } else {
        ::setenv(name, value.c_str(), 1);
    }
}

} // namespace

ScratchFolder::ScratchFolder() : fOldConfig(Variable("XDG_CONFIG_HOME")), fOldHome(Variable("HOME")) {
    std::string pattern = std::filesystem::temp_directory_path() / "drevix-test-XXXXXX";
    fPath = ::mkdtemp(pattern.data());
    std::filesystem::create_directory(Preferences());
    ::setenv("XDG_CONFIG_HOME", Preferences().c_str(), 1);
    ::setenv("HOME", fPath.c_str(), 1);
}

ScratchFolder::~ScratchFolder() {
    PutBack("XDG_CONFIG_HOME", fOldConfig);
    PutBack("HOME", fOldHome);
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
    std::string bytes;
    std::string pair;
    for (const char digit : digits) {
        if (std::isxdigit(static_cast<unsigned char>(digit)) == 0) {
            continue;
        }
        pair.push_back(digit);
        if (pair.size() == 2) {
            bytes.push_back(static_cast<char>(std::stoi(pair, nullptr, 16)));
            pair.clear();
        }
    }
    EXPECT_TRUE(pair.empty()) << "an odd number of digits";
    return bytes;
}

} // namespace drevix::test
