// The companion's preferences in a scratch folder, and its side played by peer.py.
#pragma once

#include "companion/korvane_files.h"
#include "tests/support/testing.h"

#include <cstdio>

namespace drevix::test {

using Strings = std::vector<std::string>;

class CompanionFolder : public ScratchFolder {
  public:
    // Makes the folders of all five applications, without files.
    CompanionFolder() {
        for (std::size_t row = 0; row < kKorvaneApps.size(); ++row) {
            fs::create_directories(fs::path(File(row)).parent_path());
        }
    }
    [[nodiscard]] std::string File(std::size_t row) const {
        return Path("Library/Preferences/Drevix Tarnix Preferences/")
            .append(kKorvaneApps[row].folder)
            .append("/~hotkeys");
    }
    void Write(std::size_t row, std::string_view bytes) const { WriteWhole(File(row), bytes); }
};

// peer.py with these arguments.
class Peer {
  public:
    explicit Peer(const std::string &arguments)
        : fPipe(::popen(("exec python3 '" DREVIX_TEST_PEER "' " + arguments).c_str(), "r")) {}
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;
    ~Peer() {
        if (fPipe != nullptr) {
            ::pclose(fPipe);
        }
    }
    // The next line of what it writes, as a number.
    int Number() { return std::atoi(Read('\n').c_str()); }
    // All that is left, and the exit status must be 0.
    std::string Rest() {
        std::string rest = Read(EOF);
        EXPECT_EQ(::pclose(fPipe), 0);
        fPipe = nullptr;
        return rest;
    }

  private:
    std::string Read(int end) {
        std::string text;
        for (int c = std::fgetc(fPipe); c != EOF && c != end; c = std::fgetc(fPipe)) {
            text += static_cast<char>(c);
        }
        return text;
    }
    std::FILE *fPipe;
};

inline constexpr auto kKorvaneKeys = std::to_array(
    {KorvaneKey::Menu, KorvaneKey::Key, KorvaneKey::Device, KorvaneKey::Modifier, KorvaneKey::VirtualKey});

// Hotkeys of rows "Menu|Key|Device|Modifier|VirtualKey"; missing values are empty.
inline KorvaneHotKeyList ListOf(const Strings &rows) {
    KorvaneHotKeyList list;
    list.TargetApp = "Some App";
    for (const std::string &row : rows) {
        std::istringstream values(row);
        KorvaneHotKey &hotKey = list.HotKeys.emplace_back();
        for (const KorvaneKey key : kKorvaneKeys) {
            std::string value;
            std::getline(values, value, '|');
            hotKey.Set(key, value);
        }
    }
    return list;
}
inline std::string HotKeyFile(const Strings &rows) {
    return KorvaneFileText(ListOf(rows));
}

// The hotkeys of a file as such rows, and a last row that says what is partial; {"nothing"} for no list.
inline Strings Rows(const std::optional<KorvaneHotKeyList> &list) {
    if (!list) {
        return {"nothing"};
    }
    Strings rows;
    for (const KorvaneHotKey &hotKey : list->HotKeys) {
        std::string row;
        for (const KorvaneKey key : kKorvaneKeys) {
            row.append(key == KorvaneKey::Menu ? "" : "|").append(hotKey.Text(key));
        }
        rows.push_back(row);
    }
    if (list->isPartial) {
        rows.emplace_back("partial");
    }
    return rows;
}

} // namespace drevix::test
