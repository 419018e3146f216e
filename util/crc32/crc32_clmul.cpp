// CRC-32 by carry-less multiplication, 64 bytes a step, with the sum of the bytes from the same loads. The
// bytes are a polynomial over GF(2) whose highest power is the lowest bit of the first byte. A 128-bit block
// d bits ahead of another can be multiplied by x^d modulo the generator and added to it. So four blocks run
// over the bytes and are then folded into 16 bytes with the same remainder as all the input; the tables
// process those. (Gopal et al., "Fast CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction",
// Intel, 2009.)
#include "util/crc32/crc32_kernels.h"

#ifdef __x86_64__

#include <wmmintrin.h>

namespace drevix {
namespace {

constexpr std::size_t kBlock = sizeof(__m128i);
constexpr std::size_t kBlocksStride = 4 * kBlock;

// x^exponent modulo the generator as a bit-reflected polynomial of degree below 64: bit 63 is x^0.
constexpr std::uint64_t PowerOfX(int exponent) {
    constexpr std::uint32_t kReflectedGenerator = 0xEDB88320;
    std::uint32_t power = 0x80000000;
    for (int i = 0; i < exponent; ++i) {
        power = (power >> 1) ^ ((power & 1) != 0 ? kReflectedGenerator : 0);
    }
    return std::uint64_t{power} << 32;
}

// Folds the block `bits` forward into `next`. The product of two reflected 64-bit polynomials is one bit low,
// that is multiplied by x, so the powers are one less; the block's low half holds its high powers.
template <int bits>
[[gnu::target("pclmul")]] inline __m128i Forward(__m128i block, __m128i next) {
    const __m128i powers = _mm_set_epi64x(static_cast<long long>(PowerOfX(bits - 1)),
                                          static_cast<long long>(PowerOfX(bits + 64 - 1)));
    const __m128i low = _mm_clmulepi64_si128(block, powers, 0x00);
    const __m128i high = _mm_clmulepi64_si128(block, powers, 0x11);
    return _mm_xor_si128(_mm_xor_si128(low, high), next);
}

// Loads a block and adds the sum of its bytes to the two 64-bit halves of *sums.
template <LetterCase letters>
inline __m128i Load(const std::uint8_t *bytes, __m128i *sums) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
    if constexpr (letters == LetterCase::Ignored) {
        // Bytes compare as signed, so shift 'A' to the lowest value.
        const __m128i fromA = _mm_add_epi8(block, _mm_set1_epi8(static_cast<char>(0x80 - 'A')));
        const __m128i isCapital = _mm_cmplt_epi8(fromA, _mm_set1_epi8(static_cast<char>(0x80 + 26)));
        block = _mm_or_si128(block, _mm_and_si128(isCapital, _mm_set1_epi8('a' - 'A')));
    }
    *sums = _mm_add_epi64(*sums, _mm_sad_epu8(block, _mm_setzero_si128()));
    return block;
}

// For kBlocksStride bytes or more.
template <LetterCase letters>
[[gnu::target("pclmul")]] CrcState TakeUpBlocks(CrcState state, const std::uint8_t *bytes,
                                                std::size_t count) {
    constexpr int kBlockBits = 8 * kBlock;
    constexpr int kStrideBits = 8 * kBlocksStride;
    const std::uint8_t *end = bytes + count;
    __m128i sums = _mm_cvtsi32_si128(static_cast<int>(state.sum));
    __m128i a = Load<letters>(bytes, &sums);
    __m128i b = Load<letters>(bytes + kBlock, &sums);
    __m128i c = Load<letters>(bytes + 2 * kBlock, &sums);
    __m128i d = Load<letters>(bytes + 3 * kBlock, &sums);
    a = _mm_xor_si128(a, _mm_cvtsi32_si128(static_cast<int>(state.crc)));
    for (bytes += kBlocksStride; static_cast<std::size_t>(end - bytes) >= kBlocksStride;
         bytes += kBlocksStride) {
        a = Forward<kStrideBits>(a, Load<letters>(bytes, &sums));
        b = Forward<kStrideBits>(b, Load<letters>(bytes + kBlock, &sums));
        c = Forward<kStrideBits>(c, Load<letters>(bytes + 2 * kBlock, &sums));
        d = Forward<kStrideBits>(d, Load<letters>(bytes + 3 * kBlock, &sums));
    }
    a = Forward<2 * kBlockBits>(a, c);
    b = Forward<2 * kBlockBits>(b, d);
    a = Forward<kBlockBits>(a, b);
    for (; static_cast<std::size_t>(end - bytes) >= kBlock; bytes += kBlock) {
        a = Forward<kBlockBits>(a, Load<letters>(bytes, &sums));
    }
    std::uint8_t left[kBlock];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(left), a);
    state.crc = TakeUpByTables({0, 0}, left, kBlock, LetterCase::Counts).crc;
    sums = _mm_add_epi64(sums, _mm_unpackhi_epi64(sums, sums));
    state.sum = static_cast<std::uint32_t>(_mm_cvtsi128_si32(sums));
    return TakeUpByTables(state, bytes, static_cast<std::size_t>(end - bytes), letters);
}

CrcState TakeUpByMultiplication(CrcState state, const std::uint8_t *bytes, std::size_t count,
                                LetterCase letters) {
    if (count < kBlocksStride) {
        return TakeUpByTables(state, bytes, count, letters);
    }
    return letters == LetterCase::Ignored ? TakeUpBlocks<LetterCase::Ignored>(state, bytes, count)
                                          : TakeUpBlocks<LetterCase::Counts>(state, bytes, count);
}

} // namespace

CrcKernel FastestCrcKernel() {
    return __builtin_cpu_supports("pclmul") ? TakeUpByMultiplication : TakeUpByTables;
}

} // namespace drevix

#else

namespace drevix {

CrcKernel FastestCrcKernel() {
    return TakeUpByTables;
}

} // namespace drevix

#endif
