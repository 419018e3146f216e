// What a program finds around itself: its resources, and the configured keyboard layout.

#include "platform/desktop/keyboard_layout.h"
#include "platform/desktop/resources.h"
#include "platform/files/disk.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

TEST(FindResourceFolder, Folder_IsTheOneBesideTheProgramsFolder) {
    const fs::path program = fs::read_symlink("/proc/self/exe");
    const fs::path there = program.parent_path().parent_path() / "share/drevix-settings";
    FSRef found;
    const bool exists = fs::is_directory(there);
    EXPECT_EQ(FindResourceFolder(&found), exists ? noErr : fnfErr);
    EXPECT_EQ(found.path, exists ? there : "");
}

TEST(ConfiguredKeyboardLayout, Environment_GoesBeforeTheFile) {
    const ScratchFolder folder;
    const ExchangedFile disk("/etc/default/keyboard", folder.Path("keyboard"));
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
