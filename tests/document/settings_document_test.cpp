// The life of a settings file: opened, edited, saved, while it is damaged or fails.
#include "document/history.h"
#include "tests/companion/companion_folder.h"
#include "tests/document/documents.h"
#include "tests/support/failing_new.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

TEST(SettingsDocument, Edits_AreCountedUntilSavedOrTakenBack) {
    const DocumentFolder folder("a=1 b=1 global=1");
    OpenDocument document(folder);
    EXPECT_EQ(document.Owner(), Ownership::Named);
    EXPECT_TRUE(document.IsSaved());
    ASSERT_TRUE(document.Put("a=2") && document.Put("b=2") && document.Put("n=1"));
    EXPECT_EQ(document.CountUnsaved(), 3);
    std::string unsaved;
    for (const UnsavedRecord &record : document.Unsaved()) {
        unsaved += (record.onDisk ? TextOfRecord(*record.onDisk) : "none") + " " +
                   TextOfRecord(record.here.value()) + ",";
    }
    EXPECT_EQ(unsaved, "a=1 a=2,b=1 b=2,none n=1,");
    EXPECT_TRUE(document.IsUnsaved(RecordFromText("a=7"))) << "it is the name that counts";
    EXPECT_FALSE(document.IsUnsaved(RecordFromText("global=1")));
    ASSERT_TRUE(document.Put("a=1") && document.Remove(document.Find(RecordFromText("n=1"))));
    EXPECT_EQ(document.CountUnsaved(), 1);
    EXPECT_FALSE(document.IsUnsaved(RecordFromText("n=1")));
    ASSERT_TRUE(document.Remove(document.Find(RecordFromText("b=1"))));
    EXPECT_TRUE(document.IsUnsaved(RecordFromText("b=1")));
    EXPECT_FALSE(document.Unsaved().at(0).here.has_value());
    EXPECT_FALSE(document.IsSaved());
    ASSERT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_TRUE(document.IsSaved());
    EXPECT_EQ(document.CountUnsaved(), 0);
    ASSERT_TRUE(document.Replace(document.Find(RecordFromText("a=1")), RecordFromText("a=3")));
    EXPECT_TRUE(document.IsUnsaved(RecordFromText("a=3")));
    EXPECT_EQ(document.Open(Access::Change).status, noErr); // drops it
    EXPECT_EQ(document.State(), "a=1 global=1");
    EXPECT_EQ(document.CountUnsaved(), 0);
    EXPECT_FALSE(document.Replace(9, RecordFromText("a=3")) || document.Remove(9));
}

TEST(SettingsDocument, FactorysRecords_AreUnsavedUntilTheFileHasThem) {
    DocumentFolder folder("a=1 global=1");
    std::filesystem::remove(folder.file);
    OpenDocument document(folder);
    EXPECT_EQ(document.result.status, noErr);
    EXPECT_EQ(document.result.fileStatus, fnfErr);
    EXPECT_EQ(document.State(), "factory=9 global=9");
    EXPECT_FALSE(document.IsSaved());
    EXPECT_EQ(document.CountUnsaved(), 0);
    EXPECT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_TRUE(document.IsSaved());
    EXPECT_EQ(folder.State(), "factory=9 global=9");
}

// What another program can make of the file, and what a save then does.
struct OutsideFile {
    const char *what;
    std::function<void(const std::string &path)> make;
    OSErr saved;
    bool isKeptAside;
};
const OutsideFile kOutsideFiles[] = {
    {"emptied", [](const std::string &path) { WriteWhole(path, ""); }, noErr, false},
    {"half written",
     [](const std::string &path) {
         std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
     },
     noErr, true},
    {"another kind of file", [](const std::string &path) { WriteWhole(path, std::string(5000, 'x')); }, noErr,
     true},
    {"without records",
     [](const std::string &path) {
         EXPECT_EQ(SaveDevicePrefsToPath(MakeBase({}, kPanelVersion).get(), path), noErr);
     },
     noErr, false},
    {"removed", [](const std::string &path) { std::filesystem::remove(path); }, noErr, false},
    {"a folder",
     [](const std::string &path) {
         std::filesystem::remove(path);
         std::filesystem::create_directory(path);
     },
     notAFileErr, false},
};

// A file that another program had emptied or half written was once taken over, and the user's records were gone.
TEST(SettingsDocument, FileThatIsNoSettings_IsNotTakenOver) {
    for (const OutsideFile &outside : kOutsideFiles) {
        SCOPED_TRACE(outside.what);
        const DocumentFolder folder("a=1 global=1");
        OpenDocument document(folder);
        ASSERT_TRUE(document.Put("a=2"));
        outside.make(folder.file);
        EXPECT_FALSE(document.TakeOutsideChanges().cameIn);
        EXPECT_EQ(document.State(), "a=2 global=1");
        const SaveResult result = document.Save(kNoWait);
        EXPECT_EQ(result.status, outside.saved);
        EXPECT_EQ(result.replacedDamaged, outside.isKeptAside);
        EXPECT_EQ(std::filesystem::exists(folder.file + kRefusedSuffix), outside.isKeptAside);
        EXPECT_EQ(document.State(), "a=2 global=1");
        EXPECT_EQ(document.IsReadOnly(), outside.saved != noErr);
        if (outside.saved == noErr) {
            EXPECT_EQ(folder.State(), "a=2 global=1");
        } else { // can be tried again
            std::filesystem::remove_all(folder.file);
            folder.WriteState("a=1 b=1 global=1");
            EXPECT_EQ(document.Save(kNoWait).status, noErr);
            EXPECT_EQ(folder.State(), "a=2 b=1 global=1");
        }
    }
}

TEST(SettingsDocument, DamagedFile_IsKeptAsideOnlyByThoseThatMayWrite) {
    const DocumentFolder folder("a=1 global=1");
    WriteWhole(folder.file, "damaged");
    OpenDocument reader(folder, Access::Read);
    EXPECT_EQ(reader.result.status, noErr);
    EXPECT_TRUE(IsDamaged(reader.result.fileStatus));
    EXPECT_EQ(reader.State(), "factory=9 global=9");
    EXPECT_EQ(reader.Save(kNoWait).status, wrPermErr);
    EXPECT_FALSE(std::filesystem::exists(folder.file + kRefusedSuffix));
    OpenDocument writer(folder);
    EXPECT_EQ(ReadWhole(folder.file + kRefusedSuffix), "damaged");
    const SaveResult result = writer.Save(kNoWait);
    EXPECT_EQ(result.status, noErr);
    EXPECT_FALSE(result.replacedDamaged) << "told when it was opened";
}

TEST(SettingsDocument, LockOfAnotherProgram_LeavesAllAsItIs) {
    const DocumentFolder folder("a=1 global=1");
    OpenDocument document(folder);
    ASSERT_TRUE(document.Put("a=2"));
    UserLock other;
    ASSERT_EQ(other.Acquire("settings.lock", kNoWait), noErr);
    const SaveResult result = document.Save(std::chrono::milliseconds(20));
    EXPECT_EQ(result.status, fBsyErr);
    EXPECT_FALSE(result.wasTried);
    EXPECT_EQ(folder.State(), "a=1 global=1");
    EXPECT_EQ(document.CountUnsaved(), 1);
    other.Release();
    EXPECT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_EQ(other.Acquire("settings.lock", kNoWait), noErr) << "held beyond the save";
    other.Release();
    EXPECT_EQ(document.Lock(kNoWait), noErr);
    EXPECT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_EQ(other.Acquire("settings.lock", kNoWait), fBsyErr) << "not held beyond the save";
}

TEST(SettingsDocument, LockThatCannotBeMade_FailsTheSave) {
    const DocumentFolder folder("a=1 global=1");
    OpenDocument document(folder);
    ASSERT_TRUE(document.Put("a=2"));
    {
        const ScopedVariable state("XDG_STATE_HOME", folder.file); // a file
        EXPECT_EQ(document.Save(kNoWait).status, dirNFErr);
    }
    const std::string lock = folder.Path("state/com.halcyra.drevix/settings.lock");
    std::filesystem::create_directories(folder.Path("state/com.halcyra.drevix"));
    std::filesystem::create_symlink(folder.Path("elsewhere"), lock);
    EXPECT_EQ(document.Save(kNoWait).status, bdNamErr);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("elsewhere")));
    std::filesystem::remove(lock);
    EXPECT_EQ(folder.State(), "a=1 global=1");
    EXPECT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_EQ(std::filesystem::status(lock).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(std::filesystem::status(folder.Path("state/com.halcyra.drevix")).permissions(),
              std::filesystem::perms(0700));
}

// A disk on which every file was last changed some time ago.
struct OldFiles : ScopedDisk {
    int StatusOf(int fd, struct stat *status) override {
        const int result = Disk::StatusOf(fd, status);
        status->st_ctim.tv_sec -= 60;
        return result;
    }
    ssize_t ReadAt(int fd, void *bytes, std::size_t count, off_t offset) override {
        ++reads;
        return Disk::ReadAt(fd, bytes, count, offset);
    }
    int reads = 0;
};

TEST(SettingsDocument, FileThatIsAsItWas_IsNotReadAgain) {
    const DocumentFolder folder("a=1 global=1");
    OldFiles disk;
    OpenDocument document(folder);
    const int before = disk.reads;
    document.TakeOutsideChanges();
    EXPECT_EQ(disk.reads, before);
    std::string bytes = ReadWhole(folder.file);
    bytes.back() = 1; // in place, as long as before
    WriteWhole(folder.file, bytes);
    EXPECT_TRUE(document.TakeOutsideChanges().cameIn);
    EXPECT_GT(disk.reads, before);
}

TEST(SettingsDocument, OutsideChangesThatMetNoMemory_AreTakenTheNextTime) {
    ForEachFault(1, [](int failAt, Lasts lasts) {
        const DocumentFolder folder("a=1 global=1");
        OpenDocument document(folder);
        folder.WriteState("a=2 global=1");
        const bool wasHit = MeetsFault(failAt, lasts, ENOMEM, [&] { document.TakeOutsideChanges(); });
        document.TakeOutsideChanges();
        EXPECT_EQ(document.State(), "a=2 global=1") << failAt;
        return wasHit;
    });
}

// Every step of opening or saving fails in turn, while another program has changed a record too.
TEST(SettingsDocument, SaveWithEveryFault_KeepsEditsAndFile) {
    for (const int error : {ENOSPC, EIO, ENOMEM, kOfNew}) {
        ForEachFault(1, [&](int failAt, Lasts lasts) {
            SCOPED_TRACE(std::to_string(error) + " at " + std::to_string(failAt));
            const DocumentFolder folder("a=1 b=1 global=1");
            OpenDocument document(folder);
            EXPECT_TRUE(document.Put("a=2"));
            folder.WriteState("a=1 b=2 global=1");
            SaveResult result;
            const bool wasHit =
                MeetsFaultOrNew(failAt, lasts, error, [&] { result = document.Save(kNoWait); });
            const std::string now = folder.State();
            EXPECT_TRUE(now == "a=2 b=2 global=1" || (result.status != noErr && now == "a=1 b=2 global=1"))
                << now;
            EXPECT_EQ(document.IsSaved(), result.status == noErr);
            EXPECT_TRUE(error == kOfNew ||
                        QBaseGetRecordsChanged(document.Base()) == (result.status != noErr));
            std::vector<EarlierSettings> history;
            EXPECT_EQ(ListHistory(folder.file, &history), noErr);
            for (const EarlierSettings &earlier : history) {
                EXPECT_EQ(TextOfBase(ReadEarlierSettings(earlier).get()), "a=1 b=2 global=1");
            }
            EXPECT_EQ(OpenFileCount(), 0);
            EXPECT_TRUE(document.Put("a=3"));
            const SaveResult second = document.Save(kNoWait);
            EXPECT_EQ(second.status, noErr);
            EXPECT_TRUE(second.outside.conflicts.empty()) << "its own words are taken for another's";
            EXPECT_EQ(folder.State(), "a=3 b=2 global=1");
            EXPECT_EQ(ScratchFolder::Names(folder.Path()).size(), 4U) << "something is left behind";
            return wasHit;
        });
    }
}

TEST(SettingsDocument, OpenWithEveryFault_LosesNothingInASave) {
    int emptied = 0;
    for (const int error : {EIO, EACCES, ENOMEM, kOfNew}) {
        for (const bool isDamaged : {false, true}) {
            ForEachFault(1, [&](int failAt, Lasts lasts) {
                SCOPED_TRACE(std::to_string(error) + " at " + std::to_string(failAt));
                const DocumentFolder folder("a=1 global=1");
                if (isDamaged) {
                    WriteWhole(folder.file, "damaged");
                }
                SettingsDocument document(folder.resources, kPanelVersion);
                document.UseFile(folder.file);
                OpenResult opened;
                const bool wasHit =
                    MeetsFaultOrNew(failAt, lasts, error, [&] { opened = document.Open(Access::Change); });
                emptied += opened.status != noErr && document.Base() != nullptr ? 1 : 0;
                if (document.Base() != nullptr) {
                    const SaveResult result = document.Save(kNoWait);
                    EXPECT_EQ(result.status, noErr);
                    EXPECT_TRUE(isDamaged ? ReadWhole(folder.file + kRefusedSuffix) == "damaged"
                                          : folder.State().starts_with("a=1 "))
                        << folder.State();
                }
                return wasHit;
            });
        }
    }
    EXPECT_GT(emptied, 0) << "a document whose records met no memory is an empty one";
}

TEST(SettingsDocument, KeptCopies_HaveTheirItemsKept) {
    const DocumentFolder folder("a=1 global=1");
    folder.WriteState("whole=1", folder.file + ".refused.90");
    folder.WriteState("cut=1 lost=1", folder.file + ".refused");
    std::filesystem::resize_file(folder.file + ".refused",
                                 std::filesystem::file_size(folder.file + ".refused") - 2);
    for (const char *end : {".old", ".", "9"}) {
        folder.WriteState("other=1", folder.file + ".refused" + end);
    }
    const OpenDocument document(folder);
    EXPECT_EQ(TextOfBase(document.RecordsWithItems().get()), "a=1 cut=1 global=1 whole=1");
    EXPECT_EQ(document.State(), "a=1 global=1");
    std::filesystem::create_directory(folder.file + ".refused.2"); // cannot be read
    EXPECT_EQ(document.RecordsWithItems(), nullptr);
}

TEST(SettingsDocument, UsersOwnFile_GoesHandInHandWithTheCompanion) {
    const ScopedVariable noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    const CompanionFolder folder;
    constexpr std::size_t kApp = 4; // known by its creator
    constexpr SlotIndex kButtonI = 18;
    constexpr std::uint16_t kToolMenu = 34;
    const std::string path = folder.Preferences() + "/com.halcyra.drevix.prefs";
    AppPrefs record = MakeRecord(kKorvaneApps[kApp].creator, "app");
    const auto write = [&](std::uint8_t speed) {
        record.device[0].navSpeed = speed;
        EXPECT_EQ(SaveDevicePrefsToPath(MakeBase({MakeRecord(0, ""), record}, kPanelVersion).get(), path),
                  noErr);
    };
    write(1);
    folder.Write(kApp, HotKeyFile({"Cut|1|pyralis||4"}));
    SettingsDocument document({folder.Path()}, kPanelVersion);
    const auto shown = [&] { return *GetAppPrefs(document.Base(), 1); };
    ASSERT_EQ(document.Open(Access::Change).status, noErr);
    EXPECT_EQ(document.Owner(), Ownership::UsersOwn);
    EXPECT_EQ(shown().device[0].action[kButtonI].command, kToolMenu);
    EXPECT_TRUE(document.IsSaved()) << "what the companion brings is no edit";
    write(2);
    EXPECT_TRUE(document.TakeOutsideChanges().cameIn);
    EXPECT_EQ(shown().device[0].navSpeed, 2);
    EXPECT_EQ(shown().device[0].action[kButtonI].command, kToolMenu) << "the companion's entry is lost";

    SettingsDocument alone({folder.Path()}, kPanelVersion);
    alone.UseFileAlone(path);
    ASSERT_EQ(alone.Open(Access::Read).status, noErr);
    EXPECT_EQ(GetAppPrefs(alone.Base(), 1)->device[0].action[kButtonI].command, 0);

    AppPrefs freed = shown();
    freed.device[0].action[kButtonI].command = 0;
    ASSERT_NE(document.Store(freed, 1), kNoRecord);
    EXPECT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_EQ(Rows(LoadKorvaneFileForApp(kKorvaneApps[kApp].folder)), Strings{"Cut||||"});
}

} // namespace
} // namespace drevix::test
