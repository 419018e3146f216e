#include "companion/korvane_crc.h"
#include "companion/korvane_sync.h"
#include "platform/files/disk.h"
#include "platform/files/user_lock.h"
#include "settings/action_commands.h"
#include "tests/companion/companion_folder.h"
#include "tests/settings/settings_files.h"
#include "tests/support/failing_new.h"

#include <random>

namespace drevix::test {
namespace {

constexpr SlotIndex kI = 18;
constexpr SlotIndex kII = 19;
constexpr SlotIndex kIII = 20;

// A base with a record for each of the companion's applications, in its order, and the companion's folder.
class KorvaneSync : public testing::Test {
  protected:
    KorvaneSync() {
        for (const KorvaneApp &app : kKorvaneApps) {
            const AppPrefs prefs =
                MakeRecord(app.creator, app.fileName == nullptr ? "" : stringWithPascalString(app.fileName));
            EXPECT_NE(QBaseAddRecord(fBase.get(), &prefs, sizeof prefs), kNoRecord);
        }
    }

    [[nodiscard]] ActionSlot &Slot(std::size_t row, SlotIndex slot) const {
        return GetAppPrefs(fBase.get(), static_cast<RecordNumber>(row))->device[0].action[slot];
    }
    void Bind(std::size_t row, SlotIndex slot, std::string_view menu) const {
        Slot(row, slot).command = kActionToolMenu;
        Slot(row, slot).crc = KorvaneStringCRC(menu);
    }
    // What buttons I, II and III of a record hold: a title, "-" for nothing, else the command.
    [[nodiscard]] Strings Buttons(std::size_t row, const Strings &titles) const {
        Strings held;
        for (const SlotIndex index : {kI, kII, kIII}) {
            const ActionSlot &slot = Slot(row, index);
            held.push_back(slot.command == kActionNone ? "-" : std::to_string(slot.command));
            for (const std::string &title : titles) {
                if (slot.command == kActionToolMenu && slot.crc == KorvaneStringCRC(title)) {
                    held.back() = title;
                }
            }
        }
        return held;
    }
    [[nodiscard]] Strings File(std::size_t row) const { return Rows(LoadKorvaneFile(fFolder.File(row))); }

    CompanionFolder fFolder;
    QBaseOwner fBase = NewDrevixBase();
};

TEST_F(KorvaneSync, ToKorvane_BindsAndUnbindsHotKeys) {
    struct Row {
        const char *what;
        std::map<SlotIndex, std::string> bound;
        Strings before;
        Strings after;
        ActionCommand command = kActionToolMenu;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"all three",
              {{kI, "A"}, {kII, "B"}, {kIII, "C"}},
              {"C", "B", "A"},
              {"C|2|pyralis||16", "B|3|pyralis||8", "A|1|pyralis||4"}},
             {"unbound", {{kII, "M"}}, {"M|3|pyralis|shift|8"}, {"M||||"}, kActionKeystroke},
             {"another device's", {{kI, "A"}}, {"M|7|tarnix|x|9"}, {"M|7|tarnix|x|9"}},
             {"taken over", {{kIII, "M"}}, {"M|7|tarnix|x|9"}, {"M|2|pyralis||16"}},
             {"device written otherwise", {}, {"M|1|Pyralis||4"}, {"M|1|Pyralis||4"}},
             {"I before III before II", {{kI, "M"}, {kII, "M"}, {kIII, "M"}}, {"M"}, {"M|1|pyralis||4"}},
             {"two of one title",
              {{kII, "M"}},
              {"M", "X", "M"},
              {"M|3|pyralis||8", "X||||", "M|3|pyralis||8"}},
         }) {
        for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
            for (const SlotIndex slot : {kI, kII, kIII}) {
                Slot(app, slot) = {};
            }
            for (const auto &[slot, menu] : row.bound) {
                Bind(app, slot, menu);
                Slot(app, slot).command = row.command;
            }
            fFolder.Write(app, HotKeyFile(row.before));
        }
        SyncToKorvane(fBase.get());
        for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
            EXPECT_EQ(File(app), row.after) << row.what << " " << kKorvaneApps[app].folder;
        }
    }
}

TEST_F(KorvaneSync, ToKorvane_WritesEveryFileThatCanBeReadAndNoOther) {
    const std::string whole =
        "<HotKeys TargetApp='A'><HotKey><Menu>M</Menu><Device>pyralis</Device></HotKey></HotKeys>";
    const Strings others = {whole + "<HotKey>", "<HotKey TargetApp='A'/>", HotKeyFile({})};
    fFolder.Write(0, whole);
    for (std::size_t i = 0; i < others.size(); ++i) {
        fFolder.Write(1 + i, others[i]);
    }
    QBaseMarkRecordForRemoval(fBase.get(), 0); // no global record
    QBaseRemoveMarkedRecords(fBase.get());
    SyncToKorvane(fBase.get());
    EXPECT_EQ(File(0), Strings{"M||pyralis||"});
    EXPECT_NE(ReadWhole(fFolder.File(0)), whole); // in our layout now
    for (std::size_t i = 0; i < others.size(); ++i) {
        EXPECT_EQ(ReadWhole(fFolder.File(1 + i)), others[i]);
    }
    EXPECT_FALSE(std::filesystem::exists(fFolder.File(4)));
}

TEST_F(KorvaneSync, ToKorvane_KeepsAChangeThatComesBetween) {
    struct BusyDisk : ScopedDisk {
        std::string file, change;
        int opens = 0;
        int Open(const char *path, int flags, mode_t mode) override {
            if (path == file && ++opens == 2) {
                WriteWhole(file, change);
            }
            return Disk::Open(path, flags, mode);
        }
    } disk;
    disk.file = fFolder.File(1);
    disk.change = HotKeyFile({"N|5|tarnix||9", "M"});
    fFolder.Write(1, HotKeyFile({"N", "M"}));
    Bind(1, kI, "M");
    SyncToKorvane(fBase.get());
    EXPECT_EQ(File(1), (Strings{"N|5|tarnix||9", "M|1|pyralis||4"}));
}

TEST_F(KorvaneSync, FromKorvane_RewritesTheButtons) {
    // Before each: I holds "Old", II a keystroke, III nothing.
    for (const auto &[what, file, buttons] :
         std::initializer_list<std::tuple<const char *, Strings, Strings>>{
             {"no hotkeys", {}, {"-", "32", "-"}},
             {"each of the keys", {"M|1|pyralis", "N|2|pyralis", "Old|3|pyralis"}, {"M", "Old", "N"}},
             {"the last one of a key", {"M|1|pyralis", "N|1|pyralis"}, {"N", "32", "-"}},
             {"another device", {"M|1|Pyralis", "M|2|tarnix", "M|3"}, {"-", "32", "-"}},
             {"numbers", {"M| \t+2x|pyralis", "N|3.9|pyralis"}, {"-", "N", "M"}},
             {"no key of ours",
              {"M|0|pyralis", "M|4|pyralis", "M||pyralis", "M|-1|pyralis", "M|x2|pyralis",
               "M|4294967297|pyralis"},
              {"-", "32", "-"}},
         }) {
        for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
            Bind(app, kI, "Old");
            Slot(app, kII) = {kActionKeystroke, 256, 12, 0, 0, 0, 0, {}};
            Slot(app, kIII) = {};
            fFolder.Write(app, HotKeyFile(file));
        }
        SyncFromKorvane(fBase.get());
        for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
            EXPECT_EQ(Buttons(app, {"Old", "M", "N"}), buttons) << what;
        }
    }
}

TEST_F(KorvaneSync, FromKorvane_SetsTheWholeSlotButTheRestOfItsText) {
    ActionSlot full = {};
    std::memset(&full, 0xEE, sizeof full);
    full.command = kActionToolMenu;
    Slot(1, kI) = full;
    Slot(1, kIII) = full;
    fFolder.Write(1, HotKeyFile({"M|1|pyralis"}));
    QBaseSetRecordsChanged(fBase.get(), false);
    SyncAppFromKorvane(fBase.get(), FourCharCode("XXXX"), kPhotoshopName.data(), {});
    EXPECT_TRUE(QBaseGetRecordsChanged(fBase.get()));
    ActionSlot expected = {};
    expected.data = full.data;
    expected.data[0] = 0;
    EXPECT_EQ(std::memcmp(&Slot(1, kIII), &expected, sizeof expected), 0);
    expected.command = 34;
    expected.crc = KorvaneStringCRC("M");
    EXPECT_EQ(std::memcmp(&Slot(1, kI), &expected, sizeof expected), 0);

    QBaseSetRecordsChanged(fBase.get(), false);
    SyncFromKorvane(fBase.get()); // again, with the other files missing
    EXPECT_FALSE(QBaseGetRecordsChanged(fBase.get()));
    Bind(2, kI, "Kept");
    fFolder.Write(2, HotKeyFile({"M"}) + "<HotKey>"); // which is no reason to free a button
    SyncFromKorvane(fBase.get());
    EXPECT_EQ(Buttons(2, {"Kept"}), (Strings{"Kept", "-", "-"}));
    // No row has this name, and the folder named counts whatever the row is.
    SyncAppFromKorvane(fBase.get(), FourCharCode("8BIM"), nullptr, {});
    SyncAppFromKorvane(fBase.get(), 0, nullptr, "Photoshop");
    EXPECT_EQ(Buttons(0, {"M"}), (Strings{"M", "-", "-"}));
}

// Another program writes the same file, whole and directly, while we do. Each hotkey stays, and each binding
// is what one of the two wrote last.
TEST_F(KorvaneSync, TwoWriters_LoseNoHotKey) {
    Strings rows;
    for (int i = 0; i < 200; ++i) {
        rows.push_back("Command " + std::to_string(i));
    }
    fFolder.Write(1, HotKeyFile(rows));
    // It writes once more after us: who writes last, while nobody else does, leaves a whole file.
    Peer other("edit '" + fFolder.File(1) + "' 300");
    std::mt19937 random(1);
    const std::string enough = fFolder.File(1) + ".enough";
    for (int rounds = 0; rounds < 20 || !std::filesystem::exists(enough); ++rounds) {
        for (const SlotIndex slot : {kI, kII, kIII}) {
            Bind(1, slot, rows[random() % rows.size()]);
        }
        SyncToKorvane(fBase.get());
    }
    std::filesystem::remove(enough);
    other.Rest();
    SyncToKorvane(fBase.get());
    const Strings after = File(1);
    ASSERT_EQ(after.size(), rows.size());
    const Strings bound = Buttons(1, rows);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        ASSERT_TRUE(after[i].starts_with(rows[i] + "|")) << after[i];
        const std::string binding = after[i].substr(rows[i].size());
        EXPECT_THAT(binding, testing::AnyOf("||||", testing::MatchesRegex("\\|5\\|tarnix\\|[0-9]*\\|9"),
                                            "|1|pyralis||4", "|2|pyralis||16", "|3|pyralis||8"));
        EXPECT_TRUE(binding.find("pyralis") == binding.npos || std::ranges::count(bound, rows[i]) > 0);
    }
}

// Two programs of ours that saved at once mingled their writes: the file was no longer well-formed.
TEST_F(KorvaneSync, FileThatAnotherProgramOfOursIsAt_IsLeftForTheNextTime) {
    fFolder.Write(1, HotKeyFile({"A"}));
    Bind(1, kI, "A");
    KorvaneResults results;
    {
        UserLock other;
        ASSERT_EQ(other.Acquire("companion.lock", {}), noErr);
        SyncToKorvane(fBase.get(), &results);
        EXPECT_EQ(File(1), Strings{"A||||"});
        EXPECT_EQ(results[1].state, KorvaneFileState::InUse);
    }
    SyncToKorvane(fBase.get(), &results);
    EXPECT_EQ(results[1].state, KorvaneFileState::InStep);
    EXPECT_EQ(File(1), Strings{"A|1|pyralis||4"});
}

// A file that could not be written, or read whole, was reported done: the button's entry came back.
TEST_F(KorvaneSync, FilesThatAreNotInStep_AreTold) {
    fFolder.Write(0, HotKeyFile({"A"}));
    fFolder.Write(1, HotKeyFile({"A"}) + "<HotKey>");
    fFolder.Write(2, HotKeyFile({"A|1|pyralis||4"})); // says already what the button does
    fFolder.Write(3, "<HotKeys TargetApp='A'><HotKey><Menu>A</Menu></HotKey><HotKey><Menu><![CDATA[" +
                         std::string(kXmlMaxBytes / 3, '<') + "]]></Menu></HotKey></HotKeys>");
    for (std::size_t row = 0; row < kKorvaneApps.size(); ++row) {
        Bind(row, kI, "A");
    }
    const FullDisk disk;
    KorvaneResults results;
    SyncToKorvane(fBase.get(), &results);
    using State = KorvaneFileState;
    const auto states = [&] {
        std::array<State, kKorvaneApps.size()> all{};
        std::ranges::transform(results, all.begin(), &KorvaneFileResult::state);
        return all;
    };
    EXPECT_THAT(states(), testing::ElementsAre(State::NotWritten, State::ReadInPart, State::InStep,
                                               State::TooLong, State::InStep));
    EXPECT_EQ(results[0].status, dskFulErr);
    SyncFromKorvane(fBase.get(), &results);
    EXPECT_THAT(states(), testing::ElementsAre(State::InStep, State::ReadInPart, State::InStep, State::InStep,
                                               State::InStep));
}

// What the companion had written since the last reading was replaced, and nobody was told.
TEST_F(KorvaneSync, ChangesOfOthersThatAreReplaced_AreToldOnceAndKept) {
    const std::string ours = HotKeyFile({"A|1|pyralis||4", "B"});
    struct Row {
        const char *what;
        std::string read; // before; empty: no file yet
        std::string found;
        bool isTold;
        std::string chosen = "A"; // on button I meanwhile
    };
    for (const Row &row : std::initializer_list<Row>{
             {"bound elsewhere", ours, HotKeyFile({"A", "B|1|pyralis||4"}), true},
             {"freed", ours, HotKeyFile({"A", "B"}), true},
             {"given to another device", ours, HotKeyFile({"A|7|tarnix||9", "B"}), true},
             {"a new one, bound", ours, HotKeyFile({"A|1|pyralis||4", "C|2|pyralis||16"}), true},
             {"a new file", "", HotKeyFile({"B|1|pyralis||4"}), true},
             {"whole again", ours + "<HotKey>", HotKeyFile({"B|1|pyralis||4"}), true},
             {"the same bytes", ours, ours, false, "B"},
             {"another layout", ours, ours + "<!-- -->", false, "B"},
             {"what nothing replaces", ours, HotKeyFile({"N", "M|5|tarnix||9", "A|1|pyralis||4"}), false},
             {"what the user chose too", ours, HotKeyFile({"A", "B|1|pyralis||4"}), false, "B"},
             {"a new one, free", ours, HotKeyFile({"A|1|pyralis||4", "N"}), false, "N"},
             {"nobody knows what was there", "a folder", HotKeyFile({"B|1|pyralis||4"}), false},
         }) {
        KorvaneResults results;
        std::filesystem::remove(fFolder.File(1));
        if (row.read == "a folder") {
            std::filesystem::create_directory(fFolder.File(1));
        } else if (!row.read.empty()) {
            fFolder.Write(1, row.read);
        }
        SyncFromKorvane(fBase.get(), &results);
        std::filesystem::remove(fFolder.File(1));
        fFolder.Write(1, row.found);
        Bind(1, kI, row.chosen);
        {
            const FullDisk full; // a write that fails replaces nothing, and the next one tells
            SyncToKorvane(fBase.get(), &results);
            EXPECT_NE(results[1].state, KorvaneFileState::Replaced) << row.what;
        }
        SyncToKorvane(fBase.get(), &results);
        EXPECT_EQ(results[1].state == KorvaneFileState::Replaced, row.isTold) << row.what;
        EXPECT_EQ(row.isTold ? ReadWhole(results[1].kept) : row.found, row.found) << row.what;
        Bind(1, kI, "B"); // our own write is nobody else's change
        SyncToKorvane(fBase.get(), &results);
        EXPECT_EQ(results[1].state, KorvaneFileState::InStep) << row.what;
    }
    fFolder.Write(1, ours);
    KorvaneResults seen;
    KorvaneResults read;
    SyncFromKorvane(fBase.get(), &seen);
    fFolder.Write(1, HotKeyFile({"A", "B|1|pyralis||4"}));
    SyncFromKorvane(fBase.get(), &read);
    Bind(1, kI, "A"); // a merge leaves it so where it was edited here
    AdoptSeenFiles(fBase.get(), std::move(read), &seen);
    SyncToKorvane(fBase.get(), &seen);
    EXPECT_EQ(seen[1].state, KorvaneFileState::Replaced);
}

// Without memory a button was freed on the way, and stayed so in both files.
TEST_F(KorvaneSync, MissingMemory_LeavesButtonsAndFilesAsTheyWereAndIsTold) {
    const std::string title = "A title that takes memory of its own";
    const std::string before = HotKeyFile({title + "|3|pyralis||8"});
    ForEachFault(1, {kOfNew}, [&](const FaultAt &fault) {
        Slot(1, kI) = {};
        Slot(1, kII) = {};
        Bind(1, kI, title);
        fFolder.Write(1, before);
        KorvaneResults results;
        const bool isReadHit = fault.Meets([&] { SyncFromKorvane(fBase.get(), &results); });
        const Strings buttons = Buttons(1, {title});
        const bool isTaken = buttons == Strings{"-", title, "-"};
        EXPECT_TRUE(isTaken || buttons == (Strings{title, "-", "-"}));
        EXPECT_TRUE(isTaken || results[1].state == KorvaneFileState::NotRead);

        Bind(1, kI, title);
        if (!isTaken) { // what was not read once was written over by the next save
            SyncToKorvane(fBase.get(), &results);
            EXPECT_EQ(ReadWhole(fFolder.File(1)), before);
        }
        results = {};
        const bool isWriteHit = fault.Meets([&] { SyncToKorvane(fBase.get(), &results); });
        const bool isWritten = File(1) == Strings{title + "|1|pyralis||4"};
        EXPECT_TRUE(isWritten || ReadWhole(fFolder.File(1)) == before);
        EXPECT_TRUE(isWritten || results[1].state == KorvaneFileState::NotWritten);
        return isReadHit || isWriteHit;
    });
}

} // namespace
} // namespace drevix::test
