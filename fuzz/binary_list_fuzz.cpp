// Binary property lists: whatever is read is read as the same after it has been written as XML. The mutator
// mends the trailer, so that the objects are looked at.
#include "fuzz/list_round_trip.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

using namespace drevix;

constexpr std::string_view kSignature = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kMostBytes = 4096; // keeps what shared objects multiply to small

void PutBigEndian(std::uint8_t *place, std::uint64_t value) {
    for (int i = 7; i >= 0; --i, value >>= 8) {
        place[i] = static_cast<std::uint8_t>(value);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size >= kSignature.size() && size <= kMostBytes &&
        std::memcmp(data, kSignature.data(), kSignature.size()) == 0) {
        fuzz::CheckRoundTrip(std::as_bytes(std::span(data, size)));
    }
    return 0;
}

// Mutates, then mostly makes the trailer fit the length: references and offsets of one byte, and as many of
// the bytes before it for the table as there are objects.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (seed % 8 == 0 || size <= kSignature.size() + kTrailerSize) {
        return size;
    }
    std::memcpy(data, kSignature.data(), kSignature.size());
    std::uint8_t *trailer = data + size - kTrailerSize;
    const std::size_t room = size - kTrailerSize - kSignature.size();
    const std::size_t count = std::clamp<std::size_t>(trailer[15], 1, std::min<std::size_t>(room, 255));
    trailer[6] = 1;
    trailer[7] = 1;
    PutBigEndian(trailer + 8, count);
    PutBigEndian(trailer + 16, trailer[23] % count);
    PutBigEndian(trailer + 24, size - kTrailerSize - count);
    return size;
}
