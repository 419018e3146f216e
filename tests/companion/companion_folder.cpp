#include "tests/companion/companion_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <sstream>

namespace drevix::test {

CompanionFolder::CompanionFolder() {
    for (std::size_t row = 0; row < kKorvaneApps.size(); ++row) {
        std::filesystem::create_directories(std::filesystem::path(File(row)).parent_path());
    }
}

void CompanionFolder::Write(std::size_t row, std::string_view bytes) const {
    WriteWhole(File(row), bytes);
}

std::string CompanionFolder::File(std::size_t row) const {
    return Path("Library/Preferences/Drevix Tarnix Preferences/") + std::string(kKorvaneApps[row].folder) +
           "/~hotkeys";
}

Peer::Peer(const std::string &arguments)
    : fPipe(::popen(("exec python3 '" DREVIX_TEST_PEER "' " + arguments).c_str(), "r")) {}

Peer::~Peer() {
    if (fPipe != nullptr) {
        ::pclose(fPipe);
    }
}

std::string Peer::Line() {
    std::string line;
    for (int c = std::fgetc(fPipe); c != EOF && c != '\n'; c = std::fgetc(fPipe)) {
        line += static_cast<char>(c);
    }
    return line;
}

std::string Peer::Rest() {
    std::string rest;
    for (int c = std::fgetc(fPipe); c != EOF; c = std::fgetc(fPipe)) {
        rest += static_cast<char>(c);
    }
    EXPECT_EQ(::pclose(fPipe), 0);
    fPipe = nullptr;
    return rest;
}

std::string HotKeyFile(const std::vector<std::string> &rows, std::string_view target) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<HotKeys TargetApp=\"";
    text.append(target).append("\">\n");
    for (const std::string &row : rows) {
        std::istringstream values(row);
        text += "  <HotKey>";
        for (const std::string_view key : kKorvaneKeyNames) {
            std::string value;
            std::getline(values, value, '|');
            text.append("<").append(key).append(">").append(value).append("</").append(key).append(">");
        }
        text += "</HotKey>\n";
    }
    return text + "</HotKeys>\n";
}

std::vector<std::string> Rows(const std::optional<KorvaneHotKeyList> &list) {
    if (!list) {
        return {"nothing"};
    }
    std::vector<std::string> rows;
    for (const KorvaneHotKey &hotKey : list->HotKeys) {
        std::string row;
        for (std::size_t i = 0; i < kKorvaneKeyNames.size(); ++i) {
            row.append(i == 0 ? "" : "|").append(hotKey.Text(static_cast<KorvaneKey>(i)));
        }
        rows.push_back(row);
    }
    if (list->isPartial) {
        rows.emplace_back("partial");
    }
    return rows;
}

} // namespace drevix::test
