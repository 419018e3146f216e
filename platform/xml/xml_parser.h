// Parsing XML with libxml2, for the readers of XML in this folder. It pulls the bytes and calls back tag by
// tag, which takes less memory than a tree of its own, and lets a document beyond the bounds be stopped in
// time. There are no name spaces (whose lookups a hostile file could make slow), no network, no entities but
// the five predefined ones, and no declarations.
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

// UTF-8 that ends with a NUL, as libxml2 has it.
using XmlCharacters = const unsigned char *;

// What a document may not have, or may not everywhere. `Entity` is the use of one that is not predefined, the last is
// that of an element, an attribute or a notation.
enum class XmlProblem : std::uint8_t { Malformed, WrongEndTag, Entity, EntityDeclaration, Declaration };

// How the bytes become text, and whether to go on behind what is malformed.
enum class XmlParsing : std::uint8_t {
    Strict,         // in the encoding that the document declares
    Utf8Strict,     // in UTF-8, whatever is declared
    Utf8Recovering, // the same
};

// A reader derives from it. One object parses one document.
class XmlParser {
  public:
    XmlParser(const XmlParser &) = delete;
    XmlParser &operator=(const XmlParser &) = delete;
    virtual ~XmlParser();

  protected:
    XmlParser();

    // Parses. `Reader` is the class derived, with three public functions more for the tags and the text:
    //   Start(XmlCharacters name, const XmlCharacters *attributes): names and values in turn, then a null; or
    //     null for no attributes
    //   End()
    //   AddText(std::string_view text): the next part of a text, however short
    // noErr, even for what is not well-formed; what Stop was given; or memFullErr. Throws what a function
    // called has thrown.
    template <typename Reader>
    [[nodiscard]] OSErr Parse(XmlParsing parsing) {
        return Parse(parsing, Calls{OnStart<Reader>, OnEnd<Reader>, OnText<Reader>});
    }

    // Called first, when names can be asked for.
    virtual void Begin() {}
    // Gives the next bytes of the document. Returns their number, 0 at the end.
    virtual std::size_t ReadBytes(std::span<char> buffer) = 0;
    // Called for each problem. The message is libxml2's about what is malformed, else null. Where nothing is
    // stopped, the parse goes on if it recovers, and ends soon if not.
    virtual void Notice(XmlProblem problem, const char *message) = 0;

    // Called at a document type declaration, and for each attribute that it gives a value where a tag does not.
    virtual void BeginDocumentType() {}
    virtual void AddDefault(XmlCharacters /*element*/, XmlCharacters /*attribute*/, XmlCharacters /*value*/) {
    }

    // From now on nothing is called any more, and the parse soon ends with that status.
    void Stop(OSErr status);
    [[nodiscard]] OSErr Status() const { return fStatus; }
    // Where the parser keeps a name, with which Start is called then; null without memory.
    [[nodiscard]] XmlCharacters NameInParser(const char *name) const;
    // Of what was parsed last, from 1; 0 when not known.
    [[nodiscard]] int Line() const;
    // After a parse that nothing has stopped: whether all was well-formed, and whether nothing follows.
    [[nodiscard]] bool IsWellFormed() const;
    [[nodiscard]] bool IsAtEnd() const;

  private:
    struct Library;

    struct Calls {
        void (*start)(void *parser, XmlCharacters name, XmlCharacters *attributes);
        void (*end)(void *parser, XmlCharacters name);
        void (*text)(void *parser, XmlCharacters text, int length);
    };

    // Nothing may be thrown through libxml2: what is thrown in a callback is kept and thrown again behind it.
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

    // libxml2's callbacks for what comes most often. They are made for each reader, so that its functions are
    // compiled into them.
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
