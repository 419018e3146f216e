// The loops behind the CRC functions: one for any processor, one for processors with carry-less
// multiplication. Only for the CRC functions, their tests and benchmarks.
#pragma once

#include "platform/base/equal_string.h"

#include <cstddef>
#include <cstdint>

namespace drevix {

// The running state.
struct CrcState {
    std::uint32_t crc; // the raw register
    std::uint32_t sum; // of the bytes, modulo 2^32
};

// Processes `count` bytes at any alignment; `bytes` may be null if `count` is 0. LetterCase::Ignored folds
// only 'A' to 'Z'.
using CrcKernel = CrcState (*)(CrcState state, const std::uint8_t *bytes, std::size_t count,
                               LetterCase letters);

// Sixteen independent table lookups for sixteen bytes.
[[nodiscard]] CrcState TakeUpByTables(CrcState state, const std::uint8_t *bytes, std::size_t count,
                                      LetterCase letters);

// The fastest kernel that this processor can run; else TakeUpByTables.
[[nodiscard]] CrcKernel FastestCrcKernel();

} // namespace drevix
