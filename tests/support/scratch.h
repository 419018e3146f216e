// A scratch folder for a test, containing the preferences folder.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace drevix::test {

// Sets an environment variable until destruction.
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

// Creates an empty folder, removed with its contents at destruction. Until then $XDG_CONFIG_HOME,
// $XDG_STATE_HOME and $HOME point into it, so that no user file is read or written.
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

// Read and write a whole file; a failure fails the running test.
std::string ReadWhole(const std::string &path);
void WriteWhole(const std::string &path, std::string_view bytes);
// The first fenced block of this kind ("```xml") in a page, without the fences.
std::string FencedBlock(const std::string &path, const std::string &kind);

// The bytes for hexadecimal digits; ignores blanks and line ends.
std::string FromHex(std::string_view digits);

} // namespace drevix::test
