// Shared by the XML and binary readers of property lists: the source of bytes and the status for damage.
#pragma once

#include "platform/base/marked_text.h"
#include "platform/files/files.h"
#include "platform/plist/property_list.h"

#include <span>
#include <string>

namespace drevix {

// The status for a damaged list or one beyond the limits.
inline constexpr OSErr kDamagedList = -1;

// What to pass on: the elements of a root array one by one, or a root of any kind.
enum class HandOver : std::uint8_t { Elements, Root };

// The bytes of a list, in pieces; at most kPropertyListMaxBytes in total.
class ListBytes {
  public:
    explicit ListBytes(std::span<const std::byte> bytes) : fAhead(bytes), fTotal(bytes.size()) {}
    // Starts at the mark of an open file, which the caller owns.
    explicit ListBytes(FileRef file) : fFile(file) {}

    // The next bytes; none at the end. Valid until all have been skipped and Ahead is called again. noErr,
    // kDamagedList if the list is too large, memFullErr, or the file's error.
    [[nodiscard]] OSErr Ahead(std::span<const std::byte> *bytes);
    void Skip(std::size_t count) { fAhead = fAhead.subspan(count); }

  private:
    OSErr ReadPiece();

    std::span<const std::byte> fAhead;
    std::size_t fTotal = 0;
    FileRef fFile = 0;
    std::string fPiece;
};

// The readers. As ReadPropertyListArray; `problem` must not be null, and its text may stay empty for a status
// other than kDamagedList. Both may throw std::bad_alloc and anything the handler throws.
[[nodiscard]] OSErr ReadXmlList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
                                PropertyListProblem *problem);
[[nodiscard]] OSErr ReadBinaryList(ListBytes &bytes, HandOver what, const PropertyListElementHandler &handler,
                                   PropertyListProblem *problem);

// Their message for a list that is too large.
inline constexpr const char *kListTooLarge = Marked("Engine", "it is larger than 2 GB");
inline constexpr const char *kBinaryListTooLarge =
    Marked("Engine", "it is a binary list of more than 256 MB");
inline constexpr const char *kListTooDeep =
    Marked("Engine", "arrays and dictionaries are nested more than 64 deep");
inline constexpr const char *kListTooManyValues =
    Marked("Engine", "one of its elements holds more than 65,536 values");
inline constexpr const char *kListTooMuchText =
    Marked("Engine", "one of its elements holds more than 16 MB of text and data");
static_assert(kPropertyListMaxBytes == std::size_t{2} << 30 && kPropertyListMaxBinaryBytes == 256 << 20 &&
              kPropertyListMaxDepth == 64 && kPropertyListMaxValues == 65'536 &&
              kPropertyListMaxText == 16 << 20);

} // namespace drevix
