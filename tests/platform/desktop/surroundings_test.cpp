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

TEST(ConfiguredKeyboardLayout, Environment_GoesBeforeTheFileWhichIsReadAsAShellReadsIt) {
    const ScratchFolder folder;
    const ExchangedFile disk("/etc/default/keyboard", folder.Path("keyboard"));
    const ScopedVariable variant("XKB_DEFAULT_VARIANT", "bepo");
    const auto layout = [](const std::string &wanted) {
        const ScopedVariable variable("XKB_DEFAULT_LAYOUT", wanted);
        const KeyboardLayoutNames names = ConfiguredKeyboardLayout();
        return names.model + "|" + names.layout + "|" + names.variant + "|" + names.options;
    };
    EXPECT_EQ(layout(""), "|us||");
    for (const auto &[text, names] : {std::pair{"XKBMODEL=pc105\n", "|us||"},
                                      {"XKBLAYOUT=\"de", "|de||"},
                                      {"# XKBLAYOUT=\"no\"\n\nXKBMODEL=\"pc105\"\r\n"
                                       "  XKBLAYOUT='de,us' # two\nXKBLAYOUTS=x\nXKBOPTIONS=\n"
                                       "XKBVARIANT=nodeadkeys,  # unquoted",
                                       "pc105|de,us|nodeadkeys,|"}}) {
        WriteWhole(folder.Path("keyboard"), text);
        EXPECT_EQ(layout(""), names);
    }
    EXPECT_EQ(layout("fr"), "|fr|bepo|");
}

} // namespace
} // namespace drevix::test
