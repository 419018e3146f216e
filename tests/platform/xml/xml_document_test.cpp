#include "platform/xml/xml_document.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

// Companion files try the reading of damaged and hostile documents; this is what they do not have.
TEST(XmlDocument, Text_IsStableWhateverItsBlanks) {
    constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    for (const auto &[read, written] : std::initializer_list<std::pair<std::string_view, std::string_view>>{
             {"<a/>", "<a/>\n"},
             {"<a x=y/>", ""}, // an attribute without quotes
             {"<a>&</a>", ""},
             {"<a>\xE4</a>", ""},
             {"<!DOCTYPE a [<!ATTLIST a x CDATA '1' y CDATA '3'><!ATTLIST b x CDATA '2'><!ATTLIST a x CDATA "
              "'4'>]><a><b/></a>",
              "<a x=\"1\" y=\"3\">\n    <b x=\"2\"/>\n</a>\n"},
             {"<p:a/>", "<a/>\n"},
             {"<a x=\"1&#10;2&amp;&quot;\"><b/><c>t</c></a>",
              "<a x=\"1&#10;2&amp;&#34;\">\n    <b/>\n    <c>t</c>\n</a>\n"},
             {"<a> <b/>\r\n</a>", "<a> <b/>\n</a>\n"},
             {"<a>1<b><c/></b>2<!-- x -->3<![CDATA[<4>]]></a>", "<a>1<b><c/></b>23&lt;4&gt;</a>\n"},
             {"<a>&#13;</a>", "<a>&#13;</a>\n"},
             {"<a><b/><![CDATA[]]></a>", "<a>\n    <b/>\n</a>\n"}, // an empty section is no text
         }) {
        XmlDocument document;
        const OSErr status = ParseXmlDocument(read, XmlReading::Strict, &document);
        ASSERT_EQ(status, written.empty() ? -1 : noErr) << read;
        if (status != noErr) {
            continue;
        }
        const std::string text = XmlDocumentText(document.root);
        EXPECT_EQ(text, std::string(kHead).append(written));
        ASSERT_EQ(ParseXmlDocument(text, XmlReading::Strict, &document), noErr);
        EXPECT_EQ(XmlDocumentText(document.root), text);
    }
}

// A null text: refused. The document is whole where nothing but its text had to be mended.
struct MendedRow {
    std::string read;
    const char *text;
    bool isWhole = true;
};

TEST(XmlDocument, Text_IsMendedWhereItCanBe) {
    using namespace std::string_literals;
    const std::string latin = "<?xml version='1.0' encoding='iso-8859-1'?>";
    for (const MendedRow &row : std::initializer_list<MendedRow>{
             {"<a>1 & 2 < 3 > 4 ]]> \"'</a>", "1 & 2 < 3 > 4 ]]> \"'"},
             {"<a>&lt;&amp;&gt;&quot;&apos;&#65;&#x42;</a>", "<&>\"'AB"},
             {"<a>&#0;&no;&#xD7FF;&#xE000;&#xFFFD;&#x10FFFF;</a>", "&#0;&no;\uD7FF\uE000\uFFFD\U0010FFFF"},
             {"<a>&#xD800;&#xFFFE;&#x110000;&#9x;&#;&</a>", "&#xD800;&#xFFFE;&#x110000;&#9x;&#;&"},
             {"<a>\x01\t\n\r\x1F</a>", "\uFFFD\t\n\n\uFFFD"},
             {"<a>1<!-- & < -->2<?p <b> ?>3<![CDATA[<&>]] ]]>4</a>", "123<&>]] 4"},
             {"<a>1<!-- 2<!-- 3</a>", "1<!-- 2<!-- 3"},
             {"<a>1<![CDATA[2</a>", "1<![CDATA[2"},
             {"<a>1<!DOCTYPE b>2</a>", "12"},
             {"<!DOCTYPE a [<!-- ]> ' --><?p ]>?><!ELEMENT a ANY>]><a x='1'>1&</a>", "1&"},
             {"<!DOCTYPE a '>' [<!ENTITY b '1'>]><a>&b;</a>", nullptr},
             {"<a><b x='<>&\"'>1</b><b x=\"'>\">2</b>&</a>", "12&"},
             {"<a:><b:>1</b:></a:>", "1"},
             {"<a>1<_b>2</_b><:c/><\u00E4/>&</a>", "12&"},
             {"<!DOCTYPE a [<!-- ", nullptr},
             {"<?xml version='1.0' encoding=none?><a>1</a>", "1"},
             {"<a>1</a>2<b>3</b>", "1", false},
             {"<a>1<b>2</a>", "12", false},
             {"<a>1", "1", false},
             {"", nullptr},
             {"\xEF\xBB\xBF<a>\xE4\xC3\xA4\xF4\x90\xF5</a>", "\u2030\u00E4\u00D9\u00EA\u0131"},
             {latin + "<a>\xE4&</a>", "\u00E4&"},
             {"<?xml version='1.0' encoding=\"Mac\"?><a>\x8A&</a>", "\u00E4&"},
             {"<?xml version='1.0' encoding='UTF-16'?><a>\xC3\xA4&</a>", "\u00E4&"},
             {"<?xml version='1.0' encoding='none'?><a>&</a>", nullptr},
             {"<\0a\0>\0&\0<\0/\0a\0>\0"s, "&"},
             {"\0<\0a\0>\0&\0<\0/\0a\0>"s, "&"},
             {"\xFF\xFE<\0a\0>\0&\0<\0b"s, "&", false},
             {"\xFE\xFF\0<\0a\0>\xD8\x3D\xDE\0\0<\0/\0a\0>"s, "\U0001F600"},
         }) {
        XmlDocument document;
        ASSERT_EQ(ParseXmlDocument(row.read, XmlReading::Recovering, &document),
                  row.text != nullptr ? noErr : -1)
            << row.read;
        EXPECT_EQ(XmlStringValue(document.root), row.text != nullptr ? row.text : "") << row.read;
        EXPECT_EQ(document.root.IsElement(), row.text != nullptr) << row.read;
        EXPECT_EQ(document.isWhole, row.isWhole && row.text != nullptr) << row.read;
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
        EXPECT_EQ(ParseXmlDocument(std::string(kXmlMaxBytes + 1, ' '), reading, &document), -1);
    }
}

} // namespace
} // namespace drevix
