#include "platform/base/status.h"
#include "platform/files/file_update.h"
#include "platform/plist/property_list.h"
#include "platform/plist/property_list_text.h"
#include "platform/xml/xml_characters.h"

#include <algorithm>
#include <limits>
#include <new>

namespace drevix {
namespace {

constexpr std::size_t kFlushSize = std::size_t{64} << 10;
constexpr std::size_t kDataLineLength = 76; // base64 characters (RFC 2045, section 6.8)
constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                   "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                   "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                   "<plist version=\"1.0\">\n";
constexpr std::string_view kTail = "</plist>\n";
constexpr std::string_view kArrayHead = "<array>\n";
constexpr std::string_view kArrayTail = "</array>\n";

// Writes values as XML, each on its own line, indented by `depth` tabs. Recurses as deep as the value is
// nested.
class XmlAppender {
  public:
    XmlAppender(std::string *out, std::size_t depth) : fOut(*out), fDepth(depth) {}

    void Append(const PropertyList &value) { std::visit(*this, value.Get()); }

    void operator()(bool value) { Line(value ? "<true/>" : "<false/>"); }
    void operator()(std::int64_t value) {
        Element("<integer>", "</integer>\n", [&] { AppendIntegerText(fOut, value); });
    }
    void operator()(std::uint64_t value) {
        Element("<integer>", "</integer>\n", [&] { AppendIntegerText(fOut, value); });
    }
    void operator()(double value) {
        Element("<real>", "</real>\n", [&] { AppendRealText(fOut, value); });
    }
    void operator()(const std::string &value) {
        Element("<string>", "</string>\n", [&] { AppendCharacters(fOut, value); });
    }
    void operator()(PropertyListDate value) {
        Element("<date>", "</date>\n", [&] { AppendDateText(fOut, value); });
    }
    void operator()(const PropertyListData &value) {
        Line("<data>");
        std::string text;
        AppendBase64Text(text, value.bytes);
        for (std::string_view rest = text; !rest.empty();
             rest.remove_prefix(std::min(rest.size(), kDataLineLength))) {
            Line(rest.substr(0, kDataLineLength));
        }
        Line("</data>");
    }
    void operator()(const PropertyListArray &value) {
        Container(value.empty(), "<array>", "</array>", "<array/>", [&] {
            for (const PropertyList &element : value) {
                Append(element);
            }
        });
    }
    void operator()(const PropertyListDictionary &value) {
        Container(value.Entries().empty(), "<dict>", "</dict>", "<dict/>", [&] {
            for (const auto &[key, entry] : value.Entries()) {
                Element("<key>", "</key>\n", [&key = key, this] { AppendCharacters(fOut, key); });
                Append(entry);
            }
        });
    }

  private:
    void Line(std::string_view text) {
        fOut.append(fDepth, '\t');
        fOut += text;
        fOut += '\n';
    }

    template <typename Content>
    void Element(std::string_view start, std::string_view end, const Content &content) {
        fOut.append(fDepth, '\t');
        fOut += start;
        content();
        fOut += end;
    }

    template <typename Content>
    void Container(bool empty, std::string_view start, std::string_view end, std::string_view whole,
                   const Content &content) {
        if (empty) {
            Line(whole);
            return;
        }
        Line(start);
        ++fDepth;
        content();
        --fDepth;
        Line(end);
    }

    std::string &fOut;
    std::size_t fDepth;
};

void AppendElement(std::string *out, const PropertyList &element) {
    XmlAppender(out, 1).Append(element);
}

} // namespace

struct PropertyListArrayWriter::State {
    FileUpdate update;
    std::string pending; // not yet in the file
    OSErr status = rfNumErr;

    // Writes what is pending. Remembers a failure: nothing may follow missing bytes.
    OSErr Flush() {
        for (std::string_view rest = pending; status == noErr && !rest.empty();) {
            const auto count = static_cast<std::int32_t>(
                std::min<std::size_t>(rest.size(), std::numeric_limits<std::int32_t>::max()));
            // const_cast: the buffer is also used for reading; writing does not change it.
            IOParam transfer = {update.File(), const_cast<char *>(rest.data()), count, 0, fsAtMark, 0};
            status = PBWriteSync(&transfer);
            rest.remove_prefix(static_cast<std::size_t>(transfer.ioActCount));
        }
        pending.clear();
        return status;
    }
};

PropertyListArrayWriter::PropertyListArrayWriter() = default;
PropertyListArrayWriter::~PropertyListArrayWriter() = default;

OSErr PropertyListArrayWriter::Open(const std::string &path) try {
    if (fState != nullptr) {
        return fBsyErr;
    }
    auto state = std::make_unique<State>();
    state->pending = kHead;
    state->pending += kArrayHead;
    state->status = state->update.Open(path, UpdateMethod::InPlace);
    if (state->status == noErr) {
        fState = std::move(state);
        return noErr;
    }
    return state->status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr PropertyListArrayWriter::Add(const PropertyList &element) try {
    if (fState == nullptr) {
        return rfNumErr;
    }
    if (fState->status == noErr) {
        AppendElement(&fState->pending, element);
    }
    return fState->pending.size() < kFlushSize ? fState->status : fState->Flush();
} catch (const std::bad_alloc &) {
    return fState->status = memFullErr;
}

OSErr PropertyListArrayWriter::Finish() try {
    if (fState == nullptr) {
        return rfNumErr;
    }
    const std::unique_ptr<State> state = std::move(fState);
    state->pending += kArrayTail;
    state->pending += kTail;
    const OSErr status = state->Flush();
    return status == noErr ? state->update.Commit() : status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

std::string PropertyListArrayText(const PropertyListArray &elements) {
    std::string text(kHead);
    text += kArrayHead;
    for (const PropertyList &element : elements) {
        AppendElement(&text, element);
    }
    text += kArrayTail;
    text += kTail;
    return text;
}

std::string PropertyListText(const PropertyList &root) {
    std::string text(kHead);
    XmlAppender(&text, 0).Append(root);
    text += kTail;
    return text;
}

} // namespace drevix
