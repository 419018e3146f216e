// What each command does to the settings file and says.

#include "cli/text_table.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"
#include "tests/cli/program.h"
#include "tests/support/testing.h"
#include "wording/action_text.h"

namespace drevix::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Commands : public ProgramTest {};

TEST_F(Commands, WrongUsage_SaysSoAndShowsTheUsage) {
    for (const auto &[line, says] : std::initializer_list<std::pair<const char *, const char *>>{
             {"", "missing command"},
             {"frobnicate", "unknown command \"frobnicate\""},
             {"list --frob", "unknown option \"--frob\""},
             {"list --app=Painter", "does not take --app"},
             {"list x", "unexpected argument \"x\""},
             {"help list show", "unexpected argument \"show\""},
             {"show --app", "needs a value: APP"},
             {"--prefs= set ringSpeed 1", "needs a value: FILE"},
             {"recover x --to=", "needs a value: FILE"},
             {"assign buttonI", "needs CONTROL ACTION"},
             {"assign buttonIV none", "unknown control \"buttonIV\""},
             {"assign buttonI frob", "unknown action \"frob\""},
             {"assign buttonI s", "several actions begin with"},
             {"assign buttonI keystroke", "write keystroke KEY"},
             {"assign buttonI open", "write open PATH, or 177 for the action \"Open\""}, // it was that
             {"assign buttonI keystroke cmd+frob", "not a key of this keyboard layout"},
             {"assign buttonI keystroke ctrl+Delete", "write backspace or fw del"}, // was backspace
             {"assign buttonI keystroke enter", "write return or num+enter"},
             {"assign buttonI scroll up +frob", "unknown modifier \"+frob\""},
             {"assign buttonI undo +shift", "only scrolling"},
             {"assign buttonI undo --repeat 6", "only keystrokes and scrolling"},
             {"assign tunerCW scroll up --repeat 6", "on the ring and the buttons take --repeat"},
             {"assign ringCW scroll up --repeat -1", "not \"-1\""},
             {"assign buttonI keystroke esc --repeat 65535", "from 0 to 65534"},
             {"assign buttonI keystroke esc --repeat 6x", "from 0 to 65534"},
             {"set active", "needs KEY VALUE"},
             {"set fileName x", "cannot be set"},
             {"set ringSpeed 256", "0 to 255"},
             {"set active maybe", "true or false"},
             {"set configName 12345678901234567890123456789012 --app Painter", "1 to 31"},
             {"defaults all", "ring, tuner or buttons"},
             {"export x --all --app Painter", "not both"},
             {"export - --json", "does not take --json"},
             {"recover x", "needs --to"},
             {"press buttonIV", "unknown control \"buttonIV\""},
         }) {
        EXPECT_THAT(Refused(line, ExitStatus::WrongUsage), HasSubstr(says)) << line;
    }
}

TEST_F(Commands, Refusals_LeaveTheFileAndSayWhatToDo) {
    Do("set ringSpeed 9");
    std::filesystem::create_symlink(SettingsFile(), fFolder.Path("link"));
    std::filesystem::create_hard_link(SettingsFile(), fFolder.Path("hard"));
    for (const auto &[line, says] : std::initializer_list<std::pair<std::string, const char *>>{
             {"show --app Nobody", "no record for \"Nobody\"; nothing was changed; 'drevixctl list'"},
             {"set configName Mine", "global record has no name"},
             {"assign buttonI same_as_global_settings", "the global record cannot hold it"},
             {"assign ringLeft zoom_in --app Browser", "application does not support it"},
             {"assign tunerCW zoom_in --app Painter", "does not work on this control"},
             {"assign buttonI open /nowhere", "cannot assign open /nowhere: "},
             {"--prefs x assign buttonI open /", "leave out --prefs"},
             {"delete --app painter", "came with the panel"},
             {"add /nowhere", "no such file"},
             {"add /etc", "is not an application"},
             {"add /etc/passwd", "not an application, desktop entry or program"},
             {"export /nowhere/x", "cannot write /nowhere/x"},
             {"--prefs /nowhere/x set ringSpeed 1", "no such folder"},
             {"--prefs / list", "it is a folder"},
             {"check /nowhere", "cannot check /nowhere"},
             {"check /dev/full", "it is a folder, pipe or device"}, // it read 2 GB
             {"recover / --to x", "cannot recover /: it is a folder"},
             {"maps /nowhere", "cannot read /nowhere"},
             {"maps /etc", "no file of at most 64 KiB"},
             {"press buttonI", "the device helper is not running"},
             {"recover " + SettingsFile() + " --to /nowhere/x", "no such folder"},
             {"export " + SettingsFile(), "it is the settings file"},
             {"export " + fFolder.Path("link"), "it is the settings file"},
             {"export " + fFolder.Path("hard"), "it is the settings file"},
         }) {
        EXPECT_THAT(Refused(line), HasSubstr(says)) << line;
    }
    EXPECT_EQ(Record().device[0].navSpeed, 9);
}

TEST_F(Commands, FirstStart_ReadsFactoryRecordsAndWritesNothing) {
    std::filesystem::remove(fFolder.Preferences());
    EXPECT_EQ(Do("list"), "NAME             FILE NAME  SIGNATURE  FACTORY  ACTIVE  NUMBER\n"
                          "Global Settings                        yes      yes     0\n"
                          "Browser          Browser    WEBB       yes      yes     1\n"
                          "Painter          Painter    8BIM       yes      yes     2\n");
    EXPECT_THAT(Do("show --app BROWSER"), HasSubstr("ringLeft  Save"));
    EXPECT_FALSE(std::filesystem::exists(fFolder.Preferences()));
    Do("set active false --app browser"); // makes the folder
    EXPECT_EQ(Record("Browser").active, 0);
    std::filesystem::remove(fFolder.Path("Defaults.veltrana"));
    std::filesystem::remove(SettingsFile());
    EXPECT_THAT(Refused("list"), HasSubstr("no settings were found"));
}

TEST_F(Commands, Assign_StoresTheActionAndAppliesTheRules) {
    const auto slot = [](ActionCommand command, std::uint16_t modifiers = 0,
                         std::uint8_t keyCode = kNoKeyCode, std::uint16_t delay = 0, std::uint32_t crc = 0) {
        return ActionSlot{command, modifiers, keyCode, 0, delay, crc, 0, {}};
    };
    constexpr std::uint16_t kTwo = kCommandModifier | kShiftModifier;
    constexpr std::uint16_t kThree = kShiftModifier | kOptionModifier | kControlModifier;
    // The CRC-32 of the digits, as everyone publishes it.
    const ActionSlot menu = slot(kActionToolMenu, 0, kNoKeyCode, 0, 0xCBF43926);
    for (const auto &[line, index, stored, says] :
         std::initializer_list<std::tuple<const char *, SlotIndex, ActionSlot, const char *>>{
             {"buttonII keystroke cmd+shift+esc", 19, slot(kActionKeystroke, kTwo, 53),
              "buttonII: Keystroke cmd+shift+esc\n"},
             {"buttonII scroll right +alt +shift+ctrl", 19, slot(227, kThree),
              "buttonII: Scroll right with shift+opt+ctrl\n"},
             {"buttonII keystroke cmd+shift+esc --repeat -1", 19, slot(kActionKeystroke, kTwo, 53, 0xFFFF),
              "buttonII: Keystroke cmd+shift+esc, repeat -1\n"},
             {"buttonII --repeat 6 scroll right +alt +shift+ctrl", 19, slot(227, kThree, kNoKeyCode, 6),
              "buttonII: Scroll right with shift+opt+ctrl, repeat 6\n"},
             {"buttonII keystroke super+num+enter", 19, slot(kActionKeystroke, kCommandModifier, 76),
              "buttonII: Keystroke cmd+enter (num+enter)\n"},
             {"buttonII none", 19, slot(kActionNone), "buttonII: No action\n"},
             {"buttonII Open", 19, slot(177), "buttonII: Open\n"},
             {"buttonII 208", 19, slot(208), "buttonII: Redo\n"},
             {"buttonII brightness_u", 19, slot(134), "buttonII: Brightness up\n"},
             {"buttonI menu 123456789", 18, menu, "buttonI: Companion menu item number 3421780262\n"},
             {"buttonII menu 123456789", 19, menu,
              "buttonII: Companion menu item number 3421780262\nbuttonI: No action\n"},
             {"ringLeft move_right", 0, slot(38), "ringLeft: Move right\nringRight: Move left\n"},
         }) {
        EXPECT_EQ(Do(std::string("assign --app Painter ") + line), says);
        const AppPrefs record = Record("Painter");
        EXPECT_EQ(std::memcmp(&record.device[0].action[index], &stored, sizeof stored), 0) << line;
    }
    // Was shown as -1.
    EXPECT_EQ(ActionDetails(slot(227, 0, kNoKeyCode, 0xFFFF)), "repeat 65535");
}

TEST_F(Commands, OpenItem_IsKeptByAnAliasAndShownByItsPath) {
    const std::string photo = fFolder.Path("Caf\u00E9 \u5199\u771F.jpeg");
    WriteWhole(photo, "");
    EXPECT_EQ(Run({"assign", "buttonI", "open", photo}).out,
              "buttonI: Open file or application " + photo + "\n");
    EXPECT_EQ(Record().device[0].action[18].command, kActionOpenItem);
    EXPECT_THAT(Do("show"), HasSubstr("Open file or application  " + photo + "\n"));
    std::filesystem::remove(photo);
    EXPECT_THAT(Do("show"), HasSubstr("Open file or application  " + photo + " (gone)\n"));
    std::filesystem::remove_all(fFolder.Preferences() + "/com.halcyra.drevix.stuff");
    EXPECT_THAT(Do("show"), HasSubstr("Open file or application  Caf\u00E9 ?"));
}

TEST_F(Commands, Set_ChangesThatValueOnly) {
    for (const auto &[line, now] : {std::pair{"active no", "\"active\": false"},
                                    {"clickEnabled 0", "\"clickEnabled\": false"},
                                    {"ringSensitivity 255", "\"ringSensitivity\": 255"},
                                    {"ringSpeedZ 0", "\"ringSpeedZ\": 0"},
                                    {"configName P\u00E4inter", "\"configName\": \"P\u00E4inter\""}}) {
        std::string expected = Do("show --json --app Painter");
        const std::size_t start = expected.find(std::string(now).substr(0, std::string_view(now).find(' ')));
        expected.replace(start, expected.find_first_of(",\n", start) - start, now);
        Do(std::string("set --app Painter ") + line);
        EXPECT_EQ(Do("show --json --app Painter"), expected);
    }
    for (const char *key : {"ringSensitivitySeparate", "ringSpeedSeparate"}) {
        for (const int value : {1, 0}) {
            Do("set " + std::string(key) + (value != 0 ? " yes" : " no"));
            EXPECT_EQ(Record().device[0].useSeparateNavSens, value);
            EXPECT_EQ(Record().device[0].useSeparateNavSpeed, value);
        }
    }
}

TEST_F(Commands, AddAndDelete_KeepTheOthers) {
    WriteWhole(fFolder.Path("org.example.Viewer.desktop"),
               "[Desktop Entry]\nType=Application\nName=Viewer\nName[de]=Betr\u00E4chter\n");
    WriteWhole(fFolder.Path("link.desktop"), "[Desktop Entry]\nType=Link\nName=x\n");
    ::setenv("LC_ALL", "de_AT.UTF-8", 1);
    Do("assign buttonV undo");
    Do("assign buttonI menu x"); // no other application may choose it, but a new record begins with it
    EXPECT_EQ(Run({"add", fFolder.Path("org.example.Viewer.desktop")}).out, "\"Betr\u00E4chter\" added\n");
    EXPECT_EQ(Do("add /bin/sh"), "\"sh\" added\n");
    EXPECT_EQ(Do("check"), SettingsFile() + ": valid, 5 records\n");
    ::unsetenv("LC_ALL");
    EXPECT_EQ(Record("org.example.Viewer").device[0].action[16].command, 182) << "as the global record";
    EXPECT_THAT(Refused("add /bin/sh"), HasSubstr("\"sh\" already has a record"));
    EXPECT_THAT(Refused("add " + fFolder.Path("link.desktop")), HasSubstr("not the desktop entry"));
    std::filesystem::create_directories(fFolder.Path("Tool.app/Contents"));
    WriteWhole(fFolder.Path("Tool.app/Contents/Info.plist"), "");
    EXPECT_THAT(Refused("add " + fFolder.Path("Tool.app/.")), HasSubstr("does not end in a name"));
    EXPECT_EQ(Do("delete --app=SH"), "\"sh\" deleted\n");
    EXPECT_EQ(Do("list").substr(Do("list").find("Painter")),
              "Painter          Painter             8BIM       yes      yes     2\n"
              "Betr\u00E4chter       org.example.Viewer  ????       no       yes     3\n");
}

// Of two records of one file name only the first could be reached.
TEST_F(Commands, RecordsOfOneName_AreEachReached) {
    const QBaseOwner base = NewDrevixBase();
    for (const OSType signature : {kGlobalSignature, FourCharCode("8BIM"), FourCharCode("ABCD")}) {
        AppPrefs record = gDefaultGlobalPrefs;
        record.application = signature;
        getPascalString(signature == kGlobalSignature ? "" : "Painter", record.appFileName.data(), 63);
        ASSERT_GE(QBaseAddRecord(base.get(), &record, sizeof record), 0);
    }
    ASSERT_EQ(SaveDevicePrefsToPath(base.get(), SettingsFile()), noErr);
    Do("set ringSpeed 21 --app 3");
    EXPECT_THAT(Do("show --app painter:ABCD"), HasSubstr("Ring speed           21\n"));
    Do("set ringSpeed 22 --app Painter");
    EXPECT_THAT(Do("show --app 3"), HasSubstr("Ring speed           21\n"));
    EXPECT_THAT(Do("show --app 2"), HasSubstr("Ring speed           22\n"));
    Refused("show --app 4");
    EXPECT_EQ(Run({"__complete", "show", "--app", "x"}).out, "Browser\nPainter\nPainter:ABCD\n");
}

TEST_F(Commands, Defaults_RestoreTheirGroupOnly) {
    Do("assign ringLeft undo --app Browser");
    Do("assign buttonV undo --app Browser");
    Do("defaults ring --app Browser");
    EXPECT_EQ(Record("Browser").device[0].action[0].command, 178);
    EXPECT_EQ(Record("Browser").device[0].action[16].command, 182);
}

TEST_F(Commands, DamagedSettings_AreSaidAndNeverLost) {
    const std::string damaged(300, 'x');
    WriteWhole(SettingsFile(), damaged);
    const Result shown = Run("list");
    EXPECT_EQ(shown.status, ExitStatus::Done);
    EXPECT_THAT(shown.out, HasSubstr("Painter"));
    EXPECT_THAT(shown.err, StartsWith("drevixctl: note: " + SettingsFile() + " is damaged"));
    EXPECT_EQ(ScratchFolder::Names(fFolder.Preferences()).size(), 1U) << "showing writes nothing";
    EXPECT_EQ(ReadWhole(SettingsFile()), damaged);

    EXPECT_THAT(Run("set ringSpeed 3").err, HasSubstr("is kept as " + SettingsFile() + ".refused"));
    EXPECT_EQ(ReadWhole(SettingsFile() + ".refused"), damaged);
    EXPECT_EQ(Record().device[0].navSpeed, 3);
}

TEST_F(Commands, Faults_LeaveOldOrNewSettings) {
    Do("add /bin/sh");
    const std::string old = ReadWhole(SettingsFile());
    for (const char *line : {"assign buttonV redo", "delete --app sh"}) {
        Do(line);
        const std::string changed = ReadWhole(SettingsFile());
        ForEachFault(10, [&](int failAt, Lasts lasts) {
            WriteWhole(SettingsFile(), old);
            Result result;
            const bool wasHit = MeetsFault(failAt, lasts, EACCES, [&] { result = Run(line); });
            const std::string now = ReadWhole(SettingsFile());
            const bool isDone = result.status == ExitStatus::Done;
            SCOPED_TRACE(std::string(line) + ", fault " + std::to_string(failAt) + ": " + result.err);
            EXPECT_TRUE(now == changed || (now == old && result.status == ExitStatus::Failed));
            EXPECT_TRUE(now == old || result.err.find("as they were") == std::string::npos);
            const bool isNoted = result.err.find("kept in the history") != std::string::npos;
            EXPECT_EQ(std::ranges::count(result.err, '\n'), isDone && !isNoted ? 0 : 1);
            EXPECT_EQ(ScratchFolder::Names(fFolder.Preferences()).size(), 1U);
            EXPECT_TRUE(wasHit || isDone);
            return wasHit;
        });
        WriteWhole(SettingsFile(), old);
    }
}

TEST(TextTable, LongNames_AreCutAtTheTerminalsEdge) {
    const std::string longName(63, 'w');
    const std::string accents = "\u00E4\u00F6\u00FC\u00DF\u2026\u20AC";
    const std::string text =
        TableText({"NAME", "FILE NAME", "SIGNATURE"}, std::vector<TableRow>{
                                                          {longName, longName, "8BIM"},
                                                          {accents, "tab\there\n\u009B", "x"},
                                                      });
    EXPECT_EQ(std::ranges::count(text, '\n'), 3) << "a line end in a name starts no line";
    const std::string second = text.substr(text.find('\n') + 1);
    EXPECT_EQ(TextColumns(second.substr(0, second.find('\n'))), 75U) << "80 columns, the last five blank";
    EXPECT_THAT(text, HasSubstr("w\u2026  w"));
    EXPECT_THAT(text, HasSubstr(accents + std::string(29, ' ') + "tab?here??"));
}

} // namespace
} // namespace drevix::test
