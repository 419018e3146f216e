#include "settings/pascal_strings.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

// A Pascal string in a buffer whose other bytes are marks that must stay.
struct Buffer {
    explicit Buffer(const std::string &text = {}) {
        bytes[0] = static_cast<char>(text.size());
        bytes.replace(1, text.size(), text);
    }
    StringPtr Pascal() { return reinterpret_cast<StringPtr>(bytes.data()); }
    std::string bytes = std::string(300, '#');
};

// Copies and appends in all four ways; whole buffers are compared, so that a byte beyond the limit shows.
void CheckCopyAndAppend(const std::string &old, const std::string &source, std::int16_t limit) {
    const std::string copied = source.substr(0, static_cast<std::size_t>(limit));
    const std::string added = source.substr(0, static_cast<std::size_t>(limit) - old.size());

    Buffer copy;
    Buffer cCopy;
    EXPECT_EQ(PStringCopy(Buffer(source).Pascal(), copy.Pascal(), limit), static_cast<int>(copied.size()));
    EXPECT_EQ(CStringPCopy(source.c_str(), cCopy.Pascal(), limit), cCopy.Pascal());
    EXPECT_EQ(copy.bytes, Buffer(copied).bytes);
    EXPECT_EQ(cCopy.bytes, Buffer(copied).bytes);

    Buffer cat(old);
    Buffer cCat(old);
    EXPECT_EQ(PStringCat(Buffer(source).Pascal(), cat.Pascal(), limit), static_cast<int>(added.size()));
    EXPECT_EQ(CStringPCat(source.c_str(), cCat.Pascal(), limit), cCat.Pascal());
    EXPECT_EQ(cat.bytes, Buffer(old + added).bytes);
    EXPECT_EQ(cCat.bytes, Buffer(old + added).bytes);

    std::string text(300, '#');
    EXPECT_EQ(CStringCopy(source.c_str(), text.data(), limit), static_cast<int>(copied.size()));
    EXPECT_EQ(text, (copied + '\0').append(299 - copied.size(), '#'));
    text.replace(0, old.size() + 1, old + '\0');
    EXPECT_EQ(CStringCat(source.c_str(), text.data(), limit), static_cast<int>((old + added).size()));
    EXPECT_STREQ(text.c_str(), (old + added).c_str());
}

TEST(PascalStrings, CopyAndAppend_CutToTheLimitAndNotAByteMore) {
    for (const std::size_t limit : {0, 1, 8, 31, 63, 254, 255}) {
        for (const std::size_t had : {0, 1, 6, 31, 62, 255}) {
            for (const std::size_t wanted : {0, 1, 2, 5, 32, 63, 254, 255}) {
                if (had <= limit) {
                    SCOPED_TRACE(testing::Message() << had << " + " << wanted << " within " << limit);
                    CheckCopyAndAppend(std::string(had, 'x'), std::string(wanted, 'y'),
                                       static_cast<std::int16_t>(limit));
                }
            }
        }
    }
}

TEST(StringOrder, FoldsAsciiOnly) {
    // Exact: the difference of the first bytes that differ, or of the lengths.
    // clang-format off
    const std::tuple<const char *, const char *, int> rows[] = {
        {"Adobe Illustrator", "ADOBE ILLUSTRATOR", 0}, {"", "", 0}, {"", "a", -1},
        {"abc", "ab", 1}, {"abc", "ABD", -1}, {"_", "A", '_' - 'a'}, {"[", "Z", '[' - 'z'},
        {"@", "A", '@' - 'a'},
        {"\x8E", "\x83", 0x8E - 0x83}, {"z", "\x80", 'z' - 0x80}, {"Z\xFF", "z\x01", 0xFF - 1},
    };
    // clang-format on
    const auto sign = [](int order) { return (order > 0) - (order < 0); };
    for (const auto &[a, b, order] : rows) {
        SCOPED_TRACE(testing::Message() << a << ' ' << b);
        EXPECT_EQ(PStringCmp(Buffer(a).Pascal(), Buffer(b).Pascal()), order);
        EXPECT_EQ(sign(CStringCmp(a, b)), sign(order));
    }
}

TEST(PascalText, IsConvertedThenCut) {
    Str255 all = {255};
    for (std::size_t i = 1; i < all.size(); ++i) {
        all[i] = static_cast<std::uint8_t>(i);
    }
    Str255 back = {};
    getPascalString(stringWithPascalString(all.data()), back.data());
    EXPECT_EQ(back, all) << "every byte is a character";

    const std::tuple<std::string, int, std::string> rows[] = {
        {std::string(40, 'x'), 31, std::string(31, 'x')},
        {std::string(300, 'y'), 1000, std::string(255, 'y')},
        {"ab", 0, ""},
        {"\xC3\xA9\xC3\xA9\xC3\xA9", 2, "\x8E\x8E"}, // two bytes each before, one after
    };
    for (const auto &[text, limit, stored] : rows) {
        Buffer buffer;
        getPascalString(text, buffer.Pascal(), limit);
        EXPECT_EQ(buffer.bytes, Buffer(stored).bytes) << text;
    }
}

} // namespace
} // namespace drevix
