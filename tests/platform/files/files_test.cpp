#include "platform/files/files.h"

#include "platform/catalog/named_files.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"
#include "platform/files/shared_file.h"
#include "platform/files/user_lock.h"
#include "tests/support/testing.h"

#include <pwd.h>

namespace drevix::test {
namespace {

TEST(FindFolder, Preferences_FollowTheDesktopsRules) {
    ScratchFolder scratch;
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    const auto find = [&](FolderCreation creation, OSType type = kPreferencesFolderType) {
        return FindFolder(kOnSystemDisk, type, creation, &volume, &folder);
    };
    const auto found = [&] { return PathFromSpec({kRootVolume, folder, {1, 'x'}}); };
    EXPECT_EQ(find(kDontCreateFolder), noErr);
    EXPECT_EQ(found(), scratch.Preferences() + "/x");

    ::setenv("XDG_CONFIG_HOME", "relative/is/ignored", 1);
    EXPECT_EQ(find(kDontCreateFolder), fnfErr);
    EXPECT_EQ(find(kCreateFolder), noErr);
    EXPECT_EQ(found(), scratch.Path(".config/x"));

    WriteWhole(scratch.Path("file"), "in the way");
    ::setenv("XDG_CONFIG_HOME", scratch.Path("file").c_str(), 1);
    EXPECT_EQ(find(kDontCreateFolder), dirNFErr);
    EXPECT_EQ(FindFolder(1, kPreferencesFolderType, kDontCreateFolder, &volume, &folder), nsvErr);
    EXPECT_EQ(find(kDontCreateFolder, FourCharCode("none")), fnfErr);
}

TEST(StateFolder, IsTheUsersWhateverTheEnvironment) {
    ScratchFolder scratch;
    std::string folder;
    ::setenv("XDG_STATE_HOME", "relative", 1);
    EXPECT_EQ(StateFolder(kCreateFolder, &folder), noErr);
    EXPECT_EQ(folder, scratch.Path(".local/state/com.halcyra.drevix"));
    ::unsetenv("XDG_STATE_HOME");
    EXPECT_EQ(StateFolder(kDontCreateFolder, &folder), noErr);
    EXPECT_EQ(FolderOfPath("name"), ".");
    EXPECT_EQ(FolderOfPath("/name"), "/");
    EXPECT_EQ(JoinPath("/", "name"), "/name");
    for (const char *home : {"relative", ""}) {
        ::setenv("HOME", home, 1);
        const struct passwd *user = ::getpwuid(::getuid());
        EXPECT_EQ(HomeFolder(), user == nullptr ? "" : user->pw_dir);
    }
}

TEST(OpenFile, MarkAndEnd_BehaveAsOnThePlatform) {
    ScratchFolder scratch;
    WriteWhole(scratch.Path("f"), "0123456789");
    FileRef file = 0;
    ASSERT_EQ(OpenFile(scratch.Path("f"), fsRdWrPerm, &file), noErr);
    std::int64_t length = 0;
    EXPECT_EQ(GetEOF(file, &length), noErr);
    EXPECT_EQ(length, 10);

    char bytes[8] = {};
    std::int32_t count = 4;
    EXPECT_EQ(FSRead(file, &count, bytes), noErr);
    EXPECT_EQ(std::string_view(bytes, 4), "0123");
    EXPECT_EQ(SetFPos(file, fsFromStart, 8), noErr);
    count = 4;
    EXPECT_EQ(FSRead(file, &count, bytes), eofErr);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(SetFPos(file, fsFromStart, 11), eofErr);
    EXPECT_EQ(SetFPos(file, fsFromStart, -1), posErr);
    EXPECT_EQ(SetFPos(file, 3, 0), paramErr);
    count = -1;
    EXPECT_EQ(FSRead(file, &count, bytes), paramErr);

    EXPECT_EQ(SetEOF(file, 4), noErr);
    char more[] = "++";
    IOParam transfer = {file, more, 2, 0, fsAtMark | noCacheMask, 0};
    EXPECT_EQ(PBWriteSync(&transfer), noErr);
    EXPECT_EQ(transfer.ioActCount, 2);
    EXPECT_EQ(PBFlushFileSync(file), noErr);
    // From a place of the transfer's own.
    transfer = {file, bytes, 3, 0, fsFromStart | noCacheMask, 2};
    EXPECT_EQ(PBReadSync(&transfer), noErr);
    EXPECT_EQ(std::string_view(bytes, 3), "23+");
    transfer.ioPosOffset = -1;
    EXPECT_EQ(PBReadSync(&transfer), posErr);
    EXPECT_EQ(FSClose(file), noErr);
    EXPECT_EQ(ReadWhole(scratch.Path("f")), "0123++") << "the mark moved back to the new end";
}

TEST(OpenFile, WhatCannotBe_HasItsStatus) {
    ScratchFolder scratch;
    FileRef file = 0;
    EXPECT_EQ(OpenFile(scratch.Path("none"), fsRdPerm, &file), fnfErr);
    // A pipe without a writer was waited for, and /dev/full was read without end.
    ASSERT_EQ(::mkfifo(scratch.Path("pipe").c_str(), 0600), 0);
    for (const std::string &path : {scratch.Path(), scratch.Path("pipe"), std::string("/dev/full")}) {
        EXPECT_EQ(OpenFile(path, fsRdPerm, &file), notAFileErr) << path;
    }
    EXPECT_EQ(OpenFile(scratch.Path() + std::string("/a\0b", 4), fsRdPerm, &file), bdNamErr);
    WriteWhole(scratch.Path("f"), "text");
    ASSERT_EQ(OpenFile(scratch.Path("f"), fsRdPerm, &file), noErr);
    char byte = 'x';
    IOParam transfer = {file, &byte, 1, 99, fsAtMark, 0};
    EXPECT_EQ(PBWriteSync(&transfer), wrPermErr);
    EXPECT_EQ(transfer.ioActCount, 0);
    EXPECT_EQ(SetEOF(file, 0), wrPermErr);
    EXPECT_EQ(FSClose(file), noErr);
    EXPECT_EQ(FSClose(file), rfNumErr);
    std::int64_t length = 0;
    for (const FileRef wrong : {FileRef{0}, FileRef{-1}, FileRef{32767}, file}) {
        transfer.ioRefNum = wrong;
        for (const OSErr status : {GetEOF(wrong, &length), SetEOF(wrong, 0), SetFPos(wrong, fsFromStart, 0),
                                   PBReadSync(&transfer), PBFlushFileSync(wrong), FSClose(wrong)}) {
            EXPECT_EQ(status, rfNumErr);
        }
    }
    // As many as there is room for, and one more.
    std::vector<FileRef> files;
    OSErr status = noErr;
    while ((status = OpenFile(scratch.Path("f"), fsRdWrPerm, &file)) == noErr) {
        files.push_back(file);
    }
    EXPECT_EQ(status, tmfoErr);
    EXPECT_EQ(SetEOF(files[0], -1), posErr);
    transfer = {files[0], nullptr, 1, 0, fsAtMark, 0};
    EXPECT_EQ(PBReadSync(&transfer), paramErr);
    transfer.ioReqCount = 0;
    EXPECT_EQ(PBReadSync(&transfer), noErr);
    for (const FileRef opened : files) {
        EXPECT_EQ(FSClose(opened), noErr);
    }
    EXPECT_EQ(CurrentDisk().ReadAt(-1, &byte, 1, 0), -1);
    EXPECT_EQ(CurrentDisk().WriteAt(-1, &byte, 1, 0), -1);
    EXPECT_EQ(FlushFolder("/proc"), noErr) << "a file system that flushes nothing";
    // More than fits in memory, but takes no room on the disk.
    WriteWhole(scratch.Path("small"), "text");
    ASSERT_EQ(::truncate(scratch.Path("f").c_str(), std::int64_t{1} << 31), 0);
    std::string all;
    EXPECT_EQ(ReadWholeFile(scratch.Path("f"), &all), memFullErr);
    for (const auto &[name, most, expected] : {std::tuple{"f", 100, OSErr{-1}},
                                               {"", 100, -1},
                                               {"none", 100, fnfErr},
                                               {"small", 4, noErr},
                                               {"small", 3, -1}}) {
        EXPECT_EQ(ReadSharedFile(scratch.Path(name), most, &all), expected) << name << most;
    }
    EXPECT_EQ(ReadSharedFile(std::string("a\0b", 3), 100, &all), bdNamErr);
    FileUpdate update;
    EXPECT_EQ(update.Commit(), rfNumErr);
}

// Writes nothing and says no reason, for ever.
struct LazyDisk : ScopedDisk {
    ssize_t WriteAt(int /*fd*/, const void * /*bytes*/, std::size_t /*count*/, off_t /*offset*/) override {
        return 0;
    }
};

TEST(Transfer, WriteOfNothing_IsAnError) {
    ScratchFolder scratch;
    WriteWhole(scratch.Path("f"), "text");
    const LazyDisk lazy;
    FileRef file = 0;
    ASSERT_EQ(OpenFile(scratch.Path("f"), fsRdWrPerm, &file), noErr);
    char byte = 'x';
    IOParam transfer = {file, &byte, 1, 0, fsAtMark, 0};
    EXPECT_EQ(PBWriteSync(&transfer), ioErr);
    EXPECT_EQ(WriteAllAt(0, "x", 0), dskFulErr);
    EXPECT_EQ(FSClose(file), noErr);
}

TEST(Transfer, ShortTransfers_AreContinuedAndErrorsMapped) {
    ScratchFolder scratch;
    WriteWhole(scratch.Path("f"), "0123456789");
    for (const auto &[error, expected] : {std::pair{0, noErr}, {EINTR, noErr}, {ENOMEM, memFullErr}}) {
        FileRef file = 0;
        ASSERT_EQ(OpenFile(scratch.Path("f"), fsRdPerm, &file), noErr);
        char bytes[10] = {};
        std::int32_t count = 10;
        {
            FaultyDisk faults(1, Lasts::Once, error);
            EXPECT_EQ(FSRead(file, &count, bytes), expected) << error;
        }
        EXPECT_EQ(count, expected == noErr ? 10 : 0);
        EXPECT_EQ(FSClose(file), noErr);
    }
}

} // namespace
} // namespace drevix::test
