#include "platform/xml/xml_text.h"

#include "platform/base/mac_roman.h"
#include "platform/base/status.h"
#include "platform/xml/xml_characters.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <iconv.h>
#include <new>
#include <span>
#include <utility>

namespace drevix {
namespace {

constexpr std::string_view kMacRoman = "macintosh";

// A document's encoding by its first bytes (XML 1.0, appendix F). Longer rows come first.
struct FirstBytes {
    std::string_view bytes;
    std::size_t skipped;
    std::string_view encoding;
};
constexpr auto kFirstBytes = std::to_array<FirstBytes>({
    {"\xEF\xBB\xBF", 3, "UTF-8"},
    {"\xFE\xFF", 2, "UTF-16BE"},
    {"\xFF\xFE", 2, "UTF-16LE"},
    {{"\0<", 2}, 0, "UTF-16BE"},
    {{"<\0", 2}, 0, "UTF-16LE"},
});

// Names of Mac OS Roman. The C library's table is not used: it has the old currency sign instead of the euro.
constexpr auto kMacRomanNames = std::to_array<std::string_view>({kMacRoman, "x-mac-roman", "mac"});

std::string SmallLetters(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(), [](unsigned char c) { return std::tolower(c); });
    return small;
}

// The declared encoding; empty if none. iconv treats what follows a '/' as an option.
std::string DeclaredEncoding(std::string_view bytes) {
    constexpr std::string_view kEncoding = "encoding";
    constexpr std::string_view kNameCharacters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
    const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
    std::size_t place = declaration.find(kEncoding);
    if (!declaration.starts_with("<?xml") || place == declaration.npos) {
        return {};
    }
    place = declaration.find_first_of("\"'", place + kEncoding.size());
    if (place == declaration.npos) {
        return {};
    }
    const std::string_view name = declaration.substr(place + 1);
    return std::string(name.substr(0, name.find_first_not_of(kNameCharacters)));
}

std::string EncodingOf(std::string_view &bytes) {
    for (const FirstBytes &row : kFirstBytes) {
        if (bytes.starts_with(row.bytes)) {
            bytes.remove_prefix(row.skipped);
            return std::string(row.encoding);
        }
    }
    std::string name = DeclaredEncoding(bytes);
    const std::string small = SmallLetters(name);
    if (std::ranges::find(kMacRomanNames, small) != kMacRomanNames.end()) {
        return std::string(kMacRoman);
    }
    if (name.empty() || small.starts_with("utf-16")) { // a text of single bytes cannot be that
        return "UTF-8";
    }
    return name;
}

std::string TextOfMacRoman(std::string_view bytes) {
    return Utf8FromMacRoman({reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size()});
}

// A converter to UTF-8.
class Converter {
  public:
    explicit Converter(const std::string &encoding)
        : fHandle(::iconv_open("UTF-8", encoding.c_str())), fIsUtf8(SmallLetters(encoding) == "utf-8") {}
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;
    ~Converter() {
        if (IsKnown()) {
            ::iconv_close(fHandle);
        }
    }

    [[nodiscard]] bool IsKnown() const { return fHandle != reinterpret_cast<iconv_t>(-1); }

    // False at invalid or truncated bytes that are refused.
    bool Convert(std::string_view bytes, BadBytes badBytes, std::string *text) {
        std::array<char, 4096> piece{};
        const char *beyond = BeyondUnicode(bytes);
        while (!bytes.empty()) {
            beyond = beyond < bytes.data() ? BeyondUnicode(bytes) : beyond;
            char *in = const_cast<char *>(bytes.data()); // iconv's interface lacks const
            const auto known = static_cast<std::size_t>(beyond - bytes.data());
            std::size_t inLeft = known;
            char *out = piece.data();
            std::size_t outLeft = piece.size();
            const bool failed =
                ::iconv(fHandle, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1);
            const bool isBad = known == 0 || (failed && errno != E2BIG);
            text->append(piece.data(), piece.size() - outLeft);
            bytes.remove_prefix(known - inLeft);
            if (isBad && badBytes == BadBytes::Refuse) {
                return false;
            }
            if (isBad) {
                *text += TextOfMacRoman(bytes.substr(0, 1));
                bytes.remove_prefix(1);
            }
        }
        return true;
    }

  private:
    // The start of the first UTF-8 sequence above U+10FFFF, which the C library accepts; the end of the bytes
    // if there is none.
    [[nodiscard]] const char *BeyondUnicode(std::string_view bytes) const {
        for (std::size_t i = 0; fIsUtf8 && i < bytes.size(); ++i) {
            const auto first = static_cast<std::uint8_t>(bytes[i]);
            const auto next = static_cast<std::uint8_t>(i + 1 < bytes.size() ? bytes[i + 1] : 0);
            if (first > 0xF4 || (first == 0xF4 && next > 0x8F)) {
                return bytes.data() + i;
            }
        }
        return bytes.data() + bytes.size();
    }

    iconv_t fHandle;
    bool fIsUtf8;
};

bool IsNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
}

// XML 1.0, production 2, for character references.
bool IsAllowedCharacter(std::uint32_t code) {
    return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code <= 0xD7FF) ||
           (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

bool IsCharacterNumber(std::string_view digits) {
    const bool isHex = digits.starts_with('x');
    digits.remove_prefix(isHex ? 1 : 0);
    std::uint32_t code = 0;
    const char *const end = digits.data() + digits.size();
    const auto [stopped, error] = std::from_chars(digits.data(), end, code, isHex ? 16 : 10);
    return error == std::errc() && stopped == end && IsAllowedCharacter(code);
}

// The predefined references, and the numeric ones for the same characters.
struct Reference {
    std::string_view name;
    std::string_view number;
};
constexpr auto kReferences = std::to_array<Reference>(
    {{"amp", "&#38;"}, {"lt", "&#60;"}, {"gt", "&#62;"}, {"quot", "&#34;"}, {"apos", "&#39;"}});

std::string WithoutControls(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (IsAllowedCharacter(static_cast<unsigned char>(c))) {
            result += c;
        } else {
            result += kReplacement;
        }
    }
    return result;
}

// Sections with their own rules inside. A declaration has no '>' before its end.
struct Section {
    std::string_view start;
    std::string_view end;
    bool isText = false; // kept as text
};
constexpr auto kSections =
    std::to_array<Section>({{"<!--", "-->"}, {"<![CDATA[", "]]>", true}, {"<?xml ", ">"}, {"<?", "?>"}});

constexpr std::string_view kDocumentType = "<!DOCTYPE";

// The length of the document type declaration at the start of the text; 0 if its end is missing.
std::size_t DocumentTypeLength(std::string_view text) {
    text = text.substr(0, kXmlMaxDocumentType);
    char quote = 0;
    bool inSubset = false;
    for (std::size_t i = kDocumentType.size(); i < text.size(); ++i) {
        const char c = text[i];
        const auto *section = quote != 0 || c != '<'
                                  ? kSections.end()
                                  : std::ranges::find_if(kSections, [&](const Section &row) {
                                        return text.substr(i).starts_with(row.start);
                                    });
        if (section != kSections.end()) {
            const std::size_t end = text.find(section->end, i + section->start.size());
            if (end == text.npos) {
                return 0;
            }
            i = end + section->end.size() - 1;
        } else if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[' || c == ']') {
            inSubset = c == '[';
        } else if (c == '>' && !inSubset) {
            return i + 1;
        }
    }
    return 0;
}

// Builds one repaired text. After the first error the parser drops predefined references, and the text before
// a bare "]]>", but never numeric references; so only numeric references are written.
class Mender {
  public:
    explicit Mender(std::string_view text) : fRest(text) {
        fRest.remove_prefix(std::min(fRest.find_first_not_of(" \t\n\r"), fRest.size()));
        fResult.reserve(text.size());
        fHasEnd.fill(true);
    }

    std::string Mend() {
        while (!fRest.empty()) {
            Take(std::min(fRest.find_first_of("<>&\"'"), fRest.size()));
            if (!fRest.empty()) {
                TakeMark();
            }
        }
        return std::move(fResult);
    }
    [[nodiscard]] std::size_t StartTags() const { return fStartTags; }

  private:
    void Take(std::size_t length) {
        fResult += fRest.substr(0, length);
        fRest.remove_prefix(length);
    }
    void TakeAs(std::string_view written, std::size_t length = 1) {
        fResult += written;
        fRest.remove_prefix(length);
    }

    void TakeMark() {
        const char mark = fRest[0];
        if (mark == '<') {
            return TakeSection() || TakeDocumentType() ? void() : TakeTagStart();
        }
        if (mark == '&') {
            return TakeReference();
        }
        const bool isTag = fInTag;
        if (mark == '>') {
            fInTag = fInTag && fQuote != 0;
        } else if (fInTag && (fQuote == 0 || fQuote == mark)) {
            fQuote = fQuote == 0 ? mark : '\0';
        }
        return mark == '>' && !isTag ? TakeAs("&#62;") : Take(1);
    }

    // Search for a missing end once, not at each start.
    bool TakeSection() {
        for (std::size_t i = 0; i < kSections.size(); ++i) {
            const Section &section = kSections[i];
            if (!fHasEnd[i] || !fRest.starts_with(section.start)) {
                continue;
            }
            const std::size_t end = fRest.find(section.end, section.start.size());
            fHasEnd[i] = end != fRest.npos;
            if (fHasEnd[i]) {
                const std::string_view inside = fRest.substr(0, end).substr(section.start.size());
                std::ranges::for_each(section.isText ? inside : "", [this](char c) { AppendLiteral(c); });
                fRest.remove_prefix(end + section.end.size());
                return true;
            }
        }
        return false;
    }

    void AppendLiteral(char c) {
        const auto *const row = c == '&' ? &kReferences[0] : c == '<' ? &kReferences[1] : &kReferences[2];
        if (c == '&' || c == '<' || c == '>') {
            fResult += row->number;
        } else {
            fResult += c;
        }
    }

    // Kept in its proper place, so that the parser judges its declarations; elsewhere it is not one. A
    // missing end is searched for once, too.
    bool TakeDocumentType() {
        if (!fHasDocumentType || !fRest.starts_with(kDocumentType)) {
            return false;
        }
        const std::size_t length = DocumentTypeLength(fRest);
        fHasDocumentType = length > 0;
        fResult += fStartTags == 0 ? fRest.substr(0, length) : "";
        fRest.remove_prefix(length);
        return fHasDocumentType;
    }

    void TakeTagStart() {
        const std::size_t nameAt = fRest.starts_with("</") ? 2 : 1;
        const bool isTag = fRest.size() > nameAt && IsNameStart(fRest[nameAt]);
        if (!isTag && !fRest.starts_with(kDocumentType)) {
            return TakeAs("&#60;");
        }
        fStartTags += isTag && nameAt == 1 ? 1U : 0U;
        fInTag = true;
        fQuote = 0;
        Take(1);
    }

    void TakeReference() {
        constexpr std::size_t kLongest = 16;
        const std::size_t end = fRest.substr(0, kLongest).find(';');
        const std::string_view name = end == fRest.npos ? std::string_view() : fRest.substr(1, end - 1);
        const auto *const row = std::ranges::find(kReferences, name, &Reference::name);
        if (row != kReferences.end()) {
            return TakeAs(row->number, end + 1);
        }
        return name.starts_with('#') && IsCharacterNumber(name.substr(1)) ? Take(end + 1) : TakeAs("&#38;");
    }

    std::string_view fRest;
    std::string fResult;
    std::size_t fStartTags = 0;
    std::array<bool, kSections.size()> fHasEnd{};
    bool fHasDocumentType = true;
    bool fInTag = false;
    char fQuote = 0; // the open quote at this place in the tag; 0: none
};

// Counts the attributes of a possible tag. The parser stops where quotes are missing, so it never finds more.
std::size_t AttributesIn(std::string_view tag) {
    std::size_t count = 0;
    char quote = 0;
    for (const char c : tag) {
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            break;
        } else {
            count += c == '=' ? 1 : 0;
        }
    }
    return tag.starts_with("<!") || tag.starts_with("<?") ? 0 : count;
}

} // namespace

OSErr DecodeXml(std::string_view bytes, BadBytes badBytes, std::string *text) try {
    const std::string encoding = EncodingOf(bytes);
    if (encoding == kMacRoman) {
        *text = TextOfMacRoman(bytes);
        return noErr;
    }
    Converter converter(encoding);
    if (!converter.IsKnown()) {
        return kDamagedXml;
    }
    std::string converted;
    converted.reserve(bytes.size());
    if (!converter.Convert(bytes, badBytes, &converted)) {
        return kDamagedXml;
    }
    *text = std::move(converted);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

std::string MendUtf8(std::string_view text) {
    std::string result;
    Converter("UTF-8").Convert(text, BadBytes::TakeAsMacRoman, &result);
    return result;
}

std::string MendXml(std::string_view text, std::size_t *startTags) {
    const std::string clean = WithoutControls(text);
    Mender mender(clean);
    std::string result = mender.Mend();
    *startTags = mender.StartTags();
    return result;
}

std::size_t MostAttributes(std::string_view text) {
    std::size_t most = 0;
    while (true) {
        text.remove_prefix(std::min(text.find('<'), text.size()));
        if (text.empty()) {
            return most;
        }
        const std::size_t end = std::min(text.find('<', 1), text.size());
        most = std::max(most, AttributesIn(text.substr(0, end)));
        text.remove_prefix(end);
    }
}

} // namespace drevix
