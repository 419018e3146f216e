// What a program finds around itself: its resources, and the configured keyboard layout.

#include "platform/desktop/keyboard_layout.h"
#include "platform/desktop/resources.h"
#include "platform/files/disk.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

TEST(FindResourceFolder, Folder_IsTheOneBesideTheProgramsFolder) {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    const std::filesystem::path there = program.parent_path().parent_path() / "share/drevix-settings";
    FSRef found;
    const bool exists = std::filesystem::is_directory(there);
    EXPECT_EQ(FindResourceFolder(&found), exists ? noErr : fnfErr);
    EXPECT_EQ(found.path, exists ? there : "");
}

// The real disk, but for the keyboard's file.
struct DiskWithKeyboardFile : ScopedDisk {
    explicit DiskWithKeyboardFile(std::string path) : file(std::move(path)) {}
    int Open(const char *path, int flags, mode_t mode) override {
        return Disk::Open(std::string_view(path) == "/etc/default/keyboard" ? file.c_str() : path, flags,
                          mode);
    }
    std::string file;
};

TEST(ConfiguredKeyboardLayout, Environment_GoesBeforeTheFile) {
    const ScratchFolder folder;
    const DiskWithKeyboardFile disk(folder.Path("keyboard"));
    const ScopedVariable variant("XKB_DEFAULT_VARIANT", "nodeadkeys");
    const auto layout = [](const std::string &wanted) {
        const ScopedVariable variable("XKB_DEFAULT_LAYOUT", wanted);
        const KeyboardLayoutNames names = ConfiguredKeyboardLayout();
        return names.layout + "|" + names.variant;
    };
    EXPECT_EQ(layout(""), "us|");
    WriteWhole(folder.Path("keyboard"), "XKBMODEL=pc105\n");
    EXPECT_EQ(layout(""), "us|");
    WriteWhole(folder.Path("keyboard"), "XKBLAYOUT=fr\nXKBVARIANT=bepo\n");
    EXPECT_EQ(layout(""), "fr|bepo");
    EXPECT_EQ(layout("de"), "de|nodeadkeys");
}

} // namespace
} // namespace drevix::test
