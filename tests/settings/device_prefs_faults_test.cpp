#include "settings/device_prefs.h"

#include "tests/settings/settings_files.h"
#include "tests/support/faults.h"

#include <cerrno>

namespace drevix {
namespace {

using test::FaultyAllocator;
using test::FaultyDisk;
using test::Lasts;
using test::MakeBase;
using test::MakeRecord;
using test::Names;
using test::ReadWhole;
using test::SettingsFolder;

// Calls `run(failAt, lasts)`, which tells whether the fault was met, until it is not.
template <class Run>
void ForEachFault(int least, const Run &run) {
    for (const Lasts lasts : {Lasts::Once, Lasts::ForEver}) {
        int failAt = 1;
        while (run(failAt, lasts)) {
            ++failAt;
        }
        EXPECT_GT(failAt, least) << "the faults were not met";
    }
}

// Runs `work` with one fault of the disk, or of the memory for an `error` of ENOMEM, installed.
template <class Work>
bool RunWithFault(int failAt, Lasts lasts, int error, const Work &work) {
    if (error == ENOMEM) {
        FaultyAllocator faults(failAt, lasts);
        work();
        return faults.WasHit();
    }
    FaultyDisk faults(failAt, lasts, error);
    work();
    return faults.WasHit();
}

// A file that could not be read, for whatever reason, is still there after the save that follows.
TEST(GetDevicePrefs, EveryFault_LosesNoFile) {
    for (const int error : {EIO, EACCES, ENOMEM}) {
        for (const bool damaged : {false, true}) {
            ForEachFault(1, [&](int failAt, Lasts lasts) {
                SettingsFolder folder;
                folder.WriteDefaults({MakeRecord(0, "factory")});
                if (damaged) {
                    folder.WriteDamaged(kPanelVersion);
                } else {
                    EXPECT_EQ(SettingsFolder::Save(MakeBase({MakeRecord(0, "mine")}, kPanelVersion)), noErr);
                }
                const std::string before = ReadWhole(folder.path);
                const QBaseOwner base = NewDrevixBase();
                OSErr status = noErr;
                const bool wasHit =
                    RunWithFault(failAt, lasts, error, [&] { status = folder.Load(base, kPanelVersion); });
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

TEST(SaveDevicePrefs, EveryFault_LeavesTheOldOrTheNewFile) {
    for (const int error : {ENOSPC, EIO}) {
        ForEachFault(8, [&](int failAt, Lasts lasts) {
            SettingsFolder folder;
            EXPECT_EQ(SettingsFolder::Save(MakeBase({MakeRecord(0, "old")})), noErr);
            const QBaseOwner base = MakeBase({MakeRecord(0, "new"), MakeRecord(1, "more")});
            OSErr status = noErr;
            const bool wasHit =
                RunWithFault(failAt, lasts, error, [&] { status = SettingsFolder::Save(base); });
            const Names now = folder.SavedNames();
            EXPECT_TRUE(now == Names{"old"} || now == (Names{"new", "more"})) << failAt;
            EXPECT_TRUE(status != noErr || now.size() == 2) << failAt;
            EXPECT_EQ(QBaseGetRecordsChanged(base.get()), status != noErr) << failAt;
            EXPECT_EQ(QBaseGetUserFieldsChanged(base.get()), status != noErr) << failAt;
            EXPECT_EQ(SettingsFolder::Names(folder.Preferences()), Names{"com.halcyra.drevix.prefs"})
                << failAt;
            EXPECT_EQ(OpenFileCount(), 0);
            EXPECT_TRUE(wasHit || status == noErr);
            return wasHit;
        });
    }
}

} // namespace
} // namespace drevix
