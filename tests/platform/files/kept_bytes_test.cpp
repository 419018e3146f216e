#include "platform/files/kept_bytes.h"

#include "platform/files/owners.h"
#include "platform/files/shared_file.h"
#include "tests/platform/files/updates.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

using Writing = OSErr (*)(const std::string &path, const std::string &bytes);

OSErr WriteAsExport(const std::string &path, const std::string &bytes) {
    return UpdateFile(path, UpdateMethod::InPlace, bytes);
}

OSErr WriteAsHotKeys(const std::string &path, const std::string &bytes) {
    return WriteSharedFile(path, bytes);
}

// Text of this many bytes, of which no two neighbours are alike.
std::string Text(std::size_t size, int seed) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>('!' + (i * 7 + static_cast<std::size_t>(seed)) % 90);
    }
    return text;
}

struct Texts {
    std::string old;
    std::string bytes;
};
const Texts kTexts[] = {{Text(3000, 1), Text(5000, 2)}, {Text(5000, 1), Text(700, 2)}};

class KeptBytesTest : public testing::TestWithParam<Writing> {
  protected:
    std::string KeptFolder() { return fScratch.Path("state/com.halcyra.drevix/kept"); }
    void ExpectNothingKept() {
        if (fs::exists(KeptFolder())) {
            EXPECT_EQ(ScratchFolder::Names(KeptFolder()), Names{});
        }
    }

    ScratchFolder fScratch;
    std::string fPath = fScratch.Path("file");
};
INSTANTIATE_TEST_SUITE_P(Writers, KeptBytesTest, testing::Values(WriteAsExport, WriteAsHotKeys));

// With a disk full for good, 33 of 40 exports once lost the file they were to replace. Where there was none an
// empty one once stayed behind.
TEST_P(KeptBytesTest, EveryFault_LeavesTheOldBytesWhereItIsSaid) {
    const std::string link = fScratch.Path("link");
    const std::string made = fScratch.Path("made");
    for (const Texts &texts : kTexts) {
        ForEachFault(8, {ENOSPC}, [&](const FaultAt &fault) {
            WriteWhole(fPath, texts.old);
            fs::remove(link);
            fs::create_hard_link(fPath, link); // the file itself is written
            fs::remove(made);
            OSErr status = noErr;
            OSErr madeStatus = noErr;
            const bool wasHit = fault.Meets([&] {
                status = GetParam()(fPath, texts.bytes);
                madeStatus = GetParam()(made, texts.bytes);
            });
            EXPECT_TRUE(madeStatus == noErr || !fs::exists(made) || ReadWhole(made) == texts.bytes);
            EXPECT_TRUE(ReadWhole(link) == ReadWhole(fPath));
            EXPECT_EQ(OpenFileCount(), 0);
            const std::string kept = FindKeptCopy(fPath);
            if (kept.empty()) {
                EXPECT_TRUE(ReadWhole(fPath) == (status == noErr ? texts.bytes : texts.old));
            } else {
                EXPECT_NE(status, noErr);
                EXPECT_TRUE(ReadWhole(kept) == texts.old);
            }
            MendFilesCutShort();
            // Of a file that is whole, the last flush may be what failed.
            const bool isNew = ReadWhole(fPath) == texts.bytes;
            EXPECT_TRUE(isNew ? status == noErr || !kept.empty() : ReadWhole(fPath) == texts.old);
            ExpectNothingKept();
            return wasHit;
        });
    }
}

// The process dies before its n-th call, or in the middle of its n-th transfer.
TEST_P(KeptBytesTest, Death_IsPutRightByTheNextProgram) {
    for (const Texts &texts : kTexts) {
        for (const Death death : {Death::HalfOfATransfer, Death::BeforeTheCall}) {
            bool hasDied = true;
            for (int call = 1; hasDied; ++call) {
                WriteWhole(fPath, texts.old);
                hasDied = DiesAt(call, death, [&] { return GetParam()(fPath, texts.bytes) == noErr; });
                MendFilesCutShort();
                const std::string now = ReadWhole(fPath);
                EXPECT_TRUE(now == texts.bytes || now == texts.old) << call << " " << now.size();
                ExpectNothingKept();
            }
            EXPECT_TRUE(ReadWhole(fPath) == texts.bytes);
        }
    }
}

// Leaves a file as a death in the middle of the writing does, with its kept copy.
void CutShort(const std::string &path, const Texts &texts) {
    WriteWhole(path, texts.old);
    const pid_t child = ::fork();
    if (child == 0) {
        KeptBytes kept;
        const DiskDescriptor file(CurrentDisk().Open(path.c_str(), O_RDWR, 0));
        std::ignore = kept.TakeTurn();
        std::ignore = kept.Keep(path, file.Get(), texts.old, texts.bytes);
        ::_exit(::pwrite(file.Get(), texts.bytes.data(), texts.bytes.size(),
                         static_cast<off_t>(OffsetOfCopy(texts.old, texts.bytes))) > 0
                    ? 0
                    : 1);
    }
    ::waitpid(child, nullptr, 0);
}

TEST_F(KeptBytesTest, FileWrittenSince_IsLeftAloneAndItsCopyStays) {
    const Texts texts = kTexts[0];
    const std::string cut = texts.old + std::string(2000, '\0') + texts.bytes;
    for (const auto &[now, isReplaced, wanted] :
         {std::tuple<std::string, bool, Names>{"of another", false, {".old"}},
          {cut + "more", false, {".old"}},
          {cut, true, {".old"}},
          {texts.old, false, {}},
          {texts.bytes, false, {}}}) {
        CutShort(fPath, texts);
        ASSERT_EQ(ReadWhole(fPath), cut);
        WriteWhole(isReplaced ? fScratch.Path("other") : fPath, now);
        if (isReplaced) {
            fs::rename(fScratch.Path("other"), fPath);
        }
        MendFilesCutShort();
        EXPECT_EQ(ReadWhole(fPath), now);
        Names left;
        for (const std::string &name : ScratchFolder::Names(KeptFolder())) {
            left.push_back(name.substr(16));
            EXPECT_EQ(ReadWhole(KeptFolder() + "/" + name), texts.old);
        }
        EXPECT_EQ(left, wanted);
        fs::remove_all(KeptFolder());
    }
}

// A note that makes no sense was never followed by a change of its file.
TEST_F(KeptBytesTest, DamagedNotes_GoWithTheirCopies) {
    CutShort(fPath, kTexts[0]);
    const std::string torn = ReadWhole(fPath);
    const std::string note = KeptFolder() + "/" + ScratchFolder::Names(KeptFolder()).back();
    const std::string kept = note.substr(0, note.size() - 5) + ".kept";
    const std::string whole = ReadWhole(note);
    for (const auto &[offset, hex, isNoNote] :
         std::initializer_list<std::tuple<std::size_t, const char *, bool>>{
             {0, "00", true}, {24, "FF FF FF FF", true}, {32, "01", true}, {16, "01", false}}) {
        WriteWhole(kept, kTexts[0].old);
        std::string bytes = whole;
        bytes.replace(offset, FromHex(hex).size(), FromHex(hex));
        WriteWhole(note, bytes);
        MendFilesCutShort();
        EXPECT_EQ(ReadWhole(fPath), torn);
        EXPECT_EQ(ScratchFolder::Names(KeptFolder()).size(), isNoNote ? 0U : 1U) << offset;
        fs::remove_all(KeptFolder());
        fs::create_directory(KeptFolder());
    }
    WriteWhole(note, whole.substr(0, 39));
    WriteWhole(KeptFolder() + "/" + std::string(16, 'a') + ".note", whole); // without a copy
    MendFilesCutShort();
    ExpectNothingKept();
    WriteWhole(kept, "old");
    EXPECT_EQ(FindKeptCopy(fPath), "") << "another program's";
}

// Shows files as they will be after so many days.
struct LaterDisk : ScopedDisk {
    explicit LaterDisk(int days) : seconds(days * 86400) {}
    int StatusAt(const char *path, struct stat *status) override {
        const int result = Disk::StatusAt(path, status);
        status->st_ctim.tv_sec -= seconds;
        return result;
    }
    int seconds;
};

TEST_F(KeptBytesTest, CopiesOfNoUse_GoAfterAMonth) {
    const auto countAfter = [&](int days) {
        const LaterDisk later(days);
        MendFilesCutShort();
        return ScratchFolder::Names(KeptFolder()).size();
    };
    CutShort(fPath, kTexts[0]);
    WriteWhole(fPath, "of another");
    EXPECT_EQ(countAfter(0), 1U);
    EXPECT_EQ(countAfter(30), 1U);
    EXPECT_EQ(countAfter(32), 0U);
    CutShort(fPath, kTexts[0]);
    fs::remove(fPath);
    EXPECT_EQ(countAfter(30), 2U) << "what cannot be reached now may come back";
    EXPECT_EQ(countAfter(32), 1U) << "the file will not come back; what it held stays for another month";
    EXPECT_EQ(countAfter(32), 0U);
}

TEST_P(KeptBytesTest, NoRoomForTheCopy_TouchesNothing) {
    WriteWhole(fPath, "old");
    const fs::file_time_type before = fs::last_write_time(fPath);
    WriteWhole(fScratch.Path("state"), "a file where the folder should be");
    EXPECT_NE(GetParam()(fPath, "new"), noErr);
    EXPECT_EQ(ReadWhole(fPath), "old");
    EXPECT_EQ(fs::last_write_time(fPath), before);
}

} // namespace
} // namespace drevix::test
