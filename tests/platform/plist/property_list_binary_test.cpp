#include "tests/platform/plist/property_list_support.h"

#include <bit>
#include <cmath>

namespace drevix::test {
namespace {

using testing::HasSubstr;
using namespace std::string_literals;

constexpr std::size_t kTrailerSize = 32;

std::string BigEndian(std::uint64_t value, std::size_t size) {
    std::string bytes;
    for (std::size_t i = size; i-- > 0;) {
        bytes.push_back(static_cast<char>(value >> (8 * i)));
    }
    return bytes;
}

// A binary list of the given objects, the first of which is the root; references have one byte, offsets two.
std::string BinaryList(const std::vector<std::string> &objects) {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string &object : objects) {
        table += BigEndian(bytes.size(), 2);
        bytes += object;
    }
    const std::size_t tableAt = bytes.size();
    return bytes + table + "\0\0\0\0\0\0\2\1"s + BigEndian(objects.size(), 8) + BigEndian(0, 8) +
           BigEndian(tableAt, 8);
}

// As BinaryList, for one object in the root array.
std::string ListOf(const std::string &object) {
    return BinaryList({"\xA1\x01", object});
}

// `levels` arrays, each of `width` references to the next, and a truth value at the end.
std::string Sharing(int levels, int width) {
    std::vector<std::string> objects;
    for (int level = 1; level <= levels; ++level) {
        objects.push_back(std::string(1, static_cast<char>(0xA0 + width)) +
                          std::string(static_cast<std::size_t>(width), static_cast<char>(level)));
    }
    objects.emplace_back("\x09");
    return BinaryList(objects);
}

// An array that names one piece of data `count` times, up to 255.
std::string SharedData(std::size_t length, unsigned count) {
    std::string list = "bplist00\xAF\x10"s + static_cast<char>(count) + std::string(count, '\1');
    const std::size_t textAt = list.size();
    list += "\x4F\x12" + BigEndian(length, 4) + std::string(length, 'x');
    const std::size_t tableAt = list.size();
    return list + BigEndian(8, 4) + BigEndian(textAt, 4) + "\0\0\0\0\0\0\4\1"s + BigEndian(2, 8) +
           BigEndian(0, 8) + BigEndian(tableAt, 8);
}

// Reads a list whose elements are too large to keep.
PropertyListProblem CountElements(const std::string &list) {
    PropertyListProblem problem;
    std::ignore = ParsePropertyListArray( // the problem tells
        std::as_bytes(std::span(list)), [](PropertyList &) { return true; }, &problem);
    return problem;
}

// Objects as bytes, and what the writer makes of them; null for those that are refused.
const std::pair<std::string, const char *> kObjects[] = {
    {"\x08", "<false/>"},
    {"\x09", "<true/>"},
    {"\x00"s, nullptr},
    {"\x10\xFF", "<integer>255</integer>"},
    {"\x12\xFF\xFF\xFF\xFF", "<integer>4294967295</integer>"},
    {"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE", "<integer>-2</integer>"},
    {"\x14" + std::string(8, '\0') + std::string(8, '\xFF'), "<integer>18446744073709551615</integer>"},
    {"\x14" + std::string(16, '\xFF'), "<integer>-1</integer>"},
    {"\x14" + std::string(7, '\0') + "\1" + std::string(8, '\0'), nullptr},
    {"\x14" + std::string(8, '\xFF') + std::string(8, '\0'), nullptr},
    {"\x22\x3F\xC0\x00\x00"s, "<real>1.5</real>"},
    {"\x23\xBF\xF8\x00\x00\x00\x00\x00\x00"s, "<real>-1.5</real>"},
    {"\x21\x00\x00"s, nullptr},
    {"\x33\x41\xB4\x00\x00\x00\x00\x00\x00"s, "<date>2011-08-20T14:45:20Z</date>"},
    {"\x33" + BigEndian(std::bit_cast<std::uint64_t>(-1e300), 8), "<date>0001-01-01T00:00:00Z</date>"},
    {"\x33" + BigEndian(std::bit_cast<std::uint64_t>(1e300), 8), "<date>9999-12-31T23:59:59Z</date>"},
    {"\x33\x7F\xF8\x00\x00\x00\x00\x00\x00"s, nullptr},
    {"\x4F\x11\x00\x01\xFF"s, "<data>\n\t/w==\n\t</data>"},
    {"Sa&b", "<string>a&amp;b</string>"}, // 0x53, a text of three characters
    {"\x52\0x"s, "<string>\uFFFDx</string>"},
    {"\x51\xE4", nullptr},
    {"\x63\x00\xE4\xD8\x3D\xDE\x00"s, "<string>\u00E4\U0001F600</string>"},
    {"\x61\xD8\x3D", nullptr},
    {"\x62\xD8\x3D\x00\x41"s, nullptr},
    {"\x61\xDE\x00"s, nullptr},
    {"\x80\x01", nullptr},
    {"\xC1\x01", nullptr},
    {"\xD0", "<dict/>"},
    {"\xD1\x01\x01", nullptr}, // a key that is a dictionary
    {"\xA1\x02", nullptr},     // no such object
    {"\xA1\x01", nullptr},     // a cycle
    {"Tabc", nullptr},         // into the offset table
    {"\x5F\x12\xFF\xFF\xFF\xFF", nullptr},
    {"\xAF\x12\xFF\xFF\xFF\xFF", nullptr},
    {"\xDF\x13\x80\x00\x00\x00\x00\x00\x00\x00"s, nullptr},
    {"_Qa", nullptr},
    {"\x5F", nullptr},
};

TEST(BinaryList, Objects_AreReadStrictly) {
    for (const auto &[object, written] : kObjects) {
        SCOPED_TRACE(testing::PrintToString(object));
        ExpectElement(ParseList(ListOf(object)), written);
    }
}

TEST(BinaryList, Bounds_HoldForSharedObjectsAndFilesToo) {
    EXPECT_EQ(ParseList(Sharing(kPropertyListMaxDepth, 1)).status, noErr);
    const ReadOutcome deep = ParseList(Sharing(kPropertyListMaxDepth + 1, 1));
    EXPECT_EQ(deep.status, -1);
    EXPECT_THAT(deep.problem.text, HasSubstr("more than 64 deep"));

    EXPECT_EQ(ParseList(Sharing(3, 10)).elements.size(), 10U);
    EXPECT_THAT(CountElements(Sharing(30, 10)).text, HasSubstr("more than 65,536 values"));
    // Each element below the bound, but ten of them of 11,111 values in a list of few bytes.
    EXPECT_THAT(CountElements(Sharing(5, 10)).text, HasSubstr("more than its bytes"));

    EXPECT_EQ(CountElements(SharedData(kPropertyListMaxText, 64)).text, "");
    EXPECT_THAT(CountElements(SharedData(kPropertyListMaxText, 65)).text, HasSubstr("shared texts"));
    EXPECT_THAT(CountElements(SharedData(kPropertyListMaxText + 1, 1)).text, HasSubstr("16 MB"));

    ScratchFolder scratch;
    WriteWhole(scratch.Path("large"), "bplist00");
    fs::resize_file(scratch.Path("large"), kPropertyListMaxBinaryBytes + 1);
    EXPECT_THAT(ReadList(scratch.Path("large")).problem.text, HasSubstr("more than 256 MB"));
}

TEST(BinaryList, Trailers_MustFitTheBytes) {
    const std::string good = ListOf("\x09");
    ASSERT_EQ(ParseList(good).status, noErr);
    const std::pair<std::size_t, std::string> rows[] = {
        // A place in the trailer, and what stands there.
        {6, "\0"s},                      // offsets of no bytes
        {7, "\0"s},                      // references of no bytes
        {8, BigEndian(0, 8)},            // no object
        {8, BigEndian(1, 8)},            // fewer than the table has
        {8, BigEndian(~0ULL, 8)},        // times the size of an offset, that is 2^65 - 2
        {8, BigEndian(1ULL << 63, 8)},   // or 2^64
        {16, BigEndian(2, 8)},           // a root that is no object
        {24, BigEndian(0, 8)},           // a table before the objects
        {24, BigEndian(good.size(), 8)}, // or behind the end
    };
    for (const auto &[at, bytes] : rows) {
        std::string bad = good;
        bad.replace(good.size() - kTrailerSize + at, bytes.size(), bytes);
        EXPECT_EQ(ParseList(bad).status, -1) << at << testing::PrintToString(bytes);
    }
    const std::size_t table = good.size() - kTrailerSize - 4;
    for (const std::size_t offset : {std::size_t{0}, table, good.size()}) { // of the second object
        std::string bad = good;
        EXPECT_EQ(ParseList(bad.replace(table + 2, 2, BigEndian(offset, 2))).status, -1) << offset;
    }
    EXPECT_EQ(ParseList(good + "x").status, -1);
    EXPECT_EQ(ParseList(BinaryList({"\xD0"})).problem.text, "the root is not an array");
}

// What libraries write is what their readers take: both formats, all values, read as the same.
TEST(BinaryList, PythonsLists_AreReadInBothFormats) {
    ScratchFolder scratch;
    ASSERT_TRUE(RunsInPython(scratch,
                             std::string(kEveryValueInPython) +
                                 "import plistlib, sys\n"
                                 "for f in ['FMT_XML', 'FMT_BINARY']:\n"
                                 "    with open(sys.argv[1] + f, 'wb') as file:\n"
                                 "        plistlib.dump(values, file, fmt=plistlib.PlistFormat[f],\n"
                                 "                      sort_keys=False)\n",
                             scratch.Path("list")));
    const std::string expected = PropertyListArrayText(EveryValue());
    const ReadOutcome binary = ReadList(scratch.Path("listFMT_BINARY"));
    EXPECT_EQ(binary.status, noErr) << binary.problem.text;
    EXPECT_EQ(binary.Text(), expected);
    const ReadOutcome xml = ReadList(scratch.Path("listFMT_XML"));
    EXPECT_EQ(xml.status, noErr) << xml.problem.text;
    EXPECT_EQ(xml.Text(), expected);

    const std::string whole = ReadWhole(scratch.Path("listFMT_BINARY"));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(ParseList(whole.substr(0, length)).status, -1) << length;
    }
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const int change : {0x01, 0x0F, 0x10, 0x80, 0xFF}) {
            std::string changed = whole;
            changed[i] = static_cast<char>(changed[i] ^ change);
            const ReadOutcome outcome = ParseList(changed);
            EXPECT_EQ(outcome.status, outcome.problem.text.empty() ? noErr : -1);
            if (outcome.status == noErr) {
                EXPECT_EQ(ParseList(outcome.Text()).Text(), outcome.Text()) << i;
            }
        }
    }
}

} // namespace
} // namespace drevix::test
