// What comes of it when two programs have changed one settings file.
#include "tests/document/documents.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

struct MergeRow {
    const char *opened;
    const char *here; // after edits
    const char *disk; // after another program's
    const char *merged;
    const char *conflicts; // the records' names, "*" for the global one
    int unsaved;           // records, after the merge
};
constexpr auto kMerges = std::to_array<MergeRow>({
    {"a=1 b=1 global=1", "a=1 b=1 global=1", "a=2 global=1 n=1", "a=2 global=1 n=1", "", 0},
    {"a=1 b=1 global=1", "a=2 b=1 global=1", "a=1 b=2 global=1", "a=2 b=2 global=1", "", 1},
    {"a=1 global=1", "a=2 global=1", "a=1 global=2 n=1", "a=2 global=2 n=1", "", 1},
    {"a=1 b=1 global=1", "b=1 global=1", "a=1 global=1", "global=1", "", 1},
    {"global=1", "global=1 n=1", "global=1 m=1", "global=1 m=1 n=1", "", 1},
    // Both the same.
    {"a=1 global=1", "a=2 global=1", "a=2 global=1", "a=2 global=1", "", 0},
    {"a=1 global=1", "global=1", "global=1", "global=1", "", 0},
    {"global=1", "global=1 n=1", "global=1 n=1", "global=1 n=1", "", 0},
    // An edit that was taken back is none.
    {"a=1 global=1", "a=1 global=1", "a=3 global=1", "a=3 global=1", "", 0},
    // Both, but not the same.
    {"a=1 global=1", "a=2 global=1", "a=3 global=1", "a=2 global=1", "a", 1},
    {"a=1 global=1", "global=1", "a=3 global=1", "global=1", "a", 1},
    {"a=1 global=1", "a=2 global=1", "global=1", "a=2 global=1", "a", 1},
    {"global=1", "global=1 n=1", "global=1 n=2", "global=1 n=1", "n", 1},
    {"a=1 global=1", "a=1 global=2", "a=1 global=3", "a=1 global=2", "*", 1},
    {"a=1 b=1 global=1", "a=2 b=2 global=1", "a=3 b=1 global=3", "a=2 b=2 global=3", "a", 2},
    // Several of one name; letter case does not tell names apart.
    {"a/X=1 a/Y=1 global=1", "a/X=2 a/Y=1 global=1", "a/X=1 a/Y=2 global=1", "a/X=2 a/Y=2 global=1", "", 1},
    {"a/X=1 a/Y=1 global=1", "a/Y=1 global=1", "a/X=1 a/Y=1 b=1 global=1", "a/Y=1 b=1 global=1", "", 1},
    {"a/X=1 global=1", "a/X=1 a/Y=1 global=1", "a/X=2 global=1", "a/X=2 a/Y=1 global=1", "", 1},
    {"a/Y=1 global=1", "a/Y=2 global=1", "a/X=1 a/Y=1 global=1", "a/X=1 a/Y=2 global=1", "", 1},
    {"global=1", "global=1 n=1", "N=2 global=1", "global=1 n=1", "n", 1},
});

std::string NamesOf(const std::vector<RecordConflict> &conflicts) {
    std::string names;
    for (const RecordConflict &conflict : conflicts) {
        names += conflict.name.empty() ? "*" : conflict.name;
    }
    return names;
}

// Settings written by one program were once written over by another that had them open.
TEST(SettingsDocument, ChangesOnBothSides_AreMergedByRecord) {
    for (const MergeRow &row : kMerges) {
        for (const bool looksFirst : {true, false}) {
            SCOPED_TRACE(std::string(row.here) + " | " + row.disk + (looksFirst ? " looked at" : " saved"));
            const DocumentFolder folder(row.opened);
            OpenDocument document(folder);
            ASSERT_EQ(document.State(), row.opened);
            document.Edit(row.here);
            folder.WriteState(row.disk);
            OutsideChanges outside;
            if (looksFirst) {
                outside = document.TakeOutsideChanges();
                EXPECT_EQ(document.State(), row.merged);
                EXPECT_EQ(document.CountUnsaved(), row.unsaved);
                EXPECT_EQ(document.IsSaved(), row.unsaved == 0);
                EXPECT_TRUE(IsGlobalPrefs(GetAppPrefs(document.Base(), 0))) << "not sorted";
            }
            const SaveResult saved = document.Save(kLongWait);
            EXPECT_EQ(saved.status, noErr);
            if (looksFirst) { // each is told once
                EXPECT_FALSE(saved.outside.cameIn);
                EXPECT_EQ(NamesOf(saved.outside.conflicts), "");
            } else {
                outside = saved.outside;
            }
            EXPECT_EQ(NamesOf(outside.conflicts), row.conflicts);
            EXPECT_EQ(outside.cameIn, std::string(row.here) != row.merged);
            EXPECT_EQ(folder.State(), row.merged);
            EXPECT_TRUE(document.IsSaved());
            EXPECT_FALSE(document.TakeOutsideChanges().cameIn) << "its own save is taken for another's";
        }
    }
}

TEST(SettingsDocument, Conflict_TellsBothRecords) {
    const DocumentFolder folder("a=1 b=1 global=1");
    OpenDocument document(folder);
    document.Edit("a=2 global=1");
    folder.WriteState("a=3 b=3 global=1");
    const std::vector<RecordConflict> conflicts = document.TakeOutsideChanges().conflicts;
    ASSERT_EQ(conflicts.size(), 2U);
    EXPECT_EQ(TextOfRecord(*conflicts[0].ours), "a=2");
    EXPECT_EQ(TextOfRecord(*conflicts[0].theirs), "a=3");
    EXPECT_FALSE(conflicts[1].ours.has_value());
    EXPECT_EQ(TextOfRecord(*conflicts[1].theirs), "b=3");
    EXPECT_EQ(document.TakeOutsideChanges().conflicts.size(), 0U);
    folder.WriteState("a=4 b=3 global=1"); // a further change is told too
    EXPECT_EQ(NamesOf(document.TakeOutsideChanges().conflicts), "a");
}

TEST(SettingsDocument, UserFields_ComeFromTheFileAndTheStampStays) {
    const DocumentFolder folder("global=1");
    OpenDocument document(folder);
    const QBaseOwner other = MakeBase({RecordFromText("global=1")}, kPanelVersion - 1);
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
}

} // namespace
} // namespace drevix::test
