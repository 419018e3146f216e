#include "platform/disk.h"
#include "tests/qbase/file_support.h"

#include <cstdio>
#include <filesystem>

namespace drevix {
namespace {

using namespace test;

// A file of the source tree, by its path from the root.
std::string InTree(const char *name) {
    return std::filesystem::path(DREVIX_TEST_DATA).parent_path().parent_path() / name;
}

// The output of record_base.py, our other reader and writer.
std::string Python(const std::string &arguments) {
    const std::string command = "/usr/bin/python3 " + InTree("tests/qbase/record_base.py") + " " + arguments;
    std::FILE *const pipe = ::popen(command.c_str(), "r");
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        output += static_cast<char>(c);
    }
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return output;
}

// The lines of `text` whose first word stands among those of `like`'s lines.
std::string LinesAs(const std::string &text, const std::string &like) {
    std::string kept;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::string word = line.substr(0, line.find(' ') + 1);
        kept += ("\n" + like).find("\n" + word) != std::string::npos ? line + "\n" : "";
    }
    return kept;
}

TEST(BaseFile, PublishedExample_IsWhatIsWritten) {
    // The bytes stand before the bars of the page's example.
    const std::string page = ReadWhole(InTree("docs/record-base-file.md"));
    const std::size_t start = page.find("```hex\n") + 7;
    std::istringstream lines(page.substr(start, page.find("```", start) - start));
    std::string digits;
    for (std::string line; std::getline(lines, line);) {
        digits += line.substr(0, line.find('|'));
    }
    EXPECT_EQ(HexOrDash(FromHex(digits).data(), FromHex(digits).size()),
              HexOrDash(FileOf(FullFileBase().get()).data(), FileOf(FullFileBase().get()).size()));
}

TEST(BaseFile, Written_IsReadAlikeByOurOtherReader) {
    const ScratchFolder folder;
    const QBaseOwner full = FullFileBase();
    const QBaseOwner empty = NewFileBase();
    for (QBaseHandle base : {full.get(), empty.get()}) {
        WriteWhole(folder.Path("base"), FileOf(base));
        const std::string dump = Python("dump " + folder.Path("base"));
        EXPECT_EQ(LinesAs(dump, Contents(base)), Contents(base));
        EXPECT_NE(dump.find("magic 1363301189\ntype 1413829460\nversion 2\ntypeVersion 3\n"),
                  std::string::npos);
        EXPECT_NE(dump.find("savedSortMode " + std::to_string(base->sortMode) + "\n"), std::string::npos);
    }
    EXPECT_EQ(FileOf(empty.get()).size(), 64U);
}

OSErr Touch(void *bytes, std::int32_t count) {
    return bytes == nullptr || count < 0 ? paramErr : noErr;
}

TEST(BaseFile, FilesOfOurOtherWriter_AreReadWhateverTheirVersionAndOrder) {
    struct Row {
        const char *make;
        QBaseFlipFunction recordFlip;
        QBaseFlipFunction userFlip;
        OSErr status;
        bool changed;
    };
    const Row rows[] = {
        {"2 little 3,0,6,1 3,1,0,2 68656c6c6f", nullptr, nullptr, noErr, false},
        {"2 little '' '' -", nullptr, nullptr, noErr, false},
        {"2 big 3,0,6,1 3,1,0,2 68656c6c6f", Touch, Touch, noErr, false},
        {"2 big 3,0,6,1 3,1,0,2 -", Touch, Touch, noErr, false},
        {"2 big 3,0,6,1 3,1,0,2 68656c6c6f", nullptr, Touch, -1, false},
        {"1 little 3,0,6,1 3,1,0,2 -", nullptr, nullptr, noErr, true},
        {"1 big 3,0,6,1 3,1,0,2 -", Touch, nullptr, noErr, true},
        {"1 little '' '' -", nullptr, nullptr, eofErr, false}, // shorter than a header of version 2
    };
    const ScratchFolder folder;
    const std::string path = folder.Path("made");
    for (const Row &row : rows) {
        SCOPED_TRACE(row.make);
        Python("make " + path + " " + row.make);
        const QBaseOwner base = NewFileBase();
        QBaseSetFlipProc(base.get(), row.recordFlip, row.userFlip);
        const std::string before = State(base.get());
        EXPECT_EQ(QBaseRead(base.get(), MemoryFile(ReadWhole(path)).Ref(), true, true, true, true),
                  row.status);
        if (row.status != noErr) {
            EXPECT_EQ(State(base.get()), before);
            continue;
        }
        const std::string dump = Python("dump " + path);
        EXPECT_EQ(LinesAs(Contents(base.get()), dump), LinesAs(dump, Contents(base.get())));
        EXPECT_EQ(QBaseGetRecordsChanged(base.get()), row.changed);
        EXPECT_EQ(QBaseGetSortMode(base.get()), 0);
        const QBaseOwner again = NewFileBase();
        EXPECT_EQ(QBaseRead(again.get(), MemoryFile(FileOf(base.get())).Ref(), true, true, true, true),
                  noErr);
        EXPECT_EQ(Contents(again.get()), Contents(base.get()));
    }
}

TEST(BaseFile, RefusingConverters_EndTheReadAndLeaveTheBase) {
    const ScratchFolder folder;
    Python("make " + folder.Path("big") + " 2 big 3,0,6 2,1,0 6869");
    const MemoryFile file(ReadWhole(folder.Path("big")));
    static int gFlips = 0;
    const auto refuseEmpty = [](void *, std::int32_t count) -> OSErr {
        ++gFlips;
        return count == 0 ? OSErr{-7} : noErr;
    };
    for (const bool userRefuses : {false, true}) {
        const QBaseOwner base = FullFileBase();
        const std::string before = State(base.get());
        QBaseSetFlipProc(base.get(), refuseEmpty,
                         userRefuses ? [](void *, std::int32_t) { return OSErr{-8}; } : Touch);
        gFlips = 0;
        EXPECT_EQ(QBaseRead(base.get(), file.Ref(), true, true, true, false), userRefuses ? -8 : -7);
        EXPECT_EQ(gFlips, userRefuses ? 0 : 2);
        EXPECT_EQ(State(base.get()), before);
    }
    // Without a converter of its own the user block is lost, and the rest read.
    const QBaseOwner base = FullFileBase();
    QBaseSetFlipProc(base.get(), Touch, nullptr);
    EXPECT_EQ(QBaseRead(base.get(), file.Ref(), true, true, true, true), noErr);
    EXPECT_EQ(QBaseGetUserBlock(base.get()), nullptr);
    EXPECT_EQ(QBaseCountRecords(base.get()), 3);
}

TEST(BaseFile, Appended_FollowsWhatTheBaseHolds) {
    const MemoryFile file(FileOf(FullFileBase().get()));
    const QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {5, 1});
    QBaseLock(base.get());
    QBaseSetRecordsChanged(base.get(), false);
    EXPECT_EQ(QBaseRead(base.get(), file.Ref(), false, true, false, false), noErr);
    EXPECT_EQ(base->lockCount, 0);
    EXPECT_TRUE(QBaseGetRecordsChanged(base.get()));
    EXPECT_EQ(QBaseGetSortMode(base.get()), 1) << "the mode comes with the user part";
    EXPECT_EQ(QBaseGetUserLong(base.get()), 0U);
    const std::string records = "record 0 5 0 0001020304\nrecord 16 1 1 07\nrecord 42 0 1 -\n"
                                "record 52 6 2 0e0f10111213\nrecord 28 3 0 000102\n";
    EXPECT_TRUE(Contents(base.get()).ends_with(records)) << Contents(base.get());
    EXPECT_EQ(QBaseRead(base.get(), file.Ref(), true, false, false, false), noErr);
    EXPECT_EQ(QBaseGetSortMode(base.get()), 128);
    EXPECT_EQ(QBaseGetUserLong(base.get()), 0x01020304U);
    EXPECT_TRUE(Contents(base.get()).ends_with("userBlock 626c6f636b\n" + records));
    EXPECT_EQ(QBaseReadRebuild(base.get(), file.Ref(), true, true, false, true, true, false, nullptr), noErr);
    EXPECT_TRUE(
        Contents(base.get()).ends_with("record 0 3 0 000102\nrecord 14 0 1 -\nrecord 24 6 2 0e0f10111213\n"));
    EXPECT_EQ(QBaseGetSortMode(base.get()), 1);
    EXPECT_FALSE(QBaseGetRecordsChanged(base.get()));
}

// The real disk, writing down what is asked of it; from the n-th write on nothing can be written.
class LoggingDisk : public Disk {
  public:
    explicit LoggingDisk(int failAt) : fWritesLeft(failAt), fBefore(SetDisk(this)) {}
    ~LoggingDisk() override { SetDisk(fBefore); }
    ssize_t WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) override {
        log += "write " + std::to_string(count) + " at " + std::to_string(offset) + "\n";
        errno = EIO;
        return --fWritesLeft == 0 ? -1 : Disk::WriteAt(fd, bytes, count, offset);
    }
    int SetSize(int fd, off_t size) override {
        log += "size " + std::to_string(size) + "\n";
        return Disk::SetSize(fd, size);
    }
    int Flush(int fd) override {
        log += "flush\n";
        return Disk::Flush(fd);
    }
    std::string log;

  private:
    int fWritesLeft;
    Disk *fBefore;
};

TEST(BaseFile, PartsWritten_AreThoseAskedForUnlessTheFileDoesNotMatch) {
    constexpr std::string_view kWhole =
        "size 121\nwrite 28 at 0\nwrite 36 at 28\nwrite 5 at 64\nwrite 12 at 69\n"
        "write 40 at 81\nflush\n";
    constexpr std::string_view kRecords = "size 121\nwrite 28 at 0\nwrite 12 at 69\nwrite 40 at 81\nflush\n";
    constexpr std::string_view kUser = "write 36 at 28\nwrite 5 at 64\nflush\n";
    struct Row {
        const char *what;
        bool user;
        bool records;
        std::size_t changedByte; // of the file that is there
        std::string_view log;
    };
    constexpr std::size_t kNone = 1000;
    const Row rows[] = {
        {"both", true, true, kNone, kWhole},       {"user part", true, false, kNone, kUser},
        {"records", false, true, kNone, kRecords}, {"neither", false, false, kNone, "flush\n"},
        {"magic", true, false, 0, kWhole},         {"type", false, true, 4, kWhole},
        {"version", true, false, 8, kWhole},       {"type version", false, false, 10, kWhole},
        {"user block", false, true, 56, kWhole},   {"count does not matter", false, true, 12, kRecords},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        // The file is of a base with other records and user fields, but as long a user block.
        const QBaseOwner old = NewFileBase();
        AddMadeRecords(old.get(), {20, 30, 40});
        ASSERT_EQ(QBaseSetUserBlock(old.get(), "older", 5), noErr);
        std::string image = FileOf(old.get());
        if (row.changedByte < image.size()) {
            image[row.changedByte] ^= 1;
        }
        const MemoryFile file(image);
        const QBaseOwner base = FullFileBase();
        {
            const LoggingDisk disk(0);
            EXPECT_EQ(QBaseWrite(base.get(), file.Ref(), row.user, row.records), noErr);
            EXPECT_EQ(disk.log, row.log);
        }
        EXPECT_EQ(QBaseGetRecordsChanged(base.get()), row.log != kWhole && row.log != kRecords);
        EXPECT_EQ(QBaseGetUserFieldsChanged(base.get()), row.log != kWhole && row.log != kUser);
        if (row.log == "flush\n") {
            EXPECT_EQ(file.Bytes(), image);
        } else {
            const QBaseOwner again = NewFileBase();
            EXPECT_EQ(QBaseRead(again.get(), file.Ref(), true, true, false, false), noErr);
        }
        // A failed transfer ends the others, but not the flush.
        const LoggingDisk disk(1);
        const OSErr status = QBaseWrite(base.get(), file.Ref(), row.user, row.records);
        EXPECT_EQ(status, row.user || row.records ? ioErr : noErr);
        EXPECT_TRUE(disk.log.ends_with("flush\n") && disk.log.size() <= 29) << disk.log;
    }
}

} // namespace
} // namespace drevix
