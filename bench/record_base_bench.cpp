// The record base beside what a user would pick instead (SQLite and LMDB in one transaction, a vector of
// strings) and beside the limit, a copy of the same bytes in the same order without any structure.
// Every store holds records of 1668 bytes; the argument is their number.
#include "platform/base/block.h"
#include "qbase/qbase.h"
#include "qbase/qbase_sort.h"

#include <benchmark/benchmark.h>
#include <lmdb.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

// A record's length; no store knows it at compile time, so the limit must not either.
volatile std::size_t gLength = 1668;
constexpr std::size_t kLength = 1668;
constexpr std::size_t kMostRecords = 100'000;
constexpr std::size_t kRemoveEvery = 3; // each third record is removed

void Check(bool isFine) {
    if (!isFine) {
        std::abort();
    }
}

// Seconds that this process has used: it runs beside others.
double ProcessorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The bytes of all records, each different from the others.
const char *Content(std::size_t number) {
    static const std::vector<char> bytes = [] {
        std::vector<char> made(kMostRecords * kLength);
        std::mt19937_64 random(1);
        for (std::size_t i = 0; i + sizeof(std::uint64_t) <= made.size(); i += sizeof(std::uint64_t)) {
            const std::uint64_t value = random();
            std::memcpy(&made[i], &value, sizeof value);
        }
        return made;
    }();
    return &bytes[number * kLength];
}

// The limit: one run of memory of the right size, and nothing to find a record by but its place.
class Copy {
  public:
    explicit Copy(std::size_t count) : fBytes(static_cast<char *>(std::malloc(count * kSpace))) {}
    ~Copy() { std::free(fBytes); }
    Copy(const Copy &) = delete;
    Copy &operator=(const Copy &) = delete;
    void Add(const char *data) { std::memcpy(Place(fCount++), data, fLength); }
    void Fetch(std::size_t number, char *data) const { std::memcpy(data, Place(number), fLength); }
    void Replace(std::size_t number, const char *data) { std::memcpy(Place(number), data, fLength); }
    void Commit() {}
    void RemoveSome() {
        char *end = fBytes;
        for (std::size_t first = 1; first < fCount; first += kRemoveEvery) {
            const std::size_t run = std::min(kRemoveEvery - 1, fCount - first) * kSpace;
            std::memmove(end, fBytes + first * kSpace, run);
            end += run;
        }
    }

  private:
    static constexpr std::size_t kHead = 10;
    static constexpr std::size_t kSpace = kLength + kHead;
    char *Place(std::size_t number) const { return fBytes + number * kSpace + kHead; }
    char *fBytes;
    std::size_t fLength = gLength;
    std::size_t fCount = 0;
};

class RecordBase {
  public:
    explicit RecordBase(std::size_t /*count*/) : fBase(drevix::QBaseNew(1, 1, 4)) {}
    void Add(const char *data) { Check(drevix::QBaseAddRecord(fBase.get(), data, kLength) >= 0); }
    void Fetch(std::size_t number, char *data) const {
        std::int32_t length = 0;
        const void *const record = drevix::QBaseGetRecord(fBase.get(), static_cast<int>(number), &length);
        std::memcpy(data, record, static_cast<std::size_t>(length));
    }
    void Replace(std::size_t number, const char *data) {
        Check(drevix::QBaseReplaceRecord(fBase.get(), static_cast<int>(number), data, kLength) >= 0);
    }
    void Commit() {}
    void RemoveSome() {
        const int count = drevix::QBaseCountRecords(fBase.get());
        for (int number = 0; number < count; number += static_cast<int>(kRemoveEvery)) {
            drevix::QBaseMarkRecordForRemoval(fBase.get(), number);
        }
        drevix::QBaseRemoveMarkedRecords(fBase.get());
    }

  protected:
    drevix::QBaseOwner fBase;
};

class SqlBase {
  public:
    explicit SqlBase(std::size_t /*count*/) {
        Check(sqlite3_open(":memory:", &fDatabase) == SQLITE_OK);
        Run("CREATE TABLE records (number INTEGER PRIMARY KEY, data BLOB)");
        Run("BEGIN");
        fAdd = Prepare("INSERT INTO records (data) VALUES (?1)");
        fFetch = Prepare("SELECT data FROM records WHERE number = ?1");
        fReplace = Prepare("UPDATE records SET data = ?1 WHERE number = ?2");
    }
    ~SqlBase() {
        sqlite3_finalize(fAdd);
        sqlite3_finalize(fFetch);
        sqlite3_finalize(fReplace);
        sqlite3_close(fDatabase);
    }
    SqlBase(const SqlBase &) = delete;
    SqlBase &operator=(const SqlBase &) = delete;
    void Add(const char *data) {
        sqlite3_bind_blob(fAdd, 1, data, kLength, SQLITE_STATIC);
        Check(sqlite3_step(fAdd) == SQLITE_DONE);
        sqlite3_reset(fAdd);
    }
    void Fetch(std::size_t number, char *data) const {
        sqlite3_bind_int64(fFetch, 1, static_cast<sqlite3_int64>(number + 1));
        Check(sqlite3_step(fFetch) == SQLITE_ROW);
        std::memcpy(data, sqlite3_column_blob(fFetch, 0), kLength);
        sqlite3_reset(fFetch);
    }
    void Replace(std::size_t number, const char *data) {
        sqlite3_bind_blob(fReplace, 1, data, kLength, SQLITE_STATIC);
        sqlite3_bind_int64(fReplace, 2, static_cast<sqlite3_int64>(number + 1));
        Check(sqlite3_step(fReplace) == SQLITE_DONE);
        sqlite3_reset(fReplace);
    }
    void Commit() { Run("COMMIT"); }
    void RemoveSome() { Run("DELETE FROM records WHERE number % 3 = 1"); }

  private:
    void Run(const char *text) {
        Check(sqlite3_exec(fDatabase, text, nullptr, nullptr, nullptr) == SQLITE_OK);
    }
    sqlite3_stmt *Prepare(const char *text) {
        sqlite3_stmt *statement = nullptr;
        Check(sqlite3_prepare_v2(fDatabase, text, -1, &statement, nullptr) == SQLITE_OK);
        return statement;
    }
    sqlite3 *fDatabase = nullptr;
    sqlite3_stmt *fAdd = nullptr;
    sqlite3_stmt *fFetch = nullptr;
    sqlite3_stmt *fReplace = nullptr;
};

class MappedBase {
  public:
    explicit MappedBase(std::size_t /*count*/) : fFolder("/tmp/record_base_bench.XXXXXX") {
        Check(mkdtemp(fFolder.data()) != nullptr);
        Check(mdb_env_create(&fEnvironment) == 0 &&
              mdb_env_set_mapsize(fEnvironment, std::size_t{1} << 30) == 0 &&
              mdb_env_open(fEnvironment, fFolder.c_str(), MDB_NOSYNC | MDB_WRITEMAP, 0600) == 0 &&
              mdb_txn_begin(fEnvironment, nullptr, 0, &fTransaction) == 0 &&
              mdb_dbi_open(fTransaction, nullptr, MDB_INTEGERKEY, &fTable) == 0);
    }
    ~MappedBase() {
        if (fTransaction != nullptr) {
            mdb_txn_abort(fTransaction);
        }
        mdb_env_close(fEnvironment);
        std::filesystem::remove_all(fFolder);
    }
    MappedBase(const MappedBase &) = delete;
    MappedBase &operator=(const MappedBase &) = delete;
    void Add(const char *data) { Put(fCount++, data, MDB_APPEND); }
    void Fetch(std::size_t number, char *data) const {
        MDB_val key{sizeof number, &number};
        MDB_val value{};
        Check(mdb_get(fTransaction, fTable, &key, &value) == 0);
        std::memcpy(data, value.mv_data, value.mv_size);
    }
    void Replace(std::size_t number, const char *data) { Put(number, data, 0); }
    void Commit() {
        Check(mdb_txn_commit(fTransaction) == 0);
        fTransaction = nullptr;
    }
    void RemoveSome() {
        for (std::size_t number = 0; number < fCount; number += kRemoveEvery) {
            MDB_val key{sizeof number, &number};
            Check(mdb_del(fTransaction, fTable, &key, nullptr) == 0);
        }
    }

  private:
    void Put(std::size_t number, const char *data, unsigned flags) {
        MDB_val key{sizeof number, &number};
        MDB_val value{kLength, const_cast<char *>(data)};
        Check(mdb_put(fTransaction, fTable, &key, &value, flags) == 0);
    }
    std::string fFolder;
    MDB_env *fEnvironment = nullptr;
    MDB_txn *fTransaction = nullptr;
    MDB_dbi fTable = 0;
    std::size_t fCount = 0;
};

class Strings {
  public:
    explicit Strings(std::size_t /*count*/) {}
    void Add(const char *data) { fRecords.emplace_back(data, kLength); }
    void Fetch(std::size_t number, char *data) const {
        std::memcpy(data, fRecords[number].data(), fRecords[number].size());
    }
    void Replace(std::size_t number, const char *data) { fRecords[number].assign(data, kLength); }
    void Commit() {}
    void RemoveSome() {
        std::size_t number = 0;
        std::erase_if(fRecords, [&](const std::string & /*record*/) { return number++ % kRemoveEvery == 0; });
    }

  private:
    std::vector<std::string> fRecords;
};

// The record base in another index order than that of its data, as it is after a sort.
class SortedBase : public RecordBase {
  public:
    explicit SortedBase(std::size_t count) : RecordBase(count) {}
    void RemoveSome() {
        // The records that a base in data order would lose: the order of the index alone differs.
        const int count = drevix::QBaseCountRecords(fBase.get());
        for (int number = 0; number < count; number += static_cast<int>(kRemoveEvery)) {
            drevix::QBaseSetRecordFlags(fBase.get(), number, 1);
        }
        drevix::QBaseSort(
            fBase.get(),
            [](const void *a, std::int32_t, const void *b, std::int32_t) {
                return std::int32_t{std::memcmp(a, b, kLength) < 0 ? -1 : 1};
            },
            128);
        for (int number = 0; number < count; ++number) {
            if (drevix::QBaseGetRecordFlags(fBase.get(), number) == 1) {
                drevix::QBaseMarkRecordForRemoval(fBase.get(), number);
            }
        }
        start = ProcessorTime();
        drevix::QBaseRemoveMarkedRecords(fBase.get());
    }
    double start = 0; // after what is not measured
};

template <class Store>
void Fill(Store *store, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        store->Add(Content(i));
    }
}

// Has every access start from the store's object in memory, as in a program where it outlives a function: else
// the compiler keeps the address and the length of the plain copy in registers, which no store can match.
template <class Store>
void HoldInMemory(Store *store) {
    benchmark::DoNotOptimize(store);
    benchmark::ClobberMemory();
}

std::size_t CountOf(benchmark::State &state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    Content(0);
    return count;
}

void Report(benchmark::State &state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Store>
void Add(benchmark::State &state) {
    const std::size_t count = CountOf(state);
    for ([[maybe_unused]] auto round : state) {
        Store store(count);
        Fill(&store, count);
        store.Commit();
        benchmark::ClobberMemory();
    }
    Report(state);
}

template <class Store>
void Fetch(benchmark::State &state) {
    const std::size_t count = CountOf(state);
    Store store(count);
    Fill(&store, count);
    HoldInMemory(&store);
    alignas(64) static std::array<char, kLength> record; // one place for all: its alignment can be felt
    for ([[maybe_unused]] auto round : state) {
        for (std::size_t i = 0; i < count; ++i) {
            store.Fetch(i, record.data());
            benchmark::DoNotOptimize(record.data());
            benchmark::ClobberMemory();
        }
    }
    Report(state);
}

template <class Store>
void Replace(benchmark::State &state) {
    const std::size_t count = CountOf(state);
    Store store(count);
    Fill(&store, count);
    HoldInMemory(&store);
    for ([[maybe_unused]] auto round : state) {
        for (std::size_t i = 0; i < count; ++i) {
            store.Replace(i, Content(count - 1 - i));
        }
        benchmark::ClobberMemory();
    }
    Report(state);
}

template <class Store>
void Remove(benchmark::State &state) {
    const std::size_t count = CountOf(state);
    for ([[maybe_unused]] auto round : state) {
        Store store(count);
        Fill(&store, count);
        double start = ProcessorTime();
        store.RemoveSome();
        const double end = ProcessorTime();
        if constexpr (std::is_same_v<Store, SortedBase>) {
            start = store.start;
        }
        state.SetIterationTime(end - start);
    }
    Report(state);
}

void Sizes(benchmark::internal::Benchmark *bench) {
    bench->Arg(100)->Arg(10'000)->Arg(static_cast<int>(kMostRecords))->Unit(benchmark::kMicrosecond);
}

// A store takes far longer to fill than to remove from, so little of a measurement's time is measured.
void TimedSizes(benchmark::internal::Benchmark *bench) {
    constexpr double kSeconds = 0.02; // at least, of removing
    Sizes(bench);
    bench->UseManualTime()->MinTime(kSeconds);
}

#define DREVIX_MEASURE(Operation, Which)                                                                     \
    BENCHMARK(Operation<Copy>)->Apply(Which);                                                                \
    BENCHMARK(Operation<RecordBase>)->Apply(Which);                                                          \
    BENCHMARK(Operation<SqlBase>)->Apply(Which);                                                             \
    BENCHMARK(Operation<MappedBase>)->Apply(Which);                                                          \
    BENCHMARK(Operation<Strings>)->Apply(Which)

DREVIX_MEASURE(Add, Sizes);
DREVIX_MEASURE(Fetch, Sizes);
DREVIX_MEASURE(Replace, Sizes);
DREVIX_MEASURE(Remove, TimedSizes);
BENCHMARK(Remove<SortedBase>)->Apply(TimedSizes);

} // namespace
