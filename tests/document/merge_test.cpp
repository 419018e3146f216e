// What comes of it when two programs have changed one settings file.
#include "tests/document/documents.h"

#include <random>

namespace drevix::test {
namespace {

// Each as "NAME=OURS|THEIRS", 0 for no record.
std::string TextOfConflicts(const std::vector<RecordConflict> &conflicts) {
    const auto value = [](const std::optional<AppPrefs> &record) {
        return std::to_string(record ? record->device[0].navSpeed : 0);
    };
    std::string text;
    for (const RecordConflict &conflict : conflicts) {
        text += conflict.name + "=" + value(conflict.ours) + "|" + value(conflict.theirs) + " ";
    }
    return text;
}

// Settings written by one program were once written over by another that had them open. Each record goes by itself: a
// change on one side is taken, and of two that differ the one here stays and is told, once.
TEST(SettingsDocument, RandomChangesOnBothSides_AreMergedByRecord) {
    using State = std::map<std::string, int>; // values by name; 0: no such record
    const auto text = [](const State &state) {
        std::string words;
        for (const auto &[name, value] : state) {
            words += value == 0 ? "" : (words.empty() ? "" : " ") + name + "=" + std::to_string(value);
        }
        return words;
    };
    std::mt19937 random(1);
    State here = {{"a", 1}, {"b", 1}, {"c", 0}, {"global", 1}};
    State disk = here;
    State before = here; // as both sides last had it
    const DocumentFolder folder(text(here));
    OpenDocument document(folder);
    for (int round = 0; round < 300; ++round) {
        for (State *side : {&here, &disk}) {
            for (auto &[name, value] : *side) {
                value =
                    random() % 3 == 0 ? static_cast<int>(random() % 3) + (name == "global" ? 1 : 0) : value;
            }
        }
        SCOPED_TRACE(text(before) + ": " + text(here) + " | " + text(disk));
        document.Edit(text(here));
        folder.WriteState(text(disk));
        std::string conflicts;
        const State edited = here;
        for (const auto &[name, there] : disk) {
            int &ours = here[name];
            int &old = before[name];
            const bool isTaken = there == old || ours == old || ours == there;
            const std::string both = "=" + std::to_string(ours) + "|" + std::to_string(there) + " ";
            conflicts = isTaken ? conflicts : name == "global" ? both + conflicts : conflicts + name + both;
            ours = there != old && ours == old ? there : ours;
            old = there;
        }
        const bool isSave = random() % 2 == 0;
        const OutsideChanges outside =
            isSave ? document.Save(kLongWait).outside : document.TakeOutsideChanges();
        disk = before = isSave ? here : disk;
        EXPECT_EQ(document.State(), text(here));
        EXPECT_EQ(folder.State(), text(disk));
        EXPECT_EQ(TextOfConflicts(outside.conflicts), conflicts);
        EXPECT_EQ(outside.cameIn, here != edited);
        EXPECT_EQ(document.IsSaved(), here == before);
        EXPECT_EQ(document.CountUnsaved(), std::ranges::count_if(here, [&](const auto &record) {
                      return before[record.first] != record.second;
                  }));
        EXPECT_TRUE(IsGlobalPrefs(GetAppPrefs(document.Base(), 0))) << "not sorted";
        const OutsideChanges again = document.TakeOutsideChanges();
        EXPECT_TRUE(!again.cameIn && again.conflicts.empty()) << "told twice, or its own save is another's";
    }
}

// Several of one name; letter case does not tell names apart.
TEST(SettingsDocument, RecordsAlike_AreToldApart) {
    struct Row {
        const char *opened, *here, *disk; // the last two after edits, and after another program's
        const char *merged, *conflicts;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"a/X=1 a/Y=1 global=1", "a/X=2 a/Y=1 global=1", "a/X=1 a/Y=2 global=1", "a/X=2 a/Y=2 global=1",
              ""},
             {"a/X=1 a/Y=1 global=1", "a/Y=1 global=1", "a/X=1 a/Y=1 b=1 global=1", "a/Y=1 b=1 global=1", ""},
             {"a/X=1 global=1", "a/X=1 a/Y=1 global=1", "a/X=2 global=1", "a/X=2 a/Y=1 global=1", ""},
             {"a/Y=1 global=1", "a/Y=2 global=1", "a/X=1 a/Y=1 global=1", "a/X=1 a/Y=2 global=1", ""},
             {"global=1", "global=1 n=1", "N=2 global=1", "global=1 n=1", "n=1|2 "},
         }) {
        SCOPED_TRACE(std::string(row.here) + " | " + row.disk);
        const DocumentFolder folder(row.opened);
        OpenDocument document(folder);
        document.Edit(row.here);
        folder.WriteState(row.disk);
        EXPECT_EQ(TextOfConflicts(document.Save(kLongWait).outside.conflicts), row.conflicts);
        EXPECT_EQ(folder.State(), row.merged);
    }
}

TEST(SettingsDocument, UserFieldsAndForeignRecords_ComeFromTheFileAndTheStampStays) {
    const DocumentFolder folder("global=1");
    OpenDocument document(folder);
    const QBaseOwner other = MakeBase({RecordFromText("global=1")}, kPanelVersion - 1);
    EXPECT_NE(QBaseAddRecord(other.get(), "no settings", 11), kNoRecord);
    QBaseSetUserWord(other.get(), 7);
    ASSERT_EQ(QBaseSetUserBlock(other.get(), "block", 5), noErr);
    ASSERT_EQ(SaveDevicePrefsToPath(other.get(), folder.file), noErr);
    ASSERT_EQ(document.Save(kLongWait).status, noErr);
    const OpenDocument saved(folder);
    std::uint32_t size = 0;
    EXPECT_EQ(QBaseGetUserWord(saved.Base()), 7);
    EXPECT_EQ(QBaseGetUserLong(saved.Base()), kPanelVersion);
    EXPECT_NE(QBaseGetUserBlock(saved.Base(), &size), nullptr);
    EXPECT_EQ(size, 5U);
    EXPECT_EQ(TextOfBase(saved.Base()), "? factory=9 global=1");
    const QBaseOwner earlier = MakeBase({RecordFromText("a=1")});
    EXPECT_NE(QBaseAddRecord(earlier.get(), "another", 7), kNoRecord);
    EXPECT_TRUE(document.TakeAll(earlier.get()));
    EXPECT_EQ(document.State(), "? a=1") << "of an earlier base settings are taken";
}

} // namespace
} // namespace drevix::test
