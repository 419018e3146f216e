#include "helperlink/login_items.h"
#include "platform/catalog/catalog.h"
#include "platform/catalog/named_files.h"
#include "platform/plist/property_list.h"
#include "settings/pascal_strings.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

using Paths = std::vector<std::string>;
using testing::HasSubstr;

constexpr const char *kHelper = "/new/DrevixHelper.app";

class LoginItems : public ::testing::Test {
  protected:
    // A file with these paths, every item hidden and with a key of its own, beside other keys of every kind.
    void WriteItems(const Paths &paths) const {
        PropertyListArray items = {PropertyList(std::string("no item"))};
        for (const std::string &path : paths) {
            PropertyListDictionary item;
            item.Add("Kind", std::string("APPL"));
            item.Add("Path", path);
            item.Add("Hide", true);
            items.emplace_back(std::move(item));
        }
        PropertyListDictionary root;
        root.Add("Date", PropertyListDate{1});
        root.Add("AutoLaunchedApplicationDictionary", std::move(items));
        root.Add("More", PropertyListArray{PropertyList(1.5), PropertyList(PropertyListData{"x"})});
        WriteWhole(fPath, PropertyListText(PropertyList(std::move(root))));
    }
    // The items' paths, "*" behind those that are shown when started.
    [[nodiscard]] Paths Items() const {
        PropertyList root(false);
        EXPECT_EQ(ReadPropertyList(fPath, &root), noErr);
        Paths paths;
        const auto &entries = *root.As<PropertyListDictionary>();
        for (const PropertyList &item :
             *entries.Find("AutoLaunchedApplicationDictionary")->As<PropertyListArray>()) {
            if (const auto *keys = item.As<PropertyListDictionary>()) {
                paths.push_back(*keys->Find("Path")->As<std::string>() +
                                (*keys->Find("Hide")->As<bool>() ? "" : "*"));
            }
        }
        return paths;
    }
    [[nodiscard]] std::string MakeApp(const std::string &name) const {
        const std::string folder = fFolder.Path(name);
        fs::create_directories(folder + "/Contents/Linux");
        WriteWhole(folder + "/Contents/Linux/DrevixHelper", "#!/bin/sh\n");
        return folder;
    }

    ScratchFolder fFolder;
    const std::string fPath = fFolder.Preferences() + "/loginwindow.plist";
    const std::string fEntry = fFolder.Preferences() + "/autostart/DrevixHelper.desktop";
};

Paths operator+(Paths a, const Paths &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST_F(LoginItems, Add_LeavesOneEntryOfTheHelper) {
    const std::string kept = "/Applications/Other.app";
    const std::string old = "/old/DrevixHelper.app";
    const std::string made = "/new/DrevixHelper.app*";
    const std::string otherCase = "/NEW/drevixhelper.APP";
    struct Row {
        const char *what;
        Paths before, after; // equal where nothing is to be written
        std::uint16_t was;
        std::int16_t replace = 1;
        const char *name = nullptr;
        const char *path = kHelper;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"another application only", {kept}, {kept, made}, 0},
             {"in other letter case", {kept, otherCase}, {kept, otherCase}, 1},
             {"older copy first", {old, kept, kHelper}, {made, kept}, 1},
             {"older copy last", {kHelper, kept, old}, {made, kept}, 1},
             {"older copies only", {kept, old, old}, {kept, made}, 0},
             {"older copy in other case", {"/old/drevixhelper.app"}, {"/old/drevixhelper.app", made}, 0},
             {"older copy is to stay", {old}, {old, made}, 0, 0},
             {"exact, and an older copy that is to stay", {old, kHelper}, {made}, 1, 0},
             {"by a further name", {"/x/Former.app", kept}, {made, kept}, 0, 1, "Former.app"},
             {"more than 16", Paths(18, old), Paths{made} + Paths(2, old), 0},
             {"exact behind 16", Paths(16, old) + Paths{kHelper}, {made, kHelper}, 0},
             {"slash at the end", {"/a/T/", "/a/T"}, {"/b/T/*", "/a/T"}, 0, 1, nullptr, "/b/T/"},
             {"without a slash", {"/a/T/", "/a/T"}, {"/a/T/", "T*"}, 0, 1, nullptr, "T"},
         }) {
        WriteItems(row.before);
        const std::string before = ReadWhole(fPath);
        std::uint16_t was = 7;
        EXPECT_EQ(AddLoginItem(row.path, row.name, 0, row.replace, &was), noErr) << row.what;
        EXPECT_EQ(was, row.was) << row.what;
        EXPECT_EQ(Items(), row.after) << row.what;
        const std::string after = ReadWhole(fPath);
        EXPECT_EQ(after == before, row.before == row.after) << row.what;
        EXPECT_TRUE(after.starts_with(before.substr(0, before.find("no item<")))) << row.what;
        EXPECT_TRUE(after.ends_with(before.substr(before.find("<key>More")))) << row.what;
    }
}

TEST_F(LoginItems, Remove_TakesTheFirstSixteen) {
    std::uint16_t removed = 7;
    EXPECT_EQ(RemoveLoginItem("Tool.app", &removed), resNotFound);
    EXPECT_EQ(ReadWhole(fPath), "") << "a missing file is made";
    WriteItems(Paths(17, "/a/Tool.app") + Paths{"/a/tool.app"});
    EXPECT_EQ(RemoveLoginItem("Tool.app", &removed), noErr);
    EXPECT_EQ(removed, 16);
    EXPECT_EQ(Items(), Paths({"/a/Tool.app", "/a/tool.app"}));
    const std::string before = ReadWhole(fPath);
    EXPECT_EQ(RemoveLoginItem("None.app", &removed), noErr);
    EXPECT_EQ(removed, 0);
    EXPECT_EQ(RemoveLoginItem("", &removed), paramErr);
    EXPECT_EQ(RemoveLoginItem("\xC3\xBC", &removed), memFullErr);
    EXPECT_EQ(ReadWhole(fPath), before);
}

TEST_F(LoginItems, FilesOfOthers_AreNeverWrittenOver) {
    PropertyListDictionary noArray;
    noArray.Add("AutoLaunchedApplicationDictionary", std::string("?"));
    for (const std::string &foreign :
         {std::string("damaged"), std::string(" "), std::string("bplist00"), PropertyListArrayText({}),
          PropertyListText(PropertyList(std::move(noArray)))}) {
        WriteWhole(fPath, foreign);
        std::uint16_t count = 7;
        EXPECT_EQ(AddLoginItem(kHelper, nullptr, 0, 1, &count), resNotFound) << foreign;
        EXPECT_EQ(count, 0);
        EXPECT_EQ(RemoveLoginItem("DrevixHelper.app", nullptr), resNotFound) << foreign;
        EXPECT_EQ(ReadWhole(fPath), foreign);
    }
    // Without a list, which an item may be added to, removing said that all was well.
    const std::string noList = PropertyListText(PropertyList(PropertyListDictionary()));
    WriteWhole(fPath, noList);
    EXPECT_EQ(RemoveLoginItem("DrevixHelper.app", nullptr), resNotFound);
    EXPECT_EQ(ReadWhole(fPath), noList);
    WriteItems({"/old/DrevixHelper.app"});
    const std::string before = ReadWhole(fPath);
    EXPECT_EQ(AddLoginItem("/n\xC3\xBC/DrevixHelper.app", nullptr, 0, 1, nullptr), memFullErr);
    EXPECT_EQ(AddLoginItem(kHelper, "\xC3\xBC", 0, 1, nullptr), memFullErr);
    EXPECT_EQ(AddLoginItem("", nullptr, 0, 1, nullptr), paramErr);
    EXPECT_EQ(AddLoginItem(nullptr, nullptr, 0, 1, nullptr), paramErr);
    EXPECT_EQ(ReadWhole(fPath), before);
    fs::remove(fPath);
    fs::create_symlink(fFolder.Path("elsewhere"), fPath); // once was no missing file, but a foreign one
    EXPECT_EQ(AddLoginItem(kHelper, nullptr, 1, 1, nullptr), noErr);
    EXPECT_EQ(Items(), Paths{kHelper}) << "hidden";
    EXPECT_TRUE(fs::is_symlink(fPath));
}

// What the lists held was said to be nothing when they could not be written.
TEST_F(LoginItems, FailedWrite_StillTellsWhatWasFound) {
    WriteItems({"/old/DrevixHelper.app", kHelper});
    const FullDisk disk;
    std::uint16_t count = 7;
    EXPECT_EQ(AddLoginItem(kHelper, nullptr, 0, 1, &count), dskFulErr);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(RemoveLoginItem("DrevixHelper.app", &count), dskFulErr);
    EXPECT_EQ(count, 2);
}

TEST_F(LoginItems, AnyFault_LeavesTheOldItems) {
    ForEachFault(5, {EIO}, [&](const FaultAt &fault) {
        WriteItems({"/old/DrevixHelper.app"});
        const std::string before = ReadWhole(fPath);
        std::int32_t status = noErr;
        const bool wasHit = fault.Meets([&] { status = AddLoginItem(kHelper, nullptr, 0, 1, nullptr); });
        const bool isNew = ReadWhole(fPath) != before; // only the folder's flush can still fail then
        EXPECT_TRUE(!isNew || Items() == Paths{"/new/DrevixHelper.app*"});
        EXPECT_TRUE(wasHit || (status == noErr && isNew));
        EXPECT_EQ(ScratchFolder::Names(fFolder.Preferences()), Paths{"loginwindow.plist"});
        return wasHit;
    });
}

TEST_F(LoginItems, ItemsWithAProgram_AreStartedByTheDesktop) {
    const std::string first = MakeApp("first/DrevixHelper.app");
    // A link, as some installers make them, was not taken for a program, and the helper never started at login.
    fs::rename(first + "/Contents/Linux/DrevixHelper", fFolder.Path("real"));
    fs::create_symlink(fFolder.Path("real"), first + "/Contents/Linux/DrevixHelper");
    const std::string second = MakeApp("second/DrevixHelper.app");
    const auto add = [](const std::string &path, std::int16_t replace) {
        EXPECT_EQ(AddLoginItem(path.c_str(), nullptr, 0, replace, nullptr), noErr) << path;
    };
    add(kHelper, 1);
    EXPECT_FALSE(fs::exists(fEntry)) << "there is no such program";
    add(first, 1);
    EXPECT_THAT(ReadWhole(fEntry), HasSubstr("Exec=\"" + first + "/Contents/Linux/DrevixHelper\"\n"));
    fs::remove(fEntry);
    add(first, 1); // makes it for an item that was registered, too
    WriteWhole(fEntry, ReadWhole(fEntry) + "Hidden=true\n");
    add(second, 0);
    EXPECT_THAT(ReadWhole(fEntry), HasSubstr(second));
    EXPECT_THAT(ReadWhole(fEntry), HasSubstr("Hidden=true\n")) << "switched off by the user";
    EXPECT_EQ(RemoveLoginItem("second/DrevixHelper.app", nullptr), noErr);
    EXPECT_THAT(ReadWhole(fEntry), HasSubstr(first)) << "the other copy is left";
    EXPECT_EQ(RemoveLoginItem("DrevixHelper.app", nullptr), noErr);
    EXPECT_FALSE(fs::exists(fEntry));
}

class LoginPath : public ::testing::Test {
  protected:
    static FSSpec SpecOf(const fs::path &path) {
        FSSpec spec = {kRootVolume, FolderIdFromPath(path.parent_path()), {}};
        getPascalString(path.filename().string(), spec.name.data(), 63);
        return spec;
    }
    // The path that is made, checked to end within the buffer.
    static std::string PathOf(const FSSpec &spec, std::int16_t size, bool escapes, int expected = noErr) {
        std::string buffer(static_cast<std::size_t>(size) + 8, '#');
        std::uint16_t length = 7;
        EXPECT_EQ(GetLoginPath(&spec, buffer.data(), size, escapes ? 1 : 0, &length), expected);
        EXPECT_LT(length, size);
        EXPECT_EQ(buffer.substr(static_cast<std::size_t>(size)), "########");
        const std::string path = buffer.substr(0, length);
        EXPECT_TRUE(path.empty() || path == buffer.c_str());
        return path;
    }
    ScratchFolder fScratch;
};

TEST_F(LoginPath, Folders_AreNamedUpToTheRoot) {
    const std::string folder = fScratch.Path("My Apps/1_a.B\u00FC");
    fs::create_directories(folder);
    const FSSpec tool = SpecOf(folder + "/My Tool.app");
    EXPECT_EQ(PathOf(tool, 500, false), folder + "/My Tool.app");
    EXPECT_THAT(PathOf(tool, 500, true), HasSubstr("/My\\ Apps/\\1\\_a.B\\\xC3\\\xBC/My Tool.app"));
    FSSpec volume = {kRootVolume, kRootParentFolder, {}};
    EXPECT_EQ(PathOf(volume, 128, false), "/");
    EXPECT_EQ(PathOf(SpecOf("/nowhere/at all/Tool.app"), 128, false, fnfErr), "/Tool.app");
    std::uint16_t length = 7;
    char small[128];
    EXPECT_EQ(GetLoginPath(&volume, small, 127, 0, &length), paramErr);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(GetLoginPath(nullptr, small, 128, 0, nullptr), paramErr);
    EXPECT_EQ(GetLoginPath(&volume, nullptr, 128, 0, nullptr), paramErr);
}

TEST_F(LoginPath, NamesThatDoNotFit_AreLeftOut) {
    const std::string name(60, 'l');
    for (const std::size_t length : {55U, 56U}) { // the first makes a path of 126 characters
        const std::string parent(length, 'm');
        const std::string folder = fScratch.Path("short/" + parent + "/" + name);
        fs::create_directories(folder);
        const std::string path = PathOf(SpecOf(folder + "/Tool.app"), 128, false);
        EXPECT_TRUE(length == 55 ? path == "/" + parent + "/" + name + "/Tool.app"
                                 : path.ends_with("/short/" + name + "/Tool.app"))
            << path;
    }
    FSSpec wide = SpecOf(fScratch.Path("x"));
    wide.name.fill(0xDB); // the euro sign, of three bytes in UTF-8
    wide.name[0] = 43;
    wide.name[1] = 'x'; // with the slash 128 bytes, which leave no room for the end
    EXPECT_EQ(PathOf(wide, 128, false, paramErr), "");
}

TEST_F(LoginPath, OtherVolumes_LieBelowVolumes) {
    FSRef reference;
    FSSpec root = {};
    ASSERT_EQ(FSPathMakeRef("/proc", &reference), noErr);
    ASSERT_EQ(FSSpecFromRef(reference, &root), noErr);
    ASSERT_EQ(root.parID, kRootParentFolder);
    const std::string volume = "/Volumes/" + stringWithPascalString(root.name.data());
    EXPECT_EQ(PathOf(root, 128, false), volume);
    EXPECT_EQ(PathOf(SpecOf("/proc/tty/drivers"), 128, false), volume + "/tty/drivers");
}

} // namespace
} // namespace drevix::test
