#include "platform/desktop/autostart.h"

#include "platform/desktop/program_starter.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

class Autostart : public ::testing::Test {
  protected:
    [[nodiscard]] bool Exists() const { return fs::exists(fPath); }
    void WriteEntry(const std::string &text) const {
        fs::create_directories(fs::path(fPath).parent_path());
        WriteWhole(fPath, text);
    }
    ScratchFolder fFolder;
    const std::string fPath = fFolder.Preferences() + "/autostart/Helper.desktop";
};

// Paths with everything that the rules for values, arguments and field codes treat apart: validated by the
// desktop's own tool, and taken apart and started by its library as the session does.
TEST_F(Autostart, AnyPath_IsStartedByTheDesktop) {
    static constexpr const char *kNames[] = {"plain",       "two words", "do\"uble",  "it's",   "per%cent %f",
                                             "back\\slash", "dol$HOME",  "tick`id`",  "eq=ual", "tab\tx",
                                             "line\nend",   "\\n\\s",    "\u00FCber", "~",      "a;b&c|d>e",
                                             "%",           "\\"};
    for (const char *name : kNames) {
        const std::string program = fFolder.Path(name);
        const std::string started = fFolder.Path() + "/started";
        WriteWhole(program, "#!/bin/sh\necho \"$#\" > '" + started + "'\n");
        ASSERT_EQ(::chmod(program.c_str(), 0700), 0);
        ASSERT_EQ(WriteAutostartEntry("Helper", program), noErr) << name;
        EXPECT_EQ(std::system(("desktop-file-validate '" + fPath + "'").c_str()), 0) << ReadWhole(fPath);
        EXPECT_EQ(std::system(("gio launch '" + fPath + "'").c_str()), 0) << ReadWhole(fPath);
        for (int i = 0; i < 500 && !fs::exists(started); ++i) {
            ::usleep(10'000);
        }
        ASSERT_TRUE(fs::remove(started)) << name << ": " << ReadWhole(fPath);
    }
}

TEST(ProgramStarter, Arguments_ReachTheProgramAsTheyAre) {
    const ScratchFolder scratch;
    const std::string name = "two words$(id);`id`|x>y'\"&\\";
    ProgramStarter starter;
    ASSERT_EQ(starter.Start({"touch", scratch.Path(name)}, nullptr), noErr);
    for (int i = 0; i < 500 && !fs::exists(scratch.Path(name)); ++i) {
        ::usleep(10'000);
    }
    EXPECT_EQ(ScratchFolder::Names(scratch.Path()), (Names{"config", name}));
}

TEST_F(Autostart, EntryOfOurs_FollowsTheProgramAndKeepsTheUsersLines) {
    ASSERT_EQ(WriteAutostartEntry("Helper", "/old"), noErr);
    const std::string fresh = ReadWhole(fPath);
    for (const char *off : {"Hidden=true", "X-GNOME-Autostart-enabled=false", "Hidden = true\r"}) {
        WriteEntry("# note\n[Other]\nExec=other\n" + fresh + off + "\n\n[Desktop Action x]\nExec=action\n");
        const std::string before = ReadWhole(fPath);
        ASSERT_EQ(WriteAutostartEntry("Helper", "/old"), noErr);
        EXPECT_EQ(ReadWhole(fPath), before);
        ASSERT_EQ(WriteAutostartEntry("Helper", "/new"), noErr);
        std::string expected = before;
        expected.replace(expected.find("Exec=\"/old\""), 11, "Exec=\"/new\"");
        expected.replace(expected.find("TryExec=/old"), 12, "TryExec=/new");
        EXPECT_EQ(ReadWhole(fPath), expected);
    }
    WriteEntry("[Desktop Entry]\nX-Drevix-LoginItem=true\nHidden=true"); // rewritten by another program
    ASSERT_EQ(WriteAutostartEntry("Helper", "/new"), noErr);
    EXPECT_EQ(ReadWhole(fPath),
              "[Desktop Entry]\nX-Drevix-LoginItem=true\nHidden=true\nExec=\"/new\"\nTryExec=/new\n");
    EXPECT_EQ(RemoveAutostartEntry("Helper"), noErr);
    EXPECT_FALSE(Exists());
    EXPECT_EQ(RemoveAutostartEntry("Helper"), noErr);
}

TEST_F(Autostart, EntriesOfOthers_AreLeftAlone) {
    EXPECT_EQ(RemoveAutostartEntry("Helper"), noErr);
    EXPECT_FALSE(fs::exists(fFolder.Preferences() + "/autostart"));
    for (const char *foreign : {"[Desktop Entry]\nExec=x\n", "", "[Other]\nX-Drevix-LoginItem=true\n",
                                "[Desktop Entry]\n# X-Drevix-LoginItem=true\n"}) {
        WriteEntry(foreign);
        EXPECT_EQ(WriteAutostartEntry("Helper", "/new"), noErr);
        EXPECT_EQ(RemoveAutostartEntry("Helper"), noErr);
        EXPECT_EQ(ReadWhole(fPath), foreign);
    }
    fs::remove(fPath);
    ASSERT_EQ(::mkfifo(fPath.c_str(), 0600), 0);
    EXPECT_EQ(WriteAutostartEntry("Helper", "/new"), noErr) << "a pipe would wait for its writer";
    EXPECT_EQ(RemoveAutostartEntry("Helper"), noErr);
    for (const char *name : {"", "a/b", "../x"}) {
        EXPECT_EQ(WriteAutostartEntry(name, "/new"), bdNamErr);
    }
}

} // namespace
} // namespace drevix::test
