#include "helper/program_choice.h"

#include "tests/support/testing.h"

namespace drevix::test {
namespace {

TEST(ProgramChoice, Kind_IsTheDefaultElseAnEntryElseTheFirstOfItsCategories) {
    const ScratchFolder folder;
    const ScopedVariable home("XDG_DATA_HOME", folder.Path("home"));
    const ScopedVariable shared("XDG_DATA_DIRS", folder.Path("shared"));
    const ScopedVariable lists("XDG_CONFIG_DIRS", folder.Path("lists"));
    fs::create_directories(folder.Path("shared/applications"));
    const auto add = [&](const std::string &name, const std::string &categories) {
        WriteWhole(folder.Path("shared/applications/" + name + ".desktop"),
                   "[Desktop Entry]\nType=Application\nName=x\nExec=" + name + "\nCategories=" + categories);
    };
    add("b", "Network;WebBrowser;");
    add("a", "WebBrowser;Network");
    add("c", "Network;");
    WriteWhole(folder.Path("config/mimeapps.list"), "[Default Applications]\nx/web=b.desktop\n");
    using Words = std::vector<std::string>;
    EXPECT_EQ(CommandOfKind({"", "", "x/web", "c;", ""}), Words{"b"});
    EXPECT_EQ(CommandOfKind({"", "", "x/none", "gone;c;b", "Network;WebBrowser;"}), Words{"c"});
    EXPECT_EQ(CommandOfKind({"", "", "", "", "Network;WebBrowser;"}), Words{"a"});
    EXPECT_EQ(CommandOfKind({"", "", "", "", "Network;Mail"}), Words{});
    EXPECT_EQ(CommandOfKind({"", "", "", "gone", ""}), Words{});
}

} // namespace
} // namespace drevix::test
