// Records, bases and files of settings for tests.
#pragma once

#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "settings/prefs_list.h"
#include "tests/support/testing.h"

namespace drevix::test {

inline constexpr OSType kOther = FourCharCode("TEST"); // an application's signature

inline AppPrefs MakeRecord(OSType application, std::string_view name) {
    AppPrefs prefs = MakeAppPrefs(nullptr, application, name);
    prefs.application = application; // 0 too
    return prefs;
}

inline QBaseOwner MakeBase(const std::vector<AppPrefs> &records, std::uint32_t stamp = 0) {
    QBaseOwner base = NewDrevixBase();
    for (const AppPrefs &record : records) {
        EXPECT_NE(QBaseAddRecord(base.get(), &record, sizeof record), kNoRecord);
    }
    QBaseSetUserLong(base.get(), stamp);
    return base;
}

inline std::string NameOf(const AppPrefs &prefs) {
    return stringWithPascalString(prefs.appFileName.data());
}

inline bool SameBytes(const AppPrefs &a, const AppPrefs &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline Names RecordNames(const QBaseOwner &base) {
    Names names;
    for (RecordNumber i = 0; i < QBaseCountRecords(base.get()); ++i) {
        const AppPrefs *const prefs = GetAppPrefs(base.get(), i);
        names.push_back(prefs != nullptr ? NameOf(*prefs) : "?");
    }
    return names;
}

// A scratch folder that is the resource folder too.
struct SettingsFolder : ScratchFolder {
    const FSRef resources = {Path()};
    const std::string path = Preferences() + "/com.halcyra.drevix.prefs";
    const std::string kept = path + kRefusedSuffix;

    void WriteDefaults(std::vector<AppPrefs> records) const {
        auto next = records.begin();
        EXPECT_EQ(WriteAppPrefsFile(
                      Path(kDefaultsFileName),
                      [&]() -> const AppPrefs * { return next == records.end() ? nullptr : &*next++; }),
                  noErr);
    }
    [[nodiscard]] OSErr Load(const QBaseOwner &base, std::uint32_t version = 0) const {
        auto name = kDrevixPrefsName;
        return GetDevicePrefs(base.get(), name.data(), resources, version);
    }
    [[nodiscard]] static OSErr Save(const QBaseOwner &base) {
        auto name = kDrevixPrefsName;
        return SaveDevicePrefs(base.get(), name.data(), kDrevixPrefsType, kDrevixPrefsCreator);
    }
    [[nodiscard]] test::Names SavedNames() const {
        const QBaseOwner base = NewDrevixBase();
        OSErr status = noErr;
        EXPECT_EQ(GetDevicePrefsFromPath(base.get(), path, FSRef{}, 0, &status), noErr);
        EXPECT_EQ(status, noErr);
        return RecordNames(base);
    }
    // A settings file whose header, with a stamp, is fine and whose only record is not in the index.
    void WriteDamaged(std::uint32_t stamp) const {
        EXPECT_EQ(SaveDevicePrefsToPath(MakeBase({MakeRecord(0, "damaged")}, stamp).get(), path), noErr);
        std::string bytes = ReadWhole(path);
        bytes[sizeof(QBaseFileHeader)] = 2;
        WriteWhole(path, bytes);
    }
};

} // namespace drevix::test
