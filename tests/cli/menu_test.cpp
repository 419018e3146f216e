#include "companion/korvane_crc.h"
#include "companion/korvane_files.h"
#include "platform/files/disk.h"
#include "settings/action_commands.h"
#include "tests/cli/program.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

using testing::HasSubstr;

constexpr const char *kHotKeys =
    "<HotKeys TargetApp='System'>"
    "<HotKey><Menu>Filter</Menu></HotKey>"
    "<HotKey><Menu>FILTER</Menu></HotKey>"
    "<HotKey><Menu>Sharpen More</Menu><Key>3</Key><Device>pyralis</Device></HotKey>"
    "</HotKeys>";

// drevixctl with the companion's file for the global record.
class Menu : public test::ProgramTest {
  protected:
    Menu() {
        std::filesystem::create_directories(std::filesystem::path(fFile).parent_path());
        test::WriteWhole(fFile, kHotKeys);
    }
    static std::string Device(std::size_t hotKey) {
        return LoadKorvaneFileForApp("_System_")->HotKeys.at(hotKey).Text(KorvaneKey::Device);
    }
    [[nodiscard]] ActionSlot Slot(SlotIndex slot) const { return Record().device[0].action[slot]; }

    const std::string fFile = FindKorvaneFileForApp("_System_");
};

TEST_F(Menu, Entries_AreListedWithTheirButtons) {
    EXPECT_EQ(Do("menu"), "TITLE         CONTROL\n"
                          "Filter\n"
                          "FILTER\n"
                          "Sharpen More  buttonII\n");
    EXPECT_THAT(Do("menu --json"), HasSubstr("\"title\": \"Sharpen More\""));
    EXPECT_THAT(Do("show"), HasSubstr("Companion menu item  \"Sharpen More\""));
    EXPECT_THAT(Refused("menu --app Painter"), HasSubstr("no menu entries for \"Painter\""));
    EXPECT_EQ(test::ReadWhole(fFile), kHotKeys);
}

TEST_F(Menu, Assign_FindsTheTitleAndTellsTheCompanion) {
    EXPECT_EQ(Do("assign buttonI menu sharpen_MORE"),
              "buttonI: Companion menu item \"Sharpen More\"\nbuttonII: No action\n");
    EXPECT_EQ(Slot(18).crc, KorvaneStringCRC("Sharpen More"));
    Do("assign buttonIII menu FILTER");
    EXPECT_EQ(Slot(20).crc, KorvaneStringCRC("FILTER"));
    EXPECT_EQ(Device(0), "");
    EXPECT_EQ(Device(1), kKorvaneDevice);
    EXPECT_EQ(LoadKorvaneFileForApp("_System_")->HotKeys[2].Text(KorvaneKey::Key), "1");
    EXPECT_THAT(
        Refused("assign buttonI menu Blur"),
        HasSubstr("no menu entry \"Blur\" for this application; nothing was changed; 'drevixctl menu'"));
    EXPECT_THAT(Refused("assign buttonV menu Filter"), HasSubstr("does not work on this control"));
    Do("assign buttonIII none");
    EXPECT_EQ(Device(1), "");
}

// It said that all was well, and the button was empty at the next look.
TEST_F(Menu, UnwritableFile_IsTold) {
    struct ReadOnlyHotKeys : test::ScopedDisk {
        int Open(const char *path, int flags, mode_t mode) override {
            const bool isRefused = std::string_view(path).ends_with("/~hotkeys") && (flags & O_RDWR) != 0;
            errno = EACCES;
            return isRefused ? -1 : Disk::Open(path, flags, mode);
        }
    };
    const ReadOnlyHotKeys disk;
    const test::Result result = Run("assign buttonI menu Filter");
    const test::Result freed = Run("assign buttonII none"); // "Sharpen More" came back without a word
    EXPECT_EQ(freed.status, ExitStatus::Failed);
    EXPECT_THAT(freed.err, HasSubstr("cannot write " + fFile));
    EXPECT_EQ(result.status, ExitStatus::Failed);
    EXPECT_THAT(result.err, HasSubstr("cannot write " + fFile +
                                      ": you don't have permission; the settings are saved, but"));
    EXPECT_EQ(result.out, "");
}

// Nothing told that the buttons and the file no longer went together.
TEST_F(Menu, FileReadInPart_IsTold) {
    test::WriteWhole(fFile, std::string(kHotKeys) + "<HotKey>");
    const test::Result result = Run("list");
    EXPECT_EQ(result.status, ExitStatus::Done);
    EXPECT_THAT(result.err, HasSubstr("note: " + fFile + " is damaged"));
    EXPECT_THAT(result.err, HasSubstr("let the companion dial's own program save it again"));
}

// What the companion wrote while the command ran was replaced without a word.
TEST_F(Menu, ReplacedChange_IsTold) {
    Do("assign buttonI menu Filter");
    struct BusyCompanion : test::ScopedDisk {
        int Open(const char *path, int flags, mode_t mode) override {
            if (std::string_view(path).ends_with("/companion.lock")) { // just before the files are written
                test::WriteWhole(FindKorvaneFileForApp("_System_"), kHotKeys);
            }
            return Disk::Open(path, flags, mode);
        }
    } companion;
    const test::Result result = Run("set ringSensitivity 130");
    EXPECT_EQ(result.status, ExitStatus::Done);
    EXPECT_THAT(result.err,
                HasSubstr("meanwhile changed in " + fFile + "; what " + fFile + " held is kept as "));
    EXPECT_EQ(Device(0), kKorvaneDevice);
}

TEST_F(Menu, OtherSettingsFiles_AreNotTheCompanionsAndHaveTheirOwnHistory) {
    const std::string other = "--prefs " + fFolder.Path("other.prefs");
    Do(other + " assign buttonI menu Filter");
    EXPECT_EQ(test::ReadWhole(fFile), kHotKeys);
    Do(other + " assign buttonI none");
    EXPECT_THAT(Do("history"), HasSubstr("no earlier settings"));
    EXPECT_THAT(Do(other + " history"), HasSubstr("buttonI"));
    Do(other + " restore 1");
    EXPECT_THAT(Do(other + " show"), HasSubstr("\"Filter\""));
    Do("--prefs " + SettingsFile() + " assign buttonI menu Filter"); // is the user's own by another name
    EXPECT_EQ(Device(0), kKorvaneDevice);
}

} // namespace
} // namespace drevix
