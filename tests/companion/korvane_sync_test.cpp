#include "companion/korvane_crc.h"
#include "companion/korvane_sync.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"
#include "tests/companion/companion_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <random>

namespace drevix {
namespace {

using test::HotKeyFile;
using test::Rows;
using testing::ElementsAre;
using Strings = std::vector<std::string>;

constexpr SlotIndex kI = 18;
constexpr SlotIndex kII = 19;
constexpr SlotIndex kIII = 20;

// A base with a record for each of the companion's applications, in its order, and the companion's folder.
class KorvaneSync : public testing::Test {
  protected:
    KorvaneSync() {
        for (const KorvaneApp &app : kKorvaneApps) {
            AppPrefs prefs = gDefaultGlobalPrefs;
            prefs.application = app.creator;
            if (app.fileName != nullptr) {
                PStringCopy(app.fileName, prefs.appFileName.data(), kMaxFileNameLength);
            }
            EXPECT_NE(QBaseAddRecord(fBase.get(), &prefs, sizeof prefs), kNoRecord);
        }
    }

    [[nodiscard]] ActionSlot &Slot(RecordNumber row, SlotIndex slot) const {
        return GetAppPrefs(fBase.get(), row)->device[0].action[slot];
    }
    void Bind(RecordNumber row, SlotIndex slot, std::string_view menu) const {
        Slot(row, slot).command = kActionToolMenu;
        Slot(row, slot).crc = KorvaneStringCRC(menu);
    }
    // What buttons I, II and III of a record hold: a title, "-" for nothing, else the command.
    [[nodiscard]] Strings Buttons(RecordNumber row, const Strings &titles) const {
        Strings held;
        for (const SlotIndex index : {kI, kII, kIII}) {
            const ActionSlot &slot = Slot(row, index);
            std::string text = slot.command == kActionNone ? "-" : std::to_string(slot.command);
            for (const std::string &title : titles) {
                const bool isTitle = slot.command == kActionToolMenu && slot.crc == KorvaneStringCRC(title);
                text = isTitle ? title : text;
            }
            held.push_back(text);
        }
        return held;
    }
    [[nodiscard]] Strings File(std::size_t row) const { return Rows(LoadKorvaneFile(fFolder.File(row))); }

    test::CompanionFolder fFolder;
    QBaseOwner fBase = NewDrevixBase();
};

TEST_F(KorvaneSync, ToKorvane_BindsAndUnbindsHotKeys) {
    struct Row {
        const char *what;
        std::map<SlotIndex, std::string> bound; // "keystroke" is none
        Strings before;
        Strings after;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"button II is key 3", {{kII, "M"}}, {"M", "N"}, {"M|3|pyralis||8", "N||||"}},
             {"all three",
              {{kI, "A"}, {kII, "B"}, {kIII, "C"}},
              {"C", "B", "A"},
              {"C|2|pyralis||16", "B|3|pyralis||8", "A|1|pyralis||4"}},
             {"unbound", {{kII, "keystroke"}}, {"M|3|pyralis|shift|8"}, {"M||||"}},
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
            const auto number = static_cast<RecordNumber>(app);
            for (const SlotIndex slot : {kI, kII, kIII}) {
                Slot(number, slot) = {};
            }
            for (const auto &[slot, menu] : row.bound) {
                Bind(number, slot, menu);
                Slot(number, slot).command = menu == "keystroke" ? kActionKeystroke : kActionToolMenu;
            }
            fFolder.Write(app, HotKeyFile(row.before));
        }
        SyncToKorvane(fBase.get());
        for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
            EXPECT_EQ(File(app), row.after) << row.what << " " << kKorvaneApps[app].folder;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(fFolder.File(0) + ".new"));
}

TEST_F(KorvaneSync, ToKorvane_WritesEveryFileThatCanBeReadAndNoOther) {
    const std::string damaged = HotKeyFile({"M"}) + "<HotKey>";
    const std::string other = "<HotKey TargetApp='A'/>";
    fFolder.Write(0, HotKeyFile({"M|1|pyralis||4"}));
    fFolder.Write(1, damaged);
    fFolder.Write(2, other);
    fFolder.Write(3, HotKeyFile({}));
    const std::string empty = test::ReadWhole(fFolder.File(3));
    QBaseMarkRecordForRemoval(fBase.get(), 0); // no global record
    QBaseRemoveMarkedRecords(fBase.get());
    SyncToKorvane(fBase.get());
    EXPECT_THAT(File(0), ElementsAre("M|1|pyralis||4"));
    EXPECT_NE(test::ReadWhole(fFolder.File(0)), HotKeyFile({"M|1|pyralis||4"})); // in our layout now
    EXPECT_EQ(test::ReadWhole(fFolder.File(1)), damaged);
    EXPECT_EQ(test::ReadWhole(fFolder.File(2)), other);
    EXPECT_EQ(test::ReadWhole(fFolder.File(3)), empty);
    EXPECT_FALSE(std::filesystem::exists(fFolder.File(4)));
}

TEST_F(KorvaneSync, FromKorvane_RewritesTheButtons) {
    const Strings titles = {"Old", "M", "N"};
    struct Row {
        const char *what;
        Strings file;
        Strings buttons;
    };
    // Before each: I holds "Old", II a keystroke, III nothing.
    for (const Row &row : std::initializer_list<Row>{
             {"no hotkeys", {}, {"-", "32", "-"}},
             {"key 1 is I", {"M|1|pyralis"}, {"M", "32", "-"}},
             {"key 2 is III", {"M|2|pyralis"}, {"-", "32", "M"}},
             {"key 3 is II, whatever it held", {"M|3|pyralis"}, {"-", "M", "-"}},
             {"the last one of a key", {"M|1|pyralis", "N|1|pyralis"}, {"N", "32", "-"}},
             {"another device", {"M|1|Pyralis", "M|2|tarnix", "M|3"}, {"-", "32", "-"}},
             {"numbers", {"M| \t+2x|pyralis", "N|3.9|pyralis"}, {"-", "N", "M"}},
             {"no key of ours",
              {"M|0|pyralis", "M|4|pyralis", "M||pyralis", "M|-1|pyralis", "M|x2|pyralis",
               "M|4294967297|pyralis"},
              {"-", "32", "-"}},
         }) {
        for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
            const auto number = static_cast<RecordNumber>(app);
            Bind(number, kI, "Old");
            Slot(number, kII) = {kActionKeystroke, 256, 12, 0, 0, 0, 0, {}};
            Slot(number, kIII) = {};
            fFolder.Write(app, HotKeyFile(row.file));
        }
        SyncFromKorvane(fBase.get());
        for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
            EXPECT_EQ(Buttons(static_cast<RecordNumber>(app), titles), row.buttons) << row.what;
        }
    }
}

TEST_F(KorvaneSync, FromKorvane_SetsTheWholeSlotButTheRestOfItsText) {
    ActionSlot full = {};
    std::memset(&full, 0xEE, sizeof full);
    full.command = kActionToolMenu;
    for (const SlotIndex slot : {kI, kIII}) {
        Slot(1, slot) = full;
    }
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
    EXPECT_THAT(Buttons(2, {"Kept"}), ElementsAre("Kept", "-", "-"));
    // No row has this name, and the folder named counts whatever the row is.
    SyncAppFromKorvane(fBase.get(), FourCharCode("8BIM"), nullptr, {});
    SyncAppFromKorvane(fBase.get(), 0, nullptr, "Photoshop");
    EXPECT_THAT(Buttons(0, {"M"}), ElementsAre("M", "-", "-"));
}

// Another program writes the same file, whole and directly, while we do. Each hotkey stays, and each binding
// is what one of the two wrote last. $DREVIX_STRESS_SECONDS makes it longer.
TEST_F(KorvaneSync, TwoWriters_LoseNoHotKey) {
    const char *const wished = std::getenv("DREVIX_STRESS_SECONDS");
    const std::chrono::seconds length(wished != nullptr ? std::atoi(wished) : 4);
    Strings rows;
    for (int i = 0; i < 200; ++i) {
        rows.push_back("Command " + std::to_string(i));
    }
    fFolder.Write(1, HotKeyFile(rows));
    // It goes on for a moment after us: who writes last, while nobody else does, leaves a whole file.
    test::Peer other("edit '" + fFolder.File(1) + "' " + std::to_string(length.count() + 1));
    std::mt19937 random(1);
    const auto end = std::chrono::steady_clock::now() + length;
    int rounds = 0;
    for (; std::chrono::steady_clock::now() < end; ++rounds) {
        for (const SlotIndex slot : {kI, kII, kIII}) {
            Bind(1, slot, "Command " + std::to_string(random() % rows.size()));
        }
        SyncToKorvane(fBase.get());
    }
    const int otherRounds = std::atoi(other.Rest().c_str());
    EXPECT_GT(rounds, 20);
    EXPECT_GT(otherRounds, 20);
    SyncToKorvane(fBase.get());
    const Strings after = File(1);
    ASSERT_EQ(after.size(), rows.size());
    Strings bound;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string rest = after[i].substr(std::min(after[i].find('|'), after[i].size()));
        EXPECT_EQ(after[i].substr(0, after[i].size() - rest.size()), rows[i]);
        EXPECT_THAT(rest, testing::AnyOf("||||", testing::MatchesRegex("\\|5\\|tarnix\\|[0-9]*\\|9"),
                                         "|1|pyralis||4", "|2|pyralis||16", "|3|pyralis||8"));
        if (rest.find("pyralis") != std::string::npos) {
            bound.push_back(rows[i]);
        }
    }
    EXPECT_THAT(bound, testing::Each(testing::AnyOfArray(Buttons(1, rows))));
    std::printf("%d rounds here, %d there\n", rounds, otherRounds);
}

// 2,000 hotkeys in each of five files.
TEST_F(KorvaneSync, LongFiles_AreSavedInTime) {
    Strings rows;
    for (int i = 0; i < 2000; ++i) {
        rows.push_back("Filter > Some longer menu command, number " + std::to_string(i));
    }
    for (std::size_t app = 0; app < kKorvaneApps.size(); ++app) {
        fFolder.Write(app, HotKeyFile(rows));
    }
    Bind(1, kI, rows[4]);
    const auto start = std::chrono::steady_clock::now();
    SyncToKorvane(fBase.get());
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    EXPECT_LT(took.count(), 2000); // with sanitizers and without optimisation; a release build needs 100
    EXPECT_EQ(File(1)[4], rows[4] + "|1|pyralis||4");
    EXPECT_EQ(File(4).size(), rows.size());
}

} // namespace
} // namespace drevix
