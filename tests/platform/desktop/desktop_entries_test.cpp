#include "platform/desktop/desktop_entries.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

class DesktopEntries : public ::testing::Test {
  protected:
    [[nodiscard]] std::string Write(const std::string &name, const std::string &text) const {
        const std::string path = fFolder.Path(name);
        fs::create_directories(fs::path(path).parent_path());
        WriteWhole(path, text);
        return path;
    }
    void WriteEntry(const std::string &name, const std::string &shown, const std::string &more = {}) const {
        std::ignore = Write(name, "[Desktop Entry]\nType=Application\nName=" + shown + "\n" + more);
    }

    ScratchFolder fFolder;
    // One folder, not a list of them: with a colon in its name its applications were not found.
    ScopedVariable fHome{"XDG_DATA_HOME", fFolder.Path("ho:me")};
    ScopedVariable fShared{"XDG_DATA_DIRS", fFolder.Path("one") + ":relative::" + fFolder.Path("two") + "/"};
};

TEST_F(DesktopEntries, Names_FollowTheLanguage) {
    const std::string path =
        Write("x.desktop", "# comment\n\n[Desktop Entry]\nType=Application\n"
                           "Name[de]=d\nName[de_AT]=at\nName[sr@latin]=sl\nName[sr_RS@latin]=srl\n"
                           "Name=plain\nName[fr]=\nName[sr]=s\nIcon=i\nBroken\n=x\n"
                           "[Desktop Action]\nName[de]=wrong\nName=wrong\nType=Link\n");
    static const std::pair<const char *, const char *> kRows[] = {
        {"de_AT.UTF-8", "at"}, {"de_DE.UTF-8@euro", "d"},
        {"fr_FR", "plain"},    {"sr_RS.UTF-8@latin", "srl"},
        {"sr_ME@latin", "sl"}, {"sr_ME", "s"},
        {"", "plain"},         {"_._@_", "plain"}};
    for (const auto &[locale, name] : kRows) {
        DesktopEntry entry;
        ASSERT_EQ(ReadDesktopEntry(path, locale, &entry), noErr);
        EXPECT_EQ(entry.name, name) << locale;
    }
}

TEST_F(DesktopEntries, Files_AreReadOrRefused) {
    static const std::tuple<const char *, OSErr, const char *> kRows[] = {
        {"[Desktop Entry]\r\nType = Application\r\n Name\t=  A b \r\n", noErr, "A b"},
        {"[Desktop Entry]\nName=a\\sb\\\\n\\t\\q\\\nType=Application", noErr, "a b\\n\t\\q\\"},
        {"[Desktop Entry]\nType=Link\nName=x\n", -1, ""},
        {"[Desktop Entry]\nType=Application\nName=\n", -1, ""},
        {"[Desktop Entry", -1, ""},
        {"", -1, ""}};
    for (const auto &[text, status, name] : kRows) {
        DesktopEntry entry;
        EXPECT_EQ(ReadDesktopEntry(Write("x.desktop", text), "de", &entry), status) << text;
        EXPECT_EQ(entry.name, name);
    }
    DesktopEntry entry;
    EXPECT_EQ(ReadDesktopEntry(fFolder.Path("none.desktop"), "", &entry), fnfErr);
    EXPECT_EQ(ReadDesktopEntry(fFolder.Path(), "", &entry), -1);
    ASSERT_EQ(mkfifo(fFolder.Path("pipe.desktop").c_str(), 0600), 0);
    EXPECT_EQ(ReadDesktopEntry(fFolder.Path("pipe.desktop"), "", &entry), -1) << "waits for no writer";
    EXPECT_EQ(
        ReadDesktopEntry(Write("big.desktop", std::string(kDesktopEntryMaxBytes + 1, '\n')), "", &entry), -1);
}

TEST_F(DesktopEntries, Commands_AreTheExecLineWithoutAFile) {
    const std::string path = fFolder.Path("x.desktop");
    using Words = std::vector<std::string>;
    const std::tuple<std::string, std::string, Words> rows[] = {
        {"a  b c\\sd", "", {"a", "b", "c", "d"}},
        {R"("/o p/x" "q\\"\\\\\\$" y"z")", "", {"/o p/x", "q\"\\$", "yz"}},
        {"a %f %F %u %U --to=%u %d %", "", {"a", "--to=", "%"}},
        {"a 5%% %c -k%k", "", {"a", "5%", "A b", "-k" + path}},
        {"a %i b", "Icon=pic\n", {"a", "--icon", "pic", "b"}},
        {"a %i b", "", {"a", "b"}},
        {R"(a "b\\)", "", {"a", "b\\"}},
        {"a b", "Terminal=true\n", {"x-terminal-emulator", "-e", "a", "b"}},
        {"", "Terminal=true\n", {}},
    };
    for (const auto &[exec, more, words] : rows) {
        WriteEntry("x.desktop", "A b", "Exec=" + exec + "\n" + more);
        DesktopEntry entry;
        ASSERT_EQ(ReadDesktopEntry(path, "", &entry), noErr);
        EXPECT_EQ(CommandOfEntry(entry), words) << exec;
    }
}

TEST_F(DesktopEntries, InstalledApplications_TakeTheFirstOfEachId) {
    WriteEntry("ho:me/applications/a.desktop", "home a", "Icon=pic\n");
    WriteEntry("one/applications/a.desktop", "one a");
    WriteEntry("one/applications/kde/b.desktop", "one b");
    WriteEntry("two/applications/kde-b.desktop", "two b");
    WriteEntry("two/applications/removed.desktop", "two removed");
    std::ignore = Write("ho:me/applications/removed.desktop", "[Desktop Entry]\nHidden=true\n");
    WriteEntry("two/applications/quiet.desktop", "quiet", "NoDisplay=true\n");
    WriteEntry("two/applications/c.desktop", "two c", "NoDisplay=false\n");
    WriteEntry("two/applications/other.txt", "no entry");
    fs::create_directory_symlink(fFolder.Path("two/applications"), fFolder.Path("two/applications/loop"));
    std::map<std::string, std::string> found;
    for (const DesktopEntry &entry : InstalledApplications("")) {
        if (entry.id.find("loop") == std::string::npos) {
            found[entry.id] = entry.name;
            EXPECT_TRUE(fs::exists(entry.path));
            EXPECT_EQ(entry.icon, entry.name == "home a" ? "pic" : "");
        }
    }
    EXPECT_EQ(found, (std::map<std::string, std::string>{
                         {"a.desktop", "home a"}, {"kde-b.desktop", "one b"}, {"c.desktop", "two c"}}));
}

TEST_F(DesktopEntries, DefaultApplications_GoByTheFirstListThatNamesAnInstalledOne) {
    const ScopedVariable desktop("XDG_CURRENT_DESKTOP", "Odd:Test");
    WriteEntry("one/applications/web.desktop", "web",
               "Exec=web\nStartupWMClass=Web\nCategories=Network;WebBrowser;\n");
    WriteEntry("two/applications/kde/mail.desktop", "mail", "Exec=mail\n");
    std::ignore = Write("one/applications/mimeapps.list",
                        "[Added Associations]\na/b=mail.desktop\n[Default Applications]\n"
                        "a/b=gone.desktop; kde-mail.desktop;\n c/d = web.desktop\ng/h=web.desktop");
    std::ignore =
        Write("config/test-mimeapps.list", "[Default Applications]\nc/d=../web.desktop;kde-mail.desktop\n");
    for (const auto &[type, name] :
         {std::pair{"a/b", "mail"}, {"c/d", "mail"}, {"e/f", ""}, {"g/h", "web"}}) {
        DesktopEntry entry;
        EXPECT_EQ(FindDefaultApplication(type, &entry), *name != '\0') << type;
        EXPECT_EQ(entry.name, name) << type;
    }
    DesktopEntry entry;
    ASSERT_TRUE(FindDesktopEntry("web.desktop", "", &entry));
    EXPECT_EQ(entry.startupClass + entry.categories, "WebNetwork;WebBrowser;");
}

} // namespace
} // namespace drevix::test
