// Sorting the index of a base beside std::sort, std::stable_sort and qsort over the same index with the same
// comparison of records. The arguments are the number of records and how they lie at the start.
#include "qbase/qbase.h"
#include "qbase/qbase_internal.h"
#include "qbase/qbase_sort.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace drevix;

constexpr std::size_t kLength = 1668;
constexpr std::size_t kKeyLength = 16; // the start of a record orders it

std::uint64_t gComparisons = 0;

// The caller's comparison, as every sort calls it: through a pointer.
std::int32_t CompareRecords(const void *a, std::int32_t /*lengthA*/, const void *b,
                            std::int32_t /*lengthB*/) {
    ++gComparisons;
    return std::memcmp(a, b, kKeyLength);
}
QBaseCompareFunction volatile gCompareFunction = CompareRecords;

// The order of two offsets by their records, as little work around the caller's comparison as can be.
struct OffsetCompare {
    explicit OffsetCompare(QBaseHandle base) : records(base->records.Data()), compare(gCompareFunction) {}
    std::int32_t Compare(std::int32_t a, std::int32_t b) const {
        const auto *const first = reinterpret_cast<const QBaseRecord *>(records + a);
        const auto *const second = reinterpret_cast<const QBaseRecord *>(records + b);
        return static_cast<std::int16_t>(compare(first + 1, first->length, second + 1, second->length));
    }
    bool operator()(std::int32_t a, std::int32_t b) const { return Compare(a, b) < 0; }
    const std::byte *records;
    QBaseCompareFunction compare;
};
const OffsetCompare *gOffsetCompare = nullptr; // for qsort, whose comparison knows the two slots alone

int CompareSlots(const void *a, const void *b) {
    return gOffsetCompare->Compare(*static_cast<const std::int32_t *>(a),
                                   *static_cast<const std::int32_t *>(b));
}

struct Base {
    static void Sort(QBaseHandle base) { QBaseSort(base, gCompareFunction, kSortFirstCallerMode); }
};
struct StdSort {
    static void Sort(QBaseHandle base) {
        std::sort(IndexOffsets(base), IndexOffsets(base) + QBaseCountRecords(base), OffsetCompare(base));
    }
};
struct StableSort {
    static void Sort(QBaseHandle base) {
        std::stable_sort(IndexOffsets(base), IndexOffsets(base) + QBaseCountRecords(base),
                         OffsetCompare(base));
    }
};
struct CSort {
    static void Sort(QBaseHandle base) {
        const OffsetCompare compare(base);
        gOffsetCompare = &compare;
        std::qsort(IndexOffsets(base), static_cast<std::size_t>(QBaseCountRecords(base)),
                   sizeof(std::int32_t), CompareSlots);
    }
};

// How the keys follow each other in the index at the start.
enum class Order : std::int64_t { Random, Sorted, Reversed, Equal, OrganPipe, Sawtooth };
constexpr auto kOrderNames =
    std::to_array({"random", "sorted", "reversed", "equal", "organ pipe", "sawtooth"});

std::uint64_t KeyAt(std::uint64_t i, std::uint64_t count, Order order) {
    switch (order) {
    case Order::Random:
        return std::mt19937_64(i)();
    case Order::Reversed:
        return count - i;
    case Order::Equal:
        return 7;
    case Order::OrganPipe:
        return std::min(i, count - i);
    case Order::Sawtooth:
        return i % 17;
    case Order::Sorted:
        break;
    }
    return i;
}

QBaseOwner MakeBase(std::size_t count, Order order) {
    QBaseOwner base(QBaseNew(1, 1, 4));
    std::vector<std::byte> record(kLength);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t key = __builtin_bswap64(KeyAt(i, count, order)); // compared byte by byte
        std::memcpy(record.data(), &key, sizeof key);
        if (QBaseAddRecord(base.get(), record.data(), kLength) < 0) {
            std::abort();
        }
    }
    return base;
}

template <class How>
void Sort(benchmark::State &state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const auto order = static_cast<Order>(state.range(1));
    const QBaseOwner base = MakeBase(count, order);
    std::int32_t *const offsets = IndexOffsets(base.get());
    const std::vector<std::int32_t> start(offsets, offsets + count);
    gComparisons = 0;
    for ([[maybe_unused]] auto round : state) {
        std::ranges::copy(start, offsets);
        How::Sort(base.get());
    }
    const double n = static_cast<double>(count);
    state.SetLabel(kOrderNames.at(static_cast<std::size_t>(order)));
    state.counters["of_n_log2_n"] = // comparisons, as a multiple of n log2 n
        static_cast<double>(gComparisons) / static_cast<double>(state.iterations()) / (n * std::log2(n));
}

void Inputs(benchmark::internal::Benchmark *bench) {
    for (const int count : {100, 10'000, 100'000}) {
        for (std::size_t order = 0; order < kOrderNames.size(); ++order) {
            bench->Args({count, static_cast<std::int64_t>(order)});
        }
    }
    bench->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Sort<Base>)->Apply(Inputs);
BENCHMARK(Sort<StdSort>)->Apply(Inputs);
BENCHMARK(Sort<StableSort>)->Apply(Inputs);
BENCHMARK(Sort<CSort>)->Apply(Inputs);

} // namespace
