// XML documents as a tree of plain values, for files whose every byte may be hostile: no network, no external
// entities, no declarations of entities, bounded in size, depth and time. XML 1.0, fifth edition.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// Names are local names: what stands behind the prefix of a name space. Texts are UTF-8. An attribute that declares a
// name space is left out; one that the document type gives a value is there like any other.
struct XmlAttribute {
    std::string name;
    std::string value;
    bool hasPrefix = false;
};

// An element, or a run of text between two tags, which has nothing but `text`. Comments and processing
// instructions are not kept; the texts on both sides of one are one text, and so is a CDATA section with the
// text around it.
struct XmlNode {
    std::string name; // empty for text
    std::string text;
    std::vector<XmlAttribute> attributes;
    std::vector<XmlNode> children;
    bool hasPrefix = false;

    [[nodiscard]] bool IsElement() const { return !name.empty(); }
};

struct XmlDocument {
    XmlNode root;
    // Always true of a document that is well-formed. Of one that is not: its root's end was there, and each
    // of its start tags became an element, though maybe in another place than was meant.
    bool isWhole = false;
};

// How a document is read.
enum class XmlReading {
    Strict, // one that is not well-formed is refused
    // One that is not is read as far as it makes sense. A '&' and a '<' that begin nothing count as text, a
    // control character as U+FFFD, a byte that is wrong in the document's encoding as its Mac OS Roman
    // character. Each text is what a strict reading of a whole document would give for it.
    Recovering,
};

// Bounds; a document beyond them is refused in both ways of reading.
inline constexpr std::size_t kXmlMaxBytes = std::size_t{16} << 20; // of the file
inline constexpr std::size_t kXmlMaxElements = std::size_t{1} << 19;
inline constexpr std::size_t kXmlMaxDepth = 64;       // elements within one another
inline constexpr std::size_t kXmlMaxAttributes = 100; // of one element

// Reads a document: UTF-8, UTF-16, or the encoding that its declaration names, Mac OS Roman as "macintosh" or
// "x-mac-roman" among them. noErr; -1, with *document unchanged, for one that is refused: not well-formed, or
// without any element, in an unknown encoding, with an entity declared, or beyond the bounds; memFullErr. Linear, and
// in memory at most about 350 MB.
[[nodiscard]] OSErr ParseXmlDocument(std::string_view bytes, XmlReading reading, XmlDocument *document);

// All text within a node, in order, as XPath's string value has it. May throw std::bad_alloc.
[[nodiscard]] std::string XmlStringValue(const XmlNode &node);
// The child elements of that name, the first of them, and the value of the attribute; none, or null, without one. Those
// with a prefix count only where none stands without.
[[nodiscard]] std::vector<const XmlNode *> FindXmlChildren(const XmlNode &element, std::string_view name);
[[nodiscard]] const XmlNode *FindXmlChild(const XmlNode &element, std::string_view name);
[[nodiscard]] const std::string *FindXmlAttribute(const XmlNode &element, std::string_view name);

// An element that holds nothing but text. May throw std::bad_alloc.
[[nodiscard]] XmlNode XmlTextElement(std::string name, std::string text);

// The document as UTF-8 with its declaration, four blanks a level. An element with text in it is written on
// one line, with all blanks as they are, so that reading gives the same texts for ever. Characters that XML
// forbids become U+FFFD. May throw std::bad_alloc.
[[nodiscard]] std::string XmlDocumentText(const XmlNode &root);

} // namespace drevix
