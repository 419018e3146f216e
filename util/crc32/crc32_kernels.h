// The loops behind the CRC functions: one for any processor, one for processors that multiply without
// carries. For the CRC functions themselves, their tests and benchmarks.
#pragma once

#include "platform/base/equal_string.h"

#include <cstddef>
#include <cstdint>

namespace drevix {

// What runs along the bytes.
struct CrcState {
    std::uint32_t crc; // the bare register
    std::uint32_t sum; // of the bytes, modulo 2^32
};

// Takes up `count` bytes at any alignment; `bytes` may be null when there are none. With LetterCase::Ignored
// 'A' to 'Z' count as 'a' to 'z', and every other byte as itself.
using CrcKernel = CrcState (*)(CrcState state, const std::uint8_t *bytes, std::size_t count,
                               LetterCase letters);

// Sixteen table look-ups for sixteen bytes, independent of one another.
[[nodiscard]] CrcState TakeUpByTables(CrcState state, const std::uint8_t *bytes, std::size_t count,
                                      LetterCase letters);

// The fastest kernel that this processor can run; TakeUpByTables where there is no other.
[[nodiscard]] CrcKernel FastestCrcKernel();

} // namespace drevix
