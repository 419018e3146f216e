#include "platform/xml/xml_parser.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <type_traits>

namespace drevix {

static_assert(std::is_same_v<XmlCharacters, const xmlChar *>);

struct XmlParser::Library {
    xmlParserCtxtPtr parser = nullptr;

    Library() = default;
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
    ~Library() {
        if (parser != nullptr) {
            // The parser creates its own document at an entity declaration.
            xmlFreeDoc(parser->myDoc);
            xmlFreeParserCtxt(parser);
        }
    }

    static xmlSAXHandler Handler(const Calls &calls);
    static int OnRead(void *parser, char *buffer, int size);
    static void OnError(void *parser, xmlErrorPtr error);
    static xmlEntityPtr OnEntity(void *parser, const xmlChar *name);
    static void OnDocumentType(void *parser, const xmlChar *name, const xmlChar *, const xmlChar *);
    static void OnAttribute(void *parser, const xmlChar *element, const xmlChar *name, int type, int kind,
                            const xmlChar *value, xmlEnumerationPtr values);
    template <XmlProblem kProblem, typename... Arguments>
    static void OnDeclaration(void *parser, Arguments...);
};

// Without a callback for the external subset none is ever loaded.
xmlSAXHandler XmlParser::Library::Handler(const Calls &calls) {
    xmlSAXHandler handler{};
    handler.initialized = 1; // not XML_SAX2_MAGIC, which enables namespaces
    handler.startElement = calls.start;
    handler.endElement = calls.end;
    handler.characters = calls.text;
    handler.ignorableWhitespace =
        calls.text; // the same function, so that the parser need not distinguish them
    handler.getEntity = OnEntity;
    handler.getParameterEntity = OnEntity;
    handler.internalSubset = OnDocumentType;
    handler.entityDecl = OnDeclaration<XmlProblem::EntityDeclaration>;
    handler.unparsedEntityDecl = OnDeclaration<XmlProblem::EntityDeclaration>;
    handler.notationDecl = OnDeclaration<XmlProblem::Declaration>;
    handler.attributeDecl = OnAttribute;
    handler.elementDecl = OnDeclaration<XmlProblem::Declaration>;
    return handler;
}

int XmlParser::Library::OnRead(void *parser, char *buffer, int size) {
    int count = -1;
    Run<XmlParser>(parser, [&](XmlParser &self) {
        const std::size_t read = self.ReadBytes(std::span(buffer, static_cast<std::size_t>(size)));
        count = self.fStatus == noErr ? static_cast<int>(read) : -1;
    });
    return count;
}

void XmlParser::Library::OnError(void *parser, xmlErrorPtr error) {
    Run<XmlParser>(parser, [&](XmlParser &self) {
        if (error->code == XML_ERR_NO_MEMORY) {
            self.Stop(memFullErr);
        } else if (error->level >= XML_ERR_ERROR) {
            self.Notice(error->code == XML_ERR_TAG_NAME_MISMATCH ? XmlProblem::WrongEndTag
                                                                 : XmlProblem::Malformed,
                        error->message);
        }
    });
}

// Called for entities other than the five predefined ones, none of which can be declared.
xmlEntityPtr XmlParser::Library::OnEntity(void *parser, const xmlChar * /*name*/) {
    Run<XmlParser>(parser, [](XmlParser &self) { self.Notice(XmlProblem::Entity, nullptr); });
    return nullptr;
}

void XmlParser::Library::OnDocumentType(void *parser, const xmlChar * /*name*/, const xmlChar * /*publicId*/,
                                        const xmlChar * /*systemId*/) {
    Run<XmlParser>(parser, [](XmlParser &self) { self.BeginDocumentType(); });
}

// The callee owns the list of values.
void XmlParser::Library::OnAttribute(void *parser, const xmlChar *element, const xmlChar *name, int /*type*/,
                                     int /*kind*/, const xmlChar *value, xmlEnumerationPtr values) {
    xmlFreeEnumeration(values);
    Run<XmlParser>(parser, [&](XmlParser &self) {
        self.Notice(XmlProblem::Declaration, nullptr);
        if (value != nullptr && self.Status() == noErr) {
            self.AddDefault(element, name, value);
        }
    });
}

template <XmlProblem kProblem, typename... Arguments>
void XmlParser::Library::OnDeclaration(void *parser, Arguments...) {
    Run<XmlParser>(parser, [](XmlParser &self) { self.Notice(kProblem, nullptr); });
}

XmlParser::XmlParser() : fLibrary(std::make_unique<Library>()) {}

XmlParser::~XmlParser() = default;

OSErr XmlParser::Parse(XmlParsing parsing, const Calls &calls) {
    // The thread's handler also gets errors that libxml2 does not tie to a parser, such as encoding errors.
    const xmlStructuredErrorFunc before = xmlStructuredError;
    void *const beforeContext = xmlStructuredErrorContext;
    xmlSetStructuredErrorFunc(this, Library::OnError);
    ParseDocument(parsing, calls);
    xmlSetStructuredErrorFunc(beforeContext, before);
    if (fThrown) {
        std::rethrow_exception(fThrown);
    }
    return fStatus;
}

void XmlParser::ParseDocument(XmlParsing parsing, const Calls &calls) {
    const bool isUtf8 = parsing != XmlParsing::Strict;
    xmlSAXHandler handler = Library::Handler(calls);
    fLibrary->parser = xmlCreateIOParserCtxt(&handler, this, Library::OnRead, nullptr, this,
                                             isUtf8 ? XML_CHAR_ENCODING_UTF8 : XML_CHAR_ENCODING_NONE);
    if (fLibrary->parser == nullptr) {
        Stop(fStatus == noErr ? memFullErr : fStatus);
        return;
    }
    Run<XmlParser>(this, [](XmlParser &self) { self.Begin(); });
    // There are no entities to replace, but without this option "&amp;" in an attribute arrives as "&#38;".
    xmlCtxtUseOptions(fLibrary->parser, XML_PARSE_NONET | XML_PARSE_NOENT |
                                            (isUtf8 ? XML_PARSE_IGNORE_ENC : 0) |
                                            (parsing == XmlParsing::Utf8Recovering ? XML_PARSE_RECOVER : 0));
    xmlParseDocument(fLibrary->parser);
}

void XmlParser::KeepThrown() {
    fThrown = std::current_exception();
    Stop(memFullErr);
}

// OnRead returns no more bytes after this. (xmlStopParser frees buffers at once, which the parser may still
// use after its error handler.)
void XmlParser::Stop(OSErr status) {
    fStatus = status;
    if (fLibrary->parser != nullptr) {
        fLibrary->parser->disableSAX = 1;
    }
}

XmlCharacters XmlParser::NameInParser(const char *name) const {
    return xmlDictLookup(fLibrary->parser->dict, BAD_CAST name, -1);
}

int XmlParser::Line() const {
    const xmlParserCtxt *parser = fLibrary->parser;
    return parser != nullptr && parser->input != nullptr ? parser->input->line : 0;
}

bool XmlParser::IsWellFormed() const {
    return fLibrary->parser->wellFormed != 0;
}

// The parser takes a NUL byte after the root as the end, and drops an incomplete character there.
bool XmlParser::IsAtEnd() const {
    const xmlParserInput *input = fLibrary->parser->input;
    return input != nullptr && input->cur == input->end &&
           (input->buf == nullptr || input->buf->raw == nullptr || xmlBufUse(input->buf->raw) == 0);
}

} // namespace drevix
