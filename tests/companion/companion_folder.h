// The companion's preferences in a scratch folder, and its side played by peer.py.
#pragma once

#include "companion/korvane_files.h"
#include "tests/support/scratch.h"

#include <string>
#include <string_view>
#include <vector>

namespace drevix::test {

class CompanionFolder : public ScratchFolder {
  public:
    // Makes the folders of all five applications, without files.
    CompanionFolder();
    // Writes the file of a row.
    void Write(std::size_t row, std::string_view bytes) const;
    [[nodiscard]] std::string File(std::size_t row) const;
};

// peer.py with these arguments, its output read line by line.
class Peer {
  public:
    explicit Peer(const std::string &arguments);
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;
    ~Peer();
    // The next line without its end; empty at the end of the output.
    std::string Line();
    // All that is left, and the exit status must be 0.
    std::string Rest();

  private:
    std::FILE *fPipe;
};

// A hotkey file as the companion writes one, of rows "Menu|Key|Device|Modifier|VirtualKey"; missing values
// are empty.
std::string HotKeyFile(const std::vector<std::string> &rows, std::string_view target = "Some App");
// The hotkeys of a file as such rows, and a last row that says what is partial; {"nothing"} for no list.
std::vector<std::string> Rows(const std::optional<KorvaneHotKeyList> &list);

} // namespace drevix::test
