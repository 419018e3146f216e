// Exports and imports, and settings files that are damaged.

#include "cli/file_check.h"
#include "cli/session.h"
#include "platform/files/kept_bytes.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "tests/cli/program.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

using testing::HasSubstr;

class Exchange : public ProgramTest {
  protected:
    // Writes records "App 0", "App 1", ... to a property list; gives its path.
    std::string WriteRecords(int count) {
        int next = 0;
        AppPrefs record = gDefaultGlobalPrefs;
        record.application = kNoSignature;
        const auto make = [&]() -> const AppPrefs * {
            const std::string name = "App " + std::to_string(next);
            getPascalString(name, record.appFileName.data(), kMaxFileNameLength);
            getPascalString(name, record.appName.data(), kMaxAppNameLength);
            record.device[0].toolSensitivity = static_cast<std::uint8_t>(next);
            return next++ < count ? &record : nullptr;
        };
        EXPECT_EQ(WriteAppPrefsFile(fFolder.Path("in.veltrana"), make), noErr);
        return fFolder.Path("in.veltrana");
    }
};

TEST_F(Exchange, ManyRecords_ComeBackEqual) {
    const std::string in = WriteRecords(1000);
    EXPECT_EQ(Do("import " + in), "1000 records added, 0 replaced, 0 left unchanged\n");
    Do("assign tunerCW redo --app app_700");
    Do("export --all " + fFolder.Path("out.veltrana"));
    const AppPrefs before = Record("App 700");
    EXPECT_EQ(before.device[0].toolSensitivity, 700 % 256);

    std::filesystem::remove(SettingsFile());
    EXPECT_EQ(Do("import " + fFolder.Path("out.veltrana")).substr(0, 51),
              "1000 records added, 0 replaced, 3 left unchanged\nle");
    const AppPrefs after = Record("App 700");
    EXPECT_EQ(std::memcmp(&before, &after, sizeof before), 0);
    Do("export --all " + fFolder.Path("again.veltrana"));
    EXPECT_EQ(ReadWhole(fFolder.Path("again.veltrana")), ReadWhole(fFolder.Path("out.veltrana")));
    EXPECT_EQ(Do("export --all -"), ReadWhole(fFolder.Path("out.veltrana"))) << "it wrote a file named -";
}

TEST_F(Exchange, ExistingRecords_AreLeftAndNamedUnlessReplaced) {
    Do("export --app Painter " + fFolder.Path("one.veltrana"));
    Do("set ringSpeed 5 --app Painter");
    EXPECT_EQ(Do("import " + fFolder.Path("one.veltrana")), "0 records added, 0 replaced, 1 left unchanged\n"
                                                            "left: Painter\n");
    EXPECT_EQ(Record("Painter").device[0].navSpeed, 5);
    EXPECT_EQ(Do("import --replace --json " + fFolder.Path("one.veltrana")),
              "{\n  \"added\": 0,\n  \"replaced\": 1,\n  \"left\": []\n}\n");
    EXPECT_EQ(Record("Painter").device[0].navSpeed, 77);
    EXPECT_EQ(Record("Painter").factory, 1) << "an import makes no factory record the user's";
}

// A full disk once destroyed the file that an export was to replace, and "the file was not changed" was said.
TEST_F(Exchange, FailedExport_LeavesTheFileOrNamesItsCopy) {
    const std::string path = fFolder.Path("out.veltrana");
    const std::string before(20'000, 'o');
    int named = 0;
    ForEachFault(20, [&](int failAt, Lasts lasts) {
        WriteWhole(path, before);
        Result run{};
        const bool wasHit = MeetsFault(failAt, lasts, ENOSPC, [&] { run = Run("export --all " + path); });
        const std::string kept = FindKeptCopy(path);
        if (run.status != ExitStatus::Done && ReadWhole(path) != before) {
            EXPECT_THAT(run.err, HasSubstr("what it held before is kept in " + kept + " and"));
            EXPECT_TRUE(!kept.empty() && ReadWhole(kept) == before) << failAt;
            ++named;
        }
        EXPECT_TRUE(run.status != ExitStatus::Done || ReadWhole(path).ends_with("</plist>\n")) << failAt;
        EXPECT_TRUE(wasHit || run.status == ExitStatus::Done);
        EXPECT_EQ(OpenFileCount(), 0);
        Run("list"); // puts right what is left
        EXPECT_TRUE(FindKeptCopy(path).empty());
        EXPECT_TRUE(ReadWhole(path) == before || ReadWhole(path).ends_with("</plist>\n")) << failAt;
        return wasHit;
    });
    EXPECT_GT(named, 0) << "no fault reached the writing";
}

// Refuses two requests one after the other: after one alone a block asks for less, and gets it.
class TwiceFullMemory : public BlockAllocator {
  public:
    explicit TwiceFullMemory(int failAt) : fLeft(failAt), fBefore(SetBlockAllocator(this)) {}
    ~TwiceFullMemory() override { SetBlockAllocator(fBefore); }
    void *Reallocate(void *memory, std::size_t size) override {
        --fLeft;
        return fLeft == 0 || fLeft == -1 ? nullptr : fBefore->Reallocate(memory, size);
    }
    [[nodiscard]] bool WasHit() const { return fLeft <= 0; }

  private:
    int fLeft;
    BlockAllocator *fBefore;
};

// One record without memory ended an import, and nothing of it was kept.
TEST_F(Exchange, RecordsWithoutMemory_AreSkippedAndCounted) {
    const std::string in = WriteRecords(3);
    bool wasPartial = false;
    bool wasHit = true;
    for (int failAt = 1; wasHit; ++failAt) {
        std::filesystem::remove(SettingsFile());
        Result result{};
        {
            const TwiceFullMemory memory(failAt);
            result = Run("import --json " + in);
            wasHit = memory.WasHit();
        }
        if (result.status != ExitStatus::Done && result.out.starts_with("{\n  \"added\": 2,")) {
            wasPartial = true;
            EXPECT_THAT(result.err, HasSubstr("not enough memory for 1 record of "));
            EXPECT_EQ(Record("App 2").active, 1) << "the others are saved";
        }
    }
    EXPECT_TRUE(wasPartial);
}

TEST_F(Exchange, DamagedImport_ImportsNothingAndSaysWhere) {
    const std::string whole = ReadWhole(WriteRecords(3));
    Do("set ringSpeed 5");
    const std::size_t second = whole.find("App 1");
    const std::string broken = whole.substr(0, second) + "<frob/>" + whole.substr(second);
    const auto line =
        1 + std::count(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(second), '\n');
    WriteWhole(fFolder.Path("in.veltrana"), broken);
    EXPECT_THAT(Refused("import " + fFolder.Path("in.veltrana")),
                HasSubstr("line " + std::to_string(line) + ": "));
    WriteWhole(fFolder.Path("in.veltrana"), whole.substr(0, whole.size() - 20));
    Refused("import " + fFolder.Path("in.veltrana"));
}

// Every truncation and every changed byte of a settings file: what `check` finds agrees with what reading
// says, its findings are damage exactly when the file is refused, and `recover` saves the records that are
// whole.
class DamagedFile : public Exchange {
  protected:
    DamagedFile() {
        Do("set ringSpeed 5");
        fWhole = ReadWhole(SettingsFile());
    }

    void Check(const std::string &bytes, const std::string &damage) {
        WriteWhole(Path(), bytes);
        const OSErr status = ReadAsSettings(Path());
        const FileFindings findings = CheckFileBytes(bytes, status);
        const auto count =
            std::ranges::count(findings.problems, FileProblem::Kind::Damage, &FileProblem::kind);
        EXPECT_EQ(count > 0, status != noErr) << damage;
    }
    // Recovers the file; gives the number of records saved, -1 for a failure.
    int Recover(const std::string &bytes) {
        std::filesystem::remove(fFolder.Path("saved"));
        const Result result = Run("recover --to " + fFolder.Path("saved") + " " + Path());
        EXPECT_EQ(ReadWhole(Path()), bytes) << "the damaged file stays as it is";
        if (result.status != ExitStatus::Done) {
            EXPECT_FALSE(std::filesystem::exists(fFolder.Path("saved")));
            return -1;
        }
        EXPECT_EQ(ReadAsSettings(fFolder.Path("saved")), noErr);
        return std::stoi(result.out);
    }
    [[nodiscard]] std::string Path() const { return fFolder.Path("damaged"); }

    std::string fWhole;
};

TEST_F(DamagedFile, CutsAndChangedBytes_AreFoundAndSalvaged) {
    constexpr std::size_t kData = 64 + 3 * 4;
    constexpr std::size_t kRecord = 10 + sizeof(AppPrefs);
    ASSERT_EQ(fWhole.size(), kData + 3 * kRecord);
    // Every byte around the beginning of the file and of a record, a 13th of the others.
    for (std::size_t i = 0; i < fWhole.size(); i += (i + kRecord + 13 - kData) % kRecord < 200 ? 1 : 13) {
        const std::string cut = fWhole.substr(0, i);
        Check(cut, "cut at " + std::to_string(i));
        if (i % 13 == 0 || (i >= kData && (i - kData) % kRecord == 0)) {
            const int whole = i < kData + kRecord ? -1 : static_cast<int>((i - kData) / kRecord);
            EXPECT_EQ(Recover(cut), whole) << i;
        }
        for (const int change : {0x01, 0xFF}) {
            std::string changed = fWhole;
            changed[i] = static_cast<char>(changed[i] ^ change);
            Check(changed, "byte " + std::to_string(i) + " changed by " + std::to_string(change));
            if (i % 13 == 0 || i < kData + 10) {
                const bool inHead = i >= kData && (i - kData) % kRecord < 8;
                EXPECT_EQ(Recover(changed), inHead ? 2 : 3) << "no other record is lost, byte " << i;
            }
        }
    }
}

TEST_F(DamagedFile, Check_SaysWhatIsWrongInWords) {
    const std::size_t global = 64 + 3 * 4 + 10;
    for (const auto &[at, put, says] :
         std::initializer_list<std::tuple<std::size_t, std::string, const char *>>{
             {0, "QBSE", "other byte order"},
             {8, {9, 0}, "format version 9"},
             {12, {9}, "announces 9 records"},
             {64, {-1, -1, -1, -1}, "index entry 0 points outside"},
             {global - 10, {3, 0}, "record 0 at byte 0 of the record data is damaged: its size is 3"},
             {64, {2}, "record 0 at byte 0 of the record data is damaged, or it is not in the index"},
         }) {
        std::string bytes = fWhole;
        bytes.replace(at, put.size(), put);
        WriteWhole(Path(), bytes);
        const Result result = Run("check " + Path());
        EXPECT_EQ(result.status, ExitStatus::Failed) << says;
        EXPECT_THAT(result.out, HasSubstr(says));
        EXPECT_THAT(result.err, HasSubstr("was not changed; 'drevixctl recover'"));
    }
    // Which of two global records is in force was not told.
    for (const bool isGlobal : {true, false}) {
        std::string bytes = fWhole;
        const std::string signature(4, isGlobal ? '\0' : '?');
        bytes.replace(global + (isGlobal ? sizeof(AppPrefs) + 10 : 0), 4, signature);
        WriteWhole(Path(), bytes);
        EXPECT_THAT(Do("check " + Path()),
                    HasSubstr(isGlobal ? "record 1 is a second global record; the first, record 0, is used"
                                       : "there is no global record; the factory's is used"));
    }
    for (const auto &[length, isTooLong] : {std::pair{31, false}, {32, true}}) {
        std::string named = fWhole;
        named[global + offsetof(AppPrefs, appName)] = static_cast<char>(length);
        WriteWhole(Path(), named);
        EXPECT_EQ(Do("check " + Path()).find("a name that is too long") != std::string::npos, isTooLong);
    }
    std::string odd = fWhole;
    odd.replace(global + 100, 1, "\2");             // active
    odd.replace(global + 132 + 48 * 16, 1, "\x32"); // button V's command
    WriteWhole(Path(), odd);
    const std::string says = Do("check --json " + Path());
    EXPECT_THAT(says, HasSubstr("\"valid\": true"));
    EXPECT_THAT(says, HasSubstr("neither on nor off"));
    EXPECT_THAT(says, HasSubstr("buttonV: unknown action 50"));
}

// Neither form was ever looked at.
TEST_F(DamagedFile, VersionOneAndUserBlocks_AreFilesToo) {
    std::string old = fWhole.substr(0, 8) + std::string{1, 0} + fWhole.substr(10, 2); // magic, type, versions
    old.append(16, '\0').append(fWhole, 12, 8).append(12, '\0').append(fWhole, 64);   // count and size at 28
    std::string block = fWhole;
    block.replace(56, 1, "\5").insert(64, "block");
    for (const std::string &form : {old, block}) {
        WriteWhole(Path(), form);
        EXPECT_EQ(Do("check " + Path()), Path() + ": valid, 3 records\n");
        EXPECT_EQ(Recover(form), 3);
        Check(form + "x", "too long");
        Check(form.substr(0, 60), "cut");
        EXPECT_THAT(Run("check " + Path()).out, HasSubstr("damage: the "));
    }
}

TEST_F(DamagedFile, Recover_OverwritesNothing) {
    WriteWhole(fFolder.Path("there"), "mine");
    EXPECT_THAT(Refused("recover " + SettingsFile() + " --to " + fFolder.Path("there")),
                HasSubstr("already exists"));
    EXPECT_EQ(ReadWhole(fFolder.Path("there")), "mine");
    EXPECT_EQ(Do("recover " + SettingsFile() + " --to " + fFolder.Path("new")),
              "3 records saved in " + fFolder.Path("new") + "\n");
    EXPECT_EQ(ReadWhole(fFolder.Path("new")), fWhole);

    // A factory record that was lost comes back with factory values.
    std::string damaged = fWhole;
    damaged[64 + 3 * 4 + 2 * (10 + sizeof(AppPrefs))] = 0;
    WriteWhole(Path(), damaged);
    EXPECT_EQ(Recover(damaged), 2);
    EXPECT_EQ(Do("list --prefs " + fFolder.Path("saved")), Do("list"));
}

} // namespace
} // namespace drevix::test
