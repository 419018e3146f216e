#include "settings/pascal_strings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace drevix {
namespace {

// A Pascal string in a buffer whose every other byte is a mark that must stay.
constexpr char kMark = '#';

struct Buffer {
    explicit Buffer(const std::string &text = {}) {
        bytes[0] = static_cast<char>(text.size());
        bytes.replace(1, text.size(), text);
    }
    StringPtr Pascal() { return reinterpret_cast<StringPtr>(bytes.data()); }
    std::string bytes = std::string(300, kMark);
};

std::string Letters(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text.push_back(static_cast<char>('A' + i % 57));
    }
    return text;
}

// Buffers written by the functions, beside what std::string makes of the same task: whole buffers, so that a byte
// beyond the limit shows.
void CheckCopyAndAppend(std::size_t had, std::size_t wanted, std::size_t limit) {
    SCOPED_TRACE(testing::Message() << had << " + " << wanted << " within " << limit);
    const std::string old = Letters(had);
    const std::string source = Letters(wanted);
    const std::string copied = source.substr(0, limit);
    const std::string appended = source.substr(0, limit - had);
    const auto bound = static_cast<std::int16_t>(limit);

    Buffer copy;
    EXPECT_EQ(PStringCopy(Buffer(source).Pascal(), copy.Pascal(), bound), static_cast<int>(copied.size()));
    EXPECT_EQ(copy.bytes, Buffer(copied).bytes);
    Buffer cCopy;
    EXPECT_EQ(CStringPCopy(source.c_str(), cCopy.Pascal(), bound), cCopy.Pascal());
    EXPECT_EQ(cCopy.bytes, copy.bytes);

    Buffer whole(old);
    whole.bytes[0] = static_cast<char>(had + appended.size());
    whole.bytes.replace(1 + had, appended.size(), appended);
    Buffer cat(old);
    EXPECT_EQ(PStringCat(Buffer(source).Pascal(), cat.Pascal(), bound), static_cast<int>(appended.size()));
    EXPECT_EQ(cat.bytes, whole.bytes);
    Buffer cCat(old);
    EXPECT_EQ(CStringPCat(source.c_str(), cCat.Pascal(), bound), cCat.Pascal());
    EXPECT_EQ(cCat.bytes, whole.bytes);
}

TEST(PascalStrings, CopyAndAppend_CutToTheLimitAndNotAByteMore) {
    for (const std::size_t limit : {0, 1, 8, 31, 63, 254, 255}) {
        for (const std::size_t had : {0, 1, 6, 31, 62, 255}) {
            for (const std::size_t wanted : {0, 1, 2, 5, 32, 63, 254, 255}) {
                if (had <= limit) {
                    CheckCopyAndAppend(had, wanted, limit);
                }
            }
        }
    }
}

TEST(PascalStrings, SourceIsItsOwnDestination_IsDoubledOrCut) {
    Buffer twice("abc");
    EXPECT_EQ(PStringCat(twice.Pascal(), twice.Pascal(), 5), 2);
    EXPECT_EQ(twice.bytes, Buffer("abcab").bytes);
    EXPECT_EQ(PStringCopy(twice.Pascal(), twice.Pascal(), 4), 4);
    EXPECT_EQ(twice.bytes.substr(0, 5), "\4abca");
}

TEST(CStrings, CopyAndAppend_CutToTheLimitAndEndWithZero) {
    struct Row {
        const char *had, *source;
        std::int16_t limit, copied, length;
        const char *copy, *cat;
    };
    const Row rows[] = {
        {"", "0123456789", 4, 4, 4, "0123", "0123"},
        {"ab", "cd", 4, 2, 4, "cd", "abcd"},
        {"ab", "cde", 4, 3, 4, "cde", "abcd"},
        {"abcdef", "x", 4, 1, 4, "x", "abcd"},
        {"ab", "", 9, 0, 2, "", "ab"},
        {"ab", "x", 0, 0, 0, "", ""},
    };
    for (const Row &row : rows) {
        std::string copy(16, kMark);
        EXPECT_EQ(CStringCopy(row.source, copy.data(), row.limit), row.copied) << row.source;
        EXPECT_EQ(copy, std::string(row.copy) + '\0' + std::string(15 - std::strlen(row.copy), kMark));
        std::string cat = row.had + std::string(1, '\0') + std::string(16, kMark);
        EXPECT_EQ(CStringCat(row.source, cat.data(), row.limit), row.length) << row.had;
        EXPECT_STREQ(cat.c_str(), row.cat);
    }
}

TEST(StringOrder, FoldsAsciiOnly) {
    struct Row {
        const char *a, *b;
        int order; // exact: it is the difference of the first bytes that differ, or of the lengths
    };
    const Row rows[] = {
        {"Adobe Illustrator", "ADOBE ILLUSTRATOR", 0},
        {"a", "b", -1},
        {"abc", "ab", 1},
        {"", "", 0},
        {"", "a", -1},
        {"abc", "ABD", -1},
        {"_", "A", '_' - 'a'},
        {"[", "z", '[' - 'z'},
        {"@", "A", '@' - 'a'},
        {"\x8E", "\x83", 0x8E - 0x83},
        {"z", "\x80", 'z' - 0x80},
        {"Z\xFF", "z\x01", 0xFF - 1},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(PStringCmp(Buffer(row.a).Pascal(), Buffer(row.b).Pascal()), row.order)
            << row.a << ' ' << row.b;
        EXPECT_EQ(PStringCmp(Buffer(row.b).Pascal(), Buffer(row.a).Pascal()), -row.order)
            << row.a << ' ' << row.b;
        const int cOrder = CStringCmp(row.a, row.b);
        EXPECT_EQ(cOrder < 0, row.order < 0) << row.a << ' ' << row.b;
        EXPECT_EQ(cOrder > 0, row.order > 0) << row.a << ' ' << row.b;
    }
}

TEST(PascalText, EveryByte_ComesBackThroughUtf8) {
    Str255 all;
    all[0] = 255;
    for (int i = 1; i < 256; ++i) {
        all[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
    }
    Str255 back = {};
    getPascalString(stringWithPascalString(all.data()), back.data());
    EXPECT_EQ(back, all);
}

TEST(PascalText, LongOrForeignText_IsConvertedThenCut) {
    struct Row {
        std::string text;
        int limit;
        std::string stored;
    };
    const Row rows[] = {
        {std::string(40, 'x'), 31, std::string(31, 'x')},
        {"", 31, ""},
        {"a\xE4\xB8\xAD"
         "b",
         31, "a?b"},                                 // a character that Mac OS Roman lacks
        {"\xC3\xA9\xC3\xA9\xC3\xA9", 2, "\x8E\x8E"}, // two bytes each before, one after
        {"e\xCC\x81"
         "e\xCC\x81",
         1, "\x8E"}, // letter and combining accent
        {"ab", 0, ""},
        {std::string(300, 'y'), 1000, std::string(255, 'y')},
    };
    for (const Row &row : rows) {
        Buffer buffer;
        getPascalString(row.text, buffer.Pascal(), row.limit);
        EXPECT_EQ(buffer.bytes, Buffer(row.stored).bytes) << row.text;
    }
}

TEST(Hyperlink, LooksAreBlueAndRed) {
    const StyledText normal = getHyperlink("http://example.org/", LinkLook::Normal);
    const StyledText pressed = getHyperlink("http://example.org/", LinkLook::Alternate);
    EXPECT_EQ(normal.text, "http://example.org/");
    EXPECT_EQ(normal.link, normal.text);
    EXPECT_EQ(normal.underlineStyle, 1);
    const auto color = [](const StyledText &text) {
        return std::array{text.foreground.red, text.foreground.green, text.foreground.blue,
                          text.foreground.alpha};
    };
    EXPECT_EQ(color(normal), (std::array{0.1, 0.1, 1.0, 1.0}));
    EXPECT_EQ(color(pressed), (std::array{1.0, 0.1, 0.1, 1.0}));
}

} // namespace
} // namespace drevix
