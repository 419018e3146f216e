// The items folder: finding it, clearing it of what no slot names, and the way from an item to a slot's text
// and back.

#include "platform/base/mac_roman.h"
#include "platform/catalog/named_files.h"
#include "platform/files/user_lock.h"
#include "settings/action_commands.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "tests/support/failing_new.h"
#include "tests/util/items/items.h"

namespace drevix::test {
namespace {

constexpr ConstStringPtr kName = kDrevixItemsFolderName.data();

class Items : public ItemsTest {
  protected:
    // A base whose last record opens the items of these names, and has one of them in a keystroke's text.
    static QBaseOwner BaseWith(const Names &texts) {
        QBaseOwner base = NewDrevixBase();
        AppPrefs record{};
        record.device[0].action[0].command = kActionKeystroke;
        getPascalString("keystroke", record.device[0].action[0].data.data(), 31);
        for (std::size_t i = 0; i < texts.size(); ++i) {
            record.device[0].action[31 - i].command = kActionOpenItem;
            getPascalString(texts[i], record.device[0].action[31 - i].data.data(), 31);
        }
        EXPECT_EQ(QBaseAddRecord(base.get(), &gDefaultGlobalPrefs, sizeof(AppPrefs)), 0);
        EXPECT_EQ(QBaseAddRecord(base.get(), "short", 5), 1);
        EXPECT_EQ(QBaseAddRecord(base.get(), &record, sizeof(AppPrefs)), 2);
        return base;
    }
    void Alias(const std::string &name) { EXPECT_EQ(MakeAlias(fScratch.Path(), name).status, noErr) << name; }
    static std::string Text(const Str31 &name) { return stringWithPascalString(name.data()); }
    // Makes an item that must succeed, and gives the stored name.
    static std::string Make(const std::string &path) {
        Str31 name{};
        EXPECT_EQ(MakeDrevixItem(path, &name), noErr) << path;
        EXPECT_EQ(ResolveDrevixItem(name).path, path);
        EXPECT_TRUE(ResolveDrevixItem(name).exists) << path;
        return Text(name);
    }
    static Str31 Stored(const std::string &text) {
        Str31 name{};
        getPascalString(text, name.data(), 31);
        return name;
    }
};

TEST_F(Items, Find_MakesItOnlyWhenAsked) {
    FSSpec spec{};
    std::int16_t volume = 1;
    std::int32_t folder = 0;
    const auto find = [&](ConstStringPtr name, FolderCreation creation) {
        return FindDrevixItemsFolder(name, creation, &spec, &volume, &folder);
    };
    EXPECT_EQ(find(nullptr, kCreateFolder), paramErr);
    EXPECT_EQ(find(PascalLiteral("").data(), kCreateFolder), paramErr);
    EXPECT_EQ(find(Str63{64}.data(), kCreateFolder), paramErr);
    EXPECT_EQ(find(kName, kDontCreateFolder), fnfErr);
    EXPECT_EQ(ScratchFolder::Names(fScratch.Preferences()), Names{});
    EXPECT_EQ(folder, 0);
    EXPECT_EQ(find(kName, kCreateFolder), noErr);
    EXPECT_EQ(PathFromSpec(spec), ItemsFolder());
    EXPECT_EQ(fs::status(ItemsFolder()).permissions(), fs::perms(0700));
    EXPECT_EQ(PathFromSpec({volume, folder, {1, 'x'}}), Item("x"));
    EXPECT_EQ(FindDrevixItemsFolder(kName, kDontCreateFolder, nullptr, nullptr, nullptr), noErr);

    fs::remove(ItemsFolder());
    WriteWhole(ItemsFolder(), "a file in the way");
    EXPECT_EQ(find(kName, kCreateFolder), ioErr);
    EXPECT_EQ(CleanupDrevixItems(kName, nullptr), ioErr);
    EXPECT_EQ(ReadWhole(ItemsFolder()), "a file in the way");
}

TEST_F(Items, Cleanup_RemovesAliasFilesThatNoSlotNames) {
    for (const char *name : {"Photo", "\u00E9t\u00E9", "unused 1", "unused 2", "keystroke", "Cafe", "zz"}) {
        Alias(name);
    }
    const QBaseOwner base = BaseWith({"pHOTO", "\u00C9T\u00C9", "Caf\u00E9", "zz", "not there"});
    EXPECT_EQ(CleanupDrevixItems(kName, base.get()), noErr);
    EXPECT_EQ(ItemNames(), (Names{"._Photo", "._zz", "._\u00E9t\u00E9", "Photo", "zz", "\u00E9t\u00E9"}));
    EXPECT_EQ(CleanupDrevixItems(kName, nullptr), noErr);
    EXPECT_EQ(ItemNames(), Names{});
}

TEST_F(Items, Cleanup_LeavesAllThatIsNoAliasFile) {
    fs::create_directories(Item("folder/inner"));
    WriteWhole(Item("file"), "text");
    WriteWhole(Item("typed"), "text");
    SetInfo(Item("typed"), {FourCharCode("TEXT"), FourCharCode("ttxt"), 0x7FFF});
    WriteWhole(Item("._alone"), "x beside nothing");
    WriteWhole(Item("bad\xFF\xFEname"), "no UTF-8");
    fs::create_symlink("/etc", Item("foreign"));
    fs::create_symlink("/nowhere", Item("dangling"));
    // A companion that says alias, in the place of a pipe's or folder's, makes neither one.
    for (const char *name : {"pipe", "directory"}) {
        AppleDouble alias;
        SetFInfo(alias, {kUnknownType, kUnknownType, kIsAlias});
        EXPECT_EQ(WriteAppleDouble(Item(name), alias), noErr);
    }
    ASSERT_EQ(::mkfifo(Item("pipe").c_str(), 0600), 0);
    fs::create_directory(Item("directory"));
    // Companions that cannot be one: a pipe that nobody writes, a link, a folder, damage, a huge file.
    for (const char *name : {"a", "b", "c", "d", "e"}) {
        fs::create_symlink("/etc/passwd", Item(name));
    }
    ASSERT_EQ(::mkfifo(Item("._a").c_str(), 0600), 0);
    Alias("real");
    fs::create_symlink("._real", Item("._b"));
    fs::create_directory(Item("._c"));
    WriteWhole(Item("._d"), std::string(26, '\0'));
    fs::copy_file(Item("._real"), Item("._e"));
    fs::resize_file(Item("._e"), std::uint64_t{1} << 40);
    const Names before = ItemNames();

    EXPECT_EQ(CleanupDrevixItems(kName, BaseWith({"real"}).get()), noErr);
    EXPECT_EQ(ItemNames(), before);
    Names after = before;
    std::erase_if(after, [](const std::string &name) { return name == "real" || name == "._real"; });
    EXPECT_EQ(CleanupDrevixItems(kName, nullptr), noErr);
    EXPECT_EQ(ItemNames(), after);
}

// 51 of 271 kills once left half an alias file in the folder for good.
TEST_F(Items, HalfMade_IsClearedAfterADeathAtAnyCall) {
    const std::string item = File("item", "contents");
    Alias("other");
    const Names whole = ItemNames();
    Str31 name{};
    const auto make = [&] { return MakeDrevixItem(item, &name) == noErr; };
    bool hasDied = true;
    for (int call = 1; hasDied; ++call) {
        hasDied = DiesAt(call, Death::BeforeTheCall, make);
        EXPECT_TRUE(hasDied || call > 10);
        ClearHalfMadeItems(kName);
        const Names now = ItemNames();
        if (std::ranges::find(now, "item") == now.end()) {
            EXPECT_EQ(now, whole) << call;
        } else {
            EXPECT_EQ(now.size(), whole.size() + 2) << call;
            EXPECT_EQ(Make(item), "item");
            fs::remove(Item("item")); // as a death in its removal does
        }
    }
    ClearHalfMadeItems(kName);
    EXPECT_EQ(ItemNames(), whole);
}

TEST_F(Items, HalfMade_ClearsNothingThatIsNotOurs) {
    Alias("real");
    const std::string ours = ReadWhole(Item("._real"));
    WriteWhole(Item("._foreign"), ours + "more than we write");
    WriteWhole(Item("._text"), "a text of that name");
    WriteWhole(Item(".._text.new"), "another");
    WriteWhole(Item("other.new"), ours.substr(0, 40));
    fs::create_symlink("._real", Item("._link"));
    WriteWhole(Item("._made"), ours);
    const Names stay = ItemNames();
    UserLock making;
    ASSERT_EQ(making.Acquire(kItemsLockName, {}), noErr);
    ClearHalfMadeItems(kName);
    EXPECT_EQ(ItemNames(), stay) << "a program is making the item";
    making.Release();
    WriteWhole(Item(".._older.new"), ours.substr(0, 40));
    ClearHalfMadeItems(kName);
    Names after = stay;
    std::erase(after, "._made");
    EXPECT_EQ(ItemNames(), after);
}

// Whatever fails in an operation, trying it again does what an undisturbed run does. A look-up that failed once made an alias
// of an alias.
TEST_F(Items, EveryFault_IsMadeUpForByTheNextTry) {
    const ScopedVariable other("XDG_DATA_HOME", fScratch.Path("data"));
    fs::create_directories(fScratch.Path("data/applications"));
    File("folder/letter");
    const std::string script = File("script of some length", "#!/bin/sh\n");
    const std::string longName = File("folder/" + std::string(40, 'n'));
    fs::create_symlink("letter", fScratch.Path("folder/link"));
    AppleDouble appleDouble;
    ASSERT_EQ(ResourceForkBytes(std::vector<Resource>{{kAliasResourceType, kAliasID, "", "cut"}},
                                &appleDouble.resourceFork),
              noErr);
    FSSpec spec{};
    FSRef ref;
    Str31 name{};
    IconHandles icons;
    const FSSpec applications = Spec(fScratch.Path("data/applications"));
    const auto make = [&](const std::string &path) {
        return [&, path] { return MakeDrevixItem(path, &name); };
    };
    const Operation<OSErr()> operations[] = {
        {"make under another name", make(longName)},
        {"make of a folder", make(fScratch.Path("data/applications"))},
        {"make anew", make(script)},
        {"make by its alias", make(Item("script of some length"))},
        {"resolve",
         [&] {
             return ResolveDrevixItem(Stored("SCRIPT OF SOME LENGTH")).path == script ? noErr : OSErr{fnfErr};
         }},
        {"clean up",
         [&] {
             const OSErr status = CleanupDrevixItems(kName, nullptr);
             ClearHalfMadeItems(kName);
             return status;
         }},
        {"look at", [&] { return GetSourceInfo(applications, nullptr, nullptr, icons); }},
        {"refer to a link", [&] { return GetFSRefFromNSString(fScratch.Path("folder/link").c_str(), &ref); }},
        {"refer to what is missing",
         [&] {
             const std::string path = fScratch.Path("folder/new//");
             const OSErr status = GetFSSpecFromNSString(path.c_str(), &spec, MissingItem::Allowed);
             return status == fnfErr && spec.parID != 0 ? OSErr{noErr} : status;
         }},
    };
    const auto prepare = [&](const std::string &what) {
        fs::remove_all(ItemsFolder());
        ::chmod(script.c_str(), 0644);
        Make(script);
        ::chmod(script.c_str(), what == "make anew" ? 0755 : 0644);
        if (what == "clean up") { // each takes a megabyte to read
            EXPECT_EQ(WriteAppleDouble(Item("halfmade"), appleDouble), noErr);
        }
        WriteWhole(Item(".._cut.0123456789abcdef.new"), "");
        return ItemNames();
    };
    for (const auto &operation : operations) {
        const std::string &what = operation.name;
        SCOPED_TRACE(what);
        const Names before = prepare(what);
        EXPECT_EQ(operation.run(), noErr);
        const Names after = ItemNames();
        Names now = after;
        const auto isMet = [&](FaultAt fault) {
            if (now != before) {
                prepare(what);
            }
            spec = {};
            OSErr status = noErr;
            fault.call *= fault.error == kOfNew && what.starts_with("make") ? 23 : 1; // of a thousand
            const bool wasHit = fault.Meets([&] { status = GivenMemory(operation.run, OSErr{memFullErr}); });
            EXPECT_TRUE(wasHit || status == noErr) << status;
            EXPECT_EQ(OpenFileCount(), 0);
            now = ItemNames();
            if (now != before) {
                EXPECT_EQ(operation.run(), noErr);
                EXPECT_EQ(ItemNames(), after);
            }
            return wasHit;
        };
        ForEachFault(0, {EIO, ENOMEM, kOfNew}, isMet, {Lasts::Once});
    }
}

// The first look-up that fails ends the walk; a file that cannot be removed does not.
TEST_F(Items, Cleanup_StopsAtAFailedLookUpOnly) {
    for (const char *name : {"1", "2", "3", "4"}) {
        Alias(name);
    }
    struct FailingDisk : ScopedDisk {
        std::string noStatus, noRemoval;
        int StatusAt(const char *path, struct stat *status) override {
            errno = EIO;
            return path == noStatus ? -1 : Disk::StatusAt(path, status);
        }
        int Remove(const char *path) override {
            errno = EACCES;
            return path == noRemoval ? -1 : Disk::Remove(path);
        }
    } disk;
    disk.noStatus = Item("3");
    disk.noRemoval = Item("1");
    EXPECT_EQ(CleanupDrevixItems(kName, nullptr), noErr);
    EXPECT_EQ(ItemNames(), (Names{"._1", "._3", "._4", "1", "3", "4"}));
}

TEST_F(Items, Make_StoresANameThatLeadsToThisItemOnly) {
    const std::string longName(40, 'w');
    EXPECT_EQ(Make(File("a/report.txt")), "report.txt");
    EXPECT_EQ(Make(File("a/report.txt")), "report.txt") << "the same item keeps its alias";
    const std::string other = Make(File("b/report.txt"));
    EXPECT_TRUE(other.starts_with("report#") && other.ends_with(".txt")) << other;
    EXPECT_EQ(Make(fScratch.Path("b/report.txt")), other);
    EXPECT_NE(Make(File("b/REPORT.TXT")), "REPORT.TXT") << "letter case alone tells no names apart";
    EXPECT_EQ(Make(File("Fl\u00FCge: 1")), "Fl\u00FCge/ 1");
    EXPECT_EQ(Make(File(longName)), std::string(31, 'w'));
    EXPECT_EQ(Make(File("b/" + longName)).substr(0, 23), std::string(22, 'w') + "#");
    const std::string foreign = Make(File("\u5199\u771F.jpeg"));
    EXPECT_TRUE(foreign.starts_with("\?\?#") && foreign.ends_with(".jpeg")) << foreign;
    EXPECT_NE(Make(File("\u96C6\u3081.jpeg")), foreign);
    EXPECT_EQ(Make(File("\xFF.dat")).substr(0, 2), "?#") << "no UTF-8 at all";
    EXPECT_EQ(Make(File("e\u0301")).substr(0, 2), "\u00E9") << "another file than its composed name's";
    EXPECT_EQ(Make(File("._companion")).substr(0, 10), "_companion");
    EXPECT_EQ(Make("/"), "File System");
    EXPECT_EQ(Make("/etc"), "etc");
    for (const std::string &name : ItemNames()) {
        EXPECT_TRUE(name.starts_with("._") || fs::exists(Item("._" + name))) << name;
    }
}

TEST_F(Items, Make_LeavesWhatIsNoAliasFileAndFollowsThoseOfTheFolder) {
    const std::string report = File("report.txt");
    fs::create_directories(Item("report.txt"));
    EXPECT_NE(Make(report), "report.txt") << "a folder has the name";
    fs::create_symlink("/etc/passwd", Item("notes"));
    EXPECT_NE(Make(File("notes")), "notes") << "a link of someone else's has it";
    EXPECT_EQ(fs::read_symlink(Item("notes")), "/etc/passwd");

    Str31 name = Stored("untouched");
    EXPECT_EQ(MakeDrevixItem(fScratch.Path("gone"), &name), fnfErr);
    EXPECT_EQ(MakeDrevixItem("", &name), fnfErr);
    EXPECT_EQ(MakeDrevixItem(std::string("a\0b", 3), &name), bdNamErr);
    EXPECT_EQ(Text(name), "untouched");

    // The alias file of a slot, chosen as an item, stands for its item.
    const std::string letter = File("letter");
    EXPECT_EQ(Make(letter), "letter");
    EXPECT_EQ(MakeDrevixItem(Item("letter"), &name), noErr);
    EXPECT_EQ(ResolveDrevixItem(name).path, letter);
    // An item that became an application since gets the alias file of one.
    ::chmod(File("letter", "#!/bin/sh\n").c_str(), 0755);
    EXPECT_EQ(Make(letter), "letter");
    FInfo info{};
    EXPECT_EQ(FSpGetFInfo(Spec(Item("letter")), &info), noErr);
    EXPECT_EQ(SignatureText(info.fdType), "adrp");
}

TEST_F(Items, Resolve_TellsWhatIsGone) {
    const std::string letter = File("Letter");
    const std::string stored = Make(letter);
    EXPECT_EQ(ResolveDrevixItem(Stored("LETTER")).path, letter) << "letter case does not matter";
    fs::remove(letter);
    EXPECT_EQ(ResolveDrevixItem(Stored(stored)).path, letter);
    EXPECT_FALSE(ResolveDrevixItem(Stored(stored)).exists);
    fs::create_symlink("../../other", Item("relative"));
    EXPECT_EQ(ResolveDrevixItem(Stored("relative")).path, ItemsFolder() + "/../../other");
    Str31 tooLong = Stored("x");
    tooLong[0] = 255;
    for (const Str31 &name : {Stored(""), Stored("."), Stored(".."), Stored("../Letter"), Stored("none"),
                              Str31{3, 'a', 0, 'b'}, tooLong}) {
        EXPECT_TRUE(ResolveDrevixItem(name).path.empty() && !ResolveDrevixItem(name).exists);
    }
}

TEST_F(Items, References_OfMissingItems_AreMadeWhereAllowed) {
    File("folder/file");
    FSSpec spec{};
    FSRef ref;
    EXPECT_EQ(GetFSRefFromNSString(nullptr, &ref), paramErr);
    EXPECT_EQ(GetFSRefFromNSString("/", nullptr), paramErr);
    EXPECT_EQ(GetFSSpecFromNSString("/", nullptr, MissingItem::Refused), paramErr);
    EXPECT_EQ(GetFSSpecFromNSString(nullptr, &spec, MissingItem::Refused), paramErr);
    EXPECT_EQ(DrevixGetCatInfo(Spec(fScratch.Path("folder")), 0, nullptr, nullptr), noErr);
    const std::string longName(70, 'n');
    for (const auto &[path, missing, status, madeFor] :
         std::initializer_list<std::tuple<std::string, MissingItem, OSErr, std::string>>{
             {"folder/new", MissingItem::Allowed, fnfErr, "folder/new"},
             {"folder/new", MissingItem::Refused, fnfErr, ""},
             {"folder/\u5199", MissingItem::Allowed, ioErr, ""},
             {"folder/" + longName, MissingItem::Allowed, fnfErr, "folder/" + longName.substr(0, 63)},
             {"folder/file/new", MissingItem::Allowed, dirNFErr, ""},
         }) {
        spec = {};
        EXPECT_EQ(GetFSSpecFromNSString(fScratch.Path(path).c_str(), &spec, missing), status) << path;
        EXPECT_EQ(PathFromSpec(spec), madeFor.empty() ? "" : fScratch.Path(madeFor)) << path;
        EXPECT_LT(spec.name[0], spec.name.size()) << path;
    }
}

} // namespace
} // namespace drevix::test
