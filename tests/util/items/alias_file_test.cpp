// Alias files: what they say of each kind of item, and that a failure leaves none behind.

#include "platform/catalog/named_files.h"
#include "tests/util/items/items.h"
#include "util/crc32/crc32.h"
#include "util/items/alias_record.h"
#include "util/items/disk_info.h"

namespace drevix::test {
namespace {

class AliasFile : public ItemsTest {
  protected:
    void GiveIcon(const std::string &path, const FInfo &info, std::initializer_list<OSType> types) {
        AppleDouble appleDouble;
        std::vector<Resource> icons;
        for (const OSType type : types) {
            icons.push_back({type, kCustomIconID, "", SignatureText(type) + " of " + path});
        }
        icons.push_back({FourCharCode("ICN#"), 128, "", "not this"});
        EXPECT_EQ(ResourceForkBytes(icons, &appleDouble.resourceFork), noErr);
        SetFInfo(appleDouble, info);
        EXPECT_EQ(WriteAppleDouble(path, appleDouble), noErr);
    }
};

TEST_F(AliasFile, KindsOfItem_GiveTypeAndCreator) {
    const ScopedVariable data("XDG_DATA_HOME", fScratch.Path("data"));
    for (const char *folder : {"folder", "data/Trash/files", "far/applications", "far/startup"}) {
        fs::create_directories(fScratch.Path(folder));
    }
    // Special folders that are links were taken for plain ones.
    fs::create_directory_symlink(fScratch.Path("far/applications"), fScratch.Path("data/applications"));
    fs::create_directory_symlink(fScratch.Path("far/startup"), fScratch.Path("config/autostart"));
    fs::create_directory_symlink(fScratch.Path("folder"), fScratch.Path("link"));
    ::chmod(File("script", "#!/bin/sh\n").c_str(), 0755);
    ::chmod(File("picture").c_str(), 0755); // as every file on a disk without modes
    File("org.example.desktop");
    SetInfo(File("typed"), {FourCharCode("TEXT"), FourCharCode("ttxt"), 0x0008});
    ASSERT_EQ(::mkfifo(fScratch.Path("pipe").c_str(), 0600), 0);
    static constexpr std::pair<const char *, const char *> kItems[] = {
        // clang-format off
        {"script", "adrp????"},            {"org.example.desktop", "adrp????"}, {"picture", "????????"},
        {"typed", "TEXTttxt"},             {"pipe", "????????"},                {"link", "slnkrhap"},
        {"folder", "fdrpMACS"},            {"data/Trash/files", "trshMACS"},    {"config", "fapfMACS"},
        {"data/applications", "slnkrhap"}, {"far/applications", "faamMACS"},    {"far/startup", "fastMACS"},
        // clang-format on
    };
    for (const auto &[item, codes] : kItems) {
        const Made made = MakeAlias(fScratch.Path(item));
        EXPECT_EQ(made.status, noErr) << item;
        EXPECT_EQ(SignatureText(made.info.fdType) + SignatureText(made.info.fdCreator), codes) << item;
        EXPECT_EQ(made.info.fdFlags, kIsAlias) << item;
        EXPECT_EQ(made.resources.size(), 1U) << item;
        EXPECT_EQ(fs::read_symlink(Item("alias")), fScratch.Path(item));
        EXPECT_EQ(FSpDelete(Spec(Item("alias"))), noErr);
        EXPECT_EQ(ItemNames().size(), 0U);
    }
}

TEST_F(AliasFile, Volumes_AreDisksOrServersWithTheBuiltInIcon) {
    fs::create_directory(fScratch.Path("disk"));
    for (const auto &[fileSystem, type, wanted] :
         std::initializer_list<std::tuple<const char *, const char *, std::int16_t>>{
             {"ext4", "hdskMACS", kLocalDisk},
             {"vfat", "hdskMACS", kForeignDisk},
             {"nfs4", "srvrMACS", kServerDisk},
             {"fuse.sshfs", "srvrMACS", kServerDisk},
         }) {
        const PretendDisk disk(fScratch, fScratch.Path("disk"), fileSystem);
        std::int16_t kind = -1;
        EXPECT_EQ(GetDiskType(Spec("/media/Data").vRefNum, &kind), noErr);
        EXPECT_EQ(kind, wanted) << fileSystem;
        const Made made = MakeAlias("/media/Data");
        EXPECT_EQ(SignatureText(made.info.fdType) + SignatureText(made.info.fdCreator), type) << fileSystem;
        EXPECT_EQ(made.info.fdFlags, 0x8400);
        ASSERT_EQ(made.resources.size(), 2U);
        std::uint32_t crc = 0; // that of the published picture
        StandardCRC32(made.resources[1].data.data(), kDiskIconSize, &crc, nullptr);
        EXPECT_EQ(made.resources[1].data.size(), kDiskIconSize);
        EXPECT_EQ(crc, 0x2CEFB3C2);
        EXPECT_EQ(FSpDelete(Spec(Item("alias"))), noErr);
    }
    std::int16_t kind = -1;
    EXPECT_EQ(GetDiskType(-30000, nullptr), nsvErr);
    EXPECT_EQ(GetDiskType(-30000, &kind), nsvErr);
    EXPECT_EQ(kind, 0);
    Block icon;
    MeetsFault(1, Lasts::Once, ENOMEM, [&] { EXPECT_EQ(GetDiskIcon(0, &icon), memFullErr); });
}

TEST_F(AliasFile, CustomIcons_AreTakenWhereTheBitSaysSo) {
    const OSType kLarge = FourCharCode("icl8");
    const OSType kSmall = FourCharCode("ics#");
    GiveIcon(File("pictured"), {kUnknownType, kUnknownType, kHasCustomIcon}, {kSmall, kLarge});
    GiveIcon(File("without bit"), {kUnknownType, kUnknownType, 0}, {kLarge});
    fs::create_directories(fScratch.Path("folder"));
    fs::create_directories(fScratch.Path("disk"));
    SetInfo(fScratch.Path("folder"), {0, 0, kHasCustomIcon});
    GiveIcon(fScratch.Path("folder/Icon\r"), {0, 0, 0}, {kLarge});
    GiveIcon(fScratch.Path("disk/Icon\r"), {0, 0, 0}, {kSmall});
    WriteWhole(fScratch.Path("damaged"), "");
    AppleDouble damaged{{}, "no resource fork at all"};
    SetFInfo(damaged, {kUnknownType, kUnknownType, kHasCustomIcon});
    ASSERT_EQ(WriteAppleDouble(fScratch.Path("damaged"), damaged), noErr);

    for (const auto &[item, types] : std::initializer_list<std::pair<const char *, std::vector<OSType>>>{
             {"pictured", {kLarge, kSmall}}, // in the order of the table
             {"without bit", {}},
             {"damaged", {}},
             {"folder", {kLarge}},
         }) {
        const Made made = MakeAlias(fScratch.Path(item), item);
        EXPECT_EQ(made.status, noErr);
        EXPECT_EQ(made.info.fdFlags, types.empty() ? 0x8000 : 0x8400) << item;
        ASSERT_EQ(made.resources.size(), 1 + types.size()) << item;
        for (std::size_t i = 0; i < types.size(); ++i) {
            EXPECT_EQ(made.resources[i + 1].type, types[i]) << item;
            EXPECT_TRUE(made.resources[i + 1].data.starts_with(SignatureText(types[i]) + " of ")) << item;
        }
    }
    // A volume's own icon stands in the place of the built-in one.
    const PretendDisk disk(fScratch, fScratch.Path("disk"), "ext4");
    AppleDouble root;
    SetFInfo(root, {0, 0, kHasCustomIcon});
    ASSERT_EQ(WriteAppleDouble(fScratch.Path("disk/."), root), noErr);
    IconHandles icons;
    OSType type = 0;
    EXPECT_EQ(GetSourceInfo(Spec("/media/Data"), &type, nullptr, icons), noErr);
    EXPECT_EQ(icons[0].Size(), 0U);
    EXPECT_EQ(icons[3].Size(), ("ics# of " + fScratch.Path("disk/Icon\r")).size());
}

// Whatever step of making an alias fails, there is no trace of it, and what stood in the folder stays.
TEST_F(AliasFile, EveryFault_LeavesNothingBehind) {
    GiveIcon(File("item"), {kUnknownType, kUnknownType, kHasCustomIcon}, {FourCharCode("icl8")});
    File("config/com.halcyra.drevix.stuff/other");
    ForEachFault(30, {ENOSPC}, [&](const FaultAt &fault) {
        const FSSpec item = Spec(fScratch.Path("item"));
        const FSSpec alias = Spec(Item("alias"));
        OSErr status = noErr;
        const bool wasHit = fault.Meets([&] { status = CreateAliasFile(item, alias); });
        EXPECT_TRUE(wasHit || status == noErr);
        AppleDouble appleDouble;
        if (status == noErr) { // a missing icon, an AppleDouble file's flush on a file system without it
            EXPECT_EQ(ReadAppleDouble(Item("alias"), &appleDouble), noErr);
            EXPECT_EQ(GetFInfo(appleDouble).fdFlags & kIsAlias, kIsAlias);
            EXPECT_EQ(FSpDelete(alias), noErr);
        }
        if (fault.lasts == Lasts::ForEver) {
            // Where the disk stays broken the AppleDouble file may stay, but never a link without it.
            EXPECT_FALSE(fs::is_symlink(Item("alias")));
            fs::remove(Item("._alias"));
        }
        EXPECT_EQ(ItemNames(), Names{"other"});
        return wasHit;
    });
}

TEST_F(AliasFile, TakenNamesAndMissingItems_AreRefusedWithoutATrace) {
    const std::string item = File("item");
    fs::create_directories(ItemsFolder());
    WriteWhole(Item("taken"), "mine");
    WriteWhole(Item("._foreign"), "not AppleDouble");
    EXPECT_EQ(CreateAliasFile(Spec(item), Spec(Item("taken"))), dupFNErr);
    EXPECT_EQ(CreateAliasFile(Spec(item), Spec(Item("foreign"))), dupFNErr);
    EXPECT_EQ(CreateAliasFile(Spec(fScratch.Path("gone")), Spec(Item("new"))), fnfErr);
    gAFAliasAndFSSAvailable = 0;
    EXPECT_EQ(CreateAliasFile(Spec(item), Spec(Item("new"))), -5551);
    gAFAliasAndFSSAvailable = -1;
    EXPECT_EQ(AliasesAvailable(), 1);
    EXPECT_EQ(ItemNames(), (std::vector<std::string>{"._foreign", "taken"}));
    EXPECT_EQ(ReadWhole(Item("taken")), "mine");
}

// The example of docs/items-folder.md.
TEST_F(AliasFile, AliasRecord_HasThePublishedLayout) {
    fs::create_directories(fScratch.Path("disk/Notes"));
    WriteWhole(fScratch.Path("disk/Notes/Letter.txt"), "x");
    SetInfo(fScratch.Path("disk/Notes/Letter.txt"), {FourCharCode("TEXT"), FourCharCode("ttxt"), 0});
    const PretendDisk disk(fScratch, fScratch.Path("disk"), "ext4");
    struct stat seen {}; // the order in which they are seen numbers them
    ASSERT_EQ(CurrentDisk().StatusAt("/media/Data", &seen), 0);
    ASSERT_EQ(CurrentDisk().StatusAt("/media/Data/Notes", &seen), 0);
    Block alias;
    ASSERT_EQ(NewAlias(Spec("/media/Data/Notes/Letter.txt"), &alias), noErr);
    const auto zeros = [](std::size_t count) { return std::string(count, '\0'); };
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(alias.Data()), alias.Size()),
              FromHex("00 00 00 00 00 CA 00 02 00 00") + "\4Data" + zeros(23) +
                  FromHex("00 00 00 00 48 2B 00 00 00 00 00 10") + "\12Letter.txt" + zeros(53) +
                  FromHex("00 00 00 11 00 00 00 00") + "TEXTttxt" + FromHex("FF FF FF FF 00 00 00 00 00 00") +
                  zeros(10) + FromHex("00 00 00 05") + "Notes" + zeros(1) + FromHex("00 12 00 11") +
                  "/Notes/Letter.txt" + zeros(1) + FromHex("00 13 00 0B") + "/media/Data" + zeros(1) +
                  FromHex("FF FF 00 00"));
    ASSERT_EQ(NewAlias(Spec("/media/Data/Notes"), &alias), noErr);
    EXPECT_EQ(alias.Data()[9], std::byte{1}) << "of a folder";
}

// A reader that was made from the page of the formats alone.
TEST_F(AliasFile, IndependentReader_ReadsWhatWasMade) {
    const std::string path = File("Fl\u00FCge.txt");
    GiveIcon(path, {FourCharCode("TEXT"), FourCharCode("ttxt"), kHasCustomIcon},
             {FourCharCode("ICN#"), FourCharCode("icl4")});
    ASSERT_EQ(MakeAlias(path, "Fl\u00FCge.txt").status, noErr);
    const auto reader = fs::path(DREVIX_TEST_DATA).parent_path() / "util" / "items" / "read_alias.py";
    const std::string output = fScratch.Path("output");
    EXPECT_EQ(std::system(("/usr/bin/python3 " + reader.string() + " '" + Item("Fl\u00FCge.txt") + "' >'" +
                           output + "'")
                              .c_str()),
              0);
    const std::string folder = fs::path(path).parent_path().filename();
    const std::string iconSize = std::to_string(8 + path.size());
    EXPECT_EQ(ReadWhole(output), "leads to " + path + "\ntype TEXT creator ttxt flags 0x8400\n" +
                                     "alis 0 'Fl\u00FCge.txt': file Fl\u00FCge.txt TEXT ttxt in " + folder +
                                     ", path " + path + "\nICN# -16496 '': " + iconSize +
                                     " bytes\nicl4 -16496 '': " + iconSize + " bytes\n");
}

} // namespace
} // namespace drevix::test
