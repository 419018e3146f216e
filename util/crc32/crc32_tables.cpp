#include "util/crc32/crc32.h"
#include "util/crc32/crc32_kernels.h"

#include <utility>

namespace drevix {
namespace {

constexpr std::uint32_t kReflectedGenerator = 0xEDB88320;
constexpr std::size_t kWordsStride = 16; // bytes per step
constexpr std::size_t kWordBytes = sizeof(std::uint64_t);

using CrcTable = std::array<std::uint32_t, 256>;

constexpr CrcTable MakeByteTable() {
    CrcTable table{};
    for (std::uint32_t n = 0; n < table.size(); ++n) {
        std::uint32_t value = n;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1) ^ ((value & 1) != 0 ? kReflectedGenerator : 0);
        }
        table[n] = value;
    }
    return table;
}

// Table k holds a byte's effect on the register when k zero bytes follow it, so that the lookups of a step
// are independent.
constexpr auto kTables = [] {
    std::array<CrcTable, kWordsStride> tables{MakeByteTable()};
    for (std::size_t k = 1; k < tables.size(); ++k) {
        for (std::size_t n = 0; n < tables[k].size(); ++n) {
            const std::uint32_t before = tables[k - 1][n];
            tables[k][n] = (before >> 8) ^ tables[0][before & 0xFF];
        }
    }
    return tables;
}();

// Compiles to a single load.
template <std::size_t... i>
std::uint64_t LoadWord(const std::uint8_t *bytes, std::index_sequence<i...> /*bytes of a word*/) {
    return ((std::uint64_t{bytes[i]} << (8 * i)) | ...);
}

// The effect of a word's eight bytes on the register when `following` bytes come after them in the step.
template <std::size_t following, std::size_t... i>
std::uint32_t LookUpWord(std::uint64_t word, std::index_sequence<i...> /*bytes of a word*/) {
    return (kTables[following + kWordBytes - 1 - i][(word >> (8 * i)) & 0xFF] ^ ...);
}

constexpr std::uint64_t InEveryByte(std::uint8_t value) {
    return std::uint64_t{0x0101010101010101} * value;
}

// Adds 0x20 to each byte that is 'A' to 'Z'. Adding these constants to a byte's low seven bits sets bit 7
// exactly from 'A' and from 'Z' + 1 on; no carry leaves the byte.
std::uint64_t FoldWord(std::uint64_t word) {
    const std::uint64_t low = word & InEveryByte(0x7F);
    const std::uint64_t fromA = low + InEveryByte(0x80 - 'A');
    const std::uint64_t afterZ = low + InEveryByte(0x80 - ('Z' + 1));
    const std::uint64_t capitals = fromA & ~afterZ & ~word & InEveryByte(0x80);
    return word | (capitals >> 2);
}

// The sum of the word's bytes: adds pairs into 16-bit lanes, then the lanes into the highest by a
// multiplication.
std::uint32_t SumOfWord(std::uint64_t word) {
    constexpr std::uint64_t kEvenBytes = 0x00FF00FF00FF00FF;
    const std::uint64_t pairs = (word & kEvenBytes) + ((word >> 8) & kEvenBytes);
    return static_cast<std::uint32_t>((pairs * 0x0001000100010001) >> 48);
}

template <LetterCase letters>
CrcState TakeUpWords(CrcState state, const std::uint8_t *bytes, std::size_t count) {
    constexpr auto kBytesOfWord = std::make_index_sequence<kWordBytes>();
    for (; count >= kWordsStride; bytes += kWordsStride, count -= kWordsStride) {
        std::uint64_t first = LoadWord(bytes, kBytesOfWord);
        std::uint64_t second = LoadWord(bytes + kWordBytes, kBytesOfWord);
        if constexpr (letters == LetterCase::Ignored) {
            first = FoldWord(first);
            second = FoldWord(second);
        }
        state.sum += SumOfWord(first) + SumOfWord(second);
        state.crc =
            LookUpWord<kWordBytes>(first ^ state.crc, kBytesOfWord) ^ LookUpWord<0>(second, kBytesOfWord);
    }
    for (; count > 0; ++bytes, --count) {
        std::uint8_t byte = *bytes;
        if (letters == LetterCase::Ignored && byte >= 'A' && byte <= 'Z') {
            byte += 'a' - 'A';
        }
        state.sum += byte;
        state.crc = (state.crc >> 8) ^ kTables[0][(state.crc ^ byte) & 0xFF];
    }
    return state;
}

} // namespace

constinit const CrcTable gCrc32table = MakeByteTable();

CrcState TakeUpByTables(CrcState state, const std::uint8_t *bytes, std::size_t count, LetterCase letters) {
    return letters == LetterCase::Ignored ? TakeUpWords<LetterCase::Ignored>(state, bytes, count)
                                          : TakeUpWords<LetterCase::Counts>(state, bytes, count);
}

} // namespace drevix
