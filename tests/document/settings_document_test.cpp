// The life of a settings file: opened, edited, saved, while it is damaged or fails.
#include "document/record_changes.h"
#include "tests/companion/companion_folder.h"
#include "tests/document/documents.h"
#include "tests/support/failing_new.h"

namespace drevix::test {
namespace {

TEST(SettingsDocument, Edits_AreCountedUntilSavedOrTakenBack) {
    const DocumentFolder folder("a=1 b=1 global=1");
    OpenDocument document(folder);
    EXPECT_EQ(document.Owner(), Ownership::Named);
    EXPECT_TRUE(document.IsSaved());
    const auto unsaved = [&] {
        std::string text; // each as it was and as it is
        for (const auto &[onDisk, here] : document.Unsaved()) {
            text +=
                (onDisk ? TextOfRecord(*onDisk) : "none") + " " + (here ? TextOfRecord(*here) : "none") + ",";
        }
        EXPECT_EQ(document.CountUnsaved(), std::ranges::count(text, ','));
        return text;
    };
    document.Edit("a=2 b=2 global=1 n=1");
    EXPECT_EQ(unsaved(), "a=1 a=2,b=1 b=2,none n=1,");
    EXPECT_TRUE(document.IsUnsaved(RecordFromText("a=7"))) << "it is the name that counts";
    EXPECT_FALSE(document.IsUnsaved(RecordFromText("global=1")));
    document.Edit("a=1 global=1");
    EXPECT_EQ(unsaved(), "b=1 none,");
    EXPECT_FALSE(document.IsUnsaved(RecordFromText("n=1")));
    EXPECT_TRUE(document.IsUnsaved(RecordFromText("b=1")));
    ASSERT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_TRUE(document.IsSaved());
    ASSERT_TRUE(document.Replace(document.Find(RecordFromText("a=1")), RecordFromText("a=3")));
    EXPECT_EQ(unsaved(), "a=1 a=3,");
    EXPECT_EQ(document.Open(Access::Change).status, noErr); // drops it
    EXPECT_EQ(document.State(), "a=1 global=1");
    EXPECT_EQ(unsaved(), "");
    EXPECT_FALSE(document.Replace(9, RecordFromText("a=3")) || document.Remove(9));
}

TEST(SettingsDocument, FactorysRecords_AreUnsavedUntilTheFileHasThem) {
    DocumentFolder folder("a=1 global=1");
    fs::remove(folder.file);
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

// A file that another program had emptied or half written was once taken over, and the user's records were gone.
TEST(SettingsDocument, FileThatIsNoSettings_IsNotTakenOver) {
    const std::string whole = Made("a=1 global=1", "settings");
    struct Row {
        const char *what;
        std::optional<std::string> bytes; // what another program makes of the file; none: it removes it
        OSErr saved = noErr;
        bool isKeptAside = false;
    };
    for (const Row &outside : std::initializer_list<Row>{
             {"emptied", ""},
             {"half written", whole.substr(0, whole.size() / 2), noErr, true},
             {"another kind of file", std::string(5000, 'x'), noErr, true},
             {"without records", Made("", "settings")},
             {"removed", {}},
             {"a folder", {}, notAFileErr},
         }) {
        SCOPED_TRACE(outside.what);
        const DocumentFolder folder("a=1 global=1");
        OpenDocument document(folder);
        ASSERT_TRUE(document.Put("a=2"));
        fs::remove(folder.file);
        if (outside.bytes) {
            WriteWhole(folder.file, *outside.bytes);
        } else if (outside.saved == notAFileErr) {
            fs::create_directory(folder.file);
        }
        EXPECT_FALSE(document.TakeOutsideChanges().cameIn);
        EXPECT_EQ(document.State(), "a=2 global=1");
        const SaveResult result = document.Save(kNoWait);
        EXPECT_EQ(result.status, outside.saved);
        EXPECT_EQ(result.replacedDamaged, outside.isKeptAside);
        EXPECT_EQ(fs::exists(folder.file + kRefusedSuffix), outside.isKeptAside);
        EXPECT_EQ(document.State(), "a=2 global=1");
        EXPECT_EQ(document.IsReadOnly(), outside.saved != noErr);
        if (outside.saved == noErr) {
            EXPECT_EQ(folder.State(), "a=2 global=1");
        } else { // can be tried again
            fs::remove_all(folder.file);
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
    EXPECT_FALSE(fs::exists(folder.file + kRefusedSuffix));
    OpenDocument writer(folder);
    EXPECT_EQ(ReadWhole(folder.file + kRefusedSuffix), "damaged");
    const SaveResult result = writer.Save(kNoWait);
    EXPECT_EQ(result.status, noErr);
    EXPECT_FALSE(result.replacedDamaged) << "told when it was opened";
}

TEST(SettingsDocument, LockThatCannotBeHad_LeavesAllAsItIs) {
    const DocumentFolder folder("a=1 global=1");
    OpenDocument document(folder);
    ASSERT_TRUE(document.Put("a=2"));
    const auto save = [&] {
        const SaveResult result = document.Save(std::chrono::milliseconds(20));
        EXPECT_FALSE(result.wasTried);
        EXPECT_EQ(folder.State(), "a=1 global=1");
        EXPECT_EQ(document.CountUnsaved(), 1);
        return result.status;
    };
    {
        const ScopedVariable state("XDG_STATE_HOME", folder.file); // a file
        EXPECT_EQ(save(), dirNFErr);
    }
    const fs::path lock = folder.Path("state/com.halcyra.drevix/settings.lock");
    fs::create_directories(lock.parent_path());
    fs::create_symlink(folder.Path("elsewhere"), lock);
    EXPECT_EQ(save(), bdNamErr);
    EXPECT_FALSE(fs::exists(folder.Path("elsewhere")));
    fs::remove(lock);
    UserLock other;
    ASSERT_EQ(other.Acquire("settings.lock", kNoWait), noErr);
    EXPECT_EQ(fs::status(lock).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(lock.parent_path()).permissions(), fs::perms(0700));
    EXPECT_EQ(save(), fBsyErr);
    other.Release();
    EXPECT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_EQ(other.Acquire("settings.lock", kNoWait), noErr) << "held beyond the save";
    other.Release();
    EXPECT_EQ(document.Lock(kNoWait), noErr);
    EXPECT_EQ(document.Save(kNoWait).status, noErr);
    EXPECT_EQ(other.Acquire("settings.lock", kNoWait), fBsyErr) << "not held beyond the save";
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

TEST(SettingsDocument, OperationsWithEveryFault_AreDoneOrNot) {
    const AppPrefs a = RecordFromText("a=1");
    const std::string asked = "a=1 b=2 b=9 cut=1 global=1 global=1 x=1";
    const auto withEarlier = [](OpenDocument &it, const std::function<bool(QBaseHandle)> &use) {
        std::vector<EarlierSettings> history;
        const OSErr status = ListHistory(it.Path(), &history);
        const QBaseOwner base =
            status == noErr && !history.empty() ? ReadEarlierSettings(history[0]) : nullptr;
        return base != nullptr && use(base.get());
    };
    const Operation<bool(OpenDocument &)> operations[] = {
        {"add", [](OpenDocument &it) { return it.Put("n=1"); }},
        {"store", [](OpenDocument &it) { return it.Put("a=5"); }},
        {"replace", [&](OpenDocument &it) { return it.Replace(it.Find(a), RecordFromText("n=5")); }},
        {"remove", [&](OpenDocument &it) { return it.Remove(it.Find(a)); }},
        {"take one", [](OpenDocument &it) { return it.TakeOne(RecordFromText("a=7")); }},
        {"take all",
         [&](OpenDocument &it) { return withEarlier(it, [&](auto old) { return it.TakeAll(old); }); }},
        {"take others'", [](OpenDocument &it) { return it.TakeOutsideChanges().cameIn; }},
        {"ask",
         [](OpenDocument &it) {
             EXPECT_TRUE(it.IsUnsaved(RecordFromText("b=2")) && it.CountUnsaved() > 0);
             return it.Unsaved().size() == 1 && !it.IsUnsaved(RecordFromText("a=1"));
         }},
        {"items",
         [&](OpenDocument &it) {
             const QBaseOwner records = it.RecordsWithItems();
             EXPECT_TRUE(records == nullptr || TextOfBase(records.get()) == asked);
             return records != nullptr;
         }},
        {"compare",
         [&](OpenDocument &it) {
             return withEarlier(it, [&](auto old) { return ChangesBetween(old, it.Base()).size() == 3; });
         }},
    };
    for (const auto &operation : operations) {
        SCOPED_TRACE(operation.name);
        std::string after;
        ForEachFault(0, {EIO, ENOMEM, kOfNew}, [&](const FaultAt &fault) {
            const DocumentFolder folder("b=9 global=1 x=1");
            OpenDocument document(folder);
            document.Edit("a=1 b=1 global=1");
            EXPECT_EQ(document.Save(kNoWait).status, noErr);
            EXPECT_TRUE(document.Put("b=2"));
            folder.WriteState("cut=1 lost=1", folder.file + kRefusedSuffix);
            fs::resize_file(folder.file + kRefusedSuffix, fs::file_size(folder.file + kRefusedSuffix) - 2);
            if (operation.name == "take others'") {
                folder.WriteState("a=8 b=1 global=1");
            }
            const std::string before = document.State();
            bool isDone = false;
            const auto run = [&] { return operation.run(document); };
            const bool wasHit = fault.Meets([&] { isDone = GivenMemory(run, false); });
            EXPECT_TRUE(wasHit || isDone);
            if (!isDone) {
                EXPECT_EQ(document.State(), before);
                EXPECT_EQ(document.CountUnsaved(), 1);
                EXPECT_TRUE(run());
            }
            after = after.empty() ? document.State() : after;
            EXPECT_EQ(document.State(), after);
            return wasHit;
        });
    }
}

// Every step of opening or saving fails in turn, while another program has changed a record too. Of a save that failed
// after it had written, an edit that was taken back then was once lost, and with it what the save had taken in.
TEST(SettingsDocument, SaveWithEveryFault_KeepsEditsAndFile) {
    for (const std::string next : {"a=3", "a=1"}) {
        SCOPED_TRACE("then " + next);
        ForEachFault(1, {ENOSPC, EIO, ENOMEM, kOfNew}, [&](const FaultAt &fault) {
            const DocumentFolder folder("a=1 b=1 global=1");
            OpenDocument document(folder);
            EXPECT_TRUE(document.Put("a=2"));
            folder.WriteState("a=1 b=2 global=1");
            SaveResult result;
            const bool wasHit = fault.Meets([&] { result = document.Save(kNoWait); });
            const std::string now = folder.State();
            EXPECT_TRUE(now == "a=2 b=2 global=1" || (result.status != noErr && now == "a=1 b=2 global=1"))
                << now;
            EXPECT_EQ(document.IsSaved(), result.status == noErr);
            EXPECT_EQ(QBaseGetRecordsChanged(document.Base()), result.status != noErr);
            EXPECT_EQ(result.outside.cameIn, document.State() == "a=2 b=2 global=1");
            for (const EarlierSettings &earlier : HistoryOf(folder.file)) {
                EXPECT_EQ(TextOfBase(ReadEarlierSettings(earlier).get()), "a=1 b=2 global=1");
            }
            EXPECT_EQ(OpenFileCount(), 0);
            EXPECT_TRUE(document.Put(next));
            EXPECT_TRUE(!document.IsSaved() || folder.State().starts_with(next));
            EXPECT_TRUE(document.TakeOutsideChanges().conflicts.empty()) << "its own words are another's";
            EXPECT_EQ(document.IsSaved(), folder.State() == document.State());
            EXPECT_EQ(document.Save(kNoWait).status, noErr);
            EXPECT_EQ(folder.State(), next + " b=2 global=1");
            EXPECT_EQ(ScratchFolder::Names(folder.Path()).size(), 4U) << "something is left behind";
            return wasHit;
        });
    }
}

TEST(SettingsDocument, OpenWithEveryFault_LosesNothingInASave) {
    const ScopedVariable noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    int emptied = 0;
    for (const bool isDamaged : {false, true}) {
        for (const bool isOpen : {false, true}) {
            ForEachFault(1, {EIO, EACCES, ENOMEM, kOfNew}, [&](const FaultAt &fault) {
                const DocumentFolder folder("");
                folder.WriteState("a=1 global=1", folder.path);
                if (isDamaged) {
                    WriteWhole(folder.path, "damaged");
                }
                SettingsDocument document(folder.resources, kPanelVersion);
                if (isOpen) {
                    EXPECT_EQ(document.Open(Access::Change).status, noErr);
                }
                OpenResult opened;
                const bool wasHit = fault.Meets([&] { opened = document.Open(Access::Change); });
                emptied += opened.status != noErr && document.Base() != nullptr && !isOpen ? 1 : 0;
                document.TakeOutsideChanges();
                EXPECT_EQ(document.Save(kNoWait).status, document.Base() != nullptr ? noErr : memFullErr);
                EXPECT_TRUE(isDamaged && document.Base() != nullptr
                                ? ReadWhole(folder.kept) == "damaged"
                                : isDamaged || folder.State(folder.path).starts_with("a=1 "))
                    << folder.State(folder.path);
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
    fs::resize_file(folder.file + ".refused", fs::file_size(folder.file + ".refused") - 2);
    for (const char *end : {".old", ".", "9"}) {
        folder.WriteState("other=1", folder.file + ".refused" + end);
    }
    const OpenDocument document(folder);
    EXPECT_EQ(TextOfBase(document.RecordsWithItems().get()), "a=1 cut=1 global=1 whole=1");
    EXPECT_EQ(document.State(), "a=1 global=1");
    fs::create_directory(folder.file + ".refused.2"); // cannot be read
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

    // An edit that is taken back is none when the companion binds another entry, and another program's change comes in.
    AppPrefs edited = shown();
    edited.device[0].navSpeed = 9;
    ASSERT_NE(document.Store(edited, 1), kNoRecord);
    edited.device[0].navSpeed = 2;
    ASSERT_NE(document.Store(edited, 1), kNoRecord);
    ASSERT_TRUE(document.Remove(document.Store(MakeRecord(kOther, "other"), kNoRecord)));
    folder.Write(kApp, HotKeyFile({"Copy|1|pyralis||4", "Cut|||"}));
    document.TakeCompanionChanges();
    EXPECT_NE(shown().device[0].action[kButtonI].crc, edited.device[0].action[kButtonI].crc);
    EXPECT_TRUE(document.IsSaved());
    folder.Write(kApp, HotKeyFile({"Cut|1|pyralis||4"}));
    write(3);
    EXPECT_TRUE(document.TakeOutsideChanges().conflicts.empty());
    EXPECT_EQ(shown().device[0].navSpeed, 3);
    // Without memory to read what the companion binds nothing comes in yet.
    ForEachFault(1, {kOfNew}, [&](const FaultAt &fault) {
        write(static_cast<std::uint8_t>(10 + fault.call % 2));
        const bool wasHit = fault.Meets([&] { document.TakeOutsideChanges(); });
        EXPECT_EQ(shown().device[0].action[kButtonI].command, kToolMenu);
        return wasHit;
    });

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
