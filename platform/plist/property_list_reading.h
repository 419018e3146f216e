// What the XML and the binary reader of property lists share: where the bytes come from, and the status of
// damage.
#pragma once

#include "platform/files/files.h"
#include "platform/plist/property_list.h"

#include <span>
#include <string>

namespace drevix {

// The status of a damaged list, or of one beyond the bounds.
inline constexpr OSErr kDamagedList = -1;

// What is handed over: the elements of a root that must be an array, one by one, or the root, whatever it is.
enum class HandOver : std::uint8_t { Elements, Root };

// The bytes of a list, piece by piece. Not more than kPropertyListMaxBytes in all.
class ListBytes {
  public:
    explicit ListBytes(std::span<const std::byte> bytes) : fAhead(bytes), fTotal(bytes.size()) {}
    // From the mark of an open file on, which stays the caller's.
    explicit ListBytes(FileRef file) : fFile(file) {}

    // The bytes that come next, none at the end. They are valid until they have all been skipped and Ahead is
    // called again. noErr, kDamagedList when the list is too large, memFullErr, or the file's error.
    [[nodiscard]] OSErr Ahead(std::span<const std::byte> *bytes);
    void Skip(std::size_t count) { fAhead = fAhead.subspan(count); }

  private:
    OSErr ReadPiece();

    std::span<const std::byte> fAhead;
    std::size_t fTotal = 0;
    FileRef fFile = 0;
    std::string fPiece;
};

// The readers. As ReadPropertyListArray; `problem` is not null, and its text may stay empty for a status
// other than kDamagedList. Both may throw std::bad_alloc and what the handler throws.
[[nodiscard]] OSErr ReadXmlList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
                                PropertyListProblem *problem);
[[nodiscard]] OSErr ReadBinaryList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
                                   PropertyListProblem *problem);

// What they say of a list beyond the bounds.
inline constexpr const char *kListTooLarge = "it is larger than 2 GB";
inline constexpr const char *kBinaryListTooLarge = "it is a binary list of more than 256 MB";
inline constexpr const char *kListTooDeep = "arrays and dictionaries are nested more than 64 deep";
inline constexpr const char *kListTooManyValues = "one of its elements holds more than 65,536 values";
inline constexpr const char *kListTooMuchText = "one of its elements holds more than 16 MB of text and data";
static_assert(kPropertyListMaxBytes == std::size_t{2} << 30 && kPropertyListMaxBinaryBytes == 256 << 20 &&
              kPropertyListMaxDepth == 64 && kPropertyListMaxValues == 65'536 &&
              kPropertyListMaxText == 16 << 20);

} // namespace drevix
