// Reading and saving settings with every step failing, or being the last thing that the process does.
#include "settings/device_prefs.h"

#include "qbase/qbase_file.h"
#include "tests/settings/settings_files.h"
#include "tests/support/failing_new.h"
#include "tests/support/testing.h"

#include <csignal>

namespace drevix {
namespace {

using namespace test;

const Names kSettingsAlone = {"com.halcyra.drevix.prefs"};

// A settings file with one record, or one that is refused; gives its bytes.
std::string MakeFile(const SettingsFolder &folder, bool damaged) {
    folder.WriteDefaults({MakeRecord(0, "factory")});
    if (damaged) {
        folder.WriteDamaged(kPanelVersion);
    } else {
        EXPECT_EQ(SettingsFolder::Save(MakeBase({MakeRecord(0, "old")}, kPanelVersion)), noErr);
    }
    return ReadWhole(folder.path);
}

// A file that could not be read, for whatever reason, is still there after the save that follows.
TEST(GetDevicePrefs, EveryFault_LosesNoFile) {
    for (const int error : {EIO, EACCES, ENOMEM}) {
        for (const bool damaged : {false, true}) {
            ForEachFault(1, [&](int failAt, Lasts lasts) {
                SettingsFolder folder;
                const std::string before = MakeFile(folder, damaged);
                const QBaseOwner base = NewDrevixBase();
                OSErr status = noErr;
                const bool wasHit =
                    MeetsFault(failAt, lasts, error, [&] { status = folder.Load(base, kPanelVersion); });
                std::ignore = SettingsFolder::Save(base); // may be refused, but not destroy
                EXPECT_TRUE(status == noErr || status == resNotFound) << status;
                EXPECT_TRUE(ReadWhole(folder.path) == before || (damaged && ReadWhole(folder.kept) == before))
                    << failAt << " of " << error;
                EXPECT_EQ(OpenFileCount(), 0);
                return wasHit;
            });
        }
    }
}

// An import: each record takes the place of its namesake or is added.
OSErr Import(const std::string &path, QBaseHandle base, std::size_t *skipped) {
    std::size_t unstored = 0;
    const auto store = [&](const AppPrefs &record) {
        unstored += StoreAppPrefs(base, record, FindReplacedAppPrefs(base, record)) == kNoRecord ? 1 : 0;
    };
    const OSErr status = ReadAppPrefsFile(path, store, nullptr, skipped);
    *skipped += unstored;
    return status;
}

// One record without memory ended the import of all that came behind it.
TEST(Import, EveryFault_SkipsWholeRecordsOnly) {
    const SettingsFolder folder;
    folder.WriteDefaults({MakeRecord(kOther, "SKETCH"), MakeRecord(kOther, "1"), MakeRecord(kOther, "2"),
                          MakeRecord(kOther, "3")});
    const std::string path = folder.Path(kDefaultsFileName);
    constexpr int kOfNew = 0; // instead of an errno
    std::set<std::size_t> skippedOnce;
    for (const int error : {EIO, ENOMEM, kOfNew}) {
        ForEachFault(1, [&](int failAt, Lasts lasts) {
            SCOPED_TRACE(failAt);
            const QBaseOwner base = MakeBase({MakeRecord(0, ""), MakeRecord(kOther, "Sketch")});
            OSErr status = noErr;
            std::size_t skipped = 0;
            gNewFailsIn = error == kOfNew ? failAt : 0;
            const bool meets = MeetsFault(error == kOfNew ? kNoFault : failAt, lasts, error,
                                          [&] { status = Import(path, base.get(), &skipped); });
            const bool wasHit = error == kOfNew ? std::exchange(gNewFailsIn, 0) == 0 : meets;
            Names names = RecordNames(base);
            const bool isReplaced = names[1] == "SKETCH";
            const auto added = static_cast<std::size_t>(QBaseCountRecords(base.get())) - 2;
            EXPECT_EQ(added + skipped + (isReplaced ? 1 : 0), status == noErr ? 4U : 0U);
            std::erase_if(names, [](const std::string &name) { return name > "3"; });
            EXPECT_TRUE(std::ranges::is_sorted(names)) << "none is there twice, or out of order";
            EXPECT_TRUE(status == noErr || status == (error == EIO ? ioErr : memFullErr)) << status;
            EXPECT_TRUE(QBaseValidate(base.get()));
            EXPECT_EQ(OpenFileCount(), 0);
            skippedOnce.insert(lasts == Lasts::Once ? skipped : 0);
            return wasHit;
        });
    }
    EXPECT_EQ(skippedOnce, (std::set<std::size_t>{0, 1}));
}

TEST(SaveDevicePrefs, EveryFault_LeavesTheOldOrTheNewFile) {
    for (const int error : {ENOSPC, EIO}) {
        ForEachFault(8, [&](int failAt, Lasts lasts) {
            SettingsFolder folder;
            MakeFile(folder, false);
            const QBaseOwner base = MakeBase({MakeRecord(0, "new"), MakeRecord(1, "more")});
            OSErr status = noErr;
            const bool wasHit =
                MeetsFault(failAt, lasts, error, [&] { status = SettingsFolder::Save(base); });
            const Names now = folder.SavedNames();
            EXPECT_TRUE(now == Names{"old"} || now == (Names{"new", "more"})) << failAt;
            EXPECT_TRUE(status != noErr || now.size() == 2) << failAt;
            EXPECT_EQ(QBaseGetRecordsChanged(base.get()), status != noErr) << failAt;
            EXPECT_EQ(QBaseGetUserFieldsChanged(base.get()), status != noErr) << failAt;
            EXPECT_EQ(SettingsFolder::Names(folder.Preferences()), kSettingsAlone) << failAt;
            EXPECT_TRUE(wasHit || status == noErr);
            return wasHit;
        });
    }
}

// What a program does: reads the settings, adds a record, saves.
OSErr LoadAndSave(const SettingsFolder &folder) {
    const QBaseOwner base = NewDrevixBase();
    const OSErr status = folder.Load(base, kPanelVersion);
    if (status != noErr || StoreAppPrefs(base.get(), MakeRecord(1, "added"), kNoRecord) == kNoRecord) {
        return status;
    }
    return SettingsFolder::Save(base);
}

// Runs it in a process that is killed at its n-th call of the disk; tells whether it was.
bool IsKilledAt(int call, const SettingsFolder &folder) {
    const pid_t child = ::fork();
    if (child == 0) {
        FaultyDisk faults(call, Lasts::Once, EIO);
        faults.onFault = [] { ::raise(SIGKILL); };
        ::_exit(LoadAndSave(folder) == noErr ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) || status == 0);
    return WIFSIGNALED(status);
}

TEST(SaveDurability, KilledAtEveryCall_LosesNeitherSettingsNorARefusedFile) {
    for (const bool damaged : {false, true}) {
        bool killed = true;
        for (int call = 1; killed; ++call) {
            SCOPED_TRACE(call);
            SettingsFolder folder;
            const std::string before = MakeFile(folder, damaged);
            killed = IsKilledAt(call, folder);
            EXPECT_TRUE(killed || call > (damaged ? 20 : 12));
            const std::string now = ReadWhole(folder.path);
            EXPECT_TRUE(now == before || !damaged || ReadWhole(folder.kept) == before);
            const Names names = damaged ? Names{} : folder.SavedNames();
            EXPECT_TRUE(damaged || names == Names{"old"} || names == (Names{"old", "added"}));
            EXPECT_TRUE(killed || now != before);
            EXPECT_EQ(LoadAndSave(folder), noErr);
            EXPECT_TRUE(damaged ? ReadWhole(folder.kept) == before
                                : folder.SavedNames().size() == names.size() + 1);
            EXPECT_EQ(SettingsFolder::Names(folder.Preferences()).size(), damaged ? 2U : 1U);
        }
    }
}

} // namespace
} // namespace drevix
