#include "platform/xml/xml_document.h"

#include "platform/base/status.h"
#include "platform/xml/xml_characters.h"
#include "platform/xml/xml_parser.h"
#include "platform/xml/xml_text.h"

#include <algorithm>
#include <new>
#include <utility>

namespace drevix {
namespace {

constexpr int kMostErrors = 1000; // tolerated by a recovering reading
constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr std::size_t kIndent = 4;

// Reads one document, building our tree from the parser's calls.
class XmlTreeReader final : public XmlParser {
  public:
    XmlTreeReader(std::string_view text, XmlReading reading) : fText(text), fReading(reading) {
        fOpen.reserve(kXmlMaxDepth);
    }

    OSErr Read(XmlNode *root, bool *isRootEnded, std::size_t *elements);

    // Called by the parser.
    void Start(XmlCharacters name, const XmlCharacters *attributes);
    void End();
    void AddText(std::string_view text);

  private:
    std::size_t ReadBytes(std::span<char> buffer) override;
    void Notice(XmlProblem problem, const char *message) override;
    void BeginDocumentType() override { fDocumentTypeLeft = kXmlMaxDocumentType; }
    void AddDefault(XmlCharacters element, XmlCharacters attribute, XmlCharacters value) override;
    [[nodiscard]] std::string Mended(std::string_view text) const;
    void AddAttribute(XmlNode &node, std::string_view name, std::string_view value) const;
    void AddDefaults(XmlNode &node, std::string_view name);

    std::string_view fText; // not yet passed to the parser
    XmlReading fReading;
    int fErrors = 0;

    XmlNode fRoot;
    std::vector<XmlNode> fOpen; // the root first
    std::size_t fElements = 0;
    bool fHasRoot = false;

    // A default for an attribute; names include prefixes.
    struct Default {
        std::string element;
        std::string attribute;
        std::string value;
    };
    std::vector<Default> fDefaults;
    std::size_t fDefaultBytes = 0;                          // bytes added by defaults
    std::size_t fDocumentTypeLeft = std::string_view::npos; // bytes allowed before the root
};

std::string_view TextOf(XmlCharacters text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char *>(text);
}

std::string LocalName(std::string_view whole) {
    const std::size_t colon = whole.find(':');
    // A name that ends in a colon has no local part; it must not look like text.
    return std::string(colon + 1 < whole.size() || colon == whole.npos ? whole.substr(colon + 1) : whole);
}

OSErr XmlTreeReader::Read(XmlNode *root, bool *isRootEnded, std::size_t *elements) {
    const bool recovers = fReading == XmlReading::Recovering;
    const OSErr status = Parse<XmlTreeReader>(recovers ? XmlParsing::Utf8Recovering : XmlParsing::Utf8Strict);
    if (status != noErr) {
        return status;
    }
    if (!fHasRoot || (!recovers && !(IsWellFormed() && IsAtEnd() && fText.empty()))) {
        return kDamagedXml;
    }
    *isRootEnded = fOpen.empty();
    while (!fOpen.empty()) {
        End();
    }
    *root = std::move(fRoot);
    *elements = fElements;
    return noErr;
}

std::size_t XmlTreeReader::ReadBytes(std::span<char> buffer) {
    const std::size_t most = fHasRoot ? fText.npos : fDocumentTypeLeft;
    const std::size_t moved = fText.copy(buffer.data(), std::min(buffer.size(), most));
    fText.remove_prefix(moved);
    fDocumentTypeLeft -= most == fText.npos ? 0 : moved;
    if (most == 0) {
        Stop(kDamagedXml);
    }
    return moved;
}

// A recovering reading continues after malformed parts. (Entity references were repaired before.)
void XmlTreeReader::Notice(XmlProblem problem, const char * /*message*/) {
    const bool isMalformed = problem == XmlProblem::Malformed || problem == XmlProblem::WrongEndTag;
    const bool isPutUpWith = isMalformed ? fReading == XmlReading::Recovering && ++fErrors <= kMostErrors
                                         : problem == XmlProblem::Declaration;
    if (!isPutUpWith) {
        Stop(kDamagedXml);
    }
}

// An attribute's first default counts (XML 1.0, 3.3).
void XmlTreeReader::AddDefault(XmlCharacters element, XmlCharacters attribute, XmlCharacters value) {
    const bool isKnown = std::ranges::any_of(fDefaults, [&](const Default &row) {
        return row.element == TextOf(element) && row.attribute == TextOf(attribute);
    });
    if (isKnown) {
        return;
    }
    if (fDefaults.size() == kXmlMaxAttributes) {
        return Stop(kDamagedXml);
    }
    fDefaults.push_back(
        {std::string(TextOf(element)), std::string(TextOf(attribute)), Mended(TextOf(value))});
}

// A recovering parser may continue in the middle of a character.
std::string XmlTreeReader::Mended(std::string_view text) const {
    if (fReading == XmlReading::Recovering) {
        return MendUtf8(text);
    }
    return std::string(text);
}

void XmlTreeReader::AddAttribute(XmlNode &node, std::string_view name, std::string_view value) const {
    if (!name.starts_with("xmlns:")) {
        node.attributes.push_back({LocalName(name), Mended(value), name.find(':') != name.npos});
    }
}

void XmlTreeReader::AddDefaults(XmlNode &node, std::string_view name) {
    for (const Default &row : fDefaults) {
        const bool hasPrefix = row.attribute.find(':') != row.attribute.npos;
        const std::string local = LocalName(row.attribute);
        const bool isGiven = std::ranges::any_of(node.attributes, [&](const XmlAttribute &given) {
            return given.name == local && given.hasPrefix == hasPrefix;
        });
        if (row.element != name || isGiven) {
            continue;
        }
        fDefaultBytes += row.value.size();
        if (fDefaultBytes > kXmlMaxBytes) {
            return Stop(kDamagedXml);
        }
        AddAttribute(node, row.attribute, row.value);
    }
}

void XmlTreeReader::Start(XmlCharacters name, const XmlCharacters *attributes) {
    if (fOpen.empty() && fHasRoot) {
        return; // another element after the root's end
    }
    if (fOpen.size() == kXmlMaxDepth) {
        return Stop(kDamagedXml);
    }
    if (++fElements > kXmlMaxElements) {
        return Stop(kDamagedXml);
    }
    fHasRoot = true;
    XmlNode &node = fOpen.emplace_back();
    node.name = LocalName(TextOf(name));
    node.hasPrefix = TextOf(name).find(':') != std::string_view::npos;
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
        AddAttribute(node, TextOf(attributes[0]), TextOf(attributes[1]));
    }
    AddDefaults(node, TextOf(name));
}

void XmlTreeReader::End() {
    if (fOpen.empty()) {
        return;
    }
    XmlNode node = std::move(fOpen.back());
    fOpen.pop_back();
    node.children.shrink_to_fit();
    if (fReading == XmlReading::Recovering) {
        for (XmlNode &child : node.children) {
            child.text = Mended(child.text);
        }
    }
    if (fOpen.empty()) {
        fRoot = std::move(node);
    } else {
        fOpen.back().children.push_back(std::move(node));
    }
}

void XmlTreeReader::AddText(std::string_view text) {
    if (fOpen.empty() || text.empty()) { // an empty CDATA section
        return;
    }
    std::vector<XmlNode> &siblings = fOpen.back().children;
    if (siblings.empty() || siblings.back().IsElement()) {
        siblings.emplace_back();
    }
    siblings.back().text += text;
}

// The first with that name, preferably without a prefix; null if none.
template <typename Named>
const Named *FindNamed(const std::vector<Named> &all, std::string_view name) {
    const auto is = [&](bool hasPrefix) {
        return [=](const Named &one) { return one.hasPrefix == hasPrefix && one.name == name; };
    };
    auto found = std::ranges::find_if(all, is(false));
    if (found == all.end()) {
        found = std::ranges::find_if(all, is(true));
    }
    return found == all.end() ? nullptr : &*found;
}

void AppendAttributeValue(std::string &out, std::string_view value) {
    std::string text;
    AppendCharacters(text, value);
    for (const char c : text) {
        // A reader would turn each of these into a blank.
        if (c == '"' || c == '\t' || c == '\n') {
            out.append("&#").append(std::to_string(static_cast<int>(c))).append(";");
        } else {
            out += c;
        }
    }
}

void AppendStartTag(std::string &out, const XmlNode &element, std::string_view end) {
    out.append("<").append(element.name);
    for (const XmlAttribute &attribute : element.attributes) {
        out.append(" ").append(attribute.name).append("=\"");
        AppendAttributeValue(out, attribute.value);
        out += '"';
    }
    out += end;
}

// Recurses as deep as the tree. With `depth` kInline adds nothing between tags.
constexpr std::size_t kInline = SIZE_MAX;
void AppendNode(std::string &out, const XmlNode &node, std::size_t depth) {
    if (!node.IsElement()) {
        AppendCharacters(out, node.text);
        return;
    }
    out.append(depth == kInline ? 0 : kIndent * depth, ' ');
    AppendStartTag(out, node, node.children.empty() ? "/>" : ">");
    if (!node.children.empty()) {
        const bool isInline = depth == kInline || !std::ranges::all_of(node.children, &XmlNode::IsElement);
        out += isInline ? "" : "\n";
        for (const XmlNode &child : node.children) {
            AppendNode(out, child, isInline ? kInline : depth + 1);
        }
        out.append(isInline ? 0 : kIndent * depth, ' ').append("</").append(node.name).append(">");
    }
    out += depth == kInline ? "" : "\n";
}

} // namespace

OSErr ParseXmlDocument(std::string_view bytes, XmlReading reading, XmlDocument *document) try {
    if (bytes.size() > kXmlMaxBytes) {
        return kDamagedXml;
    }
    const bool recovers = reading == XmlReading::Recovering;
    std::string text;
    if (const OSErr status = DecodeXml(bytes, recovers ? BadBytes::TakeAsMacRoman : BadBytes::Refuse, &text);
        status != noErr) {
        return status;
    }
    std::size_t startTags = 0;
    if (recovers) {
        text = MendXml(text, &startTags);
    }
    if (MostAttributes(text) > kXmlMaxAttributes) {
        return kDamagedXml;
    }
    XmlNode root;
    bool isRootEnded = false;
    std::size_t elements = 0;
    const OSErr status = XmlTreeReader(text, reading).Read(&root, &isRootEnded, &elements);
    if (status == noErr) {
        document->root = std::move(root);
        document->isWhole = !recovers || (isRootEnded && elements == startTags);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

std::string XmlStringValue(const XmlNode &node) {
    std::string value = node.text;
    for (const XmlNode &child : node.children) {
        value += XmlStringValue(child);
    }
    return value;
}

std::vector<const XmlNode *> FindXmlChildren(const XmlNode &element, std::string_view name) {
    std::vector<const XmlNode *> found;
    const XmlNode *first = FindNamed(element.children, name);
    for (const XmlNode &child : element.children) {
        if (child.name == name && child.hasPrefix == first->hasPrefix) {
            found.push_back(&child);
        }
    }
    return found;
}

const XmlNode *FindXmlChild(const XmlNode &element, std::string_view name) {
    return FindNamed(element.children, name);
}

const std::string *FindXmlAttribute(const XmlNode &element, std::string_view name) {
    const XmlAttribute *found = FindNamed(element.attributes, name);
    return found == nullptr ? nullptr : &found->value;
}

XmlNode XmlTextElement(std::string name, std::string text) {
    XmlNode element{std::move(name), {}, {}, {}};
    if (!text.empty()) {
        element.children.push_back({{}, std::move(text), {}, {}});
    }
    return element;
}

std::string XmlDocumentText(const XmlNode &root) {
    std::string out(kHead);
    AppendNode(out, root, 0);
    return out;
}

} // namespace drevix
