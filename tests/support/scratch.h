// A folder of a test's own, with the preferences folder inside it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace drevix::test {

// An environment variable that has another value while this lives.
class ScopedVariable {
  public:
    ScopedVariable(const char *name, const std::string &value);
    ScopedVariable(const ScopedVariable &) = delete;
    ScopedVariable &operator=(const ScopedVariable &) = delete;
    ~ScopedVariable();

  private:
    const char *fName;
    std::string fBefore;
};

// Makes an empty folder, removed with all that is in it at destruction. While it lives, $XDG_CONFIG_HOME,
// $XDG_STATE_HOME and $HOME point into it, so that nothing of the user's is read or written.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();

    [[nodiscard]] const std::string &Path() const { return fPath; }
    [[nodiscard]] std::string Path(std::string_view name) const { return fPath + "/" + std::string(name); }
    // The preferences folder; it exists.
    [[nodiscard]] std::string Preferences() const { return Path("config"); }
    // Names in a folder, sorted.
    [[nodiscard]] static std::vector<std::string> Names(const std::string &folder);

  private:
    std::string fPath;
    ScopedVariable fConfig;
    ScopedVariable fState;
    ScopedVariable fHome;
};

// A whole file, and writing one; a failure fails the running test.
std::string ReadWhole(const std::string &path);
void WriteWhole(const std::string &path, std::string_view bytes);
// The first block of a page that is fenced as of this kind ("```xml"), without the fences.
std::string FencedBlock(const std::string &path, const std::string &kind);

// The bytes of a text of hexadecimal digits; blanks and line ends are skipped.
std::string FromHex(std::string_view digits);

} // namespace drevix::test
