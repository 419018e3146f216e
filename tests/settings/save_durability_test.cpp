#include "settings/device_prefs.h"

#include "tests/settings/settings_files.h"
#include "tests/support/faults.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <sys/wait.h>
#include <unistd.h>

namespace drevix {
namespace {

using test::FaultyDisk;
using test::Lasts;
using test::MakeBase;
using test::MakeRecord;
using test::Names;
using test::ReadWhole;
using test::SettingsFolder;

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

TEST(SaveDurability, KilledAtEveryCall_LeavesTheOldOrTheNewSettings) {
    for (int call = 1, killed = 1; killed != 0; ++call) {
        SettingsFolder folder;
        ASSERT_EQ(SettingsFolder::Save(MakeBase({MakeRecord(0, "old")}, kPanelVersion)), noErr);
        killed = IsKilledAt(call, folder) ? 1 : 0;
        const Names now = folder.SavedNames();
        EXPECT_TRUE(now == Names{"old"} || now == (Names{"old", "added"})) << call;
        EXPECT_EQ(LoadAndSave(folder), noErr) << call;
        EXPECT_EQ(folder.SavedNames().size(), now.size() + 1);
        EXPECT_EQ(SettingsFolder::Names(folder.Preferences()), Names{"com.halcyra.drevix.prefs"}) << call;
        EXPECT_TRUE(killed != 0 || (now.size() == 2 && call > 12)) << call;
    }
}

TEST(SaveDurability, KilledAtEveryCallOverARefusedFile_KeepsItOnce) {
    for (int call = 1, killed = 1; killed != 0; ++call) {
        SettingsFolder folder;
        folder.WriteDefaults({MakeRecord(0, "factory")});
        folder.WriteDamaged(kPanelVersion);
        const std::string damaged = ReadWhole(folder.path);
        killed = IsKilledAt(call, folder) ? 1 : 0;
        EXPECT_TRUE(ReadWhole(folder.path) == damaged || ReadWhole(folder.kept) == damaged) << call;
        EXPECT_EQ(LoadAndSave(folder), noErr) << call;
        EXPECT_EQ(ReadWhole(folder.kept), damaged) << call;
        EXPECT_EQ(SettingsFolder::Names(folder.Preferences()),
                  (Names{"com.halcyra.drevix.prefs", "com.halcyra.drevix.prefs.refused"}))
            << call;
        EXPECT_TRUE(killed != 0 || call > 20) << call;
    }
}

} // namespace
} // namespace drevix
