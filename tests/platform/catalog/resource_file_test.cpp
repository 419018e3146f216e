// AppleDouble files and resource forks: what is written can be read, and damage is refused.

#include "platform/catalog/resource_file.h"

#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

std::span<const std::byte> Bytes(const std::string &text) {
    return std::as_bytes(std::span(text));
}

FSSpec SpecOf(const ScratchFolder &scratch, const std::string &name) {
    return {kRootVolume, FolderIdFromPath(scratch.Path()), Str63FromMacRoman(name)};
}

// The example of docs/items-folder.md: a fork with one resource of two bytes.
std::string ExampleFork() {
    return FromHex("00 00 01 00 00 00 01 06 00 00 00 06 00 00 00 38") + std::string(240, '\0') +
           FromHex("00 00 00 02 AB CD"
                   "00 00 01 00 00 00 01 06 00 00 00 06 00 00 00 38"
                   "00 00 00 00 00 00 00 00 00 1C 00 32"
                   "00 00 54 45 53 54 00 00 00 0A"
                   "00 80 00 00 00 00 00 00 00 00 00 00"
                   "05 61 20 6F 6E 65");
}

std::string ExampleCompanion() {
    return FromHex("00 05 16 07 00 02 00 00") + std::string(16, '\0') +
           FromHex("00 02  00 00 00 09 00 00 00 32 00 00 00 20  00 00 00 02 00 00 00 52 00 00 01 3E") +
           "adrp8BIM" + FromHex("84 00") + std::string(22, '\0') + ExampleFork();
}

TEST(ResourceFile, Writer_MakesThePublishedBytes) {
    const ScratchFolder scratch;
    const FSSpec spec = SpecOf(scratch, "file");
    ASSERT_EQ(FSpCreateResFile(spec, FourCharCode("8BIM"), FourCharCode("adrp"), -1), noErr);
    ResourceFile file;
    ASSERT_EQ(file.Open(spec, fsRdWrPerm), noErr);
    const std::string data = FromHex("AB CD");
    EXPECT_EQ(file.AddResource(Bytes(data), FourCharCode("TEST"), 128, PascalLiteral("a one").data()), noErr);
    EXPECT_EQ(file.AddResource(Bytes(data), FourCharCode("TEST"), 128, PascalLiteral("").data()),
              addResFailed);
    EXPECT_EQ(file.Close(), noErr);
    FInfo info{};
    EXPECT_EQ(FSpGetFInfo(spec, &info), noErr);
    info.fdFlags |= 0x8400;
    EXPECT_EQ(FSpSetFInfo(spec, info), noErr);
    EXPECT_EQ(ReadWhole(scratch.Path("._file")), ExampleCompanion());
    EXPECT_EQ(ScratchFolder::Names(scratch.Path()), (Names{"._file", "config"}));

    ResourceFile again;
    ASSERT_EQ(again.Open(spec, fsRdPerm), noErr);
    const Resource *found = again.Get1Resource(FourCharCode("TEST"), 128);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->data, data);
    EXPECT_EQ(found->name, "a one");
    EXPECT_EQ(again.Get1Resource(FourCharCode("TEST"), 129), nullptr);
    EXPECT_EQ(again.AddResource(Bytes(data), FourCharCode("TEST"), 1, PascalLiteral("").data()), wrPermErr);
}

TEST(ResourceFile, ManyResources_ComeBackByTypeAndId) {
    std::vector<Resource> made;
    for (std::int16_t i = 0; i < 300; ++i) {
        made.push_back(
            {FourCharCode("AAAA") + static_cast<OSType>(i / 43), static_cast<std::int16_t>(i - 150),
             std::string(static_cast<std::size_t>(i % 256), 'n'), std::string(std::size_t{11} * i, 'd')});
    }
    std::string fork;
    ASSERT_EQ(ResourceForkBytes(made, &fork), noErr);
    std::vector<Resource> read;
    ASSERT_EQ(ParseResourceFork(Bytes(fork), &read), noErr);
    ASSERT_EQ(read.size(), made.size());
    for (std::size_t i = 0; i < made.size(); ++i) {
        EXPECT_TRUE(read[i].type == made[i].type && read[i].id == made[i].id &&
                    read[i].name == made[i].name && read[i].data == made[i].data)
            << i;
    }
    const std::string before = fork;
    EXPECT_EQ(ResourceForkBytes(std::vector<Resource>{{1, 1, "", std::string(1 << 24, 'x')}}, &fork),
              addResFailed);
    EXPECT_EQ(ResourceForkBytes(std::vector<Resource>(6000, Resource{1, 1, "", ""}), &fork), addResFailed);
    EXPECT_EQ(fork, before);
    ASSERT_EQ(ResourceForkBytes({}, &fork), noErr);
    EXPECT_EQ(ParseResourceFork(Bytes(fork), &read), noErr);
    EXPECT_EQ(read.size(), 0U);
}

struct Damage {
    const char *what;
    std::size_t offset;
    const char *hex; // written there
};

TEST(ResourceFile, DamagedForks_AreRefused) {
    constexpr std::size_t kMap = 0x106;
    for (const Damage &damage : std::initializer_list<Damage>{
             {"map beyond the end", 4, "FF FF FF FF"},
             {"length of the data", 8, "FF FF FF FF"},
             {"length of the map", 12, "00 00 00 39"},
             {"types beyond the map", kMap + 24, "FF FF"},
             {"too many types", kMap + 28, "00 06"},
             {"too many resources", kMap + 34, "00 02"},
             {"references beyond the map", kMap + 36, "FF FF"},
             {"name beyond the map", kMap + 40, "00 06"},
             {"place of the data", kMap + 43, "00 00 03"},
             {"length of a resource", 0x100, "00 00 00 03"},
         }) {
        std::string fork = ExampleFork();
        const std::string bytes = FromHex(damage.hex);
        fork.replace(damage.offset, bytes.size(), bytes);
        std::vector<Resource> resources = {{1, 2, "kept", ""}};
        EXPECT_EQ(ParseResourceFork(Bytes(fork), &resources), mapReadErr) << damage.what;
        EXPECT_EQ(resources.size(), 1U);
    }
    // Two resources of the same bytes: a fork of 16 MB could ask for a terabyte so.
    std::string shared = ExampleFork();
    shared.replace(kMap + 34, 2, FromHex("00 01"));
    shared.insert(kMap + 50, shared.substr(kMap + 38, 12));
    shared.replace(15, 1, 1, '\x44');
    shared.replace(kMap + 27, 1, 1, '\x3E');
    std::vector<Resource> resources;
    EXPECT_EQ(ParseResourceFork(Bytes(shared), &resources), mapReadErr);
    for (std::size_t length = 1; length < ExampleFork().size(); ++length) {
        EXPECT_EQ(ParseResourceFork(Bytes(ExampleFork().substr(0, length)), &resources), mapReadErr)
            << length;
    }
}

TEST(AppleDouble, DamagedFiles_AreRefused) {
    AppleDouble file;
    ASSERT_EQ(ParseAppleDouble(Bytes(ExampleCompanion()), &file), noErr);
    EXPECT_EQ(file.resourceFork, ExampleFork());
    EXPECT_EQ(GetFInfo(file).fdType, FourCharCode("adrp"));
    EXPECT_EQ(GetFInfo(file).fdFlags, 0x8400);
    for (const Damage &damage : std::initializer_list<Damage>{
             {"magic number", 3, "00"},
             {"version", 5, "01"},
             {"number of entries", 24, "FF FF"},
             {"offset beyond the end", 30, "FF FF FF FF"},
             {"Finder information too short", 34, "00 00 00 1F"},
             {"two entries of a kind", 38, "00 00 00 09"},
         }) {
        std::string bytes = ExampleCompanion();
        bytes.replace(damage.offset, FromHex(damage.hex).size(), FromHex(damage.hex));
        EXPECT_EQ(ParseAppleDouble(Bytes(bytes), &file), mapReadErr) << damage.what;
        EXPECT_EQ(file.resourceFork, ExampleFork());
    }
    for (std::size_t length = 0; length < ExampleCompanion().size(); ++length) {
        EXPECT_EQ(ParseAppleDouble(Bytes(ExampleCompanion().substr(0, length)), &file), mapReadErr) << length;
    }
    std::string other = ExampleCompanion(); // entries of other kinds are usual
    other[29] = 3;
    EXPECT_EQ(ParseAppleDouble(Bytes(other), &file), noErr);
    EXPECT_EQ(GetFInfo(file).fdType, 0U);
}

} // namespace
} // namespace drevix::test
