#include "platform/property_list_reading.h"
#include "platform/property_list_text.h"
#include "platform/status.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <new>
#include <optional>

namespace drevix {
namespace {

// The elements of the document type, the most frequent first, as each name is looked up from the front.
enum class Element : std::uint8_t { Key, Integer, String, Dict, True, False, Array, Real, Data, Date, Plist };
constexpr auto kElementNames = std::to_array(
    {"key", "integer", "string", "dict", "true", "false", "array", "real", "data", "date", "plist"});
static_assert(kElementNames.size() == static_cast<std::size_t>(Element::Plist) + 1);

// An array or a dictionary whose end has not come yet. It stays empty where its elements are handed over.
struct OpenContainer {
    bool isDictionary;
    PropertyListArray array;
    PropertyListDictionary dictionary;
    std::optional<std::string> key; // waits for its value
};

// The parser lets no other character up to the blank pass than those that XML counts as white space.
bool IsBlank(std::string_view text) {
    return std::ranges::all_of(text,
                               [](char character) { return static_cast<unsigned char>(character) <= ' '; });
}

// What the parser says, cut to one line of plain ASCII: it may quote bytes of the file.
std::string PlainLine(const char *message) {
    constexpr std::size_t kMostCharacters = 200;
    std::string line(message == nullptr ? "" : message);
    line.resize(std::min({line.size(), line.find('\n'), kMostCharacters}));
    std::ranges::replace_if(
        line, [](char c) { return c < ' ' || c > '~'; }, '?');
    return line;
}

// One reading of one list. libxml2 pulls the bytes and calls back; nothing may be thrown through it, so what
// is thrown in a callback is kept and thrown again behind it.
class XmlListReader {
  public:
    XmlListReader(ListBytes *bytes, HandOver what, const PropertyListElementHandler *handler,
                  PropertyListProblem *problem)
        : fBytes(*bytes), fHandler(*handler), fProblem(*problem),
          fHandOverDepth(what == HandOver::Root ? 0 : 1) {
        fOpen.reserve(kPropertyListMaxDepth);
    }
    XmlListReader(const XmlListReader &) = delete;
    XmlListReader &operator=(const XmlListReader &) = delete;
    ~XmlListReader();

    OSErr Read();

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

    void ParseDocument();
    void InternNames();
    void Start(const xmlChar *name);
    void StartPlist();
    void StartValue(Element element);
    void End();
    void EndContainer();
    void EndLeaf(Element element);
    template <typename Value>
    void AddParsed(std::optional<Value> value, const char *problem);
    template <typename Value>
    void AddValue(Value value);
    void GiveOver(PropertyList element);
    void Stop(OSErr status);
    void Damaged(std::string text);

    ListBytes &fBytes;
    const PropertyListElementHandler &fHandler;
    PropertyListProblem &fProblem;
    const std::size_t fHandOverDepth; // what lies in so many open containers is handed over
    OSErr fStatus = noErr;
    std::exception_ptr fThrown;
    xmlParserCtxtPtr fParser = nullptr;
    std::array<const xmlChar *, kElementNames.size()> fNames{}; // as the parser holds them

    bool fInPlist = false;
    bool fHasRoot = false;
    std::vector<OpenContainer> fOpen;
    std::optional<Element> fLeaf; // the open element that holds text
    std::string fText;            // what it holds so far
    std::size_t fValues = 0;      // of the element that is being read
    std::size_t fTextBytes = 0;
};

XmlListReader::~XmlListReader() {
    if (fParser != nullptr) {
        // The parser keeps a document of its own when it meets an entity declaration.
        xmlFreeDoc(fParser->myDoc);
        xmlFreeParserCtxt(fParser);
    }
}

OSErr XmlListReader::Read() {
    // The thread's handler gets the errors that libxml2 ties to no parser too, such as those of a text
    // encoding.
    const xmlStructuredErrorFunc before = xmlStructuredError;
    void *const beforeContext = xmlStructuredErrorContext;
    xmlSetStructuredErrorFunc(this, OnError);
    ParseDocument();
    xmlSetStructuredErrorFunc(beforeContext, before);
    if (fThrown) {
        std::rethrow_exception(fThrown);
    }
    return fStatus;
}

void XmlListReader::ParseDocument() {
    xmlSAXHandler callbacks = Callbacks();
    fParser = xmlCreateIOParserCtxt(&callbacks, this, OnRead, nullptr, this, XML_CHAR_ENCODING_NONE);
    if (fParser == nullptr) {
        fStatus = fStatus == noErr ? memFullErr : fStatus;
        return;
    }
    InternNames();
    xmlCtxtUseOptions(fParser, XML_PARSE_NONET);
    xmlParseDocument(fParser);
    if (fStatus != noErr) {
        return;
    }
    // The parser takes a NUL byte behind the root for the end, and drops half a character there.
    const xmlParserInput *input = fParser->input;
    const bool readWhole =
        input != nullptr && input->cur == input->end &&
        (input->buf == nullptr || input->buf->raw == nullptr || xmlBufUse(input->buf->raw) == 0);
    if (fParser->wellFormed == 0) {
        Damaged("it is not well-formed");
    } else if (!readWhole) {
        Damaged("something follows the list");
    }
}

// Without a callback for the external subset none is ever loaded.
xmlSAXHandler XmlListReader::Callbacks() {
    xmlSAXHandler callbacks{};
    callbacks.initialized =
        1; // not XML_SAX2_MAGIC: lists have no name spaces, and without them parsing is faster
    callbacks.startElement = OnStart;
    callbacks.endElement = OnEnd;
    callbacks.characters = OnText;
    callbacks.ignorableWhitespace = OnText; // one and the same, which spares the parser telling them apart
    callbacks.getEntity = OnEntity;
    callbacks.getParameterEntity = OnEntity;
    callbacks.entityDecl = OnDeclaration;
    callbacks.unparsedEntityDecl = OnDeclaration;
    callbacks.notationDecl = OnDeclaration;
    callbacks.attributeDecl = OnDeclaration;
    callbacks.elementDecl = OnDeclaration;
    return callbacks;
}

void XmlListReader::InternNames() {
    for (std::size_t i = 0; i < fNames.size(); ++i) {
        fNames[i] = xmlDictLookup(fParser->dict, BAD_CAST kElementNames[i], -1);
    }
    if (std::ranges::count(fNames, nullptr) > 0) {
        Stop(memFullErr);
    }
}

template <typename Step>
void XmlListReader::Run(void *self, const Step &step) noexcept {
    auto *reader = static_cast<XmlListReader *>(self);
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

int XmlListReader::OnRead(void *self, char *buffer, int size) {
    int count = -1;
    Run(self, [&](XmlListReader &reader) {
        std::span<const std::byte> ahead;
        const OSErr status = reader.fBytes.Ahead(&ahead);
        if (status == kDamagedList) {
            reader.fProblem.text = kListTooLarge;
        }
        if (status != noErr) {
            return reader.Stop(status);
        }
        const std::size_t moved = std::min(ahead.size(), static_cast<std::size_t>(size));
        std::copy_n(ahead.begin(), moved, reinterpret_cast<std::byte *>(buffer));
        reader.fBytes.Skip(moved);
        count = static_cast<int>(moved);
    });
    return count;
}

void XmlListReader::OnStart(void *self, const xmlChar *name, const xmlChar ** /*attributes*/) {
    Run(self, [&](XmlListReader &reader) { reader.Start(name); });
}

void XmlListReader::OnEnd(void *self, const xmlChar * /*name*/) {
    Run(self, [](XmlListReader &reader) { reader.End(); });
}

void XmlListReader::OnText(void *self, const xmlChar *text, int length) {
    const std::string_view piece(reinterpret_cast<const char *>(text), static_cast<std::size_t>(length));
    Run(self, [&](XmlListReader &reader) {
        if (reader.fLeaf.has_value()) {
            reader.fTextBytes += piece.size();
            if (reader.fTextBytes > kPropertyListMaxText) {
                return reader.Damaged(kListTooMuchText);
            }
            reader.fText += piece;
        } else if (!IsBlank(piece)) {
            reader.Damaged("text stands outside a value");
        }
    });
}

void XmlListReader::OnError(void *self, xmlErrorPtr error) {
    Run(self, [&](XmlListReader &reader) {
        if (error->code == XML_ERR_NO_MEMORY) {
            reader.Stop(memFullErr);
        } else if (error->code == XML_ERR_TAG_NAME_MISMATCH) {
            reader.Damaged("it is not well-formed: an element ends with another's end tag");
        } else if (error->level >= XML_ERR_ERROR) {
            reader.Damaged("it is not well-formed: " + PlainLine(error->message));
        }
    });
}

// Called for entities other than the five predefined ones, none of which can be declared.
xmlEntityPtr XmlListReader::OnEntity(void *self, const xmlChar * /*name*/) {
    Run(self, [](XmlListReader &reader) { reader.Damaged("an entity is used that is not predefined"); });
    return nullptr;
}

template <typename... Arguments>
void XmlListReader::OnDeclaration(void *self, Arguments...) {
    Run(self, [](XmlListReader &reader) { reader.Damaged("its document type makes declarations"); });
}

void XmlListReader::Start(const xmlChar *name) {
    const auto found = std::ranges::find(fNames, name);
    if (found == fNames.end()) {
        return Damaged("an element is unknown");
    }
    const auto element = static_cast<Element>(found - fNames.begin());
    if (fLeaf.has_value()) {
        return Damaged("an element stands inside a value");
    }
    if (element == Element::Plist) {
        return StartPlist();
    }
    if (!fInPlist) {
        return Damaged("the root is not <plist>");
    }
    if (element != Element::Key) {
        return StartValue(element);
    }
    if (fOpen.empty() || !fOpen.back().isDictionary) {
        return Damaged("a key stands outside a dictionary");
    }
    if (fOpen.back().key.has_value()) {
        return Damaged("a key has no value");
    }
    fLeaf = element;
}

void XmlListReader::StartPlist() {
    if (fInPlist) {
        return Damaged("a <plist> stands inside the list");
    }
    fInPlist = true;
}

void XmlListReader::StartValue(Element element) {
    if (fOpen.empty() && fHasRoot) {
        return Damaged("there is more than one root");
    }
    if (fOpen.size() < fHandOverDepth && element != Element::Array) {
        return Damaged("the root is not an array");
    }
    if (!fOpen.empty() && fOpen.back().isDictionary && !fOpen.back().key.has_value()) {
        return Damaged("a value has no key");
    }
    if (fOpen.size() >= fHandOverDepth && ++fValues > kPropertyListMaxValues) {
        return Damaged(kListTooManyValues);
    }
    fHasRoot = true;
    if (element != Element::Array && element != Element::Dict) {
        fLeaf = element;
        return;
    }
    if (fOpen.size() == kPropertyListMaxDepth) {
        return Damaged(kListTooDeep);
    }
    fOpen.emplace_back().isDictionary = element == Element::Dict;
}

void XmlListReader::End() {
    if (fLeaf.has_value()) {
        const Element element = *fLeaf;
        fLeaf.reset();
        EndLeaf(element);
        fText.clear();
    } else if (!fOpen.empty()) {
        EndContainer();
    } else if (!fHasRoot) {
        Damaged(fHandOverDepth == 0 ? "it holds no value" : "it holds no array");
    }
}

void XmlListReader::EndContainer() {
    if (fOpen.back().key.has_value()) {
        return Damaged("a key has no value");
    }
    if (fOpen.size() == fHandOverDepth) { // the root, whose elements have been handed over
        fOpen.pop_back();
    } else if (fOpen.back().isDictionary) {
        PropertyListDictionary dictionary = std::move(fOpen.back().dictionary);
        fOpen.pop_back();
        AddValue(std::move(dictionary));
    } else {
        PropertyListArray array = std::move(fOpen.back().array);
        fOpen.pop_back();
        AddValue(std::move(array));
    }
}

void XmlListReader::EndLeaf(Element element) {
    switch (element) {
    case Element::Key:
        fOpen.back().key = fText;
        return;
    case Element::String:
        return AddValue(fText);
    case Element::Integer:
        return AddParsed(ParseIntegerText(fText), "an integer is malformed or too large");
    case Element::Real:
        return AddParsed(ParseRealText(fText), "a real number is malformed or too large");
    case Element::Data:
        return AddParsed(ParseBase64Text(fText), "data is not base64");
    case Element::Date:
        return AddParsed(ParseDateText(fText), "a date is malformed");
    default:
        return IsBlank(fText) ? AddValue(element == Element::True) : Damaged("a truth value holds text");
    }
}

template <typename Value>
void XmlListReader::AddParsed(std::optional<Value> value, const char *problem) {
    return value.has_value() ? AddValue(*std::move(value)) : Damaged(problem);
}

template <typename Value>
void XmlListReader::AddValue(Value value) {
    if (fOpen.size() == fHandOverDepth) {
        return GiveOver(std::move(value));
    }
    OpenContainer &container = fOpen.back();
    if (container.isDictionary) {
        container.dictionary.Add(*std::move(container.key), std::move(value));
        container.key.reset();
    } else {
        container.array.emplace_back(std::move(value));
    }
}

void XmlListReader::GiveOver(PropertyList element) {
    fValues = 0;
    fTextBytes = 0;
    if (!fHandler(element)) {
        Stop(userCanceledErr);
    }
}

// Nothing is called back from now on, and OnRead gives no more bytes, so the parser soon comes to its end.
// (Its own way to stop gives buffers up at once, at which it may still look behind its error handler.)
void XmlListReader::Stop(OSErr status) {
    fStatus = status;
    if (fParser != nullptr) {
        fParser->disableSAX = 1;
    }
}

void XmlListReader::Damaged(std::string text) {
    fProblem.text = std::move(text);
    fProblem.line = fParser != nullptr && fParser->input != nullptr ? fParser->input->line : 0;
    Stop(kDamagedList);
}

} // namespace

OSErr ReadXmlList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
                  PropertyListProblem *problem) {
    return XmlListReader(&bytes, what, &handler, problem).Read();
}

} // namespace drevix
