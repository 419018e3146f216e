// Settings files and documents of them for tests. A state of a file is written as its records,
// "NAME/SIGNATURE=VALUE" each, the signature left out for TEST and the name "global" for the global record.
#pragma once

#include "document/history.h"
#include "document/settings_document.h"
#include "tests/settings/settings_files.h"

namespace drevix::test {

inline constexpr std::chrono::milliseconds kNoWait{0};
inline constexpr std::chrono::seconds kLongWait{10};

inline AppPrefs RecordFromText(const std::string &text) {
    const std::size_t slash = text.find('/');
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, std::min(slash, equals));
    const bool isGlobal = name == "global";
    const OSType signature = slash < equals ? static_cast<OSType>(text[slash + 1]) : kOther;
    AppPrefs record = MakeRecord(isGlobal ? kGlobalSignature : signature, isGlobal ? "" : name);
    record.device[0].navSpeed = static_cast<std::uint8_t>(std::stoi(text.substr(equals + 1)));
    return record;
}

inline std::string TextOfRecord(const AppPrefs &record) {
    const bool isGlobal = record.application == kGlobalSignature;
    const bool hasSignature = !isGlobal && record.application != kOther;
    return (isGlobal ? "global" : NameOf(record)) +
           (hasSignature ? std::string("/") + static_cast<char>(record.application) : "") + "=" +
           std::to_string(record.device[0].navSpeed);
}

inline std::vector<AppPrefs> RecordsFromText(const std::string &state) {
    std::istringstream words(state);
    std::vector<AppPrefs> records;
    for (std::string word; words >> word;) {
        records.push_back(RecordFromText(word));
    }
    return records;
}

// A base's records, sorted as text.
inline std::string TextOfBase(QBaseHandle base) {
    std::vector<std::string> words;
    for (RecordNumber i = 0; i < QBaseCountRecords(base); ++i) {
        const AppPrefs *record = GetAppPrefs(base, i);
        words.push_back(record != nullptr ? TextOfRecord(*record) : "?");
    }
    std::ranges::sort(words);
    std::string text;
    for (const std::string &word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

// The bytes of a settings file, or of the factory's, made by the library once: each needs a flush.
inline const std::string &Made(const std::string &state, const std::string &leaf) {
    static std::map<std::string, std::string> made;
    std::string &bytes = made[leaf + state];
    if (bytes.empty()) {
        const SettingsFolder folder;
        folder.WriteDefaults({RecordFromText("global=9"), RecordFromText("factory=9")});
        const QBaseOwner base = MakeBase(RecordsFromText(state), kPanelVersion);
        EXPECT_EQ(QBaseSetUserBlock(base.get(), "block", 5), noErr);
        EXPECT_EQ(SaveDevicePrefsToPath(base.get(), folder.Path("settings")), noErr);
        bytes = ReadWhole(folder.Path(leaf));
    }
    return bytes;
}

// The history of a settings file, the newest first.
inline std::vector<EarlierSettings> HistoryOf(const std::string &file) {
    std::vector<EarlierSettings> history;
    EXPECT_EQ(ListHistory(file, &history), noErr);
    return history;
}

// A folder with a settings file, not the user's own.
struct DocumentFolder : SettingsFolder {
    const std::string file = Path("settings");

    explicit DocumentFolder(const std::string &state) {
        WriteWhole(Path(kDefaultsFileName), Made("", kDefaultsFileName));
        WriteState(state);
    }
    // As another program does, that knows of no lock.
    void WriteState(const std::string &state, const std::string &to = {}) const {
        WriteWhole(to.empty() ? file : to, Made(state, "settings"));
    }
    [[nodiscard]] std::string State(const std::string &of = {}) const {
        const QBaseOwner base = NewDrevixBase();
        DevicePrefsFile found;
        std::ignore =
            ReadDevicePrefs(base.get(), of.empty() ? file : of, {}, 0, RefusedFile::LeaveAlone, &found);
        return found.status == noErr ? TextOfBase(base.get()) : "status " + std::to_string(found.status);
    }
};

// A document of that file, opened to change it.
struct OpenDocument : SettingsDocument {
    explicit OpenDocument(const DocumentFolder &folder, Access access = Access::Change)
        : SettingsDocument(folder.resources, kPanelVersion) {
        UseFile(folder.file);
        result = Open(access);
    }
    OpenResult result;

    [[nodiscard]] std::string State() const { return TextOfBase(Base()); }
    // The number of the record with that name and signature.
    [[nodiscard]] RecordNumber Find(const AppPrefs &wanted) const {
        for (RecordNumber i = 0; i < QBaseCountRecords(Base()); ++i) {
            const AppPrefs &record = *GetAppPrefs(Base(), i);
            if (record.application == wanted.application && record.appFileName == wanted.appFileName) {
                return i;
            }
        }
        return kNoRecord;
    }
    [[nodiscard]] bool Put(const std::string &record) {
        const AppPrefs wanted = RecordFromText(record);
        return Store(wanted, Find(wanted)) != kNoRecord;
    }
    // Edits the base until that is its state.
    void Edit(const std::string &state) {
        const std::vector<AppPrefs> wanted = RecordsFromText(state);
        for (const AppPrefs &record : RecordsFromText(State())) {
            if (std::ranges::none_of(wanted, [&](const AppPrefs &kept) {
                    return kept.application == record.application && kept.appFileName == record.appFileName;
                })) {
                EXPECT_TRUE(Remove(Find(record)));
            }
        }
        for (const AppPrefs &record : wanted) {
            EXPECT_NE(Store(record, Find(record)), kNoRecord);
        }
    }
};

} // namespace drevix::test
