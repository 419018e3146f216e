#include "platform/base/status.h"
#include "platform/files/shared_file.h"
#include "platform/xml/xml_document.h"
#include "tests/support/scratch.h"

#include <gtest/gtest.h>

namespace drevix {
namespace {

// Companion files try the reading of damaged and hostile documents; this is what they do not have.
TEST(XmlDocument, Text_IsStableWhateverItsBlanks) {
    constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    struct Row {
        std::string_view read;
        std::string_view written;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"<a/>", "<a/>\n"},
             {"<a x=y/>", ""}, // an attribute without quotes
             {"<a x=\"1&#10;2&amp;&quot;\"><b/><c>t</c></a>",
              "<a x=\"1&#10;2&amp;&#34;\">\n    <b/>\n    <c>t</c>\n</a>\n"},
             {"<a> <b/>\r\n</a>", "<a> <b/>\n</a>\n"},
             {"<a>1<b><c/></b>2<!-- x -->3<![CDATA[<4>]]></a>", "<a>1<b><c/></b>23&lt;4&gt;</a>\n"},
             {"<a>&#13;</a>", "<a>&#13;</a>\n"},
         }) {
        XmlDocument document;
        const OSErr status = ParseXmlDocument(row.read, XmlReading::Strict, &document);
        ASSERT_EQ(status, row.written.empty() ? -1 : noErr) << row.read;
        if (status != noErr) {
            continue;
        }
        const std::string text = XmlDocumentText(document.root);
        EXPECT_EQ(text, std::string(kHead).append(row.written));
        ASSERT_EQ(ParseXmlDocument(text, XmlReading::Strict, &document), noErr);
        EXPECT_EQ(XmlDocumentText(document.root), text);
    }
}

TEST(XmlDocument, Bounds_HoldToTheLastOne) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i) {
            text = "<a>" + text + "</a>";
        }
        return text;
    };
    const auto attributes = [](std::size_t count) {
        std::string text = "<a";
        for (std::size_t i = 0; i < count; ++i) {
            text += " a" + std::to_string(i) + "='>'";
        }
        return text + "/>";
    };
    for (const XmlReading reading : {XmlReading::Strict, XmlReading::Recovering}) {
        XmlDocument document;
        EXPECT_EQ(ParseXmlDocument(nested(kXmlMaxDepth), reading, &document), noErr);
        EXPECT_EQ(ParseXmlDocument(nested(kXmlMaxDepth + 1), reading, &document), -1);
        EXPECT_EQ(ParseXmlDocument(attributes(kXmlMaxAttributes), reading, &document), noErr);
        EXPECT_EQ(document.root.attributes.size(), kXmlMaxAttributes);
        EXPECT_EQ(ParseXmlDocument(attributes(kXmlMaxAttributes + 1), reading, &document), -1);
        EXPECT_EQ(document.root.attributes.size(), kXmlMaxAttributes); // as it was
    }
    const test::ScratchFolder folder;
    std::string bytes;
    test::WriteWhole(folder.Path("x"), std::string(kXmlMaxBytes, ' '));
    EXPECT_EQ(ReadSharedFile(folder.Path("x"), kXmlMaxBytes, &bytes), noErr);
    EXPECT_EQ(bytes.size(), kXmlMaxBytes);
    test::WriteWhole(folder.Path("x"), std::string(kXmlMaxBytes + 1, ' '));
    EXPECT_EQ(ReadSharedFile(folder.Path("x"), kXmlMaxBytes, &bytes), -1);
    EXPECT_EQ(ReadSharedFile(folder.Path(), kXmlMaxBytes, &bytes), -1);
    EXPECT_EQ(ReadSharedFile(folder.Path("none"), kXmlMaxBytes, &bytes), fnfErr);
}

} // namespace
} // namespace drevix
