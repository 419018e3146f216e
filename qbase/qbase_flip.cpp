// Byte order. Only files from the other byte order need it: everything is written in native order.
#include "qbase/qbase_file.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace drevix {
namespace {

// The widths of the header's fields in bytes, in order.
constexpr auto kFieldWidths =
    std::to_array<std::uint8_t>({4, 4, 2, 2, 4, 4, 4, 4, 2, 2, 4, 4, 4, 2, 2, 2, 2, 2, 2, 4, 4});
static_assert(std::accumulate(kFieldWidths.begin(), kFieldWidths.end(), std::size_t{0}) ==
              sizeof(QBaseFileHeader));

void ReverseBytes(void *value, std::size_t width) {
    auto *const bytes = static_cast<std::byte *>(value);
    std::reverse(bytes, bytes + width);
}

} // namespace

void QBaseFlipHeader(QBaseFileHeader *header) {
    auto *field = reinterpret_cast<std::byte *>(header);
    for (const std::uint8_t width : kFieldWidths) {
        ReverseBytes(field, width);
        field += width;
    }
}

void QBFlipInt32(void *value) {
    ReverseBytes(value, sizeof(std::uint32_t));
}

void QBFlipInt16(void *value) {
    ReverseBytes(value, sizeof(std::uint16_t));
}

} // namespace drevix
