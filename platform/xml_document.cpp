#include "platform/xml_document.h"

#include "platform/property_list_text.h"
#include "platform/status.h"
#include "platform/xml_text.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

namespace drevix {
namespace {

constexpr OSErr kDamaged = -1;
constexpr int kMostErrors = 1000; // that a recovering reading puts up with
constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr std::size_t kIndent = 4;

// One reading of one document. libxml2 pulls the text and calls back; our tree is built from the calls, which
// takes less memory than making its own first, and lets a document beyond the bounds be stopped in time. With
// the calls of its first interface it resolves no name spaces, whose lookups a hostile file could make slow.
// Nothing may be thrown through it: what is thrown in a callback is kept and thrown again behind it.
class XmlReader {
  public:
    XmlReader(std::string_view text, XmlReading reading) : fText(text), fReading(reading) {
        fOpen.reserve(kXmlMaxDepth);
    }
    XmlReader(const XmlReader &) = delete;
    XmlReader &operator=(const XmlReader &) = delete;
    ~XmlReader();

    OSErr Read(XmlNode *root, bool *isRootEnded, std::size_t *elements);

  private:
    static xmlSAXHandler Callbacks();
    static int OnRead(void *self, char *buffer, int size);
    static void OnStart(void *self, const xmlChar *name, const xmlChar **attributes);
    static void OnEnd(void *self, const xmlChar *name);
    static void OnText(void *self, const xmlChar *text, int length);
    static void OnError(void *self, xmlErrorPtr error);
    static xmlEntityPtr OnEntity(void *self, const xmlChar *name);
    template <typename... Arguments>
    static void OnDeclaration(void *self, Arguments...);
    template <typename Step>
    static void Run(void *self, const Step &step) noexcept;

    void Parse();
    void Start(const xmlChar *name, const xmlChar **attributes);
    void End();
    void AddText(std::string_view text);
    [[nodiscard]] std::string Mended(std::string_view text) const;
    bool CountNode();
    void Stop(OSErr status);

    std::string_view fText; // not yet given to the parser
    XmlReading fReading;
    OSErr fStatus = noErr;
    std::exception_ptr fThrown;
    xmlParserCtxtPtr fParser = nullptr;
    int fErrors = 0;

    XmlNode fRoot;
    std::vector<XmlNode> fOpen; // the root first
    std::size_t fNodes = 0;
    std::size_t fElements = 0;
    bool fHasRoot = false;
};

std::string_view TextOf(const xmlChar *text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char *>(text);
}

std::string LocalName(const xmlChar *name) {
    const std::string_view whole = TextOf(name);
    const std::size_t colon = whole.find(':');
    // A name that ends in a colon has no local part; it must not look like text.
    return std::string(colon + 1 < whole.size() || colon == whole.npos ? whole.substr(colon + 1) : whole);
}

XmlReader::~XmlReader() {
    if (fParser != nullptr) {
        // The parser keeps a document of its own when it meets an entity declaration.
        xmlFreeDoc(fParser->myDoc);
        xmlFreeParserCtxt(fParser);
    }
}

OSErr XmlReader::Read(XmlNode *root, bool *isRootEnded, std::size_t *elements) {
    // The thread's handler gets the errors that libxml2 ties to no parser too.
    const xmlStructuredErrorFunc before = xmlStructuredError;
    void *const beforeContext = xmlStructuredErrorContext;
    xmlSetStructuredErrorFunc(this, OnError);
    Parse();
    xmlSetStructuredErrorFunc(beforeContext, before);
    if (fThrown) {
        std::rethrow_exception(fThrown);
    }
    if (fStatus != noErr) {
        return fStatus;
    }
    *isRootEnded = fHasRoot && fOpen.empty();
    while (!fOpen.empty()) {
        End();
    }
    *root = std::move(fRoot);
    *elements = fElements;
    return fHasRoot ? noErr : kDamaged;
}

void XmlReader::Parse() {
    const bool recovers = fReading == XmlReading::Recovering;
    xmlSAXHandler callbacks = Callbacks();
    fParser = xmlCreateIOParserCtxt(&callbacks, this, OnRead, nullptr, this, XML_CHAR_ENCODING_UTF8);
    if (fParser == nullptr) {
        Stop(fStatus == noErr ? memFullErr : fStatus);
        return;
    }
    // There are no entities to replace, but without that option an attribute's "&amp;" comes as "&#38;".
    xmlCtxtUseOptions(fParser, XML_PARSE_NONET | XML_PARSE_IGNORE_ENC | XML_PARSE_NOENT |
                                   (recovers ? XML_PARSE_RECOVER : 0));
    xmlParseDocument(fParser);
    // The parser takes a NUL byte behind the root for the end.
    const xmlParserInput *input = fParser->input;
    const bool readWhole = fText.empty() && input != nullptr && input->cur == input->end;
    if (fStatus == noErr && !recovers && (fParser->wellFormed == 0 || !readWhole)) {
        Stop(kDamaged);
    }
}

// Without a callback for the external subset none is ever loaded.
xmlSAXHandler XmlReader::Callbacks() {
    xmlSAXHandler callbacks{};
    callbacks.initialized = 1; // not XML_SAX2_MAGIC, which asks for name spaces
    callbacks.startElement = OnStart;
    callbacks.endElement = OnEnd;
    callbacks.characters = OnText;
    callbacks.ignorableWhitespace = OnText;
    callbacks.getEntity = OnEntity;
    callbacks.getParameterEntity = OnEntity;
    callbacks.entityDecl = OnDeclaration;
    callbacks.unparsedEntityDecl = OnDeclaration;
    callbacks.notationDecl = OnDeclaration;
    callbacks.attributeDecl = OnDeclaration;
    callbacks.elementDecl = OnDeclaration;
    return callbacks;
}

template <typename Step>
void XmlReader::Run(void *self, const Step &step) noexcept {
    auto *reader = static_cast<XmlReader *>(self);
    if (reader->fStatus != noErr) {
        return;
    }
    try {
        step(*reader);
    } catch (...) {
        reader->fThrown = std::current_exception();
        reader->Stop(memFullErr);
    }
}

int XmlReader::OnRead(void *self, char *buffer, int size) {
    int count = -1;
    Run(self, [&](XmlReader &reader) {
        const std::string_view piece = reader.fText.substr(0, static_cast<std::size_t>(size));
        std::ranges::copy(piece, buffer);
        reader.fText.remove_prefix(piece.size());
        count = static_cast<int>(piece.size());
    });
    return count;
}

void XmlReader::OnStart(void *self, const xmlChar *name, const xmlChar **attributes) {
    Run(self, [&](XmlReader &reader) { reader.Start(name, attributes); });
}

void XmlReader::OnEnd(void *self, const xmlChar * /*name*/) {
    Run(self, [](XmlReader &reader) { reader.End(); });
}

void XmlReader::OnText(void *self, const xmlChar *text, int length) {
    const std::string_view piece(reinterpret_cast<const char *>(text), static_cast<std::size_t>(length));
    Run(self, [&](XmlReader &reader) { reader.AddText(piece); });
}

void XmlReader::OnError(void *self, xmlErrorPtr error) {
    Run(self, [&](XmlReader &reader) {
        if (error->code == XML_ERR_NO_MEMORY) {
            reader.Stop(memFullErr);
        } else if (error->level >= XML_ERR_ERROR &&
                   (reader.fReading == XmlReading::Strict || ++reader.fErrors > kMostErrors)) {
            reader.Stop(kDamaged);
        }
    });
}

// Called for entities other than the five predefined ones. None can be declared, and a text that uses one is
// mended before it is read in the recovering way.
xmlEntityPtr XmlReader::OnEntity(void *self, const xmlChar * /*name*/) {
    Run(self, [](XmlReader &reader) { reader.Stop(kDamaged); });
    return nullptr;
}

template <typename... Arguments>
void XmlReader::OnDeclaration(void *self, Arguments...) {
    Run(self, [](XmlReader &reader) { reader.Stop(kDamaged); });
}

// The parser, recovering, may go on in the middle of a character.
std::string XmlReader::Mended(std::string_view text) const {
    return fReading == XmlReading::Recovering && !text.empty() ? MendUtf8(text) : std::string(text);
}

bool XmlReader::CountNode() {
    if (++fNodes > kXmlMaxNodes) {
        Stop(kDamaged);
    }
    return fNodes <= kXmlMaxNodes;
}

void XmlReader::Start(const xmlChar *name, const xmlChar **attributes) {
    if (fOpen.empty() && fHasRoot) {
        return; // another element behind the root's end
    }
    if (fOpen.size() == kXmlMaxDepth) {
        return Stop(kDamaged);
    }
    if (!CountNode()) {
        return;
    }
    ++fElements;
    fHasRoot = true;
    XmlNode &node = fOpen.emplace_back();
    node.name = LocalName(name);
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
        node.attributes.push_back({LocalName(attributes[0]), Mended(TextOf(attributes[1]))});
    }
}

void XmlReader::End() {
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

void XmlReader::AddText(std::string_view text) {
    if (fOpen.empty()) {
        return;
    }
    std::vector<XmlNode> &siblings = fOpen.back().children;
    if (siblings.empty() || siblings.back().IsElement()) {
        if (!CountNode()) {
            return;
        }
        siblings.emplace_back();
    }
    siblings.back().text += text;
}

// Nothing is called back from now on, and OnRead gives no more text, so the parser soon comes to its end.
void XmlReader::Stop(OSErr status) {
    fStatus = status;
    if (fParser != nullptr) {
        fParser->disableSAX = 1;
    }
}

void AppendAttributeValue(std::string &out, std::string_view value) {
    std::string text;
    AppendCharacters(text, value);
    for (const char c : text) {
        // A reader would make a blank of each of these.
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

// Recurses as deep as the tree. With `depth` kInline nothing is added between the tags.
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
        return kDamaged;
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
        return kDamaged;
    }
    XmlNode root;
    bool isRootEnded = false;
    std::size_t elements = 0;
    const OSErr status = XmlReader(text, reading).Read(&root, &isRootEnded, &elements);
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

const XmlNode *FindXmlChild(const XmlNode &element, std::string_view name) {
    const auto found = std::ranges::find(element.children, name, &XmlNode::name);
    return found == element.children.end() ? nullptr : &*found;
}

const std::string *FindXmlAttribute(const XmlNode &element, std::string_view name) {
    const auto found = std::ranges::find(element.attributes, name, &XmlAttribute::name);
    return found == element.attributes.end() ? nullptr : &found->value;
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
