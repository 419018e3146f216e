// Every call of the disk and every request for memory fails in turn, in each operation on files: nothing stays open, no
// other file is touched, what changes nothing tells of it, and trying again does what an undisturbed run does.
#include "platform/catalog/apple_double.h"
#include "platform/catalog/catalog.h"
#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "platform/catalog/resource_file.h"
#include "platform/files/files.h"
#include "platform/files/kept_bytes.h"
#include "platform/files/owners.h"
#include "platform/files/shared_file.h"
#include "platform/files/user_lock.h"
#include "tests/platform/files/updates.h"
#include "tests/support/failing_new.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

// Every file below a folder but locks: its bytes, or where a link leads.
using State = std::map<std::string, std::string>;

class EveryFault : public testing::Test {
  protected:
    // A folder that no cache has seen, with the files that the operations work on.
    void Prepare() {
        fs::remove_all(fFolder);
        fs::remove_all(fScratch.Path("state"));
        fFolder = fScratch.Path("f" + std::to_string(++fCount));
        fs::create_directories(fFolder + "/config");
        WriteWhole(At("file"), fOld);
        WriteWhole(At(".file.0123456789abcdef.new"), "half"); // left by a program that died
        WriteWhole(At("other"), "other");
        fs::create_symlink("file", At("link"));
        fs::create_symlink(At("link"), At("second"));
        WriteWhole(At(fLong), "long");
        AppleDouble appleDouble;
        SetFInfo(appleDouble, {FourCharCode("TEXT"), FourCharCode("ttxt"), 0});
        ASSERT_EQ(ResourceForkBytes(std::vector<Resource>{{1, 1, "one", "data"}}, &appleDouble.resourceFork),
                  noErr);
        ASSERT_EQ(WriteAppleDouble(At("file"), appleDouble), noErr);
        fs::remove_all(fScratch.Path("state"));
        // What a program left that died while it wrote "new bytes" in place; of one file another has been made since.
        KeptBytes kept;
        ASSERT_EQ(kept.TakeTurn(), noErr);
        for (const char *name : {"torn", "changed"}) {
            WriteWhole(At(name), "old text");
            const DiskDescriptor file(CurrentDisk().Open(At(name).c_str(), O_RDWR, 0));
            ASSERT_EQ(kept.Keep(At(name), file.Get(), "old text", "new bytes"), noErr);
            ASSERT_EQ(WriteAllAt(file.Get(), std::string("new text\0new b", 14), 0), noErr);
        }
        WriteWhole(At("changed"), "of another");
        fs::permissions(fScratch.Path("state/com.halcyra.drevix"), fs::perms(0755));
        if (::geteuid() == 0) {
            ASSERT_EQ(::chown(At("file").c_str(), ::geteuid(), 65534), 0);
        }
        ::setenv("XDG_CONFIG_HOME", At("new/config").c_str(), 1);
    }
    [[nodiscard]] std::string At(const std::string &name) const { return fFolder + "/" + name; }
    [[nodiscard]] FSSpec Spec(std::string_view name) const {
        return {kRootVolume, FolderIdFromPath(fFolder), Str63FromMacRoman(name)};
    }
    [[nodiscard]] State Now() const {
        State found;
        for (const char *top : {"state", fFolder.c_str() + fScratch.Path().size() + 1}) {
            if (!fs::exists(fScratch.Path(top))) {
                continue;
            }
            for (const auto &entry : fs::recursive_directory_iterator(fScratch.Path(top))) {
                std::string name =
                    entry.path().string().substr(entry.path().string().find('/', fScratch.Path().size() + 1));
                if (name.find("/kept/") != name.npos) { // its number is another one each time
                    name = "/kept/" + entry.path().extension().string();
                }
                if (entry.is_symlink()) {
                    found[name] = fs::read_symlink(entry.path()).filename();
                } else if (entry.is_regular_file() && !name.ends_with(".lock")) {
                    found[name] = ReadWhole(entry.path());
                }
            }
        }
        return found;
    }

    // In memory where there is such a folder: a disk takes 20 times as long to flush.
    ScopedVariable fFolders{"TMPDIR", fs::is_directory("/dev/shm") ? "/dev/shm" : "/tmp"};
    ScratchFolder fScratch;
    std::string fFolder;
    int fCount = 0;
    const std::string fOld = "old bytes, and not a few of them";
    const std::string fNew = "new and longer bytes";
    const std::string fLong = std::string(100, 'l') + ".txt";
};

TEST_F(EveryFault, IsSurvivedAndMadeUpForByTheNextTry) {
    std::string bytes;
    FSRef ref;
    FSSpec spec{};
    CatalogInfo info{};
    FInfo finder{};
    AppleDouble appleDouble;
    std::vector<Str63> names;
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    bool lastsForEver = false;
    const auto ask = [&](std::int32_t id, std::int16_t index, const Str63 &name) {
        info = {};
        info.ioVRefNum = kRootVolume;
        info.ioDrDirID = id;
        info.ioFDirIndex = index;
        info.ioName = name;
        return PBGetCatInfoSync(&info);
    };
    const Operation<OSErr()> operations[] = {
        {"replace", [&] { return UpdateFile(At("second"), UpdateMethod::Replace, fNew); }},
        {"in place", [&] { return UpdateFile(At("link"), UpdateMethod::InPlace, fNew); }},
        {"write shared", [&] { return WriteSharedFile(At("file"), "short"); }},
        {"write the same", [&] { return WriteSharedFile(At("file"), fOld); }},
        {"make shared", [&] { return WriteSharedFile(At("made"), "made"); }},
        {"mend",
         [&] {
             MendFilesCutShort();
             return OSErr{noErr};
         }},
        {"read", [&] { return ReadWholeFile(At("link"), &bytes); }},
        {"read shared", [&] { return ReadSharedFile(At("file"), 100, &bytes); }},
        {"keep aside", [&] { return KeepFileAside(At("second"), At("other")); }},
        {"find folder",
         [&] { return FindFolder(kOnSystemDisk, kStartupFolderType, kCreateFolder, &volume, &folder); }},
        {"reference", [&] { return FSPathMakeRef(At("second"), &ref); }},
        {"name", [&] { return FSRefAtName({fFolder}, "file", &ref); }},
        {"long name", [&] { return FSSpecFromRef({At(fLong)}, &spec); }},
        {"by name", [&] { return ask(FolderIdFromPath(fFolder), 0, Str63FromMacRoman("file")); }},
        {"by index", [&] { return ask(FolderIdFromPath(fFolder), 2, {}); }},
        {"itself", [&] { return ask(FolderIdFromPath(fFolder), -1, {}); }},
        {"list", [&] { return ListFolder(kRootVolume, FolderIdFromPath(fFolder), &names); }},
        {"create", [&] { return FSpCreate(Spec("made"), 0, 0, -1); }},
        {"create folder", [&] { return FSpDirCreate(Spec("made"), -1, &folder); }},
        {"delete", [&] { return FSpDelete(Spec("file")); }},
        {"get information", [&] { return FSpGetFInfo(Spec("file"), &finder); }},
        {"set information", [&] { return FSpSetFInfo(Spec("file"), FInfo()); }},
        {"read appleDouble", [&] { return ReadAppleDouble(At("file"), &appleDouble); }},
        {"make resource file", [&] { return FSpCreateResFile(Spec("made"), 0, 0, -1); }},
        {"add resource",
         [&] {
             ResourceFile file;
             OSErr status = file.Open(Spec("file"), fsRdWrPerm);
             status = status == noErr ? file.AddResource({}, 2, 2, PascalLiteral("two").data()) : status;
             if (status == noErr && file.Close() != noErr) {
                 status = file.Close();
                 EXPECT_TRUE(status == noErr || lastsForEver) << "what was not written can be tried again";
             }
             return status;
         }},
    };
    for (const auto &operation : operations) {
        SCOPED_TRACE(operation.name);
        Prepare();
        const State before = Now();
        ASSERT_EQ(operation.run(), noErr);
        const bool isLook = Now() == before;
        MendFilesCutShort();
        const State after = Now();
        EXPECT_EQ(after.at("/torn"), "old text");
        const auto isMet = [&](const FaultAt &fault) {
            Prepare();
            OSErr status = noErr;
            lastsForEver = fault.lasts == Lasts::ForEver;
            const bool wasHit =
                fault.Meets([&] { status = GivenMemory(operation.run, OSErr{memFullErr}); }, DiskCalls::All);
            EXPECT_EQ(OpenFileCount(), 0);
            EXPECT_TRUE(wasHit || status == noErr);
            EXPECT_TRUE(!isLook || !wasHit || fault.error != EIO || status == ioErr);
            MendFilesCutShort();
            // The file that the dead program left may stay for one time more.
            EXPECT_TRUE((wasHit && (status != noErr || operation.name == "replace")) || Now() == after);
            if (Now() != after) {
                EXPECT_EQ(operation.run(), noErr);
            }
            EXPECT_TRUE(Now() == after);
            return wasHit;
        };
        // None that says what is not so, as ENOENT would.
        ForEachFault(1, {0, EIO}, isMet);
        ForEachFault(1, {EACCES, EROFS, EINTR, kOfNew}, isMet, {Lasts::Once});
    }
}

} // namespace
} // namespace drevix::test
