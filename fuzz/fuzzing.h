// What the fuzzers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// libFuzzer's own mutation, for mutators that mend what it has made. Gives the new size.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maxSize);

namespace drevix::fuzz {

// Ends the run with a finding.
inline void Check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace drevix::fuzz
