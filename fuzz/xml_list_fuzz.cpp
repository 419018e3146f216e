// XML property lists: whatever is read is read as the same after it has been written.
#include "fuzz/list_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    drevix::fuzz::CheckRoundTrip(std::as_bytes(std::span(data, size)));
    return 0;
}
