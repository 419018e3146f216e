#include "platform/base/marked_text.h"
#include "platform/base/status.h"
#include "platform/base/utf8.h"
#include "platform/plist/property_list_reading.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <optional>
#include <utility>

namespace drevix {
namespace {

// The layout of "bplist00": an 8-byte signature, the objects, a table of their offsets, and the trailer. All
// numbers are big-endian. An object is a marker byte, whose high half is its type, followed by its contents.
constexpr std::string_view kSignature = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kOffsetSizeAt = 6;    // in the trailer: bytes of an offset in the table
constexpr std::size_t kReferenceSizeAt = 7; // bytes of an object number in an array or dictionary
constexpr std::size_t kObjectCountAt = 8;   // 64 bits, as the next two
constexpr std::size_t kTopObjectAt = 16;    // number of the root
constexpr std::size_t kOffsetTableAt = 24;
constexpr std::size_t kMostNumberSize = 8;

// Types: the marker's high half. For the first four the low half is the exact value or the binary logarithm
// of a size in bytes; for the others it is the count, or kCountFollows if the count is the next object.
enum class Type : std::uint8_t {
    Truth = 0x0,
    Integer = 0x1,
    Real = 0x2,
    Date = 0x3,
    Data = 0x4,
    Ascii = 0x5,
    Utf16 = 0x6,
    Array = 0xA,
    Dictionary = 0xD,
};
constexpr unsigned kFalse = 0x8;
constexpr unsigned kTrue = 0x9;
constexpr unsigned kDateSize = 0x3; // 2^3 bytes
constexpr unsigned kCountFollows = 0xF;

constexpr std::size_t kMostTextBytes = std::size_t{1} << 30; // in total, counting shared ones each time

using Bytes = std::span<const std::uint8_t>;

std::uint64_t BigEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes) {
        value = (value << 8) | byte;
    }
    return value;
}

// A 16-byte two's complement integer, if within -2^63 to 2^64 - 1.
std::optional<PropertyList> WideInteger(Bytes bytes) {
    const std::uint64_t high = BigEndian(bytes.first(8));
    const std::uint64_t low = BigEndian(bytes.last(8));
    if (high == 0) {
        return PropertyListUnsigned(low);
    }
    const bool isNegative = high == ~std::uint64_t{0} && (low >> 63) == 1;
    return isNegative ? std::optional<PropertyList>(static_cast<std::int64_t>(low)) : std::nullopt;
}

std::string Characters(Bytes bytes) {
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

// nullopt for an unpaired surrogate.
std::optional<std::string> Utf8FromUtf16(Bytes bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        auto unit = static_cast<std::uint32_t>(BigEndian(bytes.subspan(i, 2)));
        if ((unit & 0xF800) == 0xD800) {
            i += 2;
            const std::uint64_t second = i < bytes.size() ? BigEndian(bytes.subspan(i, 2)) : 0;
            if (unit >= 0xDC00 || (second & 0xFC00) != 0xDC00) {
                return std::nullopt;
            }
            unit = 0x10000 + ((unit & 0x3FF) << 10) + static_cast<std::uint32_t>(second & 0x3FF);
        }
        AppendUtf8(&text, unit);
    }
    return text;
}

// Reads objects directly from the bytes, one element at a time, so that memory holds the list's bytes and one
// element instead of a tree of all values. Never allocates for a count that the bytes do not back; the limits
// stop shared objects and cycles from multiplying.
class BinaryListReader {
  public:
    BinaryListReader(Bytes bytes, PropertyListProblem *problem) : fBytes(bytes), fProblem(*problem) {}

    OSErr Read(HandOver what, const PropertyListElementHandler &handler);

  private:
    struct Object {
        Type type;
        unsigned low;      // the marker's low half
        Bytes content;     // contents, without marker and count
        std::size_t count; // of bytes, UTF-16 units, elements or entries
    };

    OSErr ReadElements(const PropertyListElementHandler &handler);
    OSErr GiveOver(std::uint64_t number, int depth, const PropertyListElementHandler &handler);
    bool ReadTrailer();
    std::optional<Object> FindObject(std::uint64_t number);
    bool ReadCount(std::size_t *at, std::size_t *count);
    std::size_t UnitSize(Type type) const;
    std::uint64_t Reference(const Object &object, std::size_t index) const;

    // The value of an object nested in `depth` arrays and dictionaries; nullopt, with the problem set, if it
    // is damaged. Recurses up to kPropertyListMaxDepth.
    std::optional<PropertyList> ReadValue(std::uint64_t number, int depth);
    std::optional<PropertyList> ReadInteger(const Object &object);
    std::optional<PropertyList> ReadReal(const Object &object);
    std::optional<PropertyList> ReadDate(const Object &object);
    std::optional<std::string> ReadText(const Object &object);
    std::optional<PropertyList> ReadArray(const Object &object, int depth);
    std::optional<PropertyList> ReadDictionary(const Object &object, int depth);
    std::optional<std::string> ReadKey(std::uint64_t number);
    bool CountValue();
    bool CountText(const Object &object);
    std::nullopt_t Damaged(const char *text);

    Bytes fBytes;
    PropertyListProblem &fProblem;
    std::size_t fOffsetSize = 0;
    std::size_t fReferenceSize = 0;
    std::uint64_t fObjectCount = 0;
    std::uint64_t fTopObject = 0;
    std::size_t fOffsetTable = 0; // its start, and the end of the objects
    // Counting shared ones each time; in the current element, and in those before it.
    std::size_t fValues = 0;
    std::size_t fTextBytes = 0;
    std::size_t fValuesBefore = 0;
    std::size_t fTextBytesBefore = 0;
};

std::nullopt_t BinaryListReader::Damaged(const char *text) {
    fProblem.text = text;
    return std::nullopt;
}

OSErr BinaryListReader::Read(HandOver what, const PropertyListElementHandler &handler) {
    if (fBytes.size() < kSignature.size() ||
        std::memcmp(fBytes.data(), kSignature.data(), kSignature.size()) != 0) {
        Damaged(Marked("Engine", "it is a binary list of an unknown version"));
        return kDamagedList;
    }
    if (!ReadTrailer()) {
        Damaged(Marked("Engine", "it is cut short, or its trailer is invalid"));
        return kDamagedList;
    }
    return what == HandOver::Root ? GiveOver(fTopObject, 0, handler) : ReadElements(handler);
}

OSErr BinaryListReader::ReadElements(const PropertyListElementHandler &handler) {
    const std::optional<Object> root = FindObject(fTopObject);
    if (!root.has_value()) {
        return kDamagedList;
    }
    if (root->type != Type::Array) {
        Damaged(Marked("Engine", "the root is not an array"));
        return kDamagedList;
    }
    for (std::size_t i = 0; i < root->count; ++i) {
        if (const OSErr status = GiveOver(Reference(*root, i), 1, handler); status != noErr) {
            return status;
        }
    }
    return noErr;
}

OSErr BinaryListReader::GiveOver(std::uint64_t number, int depth, const PropertyListElementHandler &handler) {
    std::optional<PropertyList> element = ReadValue(number, depth);
    if (!element.has_value()) {
        return kDamagedList;
    }
    fValuesBefore += std::exchange(fValues, 0);
    fTextBytesBefore += std::exchange(fTextBytes, 0);
    return handler(*element) ? noErr : userCanceledErr;
}

bool BinaryListReader::ReadTrailer() {
    if (fBytes.size() < kSignature.size() + kTrailerSize) {
        return false;
    }
    const Bytes trailer = fBytes.last(kTrailerSize);
    fOffsetSize = trailer[kOffsetSizeAt];
    fReferenceSize = trailer[kReferenceSizeAt];
    fObjectCount = BigEndian(trailer.subspan(kObjectCountAt, 8));
    fTopObject = BigEndian(trailer.subspan(kTopObjectAt, 8));
    const std::uint64_t table = BigEndian(trailer.subspan(kOffsetTableAt, 8));
    const std::size_t tableEnd = fBytes.size() - kTrailerSize;
    if (fOffsetSize < 1 || fOffsetSize > kMostNumberSize || fReferenceSize < 1 ||
        fReferenceSize > kMostNumberSize || table < kSignature.size() || table > tableEnd) {
        return false;
    }
    fOffsetTable = static_cast<std::size_t>(table);
    const std::size_t tableSize = tableEnd - fOffsetTable;
    return fObjectCount == tableSize / fOffsetSize && tableSize % fOffsetSize == 0 &&
           fTopObject < fObjectCount;
}

std::size_t BinaryListReader::UnitSize(Type type) const {
    switch (type) {
    case Type::Utf16:
        return 2;
    case Type::Array:
        return fReferenceSize;
    case Type::Dictionary:
        return 2 * fReferenceSize;
    default:
        return 1;
    }
}

// Reads the count after a marker, itself an integer object. Advances *at past it.
bool BinaryListReader::ReadCount(std::size_t *at, std::size_t *count) {
    if (*at >= fOffsetTable) {
        return false;
    }
    const std::uint8_t marker = fBytes[*at];
    const std::size_t size = std::size_t{1} << (marker & 0xF);
    ++*at;
    if (marker >> 4 != static_cast<int>(Type::Integer) || size > kMostNumberSize ||
        size > fOffsetTable - *at) {
        return false;
    }
    *count = static_cast<std::size_t>(BigEndian(fBytes.subspan(*at, size)));
    *at += size;
    return true;
}

std::optional<BinaryListReader::Object> BinaryListReader::FindObject(std::uint64_t number) {
    constexpr const char *kOutside = Marked("Engine", "an object lies outside the list");
    if (number >= fObjectCount) {
        return Damaged(kOutside);
    }
    const std::size_t entry = fOffsetTable + static_cast<std::size_t>(number) * fOffsetSize;
    const std::uint64_t offset = BigEndian(fBytes.subspan(entry, fOffsetSize));
    if (offset < kSignature.size() || offset >= fOffsetTable) {
        return Damaged(kOutside);
    }
    auto at = static_cast<std::size_t>(offset);
    const std::uint8_t marker = fBytes[at++];
    Object object = {static_cast<Type>(marker >> 4), marker & 0xFU, {}, 0};
    if (object.type <= Type::Date) {
        object.count = object.type == Type::Truth ? 0 : std::size_t{1} << object.low;
    } else if (object.count = object.low; object.low == kCountFollows && !ReadCount(&at, &object.count)) {
        return Damaged(Marked("Engine", "a count is damaged"));
    }
    const std::size_t unit = UnitSize(object.type);
    if (object.count > (fOffsetTable - at) / unit) {
        return Damaged(kOutside);
    }
    object.content = fBytes.subspan(at, object.count * unit);
    return object;
}

std::uint64_t BinaryListReader::Reference(const Object &object, std::size_t index) const {
    return BigEndian(object.content.subspan(index * fReferenceSize, fReferenceSize));
}

bool BinaryListReader::CountValue() {
    if (++fValues > kPropertyListMaxValues) {
        Damaged(kListTooManyValues);
    } else if (fValuesBefore + fValues > std::max(fBytes.size(), kPropertyListMaxValues)) {
        Damaged(Marked("Engine", "its shared values add up to more than its bytes"));
    } else {
        return true;
    }
    return false;
}

bool BinaryListReader::CountText(const Object &object) {
    const bool container = object.type == Type::Array || object.type == Type::Dictionary;
    fTextBytes += container ? 0 : object.content.size();
    if (fTextBytes > kPropertyListMaxText) {
        Damaged(kListTooMuchText);
    } else if (fTextBytesBefore + fTextBytes > kMostTextBytes) {
        Damaged(Marked("Engine", "its shared texts add up to more than 1 GB"));
    } else {
        return true;
    }
    return false;
}

std::optional<PropertyList> BinaryListReader::ReadValue(std::uint64_t number, int depth) {
    const std::optional<Object> object = FindObject(number);
    if (!object.has_value() || !CountText(*object) || !CountValue()) {
        return std::nullopt;
    }
    switch (object->type) {
    case Type::Truth:
        if (object->low != kFalse && object->low != kTrue) {
            break;
        }
        return object->low == kTrue;
    case Type::Integer:
        return ReadInteger(*object);
    case Type::Real:
        return ReadReal(*object);
    case Type::Date:
        return ReadDate(*object);
    case Type::Data:
        return PropertyListData{Characters(object->content)};
    case Type::Ascii:
    case Type::Utf16:
        return ReadText(*object);
    case Type::Array:
        return ReadArray(*object, depth + 1);
    case Type::Dictionary:
        return ReadDictionary(*object, depth + 1);
    }
    return Damaged(Marked("Engine", "a value has a type that no list may hold"));
}

// One, two and four bytes are unsigned, eight and sixteen signed.
std::optional<PropertyList> BinaryListReader::ReadInteger(const Object &object) {
    const std::size_t size = object.content.size();
    if (size <= 8) {
        return static_cast<std::int64_t>(BigEndian(object.content));
    }
    std::optional<PropertyList> value = size == 16 ? WideInteger(object.content) : std::nullopt;
    return value.has_value() ? std::move(value) : Damaged(Marked("Engine", "an integer is too large"));
}

std::optional<PropertyList> BinaryListReader::ReadReal(const Object &object) {
    const std::uint64_t bits = BigEndian(object.content);
    switch (object.content.size()) {
    case sizeof(float):
        return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    case sizeof(double):
        return std::bit_cast<double>(bits);
    default:
        return Damaged(Marked("Engine", "a real number has an unknown size"));
    }
}

std::optional<PropertyList> BinaryListReader::ReadDate(const Object &object) {
    const auto seconds = std::bit_cast<double>(BigEndian(object.content));
    if (object.low != kDateSize || !std::isfinite(seconds)) {
        return Damaged(Marked("Engine", "a date is malformed"));
    }
    return PropertyListDate{seconds};
}

std::optional<std::string> BinaryListReader::ReadText(const Object &object) {
    if (object.type == Type::Utf16) {
        std::optional<std::string> text = Utf8FromUtf16(object.content);
        return text.has_value() ? std::move(text) : Damaged(Marked("Engine", "a text is malformed UTF-16"));
    }
    if (std::ranges::any_of(object.content, [](std::uint8_t byte) { return byte >= 0x80; })) {
        return Damaged(Marked("Engine", "a text that should be ASCII is not"));
    }
    return Characters(object.content);
}

std::optional<PropertyList> BinaryListReader::ReadArray(const Object &object, int depth) {
    if (depth > kPropertyListMaxDepth) {
        return Damaged(kListTooDeep);
    }
    PropertyListArray array;
    for (std::size_t i = 0; i < object.count; ++i) {
        std::optional<PropertyList> element = ReadValue(Reference(object, i), depth);
        if (!element.has_value()) {
            return std::nullopt;
        }
        array.push_back(*std::move(element));
    }
    return array;
}

std::optional<PropertyList> BinaryListReader::ReadDictionary(const Object &object, int depth) {
    if (depth > kPropertyListMaxDepth) {
        return Damaged(kListTooDeep);
    }
    PropertyListDictionary dictionary;
    for (std::size_t i = 0; i < object.count; ++i) {
        std::optional<std::string> key = ReadKey(Reference(object, i));
        if (!key.has_value()) {
            return std::nullopt;
        }
        std::optional<PropertyList> value = ReadValue(Reference(object, object.count + i), depth);
        if (!value.has_value()) {
            return std::nullopt;
        }
        dictionary.Add(*std::move(key), *std::move(value));
    }
    return dictionary;
}

std::optional<std::string> BinaryListReader::ReadKey(std::uint64_t number) {
    const std::optional<Object> object = FindObject(number);
    if (!object.has_value() || !CountText(*object)) {
        return std::nullopt;
    }
    if (object->type != Type::Ascii && object->type != Type::Utf16) {
        return Damaged(Marked("Engine", "a key is not a text"));
    }
    return ReadText(*object);
}

} // namespace

OSErr ReadBinaryList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
                     PropertyListProblem *problem) {
    std::vector<std::uint8_t> whole;
    for (;;) {
        std::span<const std::byte> piece;
        if (const OSErr status = bytes.Ahead(&piece); status != noErr) {
            problem->text = status == kDamagedList ? kListTooLarge : "";
            return status;
        }
        if (piece.empty()) {
            return BinaryListReader(whole, problem).Read(what, handler);
        }
        if (whole.size() + piece.size() > kPropertyListMaxBinaryBytes) {
            problem->text = kBinaryListTooLarge;
            return kDamagedList;
        }
        const auto *start = reinterpret_cast<const std::uint8_t *>(piece.data());
        whole.insert(whole.end(), start, start + piece.size());
        bytes.Skip(piece.size());
    }
}

} // namespace drevix
