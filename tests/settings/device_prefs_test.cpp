#include "settings/device_prefs.h"

#include "settings/action_commands.h"
#include "tests/settings/settings_files.h"

namespace drevix::test {
namespace {

constexpr OSType kPhotoshop = FourCharCode("8BIM");

TEST(GetDevicePrefs, FirstStart_HasTheFactoryRecordsAndSavingMakesTheFolder) {
    SettingsFolder folder;
    const QBaseOwner base = NewDrevixBase();
    EXPECT_EQ(folder.Load(base, kPanelVersion), resNotFound) << "no defaults file either";
    fs::remove(folder.Preferences());
    folder.WriteDefaults({MakeRecord(0, ""), MakeRecord(kOther, "Z"), MakeRecord(kOther, "A")});
    EXPECT_EQ(folder.Load(base, kPanelVersion), noErr);
    EXPECT_EQ(RecordNames(base), (Names{"", "Z", "A"}));
    EXPECT_EQ(QBaseGetUserLong(base.get()), kPanelVersion);
    std::string path;
    EXPECT_EQ(FindDevicePrefsPath(&path), fnfErr);
    EXPECT_FALSE(fs::exists(folder.Preferences())) << "reading makes nothing";
    EXPECT_EQ(SettingsFolder::Save(base), noErr);
    EXPECT_EQ(folder.SavedNames(), (Names{"", "Z", "A"}));
    EXPECT_EQ(FindDevicePrefsPath(&path), noErr);
    EXPECT_EQ(path, folder.path);
    WriteWhole(path, ""); // an empty file is no settings, and no damage
    EXPECT_EQ(folder.Load(base, kPanelVersion), noErr);
    EXPECT_EQ(SettingsFolder::Names(folder.Preferences()), Names{"com.halcyra.drevix.prefs"});
}

// A global record with a file name got the factory's beside it at the next version.
TEST(GetDevicePrefs, Stamp_DecidesWhetherFactoryRecordsAreAdded) {
    const struct {
        std::uint32_t stamp, version;
        bool merges;
        std::uint32_t stampAfter;
    } rows[] = {{5, 6, true, 6},  {6, 6, false, 6}, {7, 6, false, 7},
                {5, 0, false, 5}, {0, 0, false, 0}, {0x7FFFFFFF, 0x80000000, true, 0x80000000}};
    for (const auto &row : rows) {
        SettingsFolder folder;
        folder.WriteDefaults({MakeRecord(0, ""), MakeRecord(kOther, "New")});
        ASSERT_EQ(SettingsFolder::Save(MakeBase({MakeRecord(0, "Named"), MakeRecord(0, "")}, row.stamp)),
                  noErr);
        const QBaseOwner base = NewDrevixBase();
        EXPECT_EQ(folder.Load(base, row.version), noErr);
        EXPECT_EQ(RecordNames(base), row.merges ? (Names{"", "", "New"}) : (Names{"Named", ""})) << row.stamp;
        EXPECT_EQ(QBaseGetUserLong(base.get()), row.stampAfter);
        EXPECT_EQ(QBaseGetRecordsChanged(base.get()), row.merges) << "not in a file of this version";
        fs::remove(folder.Path(kDefaultsFileName)); // which does not keep the stamp from being set
        EXPECT_EQ(folder.Load(base, row.version), noErr);
        EXPECT_EQ(QBaseGetUserLong(base.get()), row.stampAfter);
    }
}

// The first application of a base without a global record was taken for it.
TEST(EnsureGlobalPrefs, MissingGlobalRecord_ComesFromTheFactoryOrIsBuiltIn) {
    const SettingsFolder folder;
    AppPrefs factory = MakeRecord(0, "");
    factory.device[0].navSpeed = 77;
    AppPrefs own = MakeRecord(0, "");
    own.device[0].navSpeed = 3;
    const auto speedOfFirst = [&](const QBaseOwner &base) {
        EXPECT_EQ(EnsureGlobalPrefs(base.get(), folder.resources), noErr);
        EXPECT_EQ(GetAppPrefs(base.get(), 0)->application, kGlobalSignature);
        return int{GetAppPrefs(base.get(), 0)->device[0].navSpeed};
    };
    const QBaseOwner without = MakeBase({MakeRecord(kOther, "App")});
    EXPECT_EQ(speedOfFirst(MakeBase({MakeRecord(kOther, "App")})), 100);
    folder.WriteDefaults({factory});
    EXPECT_EQ(speedOfFirst(without), 77);
    EXPECT_EQ(RecordNames(without), (Names{"", "App"}));
    EXPECT_TRUE(QBaseGetRecordsChanged(without.get()));
    const QBaseOwner with = MakeBase({MakeRecord(kOther, "App"), own});
    QBaseSetRecordsChanged(with.get(), false);
    EXPECT_EQ(speedOfFirst(with), 3);
    EXPECT_EQ(QBaseCountRecords(with.get()), 2);
    EXPECT_FALSE(QBaseGetRecordsChanged(with.get()));
    EXPECT_EQ(EnsureGlobalPrefs(nullptr, folder.resources), paramErr);
}

TEST(GetDeviceDefaultPrefs, RecordsThatAreThere_KeepAllButASignatureBehindAWildcard) {
    SettingsFolder folder;
    AppPrefs mine = MakeRecord(kPhotoshop, "Same");
    mine.device[0].navSpeed = 77;
    const QBaseOwner base = MakeBase(
        {mine, MakeRecord(kPhotoshop, "wild"), MakeRecord(kOther, "WILD"), MakeRecord(kOther, "Twin")});
    QBaseSetRecordsChanged(base.get(), false);
    folder.WriteDefaults({MakeRecord(kPhotoshop, "SAME"), MakeRecord(kWildcardSignature, "Wild")});
    EXPECT_EQ(GetDeviceDefaultPrefs(base.get(), folder.Path(kDefaultsFileName)), noErr);
    EXPECT_EQ(RecordNames(base), (Names{"Same", "wild", "WILD", "Twin"}));
    EXPECT_TRUE(SameBytes(*GetAppPrefs(base.get(), 0), mine));
    for (const RecordNumber ofTheName : {1, 2}) {
        EXPECT_EQ(OSType{GetAppPrefs(base.get(), ofTheName)->application}, kWildcardSignature);
    }
    EXPECT_TRUE(QBaseGetRecordsChanged(base.get()));
    folder.WriteDefaults({MakeRecord(kPhotoshop, "Twin")});
    EXPECT_EQ(GetDeviceDefaultPrefs(base.get(), folder.Path(kDefaultsFileName)), noErr);
    EXPECT_EQ(RecordNames(base), (Names{"Same", "wild", "WILD", "Twin", "Twin"})) << "another signature";
}

TEST(GetDevicePrefs, OldFile_IsRepairedByTheStampItBrought) {
    struct Row {
        std::uint32_t stamp;
        OSType application;
        SlotIndex slot;
        ActionCommand command, expected;
    };
    // clang-format off
    const Row rows[] = {
        {288, 0, 17, 7, 0}, {289, 0, 17, 7, 7}, {288, kOther, 17, 7, 7}, {288, 0, 16, 7, 7},
        {9, kOther, 31, 34, 34}, {9, kOther, 0, 35, 0}, {9, kOther, 31, 43, 0}, {9, kOther, 0, 44, 44},
        {9, 0, 5, 40, 0}, {9, kNoSignature, 5, 40, 0}, {9, kWildcardSignature, 5, 40, 40},
        {9, kPhotoshop, 5, 40, 40}, {9, FourCharCode("ART5"), 5, 35, 35}, {9, FourCharCode("InDn"), 5, 43, 43},
        {9, FourCharCode("8ELE"), 5, 40, 40},
    };
    // clang-format on
    for (const auto &row : rows) {
        SettingsFolder folder;
        AppPrefs record = MakeRecord(row.application, "ADOBE illustrator");
        ActionSlot &slot = record.device[0].action[row.slot];
        slot = {row.command, 1, 2, 3, 4, 5, 6, {1, 'x'}};
        ASSERT_EQ(SettingsFolder::Save(MakeBase({record}, row.stamp)), noErr);
        const QBaseOwner base = NewDrevixBase();
        EXPECT_EQ(folder.Load(base, kPanelVersion), noErr);
        // Only the command and the two names of the old Illustrator change; a global record has one name.
        slot.command = row.expected;
        const AppPrefs renamed = MakeRecord(0, "Adobe Illustrator CS2");
        record.appFileName = row.application == 0 ? Str63{} : renamed.appFileName;
        record.appName = renamed.appName;
        EXPECT_TRUE(SameBytes(*GetAppPrefs(base.get(), 0), record))
            << row.stamp << ' ' << row.application << ' ' << row.command;
        EXPECT_TRUE(QBaseGetRecordsChanged(base.get()));
    }
}

TEST(GetDevicePrefs, RefusedFile_IsKeptAsideByASaveOrNotOverwritten) {
    const SettingsFolder folder;
    folder.WriteDefaults({MakeRecord(0, "factory")});
    const QBaseOwner base = NewDrevixBase();
    QBaseSetUserLong(base.get(), 3);
    folder.WriteDamaged(77);
    const std::string damaged = ReadWhole(folder.path);
    EXPECT_EQ(folder.Load(base), noErr);
    EXPECT_EQ(QBaseGetUserLong(base.get()), 3U) << "the stamp of a refused file came in";
    EXPECT_EQ(RecordNames(base), Names{"factory"});
    EXPECT_EQ(ReadWhole(folder.path), damaged);
    EXPECT_EQ(SettingsFolder::Save(base), noErr);
    EXPECT_EQ(folder.SavedNames(), Names{"factory"});
    EXPECT_EQ(ReadWhole(folder.kept), damaged);

    const std::string path = folder.Path(std::string(250, 'n')); // no room for the suffix
    WriteWhole(path, "too short");
    OSErr status = noErr;
    EXPECT_EQ(GetDevicePrefsFromPath(base.get(), path, folder.resources, 1, &status), noErr);
    EXPECT_NE(status, noErr);
    EXPECT_EQ(SaveDevicePrefsToPath(base.get(), path), wrPermErr);
    EXPECT_EQ(ReadWhole(path), "too short");
    fs::remove(path);
    EXPECT_EQ(GetDevicePrefsFromPath(base.get(), path, folder.resources, 1, &status), noErr);
    EXPECT_EQ(status, fnfErr);
    EXPECT_EQ(SaveDevicePrefsToPath(base.get(), path), noErr) << "nothing is left there to be lost";
}

// A record whose size is odd passes every check, and puts the next one at an odd address.
TEST(GetDevicePrefs, RecordsAtOddPlaces_AreSettingsLikeOthers) {
    SettingsFolder folder;
    ASSERT_EQ(SettingsFolder::Save(MakeBase({MakeRecord(0, ""), MakeRecord(kOther, "Odd")})), noErr);
    std::string bytes = ReadWhole(folder.path);
    bytes.insert(64 + 2 * 4 + 1678, 1, '?');
    ++bytes[16];         // the record data's size
    ++bytes[64 + 4];     // the second offset
    ++bytes[64 + 2 * 4]; // the first record's size
    WriteWhole(folder.path, bytes);
    const QBaseOwner base = NewDrevixBase();
    EXPECT_EQ(folder.Load(base), noErr);
    GetAppPrefs(base.get(), 1)->device[0].action[3].crc = 0x01020304;
    SortDrevixBase(base.get());
    EXPECT_EQ(SettingsFolder::Save(base), noErr);
    EXPECT_EQ(folder.SavedNames(), (Names{"", "Odd"}));
}

TEST(DevicePrefs, WithoutABaseOrAName_NothingIsReadOrSavedAndALongNameIsCut) {
    const SettingsFolder folder;
    const QBaseOwner base = MakeBase({MakeRecord(0, "")});
    auto name = kDrevixPrefsName;
    Str63 noName{};
    EXPECT_EQ(GetDevicePrefs(nullptr, name.data(), folder.resources, 0), paramErr);
    for (const OSErr status :
         {SaveDevicePrefs(nullptr, name.data(), 0, 0), SaveDevicePrefs(base.get(), nullptr, 0, 0),
          SaveDevicePrefs(base.get(), noName.data(), 0, 0), SaveDevicePrefsToPath(nullptr, folder.path),
          SaveDevicePrefsToPath(base.get(), "")}) {
        EXPECT_EQ(status, noErr);
    }
    EXPECT_EQ(SettingsFolder::Names(folder.Preferences()).size(), 0U);
    Str255 longName;
    longName.fill('n');
    EXPECT_EQ(SaveDevicePrefs(base.get(), longName.data(), 0, 0), noErr);
    EXPECT_EQ(longName[0], 63);
    EXPECT_EQ(SettingsFolder::Names(folder.Preferences()), Names{std::string(63, 'n')});
}

} // namespace
} // namespace drevix::test
