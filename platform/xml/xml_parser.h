// Parses XML with libxml2 as a stream: pulls the bytes and calls back per tag. This takes less memory than
// libxml2's tree and stops a document beyond the limits early. No namespaces (whose lookups a hostile file
// could make slow), no network, no entities except the five predefined ones, no declarations.
#pragma once

#include "platform/base/status.h"
#include "platform/base/types.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string_view>

namespace drevix {

// NUL-terminated UTF-8, as libxml2 uses it.
using XmlCharacters = const unsigned char *;

// Problems in a document. `Entity` is the use of one that is not predefined; the last is the declaration of
// an element, attribute or notation.
enum class XmlProblem : std::uint8_t { Malformed, WrongEndTag, Entity, EntityDeclaration, Declaration };

// How to decode the bytes, and whether to continue after malformed parts.
enum class XmlParsing : std::uint8_t {
    Strict,         // in the encoding that the document declares
    Utf8Strict,     // as UTF-8, whatever is declared
    Utf8Recovering, // the same
};

// Base class of a reader. One object parses one document.
class XmlParser {
  public:
    XmlParser(const XmlParser &) = delete;
    XmlParser &operator=(const XmlParser &) = delete;
    virtual ~XmlParser();

  protected:
    XmlParser();

    // Parses the document. `Reader` is the derived class, with three more public functions:
    //   Start(XmlCharacters name, const XmlCharacters *attributes): alternating names and values, then a
    //     null; or null for no attributes
    //   End()
    //   AddText(std::string_view text): the next part of a text, however short
    // noErr, even for a malformed document; the status passed to Stop; or memFullErr. Rethrows what a called
    // function threw.
    template <typename Reader>
    [[nodiscard]] OSErr Parse(XmlParsing parsing) {
        return Parse(parsing, Calls{OnStart<Reader>, OnEnd<Reader>, OnText<Reader>});
    }

    // Called first; NameInParser works from here on.
    virtual void Begin() {}
    // Reads the next bytes of the document; returns their number, 0 at the end.
    virtual std::size_t ReadBytes(std::span<char> buffer) = 0;
    // Called for each problem, with libxml2's message for malformed parts, else null. Unless Stop is called,
    // a recovering parse continues and a strict one soon ends.
    virtual void Notice(XmlProblem problem, const char *message) = 0;

    // Called at a document type declaration, and for each attribute default in it.
    virtual void BeginDocumentType() {}
    virtual void AddDefault(XmlCharacters /*element*/, XmlCharacters /*attribute*/, XmlCharacters /*value*/) {
    }

    // No more calls after this; the parse soon ends with that status.
    void Stop(OSErr status);
    [[nodiscard]] OSErr Status() const { return fStatus; }
    // The parser's own pointer for a name, which it then passes to Start; null if out of memory.
    [[nodiscard]] XmlCharacters NameInParser(const char *name) const;
    // The line parsed last, from 1; 0 if unknown.
    [[nodiscard]] int Line() const;
    // After a parse that was not stopped: whether it was well-formed, and whether nothing follows.
    [[nodiscard]] bool IsWellFormed() const;
    [[nodiscard]] bool IsAtEnd() const;

  private:
    struct Library;

    struct Calls {
        void (*start)(void *parser, XmlCharacters name, XmlCharacters *attributes);
        void (*end)(void *parser, XmlCharacters name);
        void (*text)(void *parser, XmlCharacters text, int length);
    };

    // Exceptions must not cross libxml2: one thrown in a callback is stored and rethrown afterwards.
    template <typename Reader, typename Step>
    static void Run(void *parser, const Step &step) noexcept {
        auto *self = static_cast<XmlParser *>(parser);
        if (self->fStatus != noErr) {
            return;
        }
        try {
            step(static_cast<Reader &>(*self));
        } catch (...) {
            self->KeepThrown();
        }
    }
    void KeepThrown();

    // libxml2's most frequent callbacks, instantiated per reader so that its functions are inlined.
    template <typename Reader>
    static void OnStart(void *parser, XmlCharacters name, XmlCharacters *attributes) {
        Run<Reader>(parser, [&](Reader &reader) { reader.Start(name, attributes); });
    }
    template <typename Reader>
    static void OnEnd(void *parser, XmlCharacters /*name*/) {
        Run<Reader>(parser, [](Reader &reader) { reader.End(); });
    }
    template <typename Reader>
    static void OnText(void *parser, XmlCharacters text, int length) {
        const std::string_view piece(reinterpret_cast<const char *>(text), static_cast<std::size_t>(length));
        Run<Reader>(parser, [&](Reader &reader) { reader.AddText(piece); });
    }

    OSErr Parse(XmlParsing parsing, const Calls &calls);
    void ParseDocument(XmlParsing parsing, const Calls &calls);

    std::unique_ptr<Library> fLibrary;
    OSErr fStatus = noErr;
    std::exception_ptr fThrown;
};

} // namespace drevix
