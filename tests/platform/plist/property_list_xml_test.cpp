#include "tests/platform/plist/property_list_support.h"

#include <new>
#include <sys/mman.h>

namespace drevix::test {
namespace {

using testing::HasSubstr;

struct DamagedFile {
    const char *name;
    int line;
    const char *text;
    std::size_t elementsBefore;
};

// clang-format off
constexpr DamagedFile kDamagedFiles[] = {
    {"cut_short",                   6, "",                             1},
    {"default_attribute_declared",  3, "makes declarations",           0},
    {"element_inside_text",         5, "inside a value",               0},
    {"element_unknown",             6, "an element is unknown",        1},
    {"element_with_prefix",         5, "an element is unknown",        0},
    {"empty",                       1, "Document is empty",            0},
    {"encoding_unknown",            1, "no-such-encoding",             0},
    {"end_tag_mismatched",          7, "another's end tag",            1},
    {"entities_multiply",           3, "makes declarations",           0},
    {"entity_declared",             3, "makes declarations",           0},
    {"entity_from_file",            3, "makes declarations",           0},
    {"entity_in_external_subset",   5, "not predefined",               0},
    {"entity_unknown",              5, "not predefined",               0},
    {"key_outside_dictionary",      5, "outside a dictionary",         0},
    {"key_without_value",           7, "a key has no value",           0},
    {"list_inside_list",            6, "a <plist> stands inside",      1},
    {"nested_too_deep",             5, "more than 64 deep",            0},
    {"nul_behind_the_end",          8, "unexpected data",            1},
    {"nul_in_text",                 5, "not well-formed",              0},
    {"parameter_entity_declared",   3, "makes declarations",           0},
    {"parameter_entity_used",       3, "not predefined",               0},
    {"root_element_missing",        2, "the root is not <plist>",      0},
    {"root_element_unknown",        2, "an element is unknown",        0},
    {"root_is_absent",              4, "it holds no array",            0},
    {"root_is_dictionary",          4, "the root is not an array",     0},
    {"text_behind_the_end",         8, "Extra content",                1},
    {"text_between_values",         7, "text stands outside a value",  1},
    {"truth_holds_text",            5, "a truth value holds text",     0},
    {"two_keys",                    7, "a key has no value",           0},
    {"two_roots",                   5, "more than one root",           0},
    {"utf16_odd_byte",              8, "unexpected data",            1},
    {"utf8_malformed",              6, "not proper UTF-8",             1},
    {"value_without_key",           6, "a value has no key",           0},
    {"binary_version_unknown",      0, "an unknown version",           0},
};
// clang-format on

TEST(XmlList, DamagedFiles_AreRefusedWithLineAndReason) {
    const std::string folder = DREVIX_TEST_DATA "/property_lists/";
    for (const DamagedFile &damaged : kDamagedFiles) {
        const ReadOutcome outcome = ReadList(folder + damaged.name + ".plist");
        EXPECT_EQ(outcome.status, -1) << damaged.name;
        EXPECT_EQ(outcome.problem.line, damaged.line) << damaged.name;
        EXPECT_THAT(outcome.problem.text, HasSubstr(damaged.text)) << damaged.name;
        EXPECT_FALSE(outcome.problem.text.empty()) << damaged.name;
        EXPECT_EQ(outcome.elements.size(), damaged.elementsBefore) << damaged.name;
    }
    const auto files = std::ranges::count_if(fs::directory_iterator(folder), [](const auto &entry) {
        return entry.path().extension() == ".plist";
    });
    EXPECT_EQ(files, std::ssize(kDamagedFiles)) << "a file is in no row";
}

// Elements' texts and what the writer makes of the values; null for text that is refused.
// clang-format off
constexpr std::pair<const char *, const char *> kElements[] = {
    {"<integer>\n\t- 007 </integer>",            "<integer>-7</integer>"},
    {"<integer>0xFF</integer>",                  "<integer>255</integer>"},
    {"<integer>-0Xff</integer>",                 "<integer>-255</integer>"},
    {"<integer>9223372036854775807</integer>",   "<integer>9223372036854775807</integer>"},
    {"<integer>-9223372036854775808</integer>",  "<integer>-9223372036854775808</integer>"},
    {"<integer>-9223372036854775809</integer>",  nullptr},
    {"<integer>18446744073709551615</integer>",  "<integer>18446744073709551615</integer>"},
    {"<integer>18446744073709551616</integer>",  nullptr},
    {"<integer>abc</integer>",                   nullptr},
    {"<integer>-</integer>",                     nullptr},
    {"<integer>+-1</integer>",                   nullptr},
    {"<integer>0x</integer>",                    nullptr},
    {"<integer>1 2</integer>",                   nullptr},
    {"<real>+.5</real>",                         "<real>0.5</real>"},
    {"<real> -1.25E+2 </real>",                  "<real>-125</real>"},
    {"<real>nan</real>",                         "<real>nan</real>"},
    {"<real>nan(1)</real>",                      nullptr},
    {"<real>1e999</real>",                       nullptr},
    {"<real>+-1</real>",                         nullptr},
    {"<true> </true>",                           "<true/>"},
    {"<string>a<!-- b --><![CDATA[<&]]><?p?>c</string>", "<string>a&lt;&amp;c</string>"},
    {"<string>&lt;&gt;&amp;&quot;&apos;&#x41;&#66;</string>", "<string>&lt;&gt;&amp;\"'AB</string>"},
    {"<string>a\r\nb&#13;</string>",             "<string>a\nb&#13;</string>"},
    {"<string>&#0;</string>",                    nullptr},
    {"<string>\xED\xA0\x80</string>",            nullptr},
    {"<data>\n\tAA\n\t== </data>",               "<data>\n\tAA==\n\t</data>"},
    {"<data>AA=</data>",                         nullptr},
    {"<data>A===</data>",                        nullptr},
    {"<data>AA==AA==</data>",                    nullptr},
    {"<data>AA!A</data>",                        nullptr},
    {"<data>AA=A</data>",                        nullptr},
    {"<string \u00E4></string>",                 nullptr}, // the parser quotes it
    {"<date>2024-02-29T23:59:59Z</date>",        "<date>2024-02-29T23:59:59Z</date>"},
    {"<date>0000-12-31T00:00:00Z</date>",        nullptr},
    {"<date>2023-02-29T00:00:00Z</date>",        nullptr},
    {"<date>2023-01-01T24:00:00Z</date>",        nullptr},
    {"<date>2023-01-01 00:00:00Z</date>",        nullptr},
    {"<dict><key>a</key><array/></dict>",        "<dict>\n\t\t<key>a</key>\n\t\t<array/>\n\t</dict>"},
};
// clang-format on

TEST(XmlList, Elements_AreReadStrictlyAndWrittenPlainly) {
    for (const auto &[text, written] : kElements) {
        SCOPED_TRACE(text);
        const ReadOutcome outcome = ParseList(XmlList(text));
        ExpectElement(outcome, written);
        EXPECT_TRUE(std::ranges::all_of(outcome.problem.text, [](char c) { return c >= ' ' && c <= '~'; }));
    }
}

TEST(XmlList, TextBetweenValues_IsSeenWhereverItStands) {
    for (std::size_t blanks = 0; blanks < 10; ++blanks) {
        for (std::size_t at = 0; at <= blanks; ++at) {
            for (const char *text : {"!", "\U00020820"}) {
                const std::string between = std::string(blanks, ' ').insert(at, text);
                EXPECT_EQ(ParseList(XmlList(between + "<true/>")).status, -1) << at << " of " << blanks;
            }
        }
    }
}

TEST(XmlList, OtherEncodings_BecomeUtf8) {
    const std::string latin =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><array><string>\xE4</string></array></plist>";
    EXPECT_THAT(ParseList(latin).Text(), HasSubstr("<string>\u00E4</string>"));
    for (const bool littleEndian : {true, false}) {
        std::string wide = littleEndian ? "\xFF\xFE" : "\xFE\xFF";
        for (const char character : XmlList("<string>a</string>")) {
            wide += littleEndian ? std::string{character, '\0'} : std::string{'\0', character};
        }
        EXPECT_THAT(ParseList(wide).Text(), HasSubstr("<string>a</string>"));
    }
    EXPECT_EQ(ParseList("\xEF\xBB\xBF" + XmlList("<true/>")).status, noErr);
}

// A list of more elements than one element may hold values is read; an element or a root beyond is not.
TEST(XmlList, Bounds_AreThoseOfAnElement) {
    std::string values;
    for (std::size_t i = 1; i < kPropertyListMaxValues; ++i) {
        values += "<true/>";
    }
    const std::string fullElement = "<array>" + values + "</array>";
    EXPECT_EQ(ParseList(XmlList(fullElement + fullElement)).elements.size(), 2U);
    EXPECT_THAT(ParseList(XmlList("<array>" + values + "<true/></array>")).problem.text,
                HasSubstr("more than 65,536 values"));
    EXPECT_EQ(ParseRoot(XmlList(values)).status, noErr);
    EXPECT_THAT(ParseRoot(XmlList(values + "<true/>")).problem.text, HasSubstr("more than 65,536 values"));

    const std::string text(kPropertyListMaxText, 'A'); // beyond the parser's own limit for names and comments
    const std::string full = "<string>" + text + "</string>";
    const ReadOutcome two = ParseList(XmlList(full + full));
    ASSERT_EQ(two.elements.size(), 2U);
    EXPECT_EQ(*two.elements.at(1).As<std::string>(), text);
    const std::string half = "<data>" + text.substr(text.size() / 2) + "</data>";
    EXPECT_THAT(ParseList(XmlList("<array>" + half + half + "<integer>1</integer></array>")).problem.text,
                HasSubstr("more than 16 MB"));

    std::string nested;
    for (int depth = 1; depth < kPropertyListMaxDepth; ++depth) {
        nested = "<array>" + nested + "</array>";
    }
    EXPECT_EQ(ParseList(XmlList(nested)).status, noErr);
    EXPECT_EQ(ParseList(XmlList("<array>" + nested + "</array>")).status, -1);
}

TEST(XmlList, TooLargeList_IsRefusedUnread) {
    constexpr std::size_t kSize = kPropertyListMaxBytes + 1;
    void *const memory =
        ::mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    const ReadOutcome outcome = ParseList({static_cast<const char *>(memory), kSize});
    ::munmap(memory, kSize);
    EXPECT_EQ(outcome.status, -1);
    EXPECT_THAT(outcome.problem.text, HasSubstr("larger than 2 GB"));
}

// Roots of any kind are read whole, in both formats, and written again as the same.
TEST(RootList, AnyRoot_IsReadWhole) {
    static constexpr std::pair<const char *, const char *> kRows[] = {
        // A root, and why it is refused; null for one that is read.
        {"<dict>\n\t<key>d</key>\n\t<date>2024-02-29T23:59:59Z</date>\n</dict>\n", nullptr},
        {"<array>\n\t<dict/>\n\t<array/>\n</array>\n", nullptr},
        {"<dict/>\n<dict/>\n", "more than one root"},
        {"", "it holds no value"},
    };
    for (const auto &[root, problem] : kRows) {
        const std::string text = PropertyListText(PropertyList(true));
        const std::size_t at = text.find("<true/>");
        const std::string list = text.substr(0, at) + root + "</plist>\n";
        const RootOutcome outcome = ParseRoot(list);
        EXPECT_EQ(outcome.status, problem == nullptr ? noErr : -1) << root;
        EXPECT_EQ(PropertyListText(outcome.root),
                  problem == nullptr ? list : PropertyListText(PropertyList(false)))
            << "set on success only";
        EXPECT_THAT(outcome.problem.text, HasSubstr(problem == nullptr ? "" : problem));
    }
}

TEST(XmlList, Handler_MayStopOrRunOutOfMemory) {
    const std::string list = XmlList("<true/><true/><true/>");
    int calls = 0;
    PropertyListProblem problem;
    const auto bytes = std::as_bytes(std::span(list));
    EXPECT_EQ(ParsePropertyListArray(
                  bytes, [&](PropertyList &) { return ++calls < 2; }, &problem),
              userCanceledErr);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(problem.text, StatusText(userCanceledErr));
    EXPECT_EQ(ParsePropertyListArray(
                  bytes, [](PropertyList &) -> bool { throw std::bad_alloc(); }, &problem),
              memFullErr);
    EXPECT_EQ(problem.text, StatusText(memFullErr));
}

} // namespace
} // namespace drevix::test
