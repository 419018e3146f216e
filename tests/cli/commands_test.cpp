// What each command does to the settings file and says.

#include "cli/text_table.h"
#include "settings/action_commands.h"
#include "tests/cli/program.h"
#include "tests/support/faults.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace drevix::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Commands : public ProgramTest {};

TEST_F(Commands, WrongUsage_SaysSoAndShowsTheUsage) {
    struct Row {
        const char *line;
        const char *says;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"", "command is missing"},
             {"frobnicate", "no command \"frobnicate\""},
             {"list --frob", "no option \"--frob\""},
             {"list more", "cannot use \"more\""},
             {"list --app=Painter", "does not take --app"},
             {"show --app", "needs a value: APP"},
             {"show --json=1", "takes no value"},
             {"assign buttonI", "needs CONTROL ACTION"},
             {"assign buttonIV none", "no control \"buttonIV\""},
             {"assign BUTTONI none", "no control"},
             {"assign buttonI frob", "no action \"frob\""},
             {"assign buttonI 50", "no action"},
             {"assign buttonI s", "several actions begin with"},
             {"assign buttonI keystroke", "say which: keystroke"},
             {"assign buttonI 34", "say which: menu"},
             {"assign buttonI keystroke cmd+frob", "no keystroke"},
             {"assign buttonI none more", "none stands alone"},
             {"assign buttonI scroll up +frob", "names no modifier"},
             {"assign buttonI undo +shift", "only scrolling"},
             {"set active", "needs KEY VALUE"},
             {"set frob 1", "no key \"frob\""},
             {"set fileName x", "cannot be set"},
             {"set ringSpeed 256", "0 to 255"},
             {"set ringSpeed 12x", "0 to 255"},
             {"set ringSpeed -- -1", "0 to 255"},
             {"set active maybe", "true or false"},
             {"set configName 12345678901234567890123456789012 --app Painter", "1 to 31"},
             {"delete", "needs --app"},
             {"defaults all", "ring, tuner or buttons"},
             {"export", "needs FILE"},
             {"export x --all --app Painter", "not both"},
             {"recover x", "needs --to"},
             {"help frobnicate", "no command"},
         }) {
        EXPECT_THAT(Refused(row.line, ExitStatus::WrongUsage), HasSubstr(row.says)) << row.line;
    }
}

TEST_F(Commands, Refusals_LeaveTheFileAndSayWhatToDo) {
    Do("set ringSpeed 9");
    struct Row {
        const char *line;
        const char *says;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"show --app Nobody", "no record for \"Nobody\"; nothing was changed; 'drevixctl list'"},
             {"set ringSpeed 1 --app Nobody", "no record for \"Nobody\""},
             {"set configName Mine", "global record has no name"},
             {"assign buttonI use_the_global_setting", "no meaning in the global record"},
             {"assign ringLeft zoom_in --app Browser", "application does not know it"},
             {"assign tunerCW zoom_in --app Painter", "does not work on this control"},
             {"assign ringLeft menu Brush", "does not work on this control"},
             {"assign buttonI menu Brush --app Browser", "application does not know it"},
             {"assign buttonI open /nowhere", "cannot assign opening /nowhere: "},
             {"--prefs x assign buttonI open /", "leave out --prefs"},
             {"delete --app painter", "came with the panel"},
             {"add /nowhere", "no such file"},
             {"add /", "no name"},
             {"add /etc", "is no application"},
             {"add /etc/passwd", "no application, desktop entry or program"},
             {"import /nowhere", "no such file"},
             {"import /etc/passwd", "nothing was changed"},
             {"export /nowhere/x", "cannot write /nowhere/x"},
             {"--prefs /nowhere/x set ringSpeed 1", "no such file"},
             {"--prefs / list", "it is a folder"},
             {"check /nowhere", "cannot check /nowhere"},
         }) {
        EXPECT_THAT(Refused(row.line, ExitStatus::Failed), HasSubstr(row.says)) << row.line;
    }
    EXPECT_THAT(Refused("export " + SettingsFile(), ExitStatus::Failed),
                HasSubstr("it is the settings file"));
    EXPECT_EQ(Record().device[0].navSpeed, 9);
}

TEST_F(Commands, FirstStart_ReadsFactoryRecordsAndWritesNothing) {
    std::filesystem::remove(fFolder.Preferences());
    EXPECT_EQ(Do("list"), "NAME             FILE NAME  SIGNATURE  FACTORY  ACTIVE\n"
                          "Global Settings                        yes      yes\n"
                          "Browser          Browser    WEBB       yes      yes\n"
                          "Painter          Painter    8BIM       yes      yes\n");
    EXPECT_THAT(Do("show --app BROWSER"), HasSubstr("ringLeft  Save"));
    EXPECT_FALSE(std::filesystem::exists(fFolder.Preferences()));
    Do("set active false --app browser"); // makes the folder
    EXPECT_EQ(Record("Browser").active, 0);
    std::filesystem::remove(fFolder.Path("Defaults.veltrana"));
    std::filesystem::remove(SettingsFile());
    EXPECT_THAT(Refused("list", ExitStatus::Failed), HasSubstr("no settings were found"));
}

TEST_F(Commands, Assign_StoresTheActionAndAppliesTheRules) {
    const auto slot = [](ActionCommand command) {
        ActionSlot result{};
        result.command = command;
        result.keyCode = kNoKeyCode;
        return result;
    };
    const ActionSlot plain = slot(kActionNone);
    ActionSlot keystroke = slot(kActionKeystroke);
    keystroke.modifiers = kCommandModifier | kShiftModifier;
    keystroke.keyCode = 53;
    ActionSlot scroll = slot(227);
    scroll.modifiers = kShiftModifier | kOptionModifier | kControlModifier;
    ActionSlot menu = slot(kActionToolMenu);
    menu.crc = 0xCBF43926; // the CRC-32 of the digits, as everyone publishes it
    struct Row {
        const char *line;
        SlotIndex index;
        ActionSlot stored;
        const char *says;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"buttonII keystroke cmd+shift+esc", 19, keystroke, "buttonII: Keystroke cmd+shift+esc\n"},
             {"buttonII scroll right +alt +shift+ctrl", 19, scroll,
              "buttonII: Scroll right with shift+opt+ctrl\n"},
             {"buttonII none", 19, plain, "buttonII: No action\n"},
             {"buttonII Open MAIL", 19, slot(82), "buttonII: Open mail\n"},
             {"buttonII 208", 19, slot(208), "buttonII: Redo\n"},
             {"buttonII brightness_u", 19, slot(134), "buttonII: Brightness up\n"},
             {"buttonI menu 123456789", 18, menu, "buttonI: Companion menu entry number 3421780262\n"},
             {"buttonII menu 123456789", 19, menu,
              "buttonII: Companion menu entry number 3421780262\nbuttonI: No action\n"},
             {"ringLeft move_right", 0, slot(38), "ringLeft: Move right\nringRight: Move left\n"},
             {"ringLeft undo", 0, slot(182), "ringLeft: Undo\nringRight: No action\n"},
             {"buttonV switch", 16, slot(7), "buttonV: Switch ring mode\n"},
             {"tunerCW switch", 7, slot(7), "tunerCW: Switch ring mode\nbuttonV: No action\n"},
         }) {
        EXPECT_EQ(Do(std::string("assign --app Painter ") + row.line), row.says);
        const AppPrefs record = Record("Painter");
        EXPECT_EQ(std::memcmp(&record.device[0].action[row.index], &row.stored, sizeof row.stored), 0)
            << row.line;
    }
}

TEST_F(Commands, OpenItem_IsKeptByAnAliasAndShownByItsPath) {
    const std::string photo = fFolder.Path("Caf\u00E9 \u5199\u771F.jpeg");
    const std::string twin = fFolder.Path("twin/Caf\u00E9 \u5199\u771F.jpeg");
    std::filesystem::create_directory(fFolder.Path("twin"));
    for (const std::string &path : {photo, twin}) {
        WriteWhole(path, "");
    }
    EXPECT_EQ(Run({"assign", "buttonI", "open", photo}).out, "buttonI: Open item " + photo + "\n");
    EXPECT_EQ(Run({"assign", "buttonII", "open", twin}).out, "buttonII: Open item " + twin + "\n");
    EXPECT_EQ(Record().device[0].action[18].command, kActionOpenItem);
    EXPECT_EQ(Do("show").find("(gone)"), std::string::npos);
    std::filesystem::remove(photo);
    EXPECT_THAT(Do("show"), HasSubstr("Open item  " + photo + " (gone)\n"));
    EXPECT_THAT(Do("show"), HasSubstr("Open item  " + twin + "\n"));
    std::filesystem::remove_all(fFolder.Preferences() + "/com.halcyra.drevix.stuff");
    EXPECT_THAT(Do("show"), HasSubstr("Open item  Caf\u00E9 ?"));
}

TEST_F(Commands, Set_ChangesThatValueOnly) {
    struct Row {
        const char *line;
        std::string_view json; // what a list entry or the record then says
    };
    for (const Row &row : std::initializer_list<Row>{
             {"active no", "\"active\": false"},
             {"clickEnabled 0", "\"clickEnabled\": false"},
             {"ringSensitivity 255", "\"ringSensitivity\": 255"},
             {"ringSensitivityX 1", "\"ringSensitivityX\": 1,"},
             {"ringSpeedZ 0", "\"ringSpeedZ\": 0"},
             {"tunerSensitivity 42", "\"tunerSensitivity\": 42"},
             {"configName P\u00E4inter", "\"configName\": \"P\u00E4inter\""},
         }) {
        const std::string before = Do("show --json --app Painter");
        Do(std::string("set --app Painter ") + row.line);
        const std::string after = Do("show --json --app Painter");
        EXPECT_THAT(after, HasSubstr(row.json));
        const auto different = std::ranges::mismatch(before, after);
        const auto fromBehind = std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend());
        // All that differs lies on one line.
        EXPECT_EQ(std::count(different.in2, std::max(fromBehind.second.base(), different.in2), '\n'), 0)
            << row.line;
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
    std::filesystem::create_directories(fFolder.Path("Sketch Pad.APP/Contents"));
    WriteWhole(fFolder.Path("Sketch Pad.APP/Contents/Info.plist"), "");
    WriteWhole(fFolder.Path("org.example.Viewer.desktop"),
               "[Other]\nName=Wrong\n[Desktop Entry]\nType=Application\n"
               "Name=Viewer\nName[de]=Betr\u00E4chter\n#Name=x\n");
    WriteWhole(fFolder.Path("link.desktop"), "[Desktop Entry]\nType=Link\nName=x\n");
    ::setenv("LC_ALL", "de_AT.UTF-8", 1);
    Do("assign buttonV undo");
    EXPECT_EQ(Run({"add", fFolder.Path("Sketch Pad.APP/")}).out, "\"Sketch Pad\" added\n");
    EXPECT_EQ(Run({"add", fFolder.Path("org.example.Viewer.desktop")}).out, "\"Betr\u00E4chter\" added\n");
    EXPECT_EQ(Do("add /bin/sh"), "\"sh\" added\n");
    ::unsetenv("LC_ALL");
    EXPECT_EQ(Record("org.example.Viewer").device[0].action[16].command,
              182); // starts as the global record is
    EXPECT_EQ(Record("sketch pad").application, kNoSignature);
    EXPECT_THAT(Refused("add /bin/sh", ExitStatus::Failed), HasSubstr("a record for \"sh\" already"));
    EXPECT_THAT(Refused("add " + fFolder.Path("link.desktop"), ExitStatus::Failed),
                HasSubstr("not the desktop entry"));
    EXPECT_EQ(Do("delete --app=SH"), "\"sh\" deleted\n");
    EXPECT_EQ(Do("list").substr(Do("list").find("Painter")),
              "Painter          Painter             8BIM       yes      yes\n"
              "Betr\u00E4chter       org.example.Viewer  ????       no       yes\n"
              "Sketch Pad       Sketch Pad          ????       no       yes\n");
}

TEST_F(Commands, Defaults_RestoreTheirGroupOnly) {
    Do("assign ringLeft undo --app Browser");
    Do("assign buttonV undo --app Browser");
    Do("set ringSpeed 1 --app Browser");
    Do("set tunerSensitivity 1 --app Browser");
    Do("defaults ring --app Browser");
    const AppPrefs record = Record("Browser");
    EXPECT_EQ(record.device[0].action[0].command, 178);
    EXPECT_EQ(record.device[0].navSpeed, 77);
    EXPECT_EQ(record.device[0].action[16].command, 182);
    EXPECT_EQ(record.device[0].toolSensitivity, 1);
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
    for (const char *line : {"set ringSpeed 2", "assign buttonV redo", "delete --app sh"}) {
        Do(line);
        const std::string changed = ReadWhole(SettingsFile());
        EXPECT_NE(changed, old);
        for (const Lasts lasts : {Lasts::Once, Lasts::ForEver}) {
            for (int failAt = 1;; ++failAt) {
                WriteWhole(SettingsFile(), old);
                Result result;
                bool hit = false;
                {
                    FaultyDisk faults(failAt, lasts, EACCES);
                    result = Run(line);
                    hit = faults.WasHit();
                }
                const std::string now = ReadWhole(SettingsFile());
                const std::string what =
                    std::string(line) + ", fault " + std::to_string(failAt) + ": " + result.err;
                EXPECT_TRUE(now == changed || (now == old && result.status == ExitStatus::Failed)) << what;
                EXPECT_TRUE(now == old || result.err.find("as they were") == std::string::npos) << what;
                EXPECT_EQ(std::ranges::count(result.err, '\n'), result.status == ExitStatus::Done ? 0 : 1)
                    << what;
                EXPECT_EQ(ScratchFolder::Names(fFolder.Preferences()).size(), 1U) << what;
                if (!hit) {
                    EXPECT_EQ(result.status, ExitStatus::Done);
                    break;
                }
            }
        }
        WriteWhole(SettingsFile(), old);
    }
}

TEST(TextTable, LongNames_AreCutAtTheTerminalsEdge) {
    const std::string longName(63, 'w');
    const std::string accents = "\u00E4\u00F6\u00FC\u00DF\u2026\u20AC";
    const std::string text = TableText({"NAME", "FILE NAME", "SIGNATURE"}, std::vector<TableRow>{
                                                                               {longName, longName, "8BIM"},
                                                                               {accents, "tab\there\n", "x"},
                                                                           });
    std::vector<std::size_t> widths;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start);
        widths.push_back(TextColumns(std::string_view(text).substr(start, end - start)));
        start = end + 1;
    }
    EXPECT_EQ(widths.size(), 3U) << "a line end in a name starts no line";
    EXPECT_EQ(widths[1], 75U) << "80 columns, the last five of them blank";
    EXPECT_THAT(text, HasSubstr("w\u2026  w"));
    EXPECT_THAT(text, HasSubstr(accents + std::string(29, ' ') + "tab?here?"));
}

} // namespace
} // namespace drevix::test
