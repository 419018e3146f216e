// Reading and saving settings with every step failing, or being the last thing that the process does.
#include "settings/device_prefs.h"

#include "qbase/qbase_file.h"
#include "tests/settings/settings_files.h"
#include "tests/support/failing_new.h"

namespace drevix::test {
namespace {

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
    std::set<std::size_t> skippedOnce;
    ForEachFault(1, {EIO, ENOMEM, kOfNew}, [&](const FaultAt &fault) {
        const QBaseOwner base = MakeBase({MakeRecord(0, ""), MakeRecord(kOther, "Sketch")});
        OSErr status = noErr;
        std::size_t skipped = 0;
        const bool wasHit = fault.Meets([&] { status = Import(path, base.get(), &skipped); });
        Names names = RecordNames(base);
        const bool isReplaced = names[1] == "SKETCH";
        const auto added = static_cast<std::size_t>(QBaseCountRecords(base.get())) - 2;
        EXPECT_EQ(added + skipped + (isReplaced ? 1 : 0), status == noErr ? 4U : 0U);
        std::erase_if(names, [](const std::string &name) { return name > "3"; });
        EXPECT_TRUE(std::ranges::is_sorted(names)) << "none is there twice, or out of order";
        EXPECT_TRUE(status == noErr || status == (fault.error == EIO ? ioErr : memFullErr)) << status;
        EXPECT_TRUE(QBaseValidate(base.get()));
        EXPECT_EQ(OpenFileCount(), 0);
        skippedOnce.insert(fault.lasts == Lasts::Once ? skipped : 0);
        return wasHit;
    });
    EXPECT_EQ(skippedOnce, (std::set<std::size_t>{0, 1}));
}

OSErr LoadAndSave(const SettingsFolder &folder) {
    const QBaseOwner base = NewDrevixBase();
    const OSErr status = folder.Load(base, kPanelVersion);
    if (status != noErr || StoreAppPrefs(base.get(), MakeRecord(1, "added"), kNoRecord) == kNoRecord) {
        return status;
    }
    return SettingsFolder::Save(base);
}

TEST(DevicePrefs, EveryFault_LeavesTheOldFileOrTheNewOne) {
    ForEachFault(1, {EIO, ENOMEM, kOfNew}, [](const FaultAt &fault) {
        const SettingsFolder folder;
        MakeFile(folder, false);
        OSErr status = noErr;
        bool isLoaded = false;
        AppPrefs defaults = MakeRecord(0, "mine");
        const bool wasHit = fault.Meets([&] {
            status = LoadAndSave(folder);
            isLoaded = LoadDefaultPrefs(folder.resources, MakeRecord(0, ""), &defaults);
        });
        const Names names = folder.SavedNames();
        EXPECT_TRUE(names == (Names{"old", "added"}) ||
                    ((wasHit || status != noErr) && names == Names{"old"}));
        EXPECT_EQ(NameOf(defaults), isLoaded ? "factory" : "mine");
        EXPECT_TRUE(isLoaded || wasHit);
        EXPECT_EQ(OpenFileCount(), 0);
        return wasHit;
    });
}

TEST(SaveDurability, KilledAtEveryCall_LosesNeitherSettingsNorARefusedFile) {
    for (const bool damaged : {false, true}) {
        bool killed = true;
        for (int call = 1; killed; ++call) {
            SCOPED_TRACE(call);
            SettingsFolder folder;
            const std::string before = MakeFile(folder, damaged);
            killed = DiesAt(call, Death::BeforeTheCall, [&] { return LoadAndSave(folder) == noErr; });
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
} // namespace drevix::test
