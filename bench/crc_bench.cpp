// CRC-32 with the sum of the bytes, beside the CRCs that a user would pick instead, which give no sum, the
// table look-up a byte that most programs have, and the limits: copying the bytes, and adding them up.
#include "util/crc32/crc32.h"
#include "util/crc32/crc32_kernels.h"

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <zlib.h>

#include <cstring>
#include <numeric>
#include <random>
#include <vector>

namespace drevix {
namespace {

std::uint64_t Ours(const std::uint8_t *bytes, std::size_t count) {
    std::uint32_t crc = 0;
    std::uint32_t sum = 0;
    StandardCRC32(bytes, static_cast<std::uint32_t>(count), &crc, &sum);
    return std::uint64_t{crc} + sum;
}

std::uint64_t OursFolded(const std::uint8_t *bytes, std::size_t count) {
    std::uint32_t crc = 0;
    std::uint32_t sum = 0;
    StdCaseInsensitiveCRC32(bytes, static_cast<std::uint32_t>(count), &crc, &sum);
    return std::uint64_t{crc} + sum;
}

std::uint64_t OursByTables(const std::uint8_t *bytes, std::size_t count) {
    const CrcState state = TakeUpByTables({0xFFFFFFFF, 0}, bytes, count, LetterCase::Counts);
    return std::uint64_t{state.crc} + state.sum;
}

std::uint64_t Libdeflate(const std::uint8_t *bytes, std::size_t count) {
    return libdeflate_crc32(0, bytes, count);
}

std::uint64_t Zlib(const std::uint8_t *bytes, std::size_t count) {
    return crc32_z(0, bytes, count);
}

std::uint64_t ByteTable(const std::uint8_t *bytes, std::size_t count) {
    std::uint32_t crc = 0xFFFFFFFF;
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += bytes[i];
        crc = (crc >> 8) ^ gCrc32table[(crc ^ bytes[i]) & 0xFF];
    }
    return std::uint64_t{crc} + sum;
}

std::uint64_t SumAlone(const std::uint8_t *bytes, std::size_t count) {
    return std::accumulate(bytes, bytes + count, std::uint32_t{0});
}

std::uint64_t Copy(const std::uint8_t *bytes, std::size_t count) {
    static std::vector<std::uint8_t> copy(std::size_t{1} << 20);
    std::memcpy(copy.data(), bytes, count);
    benchmark::ClobberMemory();
    return copy[0];
}

template <std::uint64_t (*calculate)(const std::uint8_t *bytes, std::size_t count)>
void BM_Crc(benchmark::State &state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<std::uint8_t> bytes(count);
    std::mt19937 random(1);
    for (std::uint8_t &byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    for ([[maybe_unused]] const auto repetition : state) {
        benchmark::DoNotOptimize(calculate(bytes.data(), count));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark *bench) {
    for (const std::int64_t count : {9, 64, 1024, 32768, 1048576}) {
        bench->Arg(count);
    }
}

BENCHMARK_TEMPLATE(BM_Crc, Ours)->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_Crc, OursFolded)->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_Crc, OursByTables)->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_Crc, Libdeflate)->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_Crc, Zlib)->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_Crc, ByteTable)->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_Crc, SumAlone)->Apply(Sizes);
BENCHMARK_TEMPLATE(BM_Crc, Copy)->Apply(Sizes);

} // namespace
} // namespace drevix
