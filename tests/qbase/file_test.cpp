#include "platform/files/disk.h"
#include "tests/qbase/file_support.h"

namespace drevix::test {
namespace {

TEST(BaseFile, PublishedExample_IsWhatIsWritten) {
    EXPECT_EQ(FileOf(FullFileBase().get()), PublishedExample("record-base-file.md"));
    EXPECT_EQ(FileOf(NewFileBase().get()).size(), 64U);
}

TEST(BaseFile, Appended_FollowsWhatTheBaseHolds) {
    const MemoryFile file(FileOf(FullFileBase().get()));
    const QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {5, 1});
    QBaseLock(base.get());
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

TEST(BaseFile, TransfersAtTheMark_TellWhatTheyMoved) {
    const MemoryFile file("abcdef");
    char bytes[8] = {};
    for (const auto &[wanted, status, moved] : {std::tuple{4, noErr, 4}, std::tuple{4, eofErr, 2}}) {
        std::int32_t count = wanted;
        EXPECT_EQ(QBReadSync(file.Ref(), moved == 4, &count, bytes), status);
        EXPECT_EQ(count, moved);
    }
    std::int32_t count = 2;
    EXPECT_EQ(QBWriteSync(file.Ref(), true, &count, "gh"), noErr);
    EXPECT_EQ(QBFlushSync(file.Ref()), noErr);
    EXPECT_EQ(file.Bytes(), "abcdefgh");
    EXPECT_EQ(std::string(bytes), "efcd");
}

// The real disk, writing down what is asked of it.
struct LoggingDisk : ScopedDisk {
    ssize_t WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) override {
        log += "write " + std::to_string(count) + " at " + std::to_string(offset) + "\n";
        return Disk::WriteAt(fd, bytes, count, offset);
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
};

TEST(BaseFile, PartsWritten_AreThoseAskedForUnlessTheFileDoesNotMatch) {
    constexpr std::string_view kWhole =
        "size 121\nwrite 28 at 0\nwrite 36 at 28\nwrite 5 at 64\nwrite 12 at 69\n"
        "write 40 at 81\nflush\n";
    constexpr std::string_view kRecords = "size 121\nwrite 28 at 0\nwrite 12 at 69\nwrite 40 at 81\nflush\n";
    constexpr std::string_view kUser = "write 36 at 28\nwrite 5 at 64\nflush\n";
    constexpr std::size_t kNone = 1000; // of the bytes of the file that is there is changed
    const std::tuple<const char *, bool, bool, std::size_t, std::string_view> rows[] = {
        {"both", true, true, kNone, kWhole},       {"user part", true, false, kNone, kUser},
        {"records", false, true, kNone, kRecords}, {"neither", false, false, kNone, "flush\n"},
        {"magic", true, false, 0, kWhole},         {"type", false, true, 4, kWhole},
        {"version", true, false, 8, kWhole},       {"type version", false, false, 10, kWhole},
        {"user block", false, true, 56, kWhole},   {"count does not matter", false, true, 12, kRecords},
    };
    const QBaseOwner kept = FullFileBase();
    QBaseSetReadOnly(kept.get(), true);
    EXPECT_EQ(QBaseWrite(kept.get(), MemoryFile().Ref(), true, true), wrPermErr);
    for (const auto &[what, user, records, changedByte, log] : rows) {
        SCOPED_TRACE(what);
        // The file is of a base with other records and user fields, but as long a user block.
        const QBaseOwner old = NewFileBase();
        AddMadeRecords(old.get(), {20, 30, 40});
        ASSERT_EQ(QBaseSetUserBlock(old.get(), "older", 5), noErr);
        std::string image = FileOf(old.get());
        if (changedByte < image.size()) {
            image[changedByte] ^= 1;
        }
        const MemoryFile file(image);
        const QBaseOwner base = FullFileBase();
        const LoggingDisk disk;
        EXPECT_EQ(QBaseWrite(base.get(), file.Ref(), user, records), noErr);
        EXPECT_EQ(disk.log, log);
        EXPECT_EQ(QBaseGetRecordsChanged(base.get()), log != kWhole && log != kRecords);
        EXPECT_EQ(QBaseGetUserFieldsChanged(base.get()), log != kWhole && log != kUser);
        EXPECT_EQ(base->file.savedSortMode, log == kWhole ? 128 : 1) << "half of what it tells is there";
        if (log == "flush\n") {
            EXPECT_EQ(file.Bytes(), image);
        } else {
            const QBaseOwner again = NewFileBase();
            EXPECT_EQ(QBaseRead(again.get(), file.Ref(), true, true, false, false), noErr);
        }
    }
}

} // namespace
} // namespace drevix::test
