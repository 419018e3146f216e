#include "util/crc32/crc32.h"

#include "platform/catalog/named_files.h"
#include "tests/support/testing.h"
#include "util/crc32/crc32_kernels.h"

#include <random>
#include <span>

namespace drevix::test {
namespace {

// Bit by bit from the definition, sharing nothing with the code under test.
CrcState BitByBit(CrcState state, std::span<const std::uint8_t> bytes, LetterCase letters) {
    for (std::uint8_t byte : bytes) {
        if (letters == LetterCase::Ignored && byte >= 0x41 && byte <= 0x5A) {
            byte += 0x20;
        }
        state.sum += byte;
        for (int bit = 0; bit < 8; ++bit) {
            const bool out = ((state.crc ^ (byte >> bit)) & 1) != 0;
            state.crc = (state.crc >> 1) ^ (out ? 0xEDB88320 : 0);
        }
    }
    return state;
}

std::vector<std::uint8_t> RandomBytes(std::size_t count) {
    std::mt19937 random(20);
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t &byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

class Crc32Kernel : public testing::TestWithParam<CrcKernel> {
  protected:
    static void ExpectRight(CrcState start, std::span<const std::uint8_t> bytes, LetterCase letters) {
        const CrcState wanted = BitByBit(start, bytes, letters);
        const CrcState given = GetParam()(start, bytes.data(), bytes.size(), letters);
        ASSERT_EQ(given.crc, wanted.crc) << bytes.size() << " bytes";
        ASSERT_EQ(given.sum, wanted.sum) << bytes.size() << " bytes";
    }
};

INSTANTIATE_TEST_SUITE_P(Kernels, Crc32Kernel, testing::Values(TakeUpByTables, FastestCrcKernel()));

TEST_P(Crc32Kernel, ShortData_OfEveryLengthAtEveryAlignment_MatchesTheDefinition) {
    const std::vector<std::uint8_t> memory = RandomBytes(320); // aligned as all that is allocated
    for (std::size_t offset = 0; offset < 16; ++offset) {
        for (std::size_t count = 0; count <= 300; ++count) {
            const auto bytes = std::span(memory).subspan(offset, count);
            ExpectRight({0x89ABCDEF, 0xFFFFFFF0}, bytes, LetterCase::Counts);
            ExpectRight({0, 0}, bytes, LetterCase::Ignored);
        }
    }
}

// A kernel that reads past either end is caught by the address sanitizer: the vector is exactly as long. A million random
// bytes have every value in every place of a step, so that folding in words and vectors touches capitals only.
TEST_P(Crc32Kernel, LongData_WithSumsThatWrapAround_MatchesTheDefinition) {
    for (const std::size_t count : {4095U, 65536U, 1000003U}) {
        ExpectRight({0xFFFFFFFF, 0}, RandomBytes(count), LetterCase::Counts);
        ExpectRight({1, 0xFFFFFFFF}, RandomBytes(count), LetterCase::Ignored);
    }
    const std::vector<std::uint8_t> full(20000000, 0xFF); // their sum passes 2^32
    ExpectRight({0, 0}, full, LetterCase::Counts);
}

TEST(Crc32, Variants_OfKnownBytes_HaveThePublishedValues) {
    for (const auto &[name, calculate, start, text, wantedCrc, wantedSum] :
         std::initializer_list<std::tuple<const char *, decltype(&StandardCRC32), std::uint32_t,
                                          std::string_view, std::uint32_t, std::uint32_t>>{
             {"standard", StandardCRC32, 0, "123456789", 0xCBF43926, 477},
             {"standard, a capital", StandardCRC32, 0, "aBc\xC4", 0x03192819, 458},
             {"standard folded", StdCaseInsensitiveCRC32, 0, "aBc\xC4", 0x3B546EF9, 490},
             {"bare", CalcCRC32, ~0U, "123456789", 0x340BC6D9, 477},
             {"bare folded", CaseInsensitiveCRC32, 0, "aBc\xC4", 0x1A10B1E5, 490},
         }) {
        std::uint32_t crc = start;
        std::uint32_t sum = 0;
        calculate(text.data(), static_cast<std::uint32_t>(text.size()), &crc, &sum);
        calculate(nullptr, 0, &crc, &sum);
        calculate("not stored", 10, nullptr, nullptr);
        EXPECT_EQ(crc, wantedCrc) << name;
        EXPECT_EQ(sum, wantedSum) << name;
    }
}

int gCalls = 0;
int gCancelAt = 0; // the call that cancels; 0 for none

std::int16_t CountCall() {
    return static_cast<std::int16_t>(++gCalls == gCancelAt ? 7 : 0);
}

// A file with the bytes of RandomBytes, open for reading.
struct OpenScratchFile {
    explicit OpenScratchFile(std::size_t count) : bytes(RandomBytes(count)) {
        WriteWhole(folder.Path("file"), std::string(bytes.begin(), bytes.end()));
        EXPECT_EQ(OpenFile(folder.Path("file"), fsRdPerm, &file), noErr);
        gCalls = 0;
        gCancelAt = 0;
    }
    ~OpenScratchFile() { EXPECT_EQ(FSClose(file), noErr); }
    OpenScratchFile(const OpenScratchFile &) = delete;
    OpenScratchFile &operator=(const OpenScratchFile &) = delete;

    ScratchFolder folder;
    std::vector<std::uint8_t> bytes;
    FileRef file = 0;
};

TEST(CalcFileCRC32, Forks_AreTakenUpInChunksLessTheResourceForksReservedBytes) {
    const struct {
        std::size_t length;
        bool isResourceFork;
        std::size_t skippedFrom, skippedTo; // the bytes left out
        int calls;                          // of the callback, with an interval of 0
    } rows[] = {
        {0, true, 0, 0, 0},      {15, true, 0, 0, 1},       {16, true, 16, 16, 0},
        {256, true, 16, 256, 0}, {257, true, 16, 256, 1},   {32768, false, 0, 0, 1},
        {32769, false, 0, 0, 2}, {33024, true, 16, 256, 1}, {33025, true, 16, 256, 2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.length);
        const OpenScratchFile scratch(row.length);
        const std::span<const std::uint8_t> bytes(scratch.bytes);
        CrcState wanted = BitByBit({~5U, 6}, bytes.first(row.skippedFrom), LetterCase::Counts);
        wanted = BitByBit(wanted, bytes.subspan(row.skippedTo), LetterCase::Counts);
        const auto calculate = [&](std::uint32_t *crc, std::uint32_t *sum, std::uint32_t interval) {
            return CalcFileCRC32(scratch.file, row.isResourceFork, crc, sum, CountCall, interval);
        };
        std::uint32_t crc = 5;
        std::uint32_t sum = 6;
        EXPECT_EQ(calculate(&crc, &sum, 0), noErr);
        EXPECT_EQ(crc, ~wanted.crc);
        EXPECT_EQ(sum, wanted.sum);
        EXPECT_EQ(gCalls, row.calls);
        EXPECT_EQ(calculate(nullptr, nullptr, 0xFFFFFFFF), noErr);
        EXPECT_EQ(gCalls, row.calls) << "called before the interval had passed";
    }
}

TEST(CalcFileCRC32, CancelledOrFailing_HasItsStatusAndOutputs) {
    const OpenScratchFile scratch(100000);
    std::uint32_t crc = 5;
    std::uint32_t sum = 6;
    const auto calculate = [&](FileRef file) { return CalcFileCRC32(file, false, &crc, &sum, CountCall, 0); };
    EXPECT_EQ(calculate(0), rfNumErr);
    MeetsFault(1, Lasts::Once, ENOMEM, [&] { EXPECT_EQ(calculate(scratch.file), memFullErr); });
    EXPECT_TRUE(crc == 5 && sum == 6) << "left as they were";
    gCancelAt = 2;
    EXPECT_EQ(calculate(scratch.file), userCanceledErr);
    EXPECT_EQ(gCalls, 2);
    EXPECT_TRUE(crc == 0 && sum == 0);
    // The length comes first, so its failure leaves the outputs; a later one sets them to 0.
    ForEachFault(4, {EIO}, [&](const FaultAt &fault) {
        crc = 5;
        sum = 6;
        OSErr status = noErr;
        const bool wasHit = fault.Meets([&] { status = calculate(scratch.file); });
        EXPECT_EQ(status, wasHit ? ioErr : noErr);
        EXPECT_TRUE(!wasHit || (fault.call == 1 ? crc == 5 && sum == 6 : crc == 0 && sum == 0));
        return wasHit;
    });
}

TEST(CalcSpecCRC32, Forks_GiveTheFirstFailureAndKeepWhatWasTakenUp) {
    const OpenScratchFile scratch(1000);
    const CrcState whole = BitByBit({~0U, 0}, scratch.bytes, LetterCase::Counts);
    FSSpec spec = {kRootVolume, FolderIdFromPath(scratch.folder.Path()), {4, 'f', 'i', 'l', 'e'}};
    for (const bool dataFork : {true, false}) {
        for (const bool resourceFork : {true, false}) { // which the file has not
            std::uint32_t crc = 0;
            std::uint32_t sum = 0;
            EXPECT_EQ(CalcSpecCRC32(spec, dataFork, resourceFork, &crc, &sum, nullptr, 0),
                      resourceFork ? fnfErr : noErr);
            EXPECT_EQ(crc, dataFork ? ~whole.crc : 0U);
            EXPECT_EQ(sum, dataFork ? whole.sum : 0U);
            EXPECT_EQ(OpenFileCount(), 1) << "a fork was left open";
        }
    }
    spec.name = {6, 'c', 'o', 'n', 'f', 'i', 'g'};
    EXPECT_EQ(CalcSpecCRC32(spec, true, true, nullptr, nullptr, nullptr, 0), notAFileErr);
}

} // namespace
} // namespace drevix::test
