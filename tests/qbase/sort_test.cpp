#include "qbase/fast_sort.h"
#include "qbase/qbase_sort.h"
#include "tests/qbase/file_support.h"

#include <cmath>
#include <numeric>
#include <random>

namespace drevix::test {
namespace {

std::uint64_t gComparisons = 0;
std::uint64_t gCancelAt = 0;

// Elements of any size at any address, as little-endian numbers.
std::size_t gSize = 0;
std::int32_t Compare(const void *a, const void *b) {
    if (++gComparisons == gCancelAt) {
        CancelFastQSort();
    }
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    std::memcpy(&first, a, gSize);
    std::memcpy(&second, b, gSize);
    return first < second ? -7 : first > second ? 9 : 0;
}

struct Input {
    const char *name;
    std::uint32_t (*at)(std::uint32_t i, std::uint32_t count);
};
constexpr Input kInputs[] = {
    {"random", [](std::uint32_t i, std::uint32_t) { return static_cast<std::uint32_t>(std::mt19937(i)()); }},
    {"sorted", [](std::uint32_t i, std::uint32_t) { return i; }},
    {"reversed", [](std::uint32_t i, std::uint32_t count) { return count - i; }},
    {"equal", [](std::uint32_t, std::uint32_t) { return 7U; }},
    {"organ pipe", [](std::uint32_t i, std::uint32_t count) { return std::min(i, count - i); }},
    {"sawtooth", [](std::uint32_t i, std::uint32_t) { return i % 17; }},
    {"two values", [](std::uint32_t i, std::uint32_t) { return i * 7 % 3 / 2; }},
};

void SortAll(std::uint32_t count, std::size_t size) {
    gSize = size;
    for (const Input &input : kInputs) {
        SCOPED_TRACE(std::string(input.name) + " " + std::to_string(count));
        std::vector<std::uint64_t> expected(count);
        std::string elements(count * size, '\0');
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint64_t value = input.at(i, count);
            std::memcpy(&elements[i * size], &value, size);
            std::memcpy(&expected[i], &value, size);
        }
        std::ranges::sort(expected);
        gComparisons = 0;
        EXPECT_EQ(FastQSort(elements.data(), static_cast<int>(count), static_cast<int>(size), Compare),
                  noErr);
        std::vector<std::uint64_t> sorted(count);
        for (std::uint32_t i = 0; i < count; ++i) {
            std::memcpy(&sorted[i], &elements[i * size], size);
        }
        EXPECT_EQ(sorted, expected);
        const double most = (input.at == kInputs[0].at ? 1.2 : 1.6) * count * std::log2(count);
        EXPECT_TRUE(count < 10'000 || static_cast<double>(gComparisons) <= most) << gComparisons;
        EXPECT_TRUE(count >= 2 || gComparisons == 0);
    }
}

TEST(FastSort, AnyInputAndElementSize_IsSortedInFewComparisons) {
    for (const std::uint32_t count : {0U, 1U, 2U, 3U, 4U, 7U, 24U, 25U, 26U, 100U, 1000U}) {
        for (const std::size_t size : {1U, 3U, 4U, 8U}) {
            SortAll(count, size);
        }
    }
    SortAll(100'000, 4); // beyond the 32,768 that a random number reaches
}

TEST(FastSort, Randomness_IsThePublishedCongruenceAndAMedianIsTheMiddle) {
    FQSRandomSeed(1);
    std::uint64_t state = 1;
    for (int i = 0; i < 1000; ++i) {
        state = (state * 1103515245 + 12345) % 0x1'0000'0000;
        ASSERT_EQ(FQSRandom(), static_cast<std::int32_t>(state % 0x10000 / 2));
    }
    gSize = 4;
    std::vector<std::uint32_t> order = {1, 2, 3};
    std::ignore = FastQSort(order.data(), 3, 4, Compare); // sets the comparison
    do {
        std::vector<std::uint32_t> three = order;
        ChooseMedian(&three[0], &three[0], &three[1], &three[2]);
        EXPECT_EQ(three[0], 2U);
    } while (std::ranges::next_permutation(order).found);
}

TEST(FastSort, Cancelled_TellsSoAndKeepsEveryElement) {
    for (const std::uint64_t at : {1, 2, 50, 500, 1500}) {
        std::vector<std::uint32_t> numbers(200);
        std::iota(numbers.rbegin(), numbers.rend(), 0U);
        gSize = 4;
        gComparisons = 0;
        gCancelAt = at;
        const OSErr status = FastQSort(numbers.data(), 200, 4, Compare);
        gCancelAt = 0;
        EXPECT_EQ(status, gComparisons >= at ? userCanceledErr : noErr);
        EXPECT_LE(gComparisons, at + 203) << "a median and a partition may still end";
        EXPECT_EQ(FastQSort(numbers.data(), 200, 4, Compare), noErr);
        EXPECT_EQ(numbers[0], 0U);
        EXPECT_EQ(numbers[199], 199U);
    }
}

std::int32_t CompareFirst(const void *a, std::int32_t lengthA, const void *b, std::int32_t /*lengthB*/) {
    gCancelAt > 0 ? CancelFastQSort() : void();
    ++gComparisons;
    return lengthA > 0 ? std::memcmp(a, b, 1) : 0;
}

TEST(BaseSort, Cancelled_HasNoOrder) {
    const QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {2, 1, 2, 1, 2});
    gCancelAt = 1;
    QBaseSort(base.get(), CompareFirst, 200);
    gCancelAt = 0;
    EXPECT_EQ(QBaseGetSortMode(base.get()), 0);
    EXPECT_EQ(base->lockCount, 0);
    EXPECT_TRUE(QBaseValidate(base.get()));
}

QBaseOwner BaseOfLetters(std::string_view letters) {
    QBaseOwner base = NewFileBase();
    for (const char &letter : letters) {
        EXPECT_GE(QBaseAddRecord(base.get(), &letter, 1), 0);
    }
    return base;
}

TEST(BaseSort, Search_LooksAtTheFirstRecordsAsManyAsAsked) {
    const QBaseOwner base = BaseOfLetters("bdfh");
    const std::tuple<const char *, std::int32_t, RecordNumber> rows[] = {
        {"b", 4, 0},  {"h", 4, 3},  {"h", 0, 3}, {"h", 5, 3},
        {"h", -9, 3}, {"h", 3, -1}, {"f", 3, 2}, {"e", 4, -1}};
    for (const auto &[key, maximum, found] : rows) {
        EXPECT_EQ(QBaseSearchMax(base.get(), maximum, CompareFirst, key, 1), found) << key << maximum;
    }
    EXPECT_EQ(QBaseSearch(base.get(), CompareFirst, "b", 0), kNoRecord);
    EXPECT_EQ(QBaseSearch(NewFileBase().get(), CompareFirst, "b", 1), kNoRecord);
}

// Only the low 16 bits of a comparison count.
TEST(BaseSort, WideResult_CountsByItsLowHalf) {
    const QBaseOwner base = BaseOfLetters("abc");
    const auto equal = [](const void *, std::int32_t, const void *, std::int32_t) { return 0x10000; };
    EXPECT_EQ(QBaseSearch(base.get(), equal, "x", 1), 1);
    const auto reversed = [](const void *a, std::int32_t, const void *b, std::int32_t) {
        return std::memcmp(a, b, 1) > 0 ? 0xFFFF : std::memcmp(a, b, 1) < 0 ? 0x70001 : 0x50000;
    };
    QBaseSort(base.get(), reversed, 128);
    EXPECT_EQ(std::memcmp(QBaseGetRecord(base.get(), 0), "c", 1), 0);
    EXPECT_EQ(std::memcmp(QBaseGetRecord(base.get(), 2), "a", 1), 0);
    const std::byte *const slots = base->index.Data();
    EXPECT_EQ(QBaseCompareProc(slots, slots + 4), -1) << "as the sort that was last";
    EXPECT_EQ(QBaseCompareProc(slots + 4, slots), 1);
}

} // namespace
} // namespace drevix::test
