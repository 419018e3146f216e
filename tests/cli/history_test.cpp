// Earlier settings: listed with what changed, and brought back.
#include "tests/cli/program.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class History : public ProgramTest {};

TEST_F(History, ListsWhatEachSaveChanged) {
    EXPECT_THAT(Do("history"), HasSubstr("no earlier settings"));
    Do("set ringSpeed 20 --app Painter");
    EXPECT_THAT(Do("history"), HasSubstr("no earlier settings")) << "there was no file to replace";
    Do("assign buttonII none --app Browser");
    Do("set ringSensitivity 7");
    Do("set ringSensitivity 7"); // changes nothing, and is none of the list
    const std::string list = Do("history");
    EXPECT_THAT(list, ContainsRegex("1 +[-0-9]+ [:0-9]+ +Global Settings: ringSensitivity\n"
                                    "2 +[-0-9]+ [:0-9]+ +Browser: buttonII\n$"));
    EXPECT_THAT(Do("history --json"), HasSubstr(R"("change": "changed",)"));
}

TEST_F(History, RestoreBringsBackAndIsItselfUndone) {
    Do("set ringSpeed 20 --app Painter");
    Do("set ringSpeed 30 --app Painter");
    Do("set ringSpeed 40 --app Browser");
    EXPECT_THAT(Do("restore 2 --app painter"), HasSubstr("restored"));
    EXPECT_EQ(Record("Painter").device[0].navSpeed, 20);
    EXPECT_EQ(Record("Browser").device[0].navSpeed, 40);
    Do("restore 1");
    EXPECT_EQ(Record("Painter").device[0].navSpeed, 30);
    Do("restore 1");
    EXPECT_EQ(Record("Painter").device[0].navSpeed, 20);
    EXPECT_EQ(Record("Browser").device[0].navSpeed, 40);
    EXPECT_EQ(Run(std::vector<std::string>{"__complete", "restore", ""}).out,
              "1\n2\n3\n4\n"); // what is there twice counts once
}

TEST_F(History, WhatCannotBeRestored_ChangesNothing) {
    Do("set ringSpeed 20 --app Painter");
    Do("set ringSpeed 30 --app Painter");
    for (const char *wrong : {"0", "x", "1x", "99999999999999999999999"}) {
        EXPECT_THAT(Refused(std::string("restore ") + wrong, ExitStatus::WrongUsage), HasSubstr("number"));
    }
    EXPECT_THAT(Refused("restore 2"), HasSubstr("has 1 earlier settings"));
    EXPECT_THAT(Refused("restore 1 --app Nobody"), HasSubstr("no record for \"Nobody\""));
    for (const auto &entry :
         std::filesystem::recursive_directory_iterator(fFolder.Path("state/com.halcyra.drevix/history"))) {
        if (entry.is_regular_file()) {
            WriteWhole(entry.path(), "cut by a power failure");
        }
    }
    EXPECT_THAT(Refused("restore 1"), HasSubstr("damaged"));
    EXPECT_THAT(Do("history"), HasSubstr("damaged; cannot be restored"));
}

// What a settings file says must not reach a terminal as a command to it.
TEST_F(History, ControlCharacters_AreNeverPrinted) {
    Do("set ringSpeed 20 --app Painter");
    EXPECT_EQ(std::filesystem::status(SettingsFile()).permissions(), std::filesystem::perms(0600));
    std::string bytes = ReadWhole(SettingsFile());
    for (std::size_t at = bytes.find("Painter"); at != bytes.npos; at = bytes.find("Painter", at + 7)) {
        bytes.replace(at, 7, "P\x1B[2J\x07r");
    }
    WriteWhole(SettingsFile(), bytes);
    Do("set ringSpeed 21 --app 1");
    std::string all;
    for (const char *line : {"list", "list --json", "show --app 1", "show --app 1 --json", "history",
                             "history --json", "restore 1 --app 1", "delete --app 1", "menu", "check"}) {
        const Result result = Run(line);
        all += result.out + result.err;
    }
    EXPECT_THAT(all, HasSubstr("P?[2J?r"));
    std::erase(all, '\n');
    EXPECT_TRUE(std::ranges::all_of(all, [](unsigned char c) { return c >= ' ' && c != 0x7F; })) << all;
}

} // namespace
} // namespace drevix::test
