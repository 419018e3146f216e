#include "document/record_changes.h"
#include "tests/document/documents.h"

namespace drevix::test {
namespace {

using std::chrono::hours;
using std::chrono::minutes;

// The states in the history, the newest first.
Names StatesBefore(const DocumentFolder &folder) {
    Names states;
    for (const EarlierSettings &earlier : HistoryOf(folder.file)) {
        EXPECT_EQ(fs::status(earlier.path).permissions(), fs::perms(0600));
        const QBaseOwner base = ReadEarlierSettings(earlier);
        states.push_back(base != nullptr ? TextOfBase(base.get()) : "damaged");
    }
    return states;
}

TEST(History, EachSave_KeepsWhatItReplaces) {
    const DocumentFolder folder("a=1 global=1");
    EXPECT_EQ(StatesBefore(folder), Names{});
    OpenDocument document(folder);
    EXPECT_TRUE(document.Put("a=2"));
    EXPECT_EQ(document.Save(kLongWait).history, noErr);
    EXPECT_EQ(StatesBefore(folder), Names{"a=1 global=1"});
    EXPECT_EQ(document.Save(kLongWait).status, noErr);
    EXPECT_EQ(StatesBefore(folder), Names{"a=1 global=1"}) << "a save that changes nothing has no forerunner";
    const fs::path kept = HistoryOf(folder.file).at(0).path;
    // What else lies there is neither listed nor removed.
    const std::string name = kept.filename();
    for (const std::string &other : {std::string("notes"), name + "0", name.substr(0, 35) + "x",
                                     "x" + name.substr(1), name.substr(0, 19) + "_" + name.substr(20)}) {
        WriteWhole(kept.parent_path() / other, "other");
    }
    folder.WriteState("a=9 b=7 global=1"); // another program
    EXPECT_TRUE(document.Put("a=3"));
    EXPECT_EQ(document.Save(kLongWait).outside.conflicts.size(), 1U);
    EXPECT_EQ(StatesBefore(folder), (Names{"a=9 b=7 global=1", "a=1 global=1"})) << "what loses is not lost";
    EXPECT_EQ(ScratchFolder::Names(kept.parent_path()).size(), 7U);
    fs::remove_all(kept.parent_path());
    WriteWhole(kept.parent_path(), "a file in the way"); // stops no save and is told
    EXPECT_TRUE(document.Put("a=4"));
    const SaveResult result = document.Save(kLongWait);
    EXPECT_EQ(result.status, noErr);
    EXPECT_NE(result.history, noErr);
    EXPECT_EQ(folder.State(), "a=4 b=7 global=1");
}

TEST(History, Restored_IsAnEditThatCanBeTakenBack) {
    const DocumentFolder folder("a=1 b=1 global=1");
    OpenDocument document(folder);
    document.Edit("a=2 c=2 global=2");
    ASSERT_EQ(document.Save(kLongWait).status, noErr);
    for (const char *state : {"a=1 b=1 global=1", "a=2 c=2 global=2"}) {
        ASSERT_TRUE(document.TakeAll(ReadEarlierSettings(HistoryOf(folder.file).at(0)).get()));
        EXPECT_FALSE(document.IsSaved());
        ASSERT_EQ(document.Save(kLongWait).status, noErr);
        EXPECT_EQ(folder.State(), state);
    }
    // One record, over the present one and where there is none now.
    ASSERT_TRUE(document.TakeOne(RecordFromText("a=1")) && document.TakeOne(RecordFromText("b=1")));
    EXPECT_EQ(document.CountUnsaved(), 2);
    folder.WriteState("a=2 c=5 global=2");
    ASSERT_EQ(document.Save(kLongWait).status, noErr);
    EXPECT_EQ(folder.State(), "a=1 b=1 c=5 global=2");
}

TEST(History, TheLastTenThatDifferAndTheFirstOfEachDay_Stay) {
    std::tm noon{};
    noon.tm_year = 126;
    noon.tm_mday = 15;
    noon.tm_hour = 12;
    const auto now = std::chrono::system_clock::from_time_t(std::mktime(&noon));
    std::vector<KeptTime> kept;
    for (int day = 0; day < 40; ++day) {
        for (int save = 0; save < 6; ++save) { // the third and the fourth of a day are the same
            kept.push_back({now - hours(24 * day) - minutes(save),
                            static_cast<std::uint64_t>(day * 10 + (save == 3 ? 2 : save))});
        }
    }
    const std::vector<bool> stays = ChooseKept(kept, now);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const std::size_t day = i / 6;
        const std::size_t save = i % 6;
        const bool isOfTheTen = day < 2 && save != 3; // five of each of these days differ
        const bool isFirstOfDay = save == 5 && day <= 30;
        EXPECT_EQ(stays[i], isOfTheTen || isFirstOfDay) << day << " " << save;
    }
}

TEST(History, ManySaves_LeaveTen) {
    const DocumentFolder folder("a=0 global=1");
    OpenDocument document(folder);
    for (int i = 1; i <= 14; ++i) {
        EXPECT_TRUE(document.Put("a=" + std::to_string(i)));
        ASSERT_EQ(document.Save(kLongWait).status, noErr);
    }
    const Names states = StatesBefore(folder);
    ASSERT_EQ(states.size(), 11U); // and the first of the day
    EXPECT_EQ(states.front(), "a=13 global=1");
    EXPECT_EQ(states[9], "a=4 global=1");
    EXPECT_EQ(states.back(), "a=0 global=1");
}

// A program that dies between keeping and saving leaves the file under two names; a write in place would change both.
TEST(History, DeathBeforeTheSave_LeavesNoNameOfTheFileItself) {
    const DocumentFolder folder("a=1 global=1");
    Forerunner dead;
    ASSERT_EQ(dead.Prepare(folder.file), noErr);
    fs::create_hard_link(folder.file, dead.Path());
    OpenDocument document(folder);
    EXPECT_TRUE(document.Put("a=2"));
    ASSERT_EQ(document.Save(kLongWait).status, noErr);
    EXPECT_EQ(StatesBefore(folder), Names{"a=1 global=1"});
}

TEST(History, ItemsOfEarlierSettings_AreStillNamed) {
    const DocumentFolder folder("a=1 global=1");
    OpenDocument document(folder);
    document.Edit("b=1 global=1");
    ASSERT_EQ(document.Save(kLongWait).status, noErr);
    std::string named;
    document.CleanUpItems(kNoWait, [&](QBaseHandle base) { named = TextOfBase(base); });
    EXPECT_EQ(named, "a=1 b=1 global=1 global=1");
    // Neither with edits that are not saved, nor while another program may be making an item.
    const auto isCleaned = [&] {
        bool isCalled = false;
        document.CleanUpItems(kNoWait, [&](QBaseHandle) { isCalled = true; });
        return isCalled;
    };
    EXPECT_TRUE(isCleaned());
    UserLock other;
    ASSERT_EQ(other.Acquire("settings.lock", kNoWait), noErr);
    EXPECT_FALSE(isCleaned());
    other.Release();
    EXPECT_TRUE(document.Put("b=2"));
    EXPECT_FALSE(isCleaned());
}

TEST(RecordChanges, AreNamedByRecordAndKey) {
    const QBaseOwner before = MakeBase(RecordsFromText("a=1 b=1 c=1 global=1"));
    const QBaseOwner after = MakeBase(RecordsFromText("a=1 b=2 d=1 global=1"));
    AppPrefs &global = *GetAppPrefs(after.get(), 3);
    ASSERT_EQ(global.application, kGlobalSignature);
    global.device[0].action[19].command = 12;
    global.device[0].useSeparateNavSens = 1;
    GetAppPrefs(after.get(), 1)->active = 0;
    GetAppPrefs(after.get(), 1)->appName = {2, 'B', '!'};
    ASSERT_NE(QBaseAddRecord(after.get(), "no settings", 11), kNoRecord);
    const std::vector<RecordChange> changes = ChangesBetween(before.get(), after.get());
    ASSERT_EQ(changes.size(), 4U);
    using Keys = std::vector<std::string_view>;
    EXPECT_EQ(changes[0].fileName, "");
    EXPECT_EQ(changes[0].keys, (Keys{"buttonII", "ringSensitivitySeparate"}));
    EXPECT_EQ(changes[1].fileName, "b");
    EXPECT_EQ(changes[1].keys, (Keys{"configName", "active", "ringSpeed"}));
    EXPECT_EQ(changes[2].kind, ChangeKind::Added);
    EXPECT_EQ(changes[3].kind, ChangeKind::Removed);
    EXPECT_EQ(changes[3].fileName, "c");
}

} // namespace
} // namespace drevix::test
