#include "platform/files/files.h"
#include "tests/platform/plist/property_list_support.h"

#include <limits>

namespace drevix::test {
namespace {

// More than the writer keeps before it writes.
PropertyListArray LongList() {
    PropertyListArray list = EveryValue();
    list.emplace_back(std::string(200'000, 'x'));
    list.emplace_back(std::string(100'000, 'y'));
    return list;
}

TEST(WriteList, Layout_IsThePublishedOne) {
    PropertyListDictionary dictionary;
    dictionary.Add("a&b", PropertyListArray{PropertyList(true)});
    dictionary.Add("d", PropertyListData{std::string(60, '\0')});
    EXPECT_EQ(PropertyListArrayText({PropertyList(dictionary)}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<array>\n\t<dict>\n"
              "\t\t<key>a&amp;b</key>\n\t\t<array>\n\t\t\t<true/>\n\t\t</array>\n"
              "\t\t<key>d</key>\n\t\t<data>\n\t\t" +
                  std::string(76, 'A') + "\n\t\tAAAA\n\t\t</data>\n\t</dict>\n</array>\n</plist>\n");
}

TEST(WriteList, WhatXmlCannotHold_IsReplaced) {
    const std::pair<std::string, std::string> rows[] = {
        {std::string("a\0b", 3), "a\uFFFDb"},
        {"\uFFFE-\uFFFF\uFFFD", "\uFFFD-\uFFFD\uFFFD"},
        {"caf\xE9", "caf\uFFFD"},
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\U0010FFFF\uD7FF\uE000", "\U0010FFFF\uD7FF\uE000"},
    };
    for (const auto &[text, expected] : rows) {
        const ReadOutcome back = ParseList(PropertyListArrayText({PropertyList(text)}));
        ASSERT_EQ(back.status, noErr) << back.problem.text;
        EXPECT_EQ(*back.elements.at(0).As<std::string>(), expected);
    }
    const PropertyListDate never{std::numeric_limits<double>::quiet_NaN()};
    EXPECT_EQ(ParseList(PropertyListArrayText({PropertyList(never)})).status, noErr);
}

TEST(WriteList, OtherReaders_ReadTheSameValues) {
    ScratchFolder scratch;
    const std::string path = scratch.Path("list");
    ASSERT_EQ(WriteList(path, EveryValue()), noErr);
    EXPECT_TRUE(RunsInPython(scratch,
                             std::string(kEveryValueInPython) +
                                 "import plistlib, sys\n"
                                 "with open(sys.argv[1], 'rb') as file:\n"
                                 "    read = plistlib.load(file)\n"
                                 "for a, b in zip(values, read):\n"
                                 "    assert a == b and type(a) == type(b), (a, b)\n"
                                 "assert values == read\n",
                             path));
}

TEST(WriteList, Unfinished_IsUndone) {
    ScratchFolder scratch;
    const std::string path = scratch.Path("config/list");
    {
        PropertyListArrayWriter writer;
        EXPECT_EQ(writer.Add(PropertyList(true)), rfNumErr);
        EXPECT_EQ(writer.Finish(), rfNumErr);
        EXPECT_EQ(writer.Open(scratch.Path("none/list")), fnfErr);
        ASSERT_EQ(writer.Open(path), noErr);
        for (const PropertyList &element : LongList()) {
            EXPECT_EQ(writer.Add(element), noErr);
        }
    }
    EXPECT_TRUE(ScratchFolder::Names(scratch.Preferences()).empty());
    EXPECT_EQ(WriteList(path, {}), noErr);
    EXPECT_EQ(ReadList(path).status, noErr);
    EXPECT_EQ(WriteList("/dev/full", LongList()), dskFulErr);
}

TEST(ReadList, AnyFault_HasItsStatusAndLeavesNoFileOpen) {
    ScratchFolder scratch;
    const std::string path = scratch.Path("list");
    ASSERT_EQ(WriteList(path, LongList()), noErr);
    ForEachFault(5, {EIO}, [&](const FaultAt &fault) {
        ReadOutcome outcome;
        const bool wasHit = fault.Meets([&] { outcome = ReadList(path); });
        EXPECT_EQ(OpenFileCount(), 0);
        EXPECT_EQ(outcome.status, wasHit ? ioErr : noErr);
        EXPECT_EQ(outcome.problem.text, wasHit ? StatusText(ioErr) : "");
        return wasHit;
    });
    EXPECT_EQ(ReadList(scratch.Path("none")).status, fnfErr);
    EXPECT_EQ(ReadList(scratch.Path()).status, notAFileErr);
}

} // namespace
} // namespace drevix::test
