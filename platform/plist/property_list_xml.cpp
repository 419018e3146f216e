#include "platform/base/marked_text.h"
#include "platform/base/status.h"
#include "platform/plist/property_list_reading.h"
#include "platform/plist/property_list_text.h"
#include "platform/xml/xml_parser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <utility>

namespace drevix {
namespace {

// The elements of the document type, most frequent first, because lookup is linear.
enum class Element : std::uint8_t { Key, Integer, String, Dict, True, False, Array, Real, Data, Date, Plist };
constexpr auto kElementNames = std::to_array(
    {"key", "integer", "string", "dict", "true", "false", "array", "real", "data", "date", "plist"});
static_assert(kElementNames.size() == static_cast<std::size_t>(Element::Plist) + 1);

// An array or dictionary that is still open: one of the two, or neither for a root whose elements are passed
// on.
struct OpenContainer {
    PropertyListArray *array;
    PropertyListDictionary *dictionary;
};

// The parser accepts no character up to the blank except XML white space.
bool IsBlankOrControl(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

// For four characters: zero if all are blank. The sum sets the high bit of each byte above the blank.
std::uint32_t NotBlank(const char *characters) {
    constexpr std::uint32_t kEach = 0x01010101;
    std::uint32_t four = 0;
    std::memcpy(&four, characters, sizeof(four));
    return ((four + kEach * (0x7F - ' ')) | four) & (kEach * 0x80);
}

// Four at a time, the last ones maybe twice: there are blanks between any two tags, and one at a time they
// would take 5 % of all reading.
bool IsBlank(std::string_view text) {
    constexpr std::size_t kStep = sizeof(std::uint32_t);
    if (text.size() < kStep) {
        return std::ranges::all_of(text, [](char character) { return IsBlankOrControl(character); });
    }
    const char *const last = text.data() + text.size() - kStep;
    std::uint32_t found = NotBlank(last);
    for (const char *at = text.data(); at < last; at += kStep) {
        found |= NotBlank(at);
    }
    return found == 0;
}

// The parser's message, cut to one line of plain ASCII: it may quote bytes of the file.
std::string PlainLine(const char *message) {
    constexpr std::size_t kMostCharacters = 200;
    std::string line(message == nullptr ? "" : message);
    line.resize(std::min({line.size(), line.find('\n'), kMostCharacters}));
    std::ranges::replace_if(
        line, [](char c) { return c < ' ' || c > '~'; }, '?');
    return line;
}

// Reads one list. Values are built in place within the current element: nothing is added to a container,
// which could move its values, while a nested one is open.
class XmlListReader final : public XmlParser {
  public:
    XmlListReader(ListBytes *bytes, HandOver what, const PropertyListElementHandler *handler,
                  PropertyListProblem *problem)
        : fBytes(*bytes), fHandler(*handler), fProblem(*problem),
          fHandOverDepth(what == HandOver::Root ? 0 : 1) {
        fOpen.reserve(kPropertyListMaxDepth);
    }

    OSErr Read();

    // Called by the parser.
    void Start(XmlCharacters name, const XmlCharacters *attributes);
    void End();
    void AddText(std::string_view text);

  private:
    void Begin() override;
    std::size_t ReadBytes(std::span<char> buffer) override;
    void Notice(XmlProblem problem, const char *message) override;

    void AddLeafText(std::string_view text);
    void StartPlist();
    void StartKey();
    void StartValue(Element element);
    bool MayStandWithoutKey(Element element);
    void StartContainer(Element element);
    PropertyList &NewPlace();
    void EndLeaf();
    void EndContainer();
    void PutInteger();
    template <typename Value>
    void PutParsed(std::optional<Value> value, const char *problem);
    void EndValue();
    void GiveOver();
    void Damaged(std::string_view text);

    ListBytes &fBytes;
    const PropertyListElementHandler &fHandler;
    PropertyListProblem &fProblem;
    const std::size_t fHandOverDepth;                         // pass on values nested in this many containers
    std::array<XmlCharacters, kElementNames.size()> fNames{}; // the parser's own pointers

    bool fInPlist = false;
    bool fHasRoot = false;
    std::vector<OpenContainer> fOpen;
    PropertyList fElement{false};                    // that is being read
    PropertyListDictionary::Entry *fEntry = nullptr; // a key waiting for its value
    PropertyList *fValue = nullptr;                  // that is being read
    Element fLeaf{};                                 // the open element that holds text
    std::string *fText = nullptr;                    // destination of its text, or null
    std::string fPlainText;                          // the text of a value other than a string
    std::size_t fValues = 0;                         // of the element
    std::size_t fTextBytes = 0;
};

OSErr XmlListReader::Read() {
    if (const OSErr status = Parse<XmlListReader>(XmlParsing::Strict); status != noErr) {
        return status;
    }
    if (!IsWellFormed()) {
        Damaged(Marked("Engine", "it is not well-formed"));
    } else if (!IsAtEnd()) {
        Damaged(Marked("Engine", "unexpected data after the list"));
    }
    return Status();
}

void XmlListReader::Begin() {
    std::ranges::transform(kElementNames, fNames.begin(),
                           [this](const char *name) { return NameInParser(name); });
    if (std::ranges::count(fNames, nullptr) > 0) {
        Stop(memFullErr);
    }
}

std::size_t XmlListReader::ReadBytes(std::span<char> buffer) {
    std::span<const std::byte> ahead;
    const OSErr status = fBytes.Ahead(&ahead);
    if (status == kDamagedList) {
        fProblem.text = kListTooLarge;
    }
    if (status != noErr) {
        Stop(status);
        return 0;
    }
    const std::size_t moved = std::min(ahead.size(), buffer.size());
    std::memcpy(buffer.data(), ahead.data(), moved);
    fBytes.Skip(moved);
    return moved;
}

void XmlListReader::Notice(XmlProblem problem, const char *message) {
    switch (problem) {
    case XmlProblem::Malformed:
        return Damaged("it is not well-formed: " + PlainLine(message));
    case XmlProblem::WrongEndTag:
        return Damaged(Marked("Engine", "it is not well-formed: an element ends with another's end tag"));
    case XmlProblem::Entity:
        return Damaged(Marked("Engine", "an entity is used that is not predefined"));
    case XmlProblem::EntityDeclaration:
    case XmlProblem::Declaration:
        return Damaged(Marked("Engine", "its document type makes declarations"));
    }
}

void XmlListReader::AddText(std::string_view text) {
    if (fText != nullptr) {
        AddLeafText(text);
    } else if (!IsBlank(text)) {
        Damaged(Marked("Engine", "text stands outside a value"));
    }
}

void XmlListReader::AddLeafText(std::string_view text) {
    fTextBytes += text.size();
    if (fTextBytes > kPropertyListMaxText) {
        return Damaged(kListTooMuchText);
    }
    *fText += text;
}

void XmlListReader::Start(XmlCharacters name, const XmlCharacters * /*attributes*/) {
    const auto found = std::ranges::find(fNames, name);
    if (found == fNames.end()) {
        return Damaged(Marked("Engine", "an element is unknown"));
    }
    const auto element = static_cast<Element>(found - fNames.begin());
    if (fText != nullptr) {
        return Damaged(Marked("Engine", "an element stands inside a value"));
    }
    if (element == Element::Plist) {
        return StartPlist();
    }
    if (!fInPlist) {
        return Damaged(Marked("Engine", "the root is not <plist>"));
    }
    return element == Element::Key ? StartKey() : StartValue(element);
}

void XmlListReader::StartPlist() {
    if (fInPlist) {
        return Damaged(Marked("Engine", "a <plist> stands inside the list"));
    }
    fInPlist = true;
}

void XmlListReader::StartKey() {
    if (fOpen.empty() || fOpen.back().dictionary == nullptr) {
        return Damaged(Marked("Engine", "a key stands outside a dictionary"));
    }
    if (fEntry != nullptr) {
        return Damaged(Marked("Engine", "a key has no value"));
    }
    fEntry = &fOpen.back().dictionary->AddBlank();
    fLeaf = Element::Key;
    fText = &fEntry->first;
}

void XmlListReader::StartValue(Element element) {
    if (fEntry == nullptr && !MayStandWithoutKey(element)) {
        return;
    }
    if (fOpen.size() >= fHandOverDepth && ++fValues > kPropertyListMaxValues) {
        return Damaged(kListTooManyValues);
    }
    if (element == Element::Array || element == Element::Dict) {
        return StartContainer(element);
    }
    fValue = &NewPlace();
    fLeaf = element;
    if (element == Element::String) {
        fText = &fValue->Get().emplace<std::string>();
    } else {
        fPlainText.clear();
        fText = &fPlainText;
    }
}

bool XmlListReader::MayStandWithoutKey(Element element) {
    if (fOpen.empty() && fHasRoot) {
        Damaged(Marked("Engine", "there is more than one root"));
    } else if (fOpen.size() < fHandOverDepth && element != Element::Array) {
        Damaged(Marked("Engine", "the root is not an array"));
    } else if (!fOpen.empty() && fOpen.back().dictionary != nullptr) {
        Damaged(Marked("Engine", "a value has no key"));
    }
    fHasRoot = true;
    return Status() == noErr;
}

void XmlListReader::StartContainer(Element element) {
    if (fOpen.size() == kPropertyListMaxDepth) {
        return Damaged(kListTooDeep);
    }
    OpenContainer container{};
    if (fOpen.size() >= fHandOverDepth) {
        PropertyList::Value &place = NewPlace().Get();
        if (element == Element::Array) {
            container.array = &place.emplace<PropertyListArray>();
        } else {
            container.dictionary = &place.emplace<PropertyListDictionary>();
        }
    }
    fOpen.push_back(container);
}

// The place for the value that starts; holds `false` so far.
PropertyList &XmlListReader::NewPlace() {
    if (fEntry != nullptr) {
        return std::exchange(fEntry, nullptr)->second;
    }
    return fOpen.size() == fHandOverDepth ? fElement : fOpen.back().array->emplace_back(false);
}

void XmlListReader::End() {
    if (fText != nullptr) {
        fText = nullptr;
        EndLeaf();
    } else if (!fOpen.empty()) {
        EndContainer();
    } else if (!fHasRoot) {
        Damaged(fHandOverDepth == 0 ? "it holds no value" : Marked("Engine", "it holds no array"));
    }
}

void XmlListReader::EndContainer() {
    if (fEntry != nullptr) {
        return Damaged(Marked("Engine", "a key has no value"));
    }
    fOpen.pop_back();
    EndValue();
}

void XmlListReader::EndLeaf() {
    switch (fLeaf) {
    case Element::Key:
        return; // its value follows
    case Element::String:
        break;
    case Element::Integer:
        PutInteger();
        break;
    case Element::Real:
        PutParsed(ParseRealText(fPlainText), Marked("Engine", "a real number is malformed or too large"));
        break;
    case Element::Data:
        PutParsed(ParseBase64Text(fPlainText), "data is not base64");
        break;
    case Element::Date:
        PutParsed(ParseDateText(fPlainText), Marked("Engine", "a date is malformed"));
        break;
    default:
        PutParsed(IsBlank(fPlainText) ? std::optional(fLeaf == Element::True) : std::nullopt,
                  Marked("Engine", "a truth value holds text"));
    }
    EndValue();
}

void XmlListReader::PutInteger() {
    std::int64_t value = 0;
    const char *const end = fPlainText.data() + fPlainText.size();
    const auto [stopped, error] = std::from_chars(fPlainText.data(), end, value);
    if (error == std::errc() && stopped == end) { // an optional sign and digits, like most integers
        fValue->Get().emplace<std::int64_t>(value);
    } else if (auto parsed = ParseIntegerText(fPlainText)) {
        *fValue = std::move(*parsed);
    } else {
        Damaged(Marked("Engine", "an integer is malformed or too large"));
    }
}

template <typename Value>
void XmlListReader::PutParsed(std::optional<Value> value, const char *problem) {
    if (!value.has_value()) {
        return Damaged(problem);
    }
    fValue->Get().emplace<Value>(*std::move(value));
}

void XmlListReader::EndValue() {
    if (fOpen.size() == fHandOverDepth && Status() == noErr) {
        GiveOver();
    }
}

void XmlListReader::GiveOver() {
    fValues = 0;
    fTextBytes = 0;
    if (!fHandler(fElement)) {
        Stop(userCanceledErr);
    }
    fElement = false; // frees its memory
}

void XmlListReader::Damaged(std::string_view text) {
    fProblem.text = text;
    fProblem.line = Line();
    Stop(kDamagedList);
}

} // namespace

OSErr ReadXmlList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
                  PropertyListProblem *problem) {
    return XmlListReader(&bytes, what, &handler, problem).Read();
}

} // namespace drevix
