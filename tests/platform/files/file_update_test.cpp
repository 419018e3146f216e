#include "platform/files/file_update.h"

#include "platform/files/file_watch.h"
#include "platform/files/owners.h"
#include "platform/files/shared_file.h"
#include "platform/files/user_lock.h"
#include "tests/platform/files/updates.h"
#include "tests/support/testing.h"

#include <poll.h>

namespace drevix::test {
namespace {

class FileUpdateBothWays : public testing::TestWithParam<UpdateMethod> {
  protected:
    const ScratchFolder fScratch;
    const std::string fPath = fScratch.Path("config/f");
};
INSTANTIATE_TEST_SUITE_P(Methods, FileUpdateBothWays,
                         testing::Values(UpdateMethod::Replace, UpdateMethod::InPlace));

TEST_P(FileUpdateBothWays, Abandoned_LeavesWhatWas) {
    for (const Names &there : {Names{}, Names{"f"}}) {
        if (!there.empty()) {
            WriteWhole(fPath, "old bytes");
        }
        {
            FileUpdate update;
            ASSERT_EQ(update.Open(fPath, GetParam()), noErr);
            ASSERT_EQ(Put(update, "half, and longer than the old"), noErr);
            EXPECT_EQ(update.Open(fPath, GetParam()), fBsyErr);
        }
        EXPECT_EQ(ScratchFolder::Names(fScratch.Preferences()), there);
    }
    EXPECT_EQ(ReadWhole(fPath), "old bytes");
}

TEST_P(FileUpdateBothWays, EveryFault_LeavesTheOldOrTheNewFileAndTheOldUnderTheNameAskedFor) {
    ForEachFault(5, {ENOSPC}, [](const FaultAt &fault) {
        const ScratchFolder scratch;
        const std::string path = scratch.Path("config/f");
        const std::string kept = scratch.Path("kept");
        WriteWhole(path, "old bytes");
        ::chmod(path.c_str(), 0640);
        OSErr status = noErr;
        OSErr oldKept = noErr;
        const bool wasHit = fault.Meets([&] {
            FileUpdate update;
            status = update.Open(path, GetParam());
            update.KeepOldAs(kept);
            status = status == noErr ? Put(update, "new") : status;
            status = status == noErr ? update.Commit() : status;
            oldKept = update.OldKept();
        });
        const std::string now = ReadWhole(path);
        if (GetParam() == UpdateMethod::Replace || fault.lasts == Lasts::Once) {
            EXPECT_TRUE(now == "new" || (now == "old bytes" && status == dskFulErr)) << now;
        }
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
        if (now == "new") {
            EXPECT_EQ(oldKept == noErr, fs::exists(kept));
        } else if (GetParam() == UpdateMethod::Replace) {
            EXPECT_FALSE(fs::exists(kept));
        }
        EXPECT_TRUE(!fs::exists(kept) || ReadWhole(kept) == "old bytes");
        EXPECT_TRUE(!fs::exists(kept) || !fs::equivalent(kept, path));
        EXPECT_TRUE(status == noErr || status == dskFulErr);
        EXPECT_TRUE(wasHit || status == noErr);
        EXPECT_EQ(OpenFileCount(), 0);
        EXPECT_EQ(ScratchFolder::Names(scratch.Preferences()), Names{"f"});
        return wasHit;
    });
}

TEST_P(FileUpdateBothWays, Links_StayLinks) {
    const std::string folder = fScratch.Path("real");
    fs::create_directory(folder);
    fs::create_symlink("../real/f", fScratch.Path("config/a"));
    fs::create_symlink("a", fScratch.Path("config/b"));
    for (const char *text : {"made through a dangling link", "and changed"}) {
        EXPECT_EQ(UpdateFile(fScratch.Path("config/b"), GetParam(), text), noErr);
        EXPECT_EQ(ReadWhole(folder + "/f"), text);
    }
    EXPECT_TRUE(fs::is_symlink(fScratch.Path("config/b")));
    EXPECT_EQ(ScratchFolder::Names(folder), Names{"f"});
    fs::create_symlink("loop", fScratch.Path("config/loop"));
    EXPECT_EQ(UpdateFile(fScratch.Path("config/loop"), GetParam(), ""), bdNamErr);
}

TEST_P(FileUpdateBothWays, Pipe_StaysAndGetsTheBytes) {
    ASSERT_EQ(::mkfifo(fPath.c_str(), 0600), 0);
    const SystemDescriptor reader(::open(fPath.c_str(), O_RDONLY | O_NONBLOCK));
    EXPECT_EQ(UpdateFile(fPath, GetParam(), "text"), noErr);
    char bytes[8] = {};
    EXPECT_EQ(::read(reader.Get(), bytes, sizeof bytes), 4);
    EXPECT_TRUE(fs::is_fifo(fPath));
    EXPECT_EQ(WriteSharedFile(fPath, "text"), -1) << "no device for a file that is shared";
    EXPECT_EQ(UpdateFile("", GetParam(), ""), bdNamErr);
    EXPECT_EQ(UpdateFile(fPath + std::string("\0x", 2), GetParam(), ""), bdNamErr);
}

TEST(FileUpdate, TwoWriters_TakeTurns) {
    ScratchFolder scratch;
    const std::string path = scratch.Preferences() + "/f";
    constexpr int kWriters = 8;
    for (int i = 0; i < kWriters; ++i) {
        if (::fork() == 0) {
            const std::string text(100'000, static_cast<char>('a' + i));
            ::_exit(UpdateFile(path, UpdateMethod::Replace, text) == noErr ? 0 : 1);
        }
    }
    for (int i = 0; i < kWriters; ++i) {
        int status = 0;
        ::wait(&status);
        EXPECT_EQ(status, 0);
    }
    const std::string now = ReadWhole(path);
    EXPECT_EQ(now, std::string(100'000, now[0])) << "two writers mixed";
    EXPECT_EQ(ScratchFolder::Names(scratch.Preferences()), Names{"f"});
}

// A stranger's file under the fixed name ".f.new" was once taken as our own.
TEST(FileUpdate, FilesUnderTemporaryNames_GoOnlyIfLeftByADeadProgramOfThisUser) {
    ScratchFolder scratch;
    const std::string folder = scratch.Preferences() + "/";
    const std::string digits = ".0123456789abcde";
    const Names stay = {".f" + digits + "1.new", ".f" + digits + "2.new",
                        ".f" + digits + "3.new", ".f" + digits + "4.new",
                        ".f" + digits + "X.new", ".f.new",
                        ".g" + digits + "5.new", "f"};
    fs::create_directory(folder + stay[0]);
    fs::create_symlink(scratch.Path("elsewhere"), folder + stay[1]);
    WriteWhole(scratch.Path("elsewhere"), "stays");
    fs::create_hard_link(scratch.Path("elsewhere"), folder + stay[2]);
    for (std::size_t i = 3; i + 1 < stay.size(); ++i) {
        WriteWhole(folder + stay[i], "stays");
    }
    const DiskDescriptor alive(CurrentDisk().Open((folder + stay[3]).c_str(), O_RDWR, 0));
    ASSERT_EQ(CurrentDisk().Lock(alive.Get()), 0);
    const std::string dead = folder + ".f" + digits + "f.new";
    WriteWhole(dead, "half");
    EXPECT_EQ(UpdateFile(folder + "f", UpdateMethod::Replace, "new"), noErr);
    EXPECT_EQ(ScratchFolder::Names(folder), stay);
    for (std::size_t i = 1; i + 1 < stay.size(); ++i) {
        EXPECT_EQ(ReadWhole(folder + stay[i]), "stays") << stay[i];
    }
    WriteWhole(dead, "a stranger's");
    if (::geteuid() == 0 && ::chown(dead.c_str(), 65534, 65534) == 0) {
        EXPECT_EQ(UpdateFile(folder + "f", UpdateMethod::Replace, "new"), noErr);
        EXPECT_EQ(ReadWhole(dead), "a stranger's");
    }
}

TEST(FileUpdate, PrivateFile_IsSoWhateverTheUmask) {
    ScratchFolder scratch;
    for (const mode_t mask : {0U, 022U, 0377U}) {
        const mode_t before = ::umask(mask);
        const std::string path = scratch.Path("config/" + std::to_string(mask));
        EXPECT_EQ(ReplaceWholeFile(path, "bytes", kPrivateFile), noErr);
        ::umask(before);
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600)) << mask;
    }
}

// Runs a check as a user without the superuser's rights, in a child, so that permissions count.
bool HoldsForAPlainUser(const std::function<bool()> &check) {
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t kNobody = 65534;
        if (::getuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
            ::_exit(2);
        }
        ::_exit(check() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

struct DiskWithoutLocks : ScopedDisk {
    explicit DiskWithoutLocks(int reason) : error(reason) {}
    int Lock(int) override {
        errno = error;
        return -1;
    }
    int error;
};

TEST(UserLock, Holders_TakeTurns) {
    ScratchFolder scratch;
    UserLock first;
    UserLock second;
    EXPECT_EQ(first.Acquire("one", {}), noErr);
    EXPECT_EQ(second.Acquire("one", std::chrono::milliseconds(20)), fBsyErr);
    EXPECT_EQ(second.Acquire("other", {}), noErr);
    first.Release();
    second.Release();
    EXPECT_EQ(second.Acquire("one", {}), noErr);
    EXPECT_EQ(second.Acquire("one", {}), noErr) << "it has it already";
    for (const auto &[error, expected] :
         {std::pair{ENOLCK, noErr}, {ENOSYS, noErr}, {EOPNOTSUPP, noErr}, {EINVAL, noErr}, {EIO, ioErr}}) {
        const DiskWithoutLocks disk(error);
        EXPECT_EQ(first.Acquire("one", {}), expected) << error;
        first.Release();
    }
}

TEST(FileWatch, Changes_AreToldInFoldersThatCome) {
    ScratchFolder scratch;
    const std::string path = scratch.Path("a/b/file");
    FileWatch watch(path);
    EXPECT_FALSE(watch.TakeChange());
    fs::create_directories(scratch.Path("a/b"));
    pollfd readable = {watch.Descriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&readable, 1, 0), 1) << "the nearest folder is watched";
    EXPECT_TRUE(watch.TakeChange());
    EXPECT_EQ(WriteSharedFile(path, "new"), noErr);
    EXPECT_EQ(ReadWhole(path), "new");
    EXPECT_TRUE(watch.TakeChange());
    WriteWhole(scratch.Path("a/b/other"), "");
    EXPECT_FALSE(watch.TakeChange());
    fs::remove(path);
    EXPECT_TRUE(watch.TakeChange());
    const SystemDescriptor made(::open(path.c_str(), O_WRONLY | O_CREAT, 0600));
    EXPECT_FALSE(watch.TakeChange()) << "nothing is written yet";
    fs::remove(path);
    EXPECT_TRUE(watch.TakeChange());
    fs::create_symlink("other", path);
    EXPECT_TRUE(watch.TakeChange());
}

// Another user's lock on a file that he could read once stopped every save.
TEST(UserLock, FileCannotBeOpenedByOthers) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can try it as another user";
    }
    ScratchFolder scratch;
    ::chmod(scratch.Path().c_str(), 0755);
    const mode_t before = ::umask(0);
    UserLock lock;
    EXPECT_EQ(lock.Acquire("settings.lock", {}), noErr);
    ::umask(before);
    const std::string folder = scratch.Path("state/com.halcyra.drevix");
    EXPECT_TRUE(HoldsForAPlainUser(
        [&] { return ::open((folder + "/settings.lock").c_str(), O_RDONLY) < 0 && errno == EACCES; }));
    lock.Release();
    // A state folder that another user could have made is not used.
    ASSERT_EQ(::chown(folder.c_str(), 65534, 65534), 0);
    EXPECT_EQ(lock.Acquire("settings.lock", {}), permErr);
}

TEST(FileUpdate, ClosedFolder_IsWrittenInPlaceAndClosedFileRefused) {
    ScratchFolder scratch;
    ::chmod(scratch.Path().c_str(), 0755);
    const std::string folder = scratch.Preferences();
    WriteWhole(folder + "/open", "old");
    WriteWhole(folder + "/closed", "old");
    ::chmod((folder + "/open").c_str(), 0666);
    ::chmod((folder + "/closed").c_str(), 0444);
    ::chmod(folder.c_str(), 0555);
    fs::create_directory(scratch.Path("state")); // where the old bytes are kept meanwhile
    ::chmod(scratch.Path("state").c_str(), 0777);
    EXPECT_TRUE(HoldsForAPlainUser([&] {
        return UpdateFile(folder + "/open", UpdateMethod::Replace, "new") == noErr &&
               UpdateFile(folder + "/closed", UpdateMethod::Replace, "new") == permErr &&
               UpdateFile(folder + "/none", UpdateMethod::Replace, "new") == permErr;
    }));
    EXPECT_EQ(ReadWhole(folder + "/open"), "new");
    EXPECT_EQ(ReadWhole(folder + "/closed"), "old");
    // A file that may not be written is refused even where its folder would allow to replace it.
    ::chmod(folder.c_str(), 0777);
    EXPECT_TRUE(HoldsForAPlainUser(
        [&] { return UpdateFile(folder + "/closed", UpdateMethod::Replace, "new") == permErr; }));
    // Nor is another user's file replaced by one of ours: it is written in place.
    EXPECT_TRUE(HoldsForAPlainUser(
        [&] { return UpdateFile(folder + "/open", UpdateMethod::Replace, "his") == noErr; }));
    EXPECT_EQ(ReadWhole(folder + "/open"), "his");
    struct stat kept {};
    EXPECT_EQ(::stat((folder + "/open").c_str(), &kept), 0);
    EXPECT_EQ(kept.st_uid, ::geteuid());
    EXPECT_EQ(ScratchFolder::Names(folder), (Names{"closed", "open"}));
}

TEST(KeepFileAside, DifferentFiles_AreAllKept) {
    ScratchFolder scratch;
    const std::string path = scratch.Path("config/f");
    const std::string kept = path + ".refused";
    for (const char *text : {"one", "one", "two!", "333", "333"}) {
        WriteWhole(path, text);
        ::chmod(path.c_str(), 0600); // what nobody else may read is not laid open by a copy
        EXPECT_EQ(KeepFileAside(path, kept), noErr);
        EXPECT_EQ(ReadWhole(kept), text);
        EXPECT_EQ(fs::status(kept).permissions(), fs::perms(0600));
    }
    EXPECT_EQ(ReadWhole(kept + ".1"), "one");
    EXPECT_EQ(ReadWhole(kept + ".2"), "two!");
    EXPECT_EQ(ScratchFolder::Names(scratch.Preferences()),
              (Names{"f", "f.refused", "f.refused.1", "f.refused.2"}));
    EXPECT_EQ(KeepFileAside(scratch.Path("none"), kept), fnfErr);
    for (int i = 3; i <= 1000; ++i) {
        WriteWhole(kept + "." + std::to_string(i), "");
    }
    WriteWhole(path, "4444");
    EXPECT_EQ(KeepFileAside(path, kept), dirFulErr);
    EXPECT_EQ(ReadWhole(kept), "333");
}

// A refused file behind a link was once copied again at every start.
TEST(KeepFileAside, Links_CountAsTheirFileAndNeverAsACopy) {
    ScratchFolder scratch;
    const std::string path = scratch.Path("config/f");
    const std::string kept = path + ".refused";
    WriteWhole(scratch.Path("real"), "bytes");
    fs::create_symlink(scratch.Path("real"), path);
    for (int start = 0; start < 3; ++start) {
        EXPECT_EQ(KeepFileAside(path, kept), noErr);
    }
    EXPECT_EQ(ScratchFolder::Names(scratch.Preferences()), (Names{"f", "f.refused"}));
    // What changes together with the file does not keep it.
    using MakeLink = void (*)(const fs::path &, const fs::path &);
    for (const MakeLink makeLink : {MakeLink{fs::create_hard_link}, MakeLink{fs::create_symlink}}) {
        fs::remove(kept);
        makeLink(scratch.Path("real"), kept);
        EXPECT_EQ(KeepFileAside(path, kept), noErr);
        WriteWhole(path, "other");
        EXPECT_EQ(ReadWhole(kept), "bytes");
        WriteWhole(path, "bytes");
    }
}

} // namespace
} // namespace drevix::test
