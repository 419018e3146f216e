// XML documents as a tree of plain values, safe for hostile files: no network, no external entities, no
// entity declarations; size, depth and time are bounded. XML 1.0, fifth edition.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// Names are local names, without a namespace prefix. Texts are UTF-8. Namespace declarations are left out; an
// attribute with a default value from the document type is included like any other.
struct XmlAttribute {
    std::string name;
    std::string value;
    bool hasPrefix = false;
};

// An element, or a run of text between two tags, which has only `text`. Comments and processing instructions
// are dropped; the texts around them are joined, and so is a CDATA section with the text around it.
struct XmlNode {
    std::string name; // empty: text
    std::string text;
    std::vector<XmlAttribute> attributes;
    std::vector<XmlNode> children;
    bool hasPrefix = false;

    [[nodiscard]] bool IsElement() const { return !name.empty(); }
};

struct XmlDocument {
    XmlNode root;
    // Always true for a well-formed document. For a malformed one: the root's end tag was there, and each
    // start tag became an element, though maybe not in the intended place.
    bool isWhole = false;
};

// How a document is read.
enum class XmlReading {
    Strict, // refuses a malformed document
    // Reads as much of a malformed document as possible. A stray '&' or '<' counts as text, a control
    // character as U+FFFD, a byte invalid in the document's encoding as its Mac OS Roman character. Each text
    // is what a strict reading of the intact document would give.
    Recovering,
};

// Limits; a document that exceeds them is refused either way.
inline constexpr std::size_t kXmlMaxBytes = std::size_t{16} << 20; // of the file
inline constexpr std::size_t kXmlMaxElements = std::size_t{1} << 19;
inline constexpr std::size_t kXmlMaxDepth = 64;       // nested elements
inline constexpr std::size_t kXmlMaxAttributes = 100; // of one element

// Parses a document in UTF-8, UTF-16 or the declared encoding, including Mac OS Roman as "macintosh" or
// "x-mac-roman". noErr; -1, with *document unchanged, for one that is refused: malformed, without elements,
// in an unknown encoding, declaring an entity, or beyond the limits; memFullErr. Linear time; at most about
// 350 MB of memory.
[[nodiscard]] OSErr ParseXmlDocument(std::string_view bytes, XmlReading reading, XmlDocument *document);

// All text within a node, in order (XPath's string value). May throw std::bad_alloc.
[[nodiscard]] std::string XmlStringValue(const XmlNode &node);
// The child elements of that name; the first of them; the value of the attribute. Empty or null if there is
// none. Prefixed names count only if there is none without a prefix.
[[nodiscard]] std::vector<const XmlNode *> FindXmlChildren(const XmlNode &element, std::string_view name);
[[nodiscard]] const XmlNode *FindXmlChild(const XmlNode &element, std::string_view name);
[[nodiscard]] const std::string *FindXmlAttribute(const XmlNode &element, std::string_view name);

// An element that contains only text. May throw std::bad_alloc.
[[nodiscard]] XmlNode XmlTextElement(std::string name, std::string text);

// The document as UTF-8 with an XML declaration, indented by four blanks per level. An element with text is
// written on one line with its blanks unchanged, so that reading it back gives the same texts. Characters
// that XML forbids become U+FFFD. May throw std::bad_alloc.
[[nodiscard]] std::string XmlDocumentText(const XmlNode &root);

} // namespace drevix
