// A base's file read (with validation) and saved durably, beside the limits (read; write and fsync) and what
// a user would pick instead (SQLite and LMDB, the same records, one transaction). Records of 1668 bytes; the
// argument is their number. Files lie in $DREVIX_BENCH_FOLDER, else in the folder for temporary files, which
// should be on the disk that matters.
#include "platform/base/status.h"
#include "platform/files/file_update.h"
#include "qbase/qbase_file.h"

#include <benchmark/benchmark.h>
#include <lmdb.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::int32_t kLength = 1668;
constexpr drevix::OSType kType = drevix::FourCharCode("BNCH");

void Check(bool isFine) {
    if (!isFine) {
        std::abort();
    }
}

// A folder of its own for each measurement.
class Folder {
  public:
    Folder() {
        const char *const chosen = std::getenv("DREVIX_BENCH_FOLDER");
        const std::filesystem::path place =
            chosen != nullptr ? std::filesystem::path(chosen) : std::filesystem::temp_directory_path();
        fPath = place / "drevix-bench-XXXXXX";
        Check(::mkdtemp(fPath.data()) != nullptr);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(fPath, ignored);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    [[nodiscard]] std::string Path(const char *name) const { return fPath + "/" + name; }

  private:
    std::string fPath;
};

// The data of one record, different from that of every other.
std::vector<char> Content(std::int32_t number) {
    std::vector<char> bytes(kLength);
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

// A base whose index is in no order, as after a sort.
drevix::QBaseOwner MakeBase(std::int32_t count) {
    drevix::QBaseOwner base(drevix::QBaseNew(kType, 1, 4));
    for (std::int32_t i = 0; i < count; ++i) {
        Check(drevix::QBaseAddRecord(base.get(), Content(i).data(), kLength) == i);
    }
    auto *const slots = reinterpret_cast<std::int32_t *>(base->index.Data());
    std::shuffle(slots, slots + count, std::mt19937(1));
    return base;
}

void WriteBase(drevix::QBaseHandle base, const std::string &path, drevix::UpdateMethod method) {
    drevix::FileUpdate update;
    Check(update.Open(path, method) == drevix::noErr);
    Check(drevix::QBaseWrite(base, update.File(), true, true) == drevix::noErr);
    Check(update.Commit() == drevix::noErr);
}

std::size_t FileSize(const std::string &path) {
    return static_cast<std::size_t>(std::filesystem::file_size(path));
}

void CountBytes(benchmark::State &state, std::size_t size) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

// Loading

void ReadBase(benchmark::State &state) {
    const Folder folder;
    const std::string path = folder.Path("base");
    WriteBase(MakeBase(static_cast<std::int32_t>(state.range(0))).get(), path, drevix::UpdateMethod::InPlace);
    drevix::FileRef file = 0;
    Check(drevix::OpenFile(path, drevix::fsRdPerm, &file) == drevix::noErr);
    for (auto _ : state) {
        const drevix::QBaseOwner base(drevix::QBaseNew(kType, 1, 4));
        Check(drevix::QBaseRead(base.get(), file, true, true, false, true) == drevix::noErr);
        benchmark::DoNotOptimize(base->records.Data());
    }
    drevix::FSClose(file);
    CountBytes(state, FileSize(path));
}

// The same bytes read at once into memory that is asked for (as any reader must), or that is there already.
enum class Memory { New, Kept };

void ReadPlain(benchmark::State &state, Memory memory) {
    const Folder folder;
    const std::string path = folder.Path("base");
    WriteBase(MakeBase(static_cast<std::int32_t>(state.range(0))).get(), path, drevix::UpdateMethod::InPlace);
    const std::size_t size = FileSize(path);
    const int file = ::open(path.c_str(), O_RDONLY);
    std::unique_ptr<char[]> bytes(new char[size]);
    for (auto _ : state) {
        if (memory == Memory::New) {
            bytes.reset(new char[size]);
        }
        Check(::pread(file, bytes.get(), size, 0) == static_cast<ssize_t>(size));
        benchmark::DoNotOptimize(bytes.get());
        if (memory == Memory::New) {
            bytes.reset();
        }
    }
    ::close(file);
    CountBytes(state, size);
}

void Validate(benchmark::State &state) {
    const drevix::QBaseOwner base = MakeBase(static_cast<std::int32_t>(state.range(0)));
    for (auto _ : state) {
        Check(drevix::QBaseValidate(base.get()));
    }
}

// Saving

void SaveBase(benchmark::State &state) {
    const Folder folder;
    const std::string path = folder.Path("base");
    const drevix::QBaseOwner base = MakeBase(static_cast<std::int32_t>(state.range(0)));
    WriteBase(base.get(), path, drevix::UpdateMethod::InPlace);
    drevix::FileRef file = 0;
    Check(drevix::OpenFile(path, drevix::fsRdWrPerm, &file) == drevix::noErr);
    for (auto _ : state) {
        Check(drevix::QBaseWrite(base.get(), file, true, true) == drevix::noErr);
    }
    drevix::FSClose(file);
    CountBytes(state, FileSize(path));
}

void SavePlain(benchmark::State &state) {
    const Folder folder;
    const std::string path = folder.Path("base");
    const drevix::QBaseOwner base = MakeBase(static_cast<std::int32_t>(state.range(0)));
    WriteBase(base.get(), path, drevix::UpdateMethod::InPlace);
    std::string bytes;
    Check(drevix::ReadWholeFile(path, &bytes) == drevix::noErr);
    const int file = ::open(path.c_str(), O_RDWR);
    for (auto _ : state) {
        Check(::pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()) &&
              ::fsync(file) == 0);
    }
    ::close(file);
    CountBytes(state, bytes.size());
}

void ReplaceBase(benchmark::State &state) {
    const Folder folder;
    const std::string path = folder.Path("base");
    const drevix::QBaseOwner base = MakeBase(static_cast<std::int32_t>(state.range(0)));
    for (auto _ : state) {
        WriteBase(base.get(), path, drevix::UpdateMethod::Replace);
    }
    CountBytes(state, FileSize(path));
}

// What replacing costs at least: a new file written, flushed, renamed, and the folder flushed.
void ReplacePlain(benchmark::State &state) {
    const Folder folder;
    const std::string path = folder.Path("base");
    const std::string beside = folder.Path("beside");
    WriteBase(MakeBase(static_cast<std::int32_t>(state.range(0))).get(), path, drevix::UpdateMethod::InPlace);
    std::string bytes;
    Check(drevix::ReadWholeFile(path, &bytes) == drevix::noErr);
    const int directory = ::open(folder.Path("").c_str(), O_RDONLY | O_DIRECTORY);
    for (auto _ : state) {
        const int file = ::open(beside.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0666);
        Check(::pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()) &&
              ::fsync(file) == 0 && ::close(file) == 0);
        Check(::rename(beside.c_str(), path.c_str()) == 0 && ::fsync(directory) == 0);
    }
    ::close(directory);
    CountBytes(state, bytes.size());
}

// Peers

// Releases what the C libraries hand out.
template <auto function>
struct Closer {
    template <typename T>
    void operator()(T *object) const {
        function(object);
    }
};

class Sqlite {
  public:
    explicit Sqlite(const Folder &folder) {
        sqlite3 *opened = nullptr;
        Check(::sqlite3_open(folder.Path("sqlite").c_str(), &opened) == SQLITE_OK);
        fDatabase.reset(opened);
        Run("PRAGMA synchronous=FULL; CREATE TABLE records (number INTEGER PRIMARY KEY, data BLOB)");
    }
    void Save(std::int32_t count) {
        Run("BEGIN; DELETE FROM records");
        const auto statement = Prepare("INSERT INTO records VALUES (?, ?)");
        std::vector<char> data(kLength);
        for (std::int32_t i = 0; i < count; ++i) {
            std::memcpy(data.data(), &i, sizeof i);
            ::sqlite3_bind_int(statement.get(), 1, i);
            ::sqlite3_bind_blob(statement.get(), 2, data.data(), kLength, SQLITE_STATIC);
            Check(::sqlite3_step(statement.get()) == SQLITE_DONE);
            ::sqlite3_reset(statement.get());
        }
        Run("COMMIT");
    }
    std::size_t Load(std::vector<char> *records) {
        const auto statement = Prepare("SELECT data FROM records ORDER BY number");
        while (::sqlite3_step(statement.get()) == SQLITE_ROW) {
            const char *const data = static_cast<const char *>(::sqlite3_column_blob(statement.get(), 0));
            records->insert(records->end(), data, data + kLength);
        }
        return records->size();
    }

  private:
    void Run(const char *statements) {
        Check(::sqlite3_exec(fDatabase.get(), statements, nullptr, nullptr, nullptr) == SQLITE_OK);
    }
    std::unique_ptr<sqlite3_stmt, Closer<sqlite3_finalize>> Prepare(const char *text) {
        sqlite3_stmt *statement = nullptr;
        Check(::sqlite3_prepare_v2(fDatabase.get(), text, -1, &statement, nullptr) == SQLITE_OK);
        return std::unique_ptr<sqlite3_stmt, Closer<sqlite3_finalize>>(statement);
    }
    std::unique_ptr<sqlite3, Closer<sqlite3_close>> fDatabase;
};

class Lmdb {
  public:
    explicit Lmdb(const Folder &folder) {
        MDB_env *made = nullptr;
        Check(::mdb_env_create(&made) == 0);
        fEnvironment.reset(made);
        Check(::mdb_env_set_mapsize(made, std::size_t{2} << 30) == 0 &&
              ::mdb_env_open(made, folder.Path("lmdb").c_str(), MDB_NOSUBDIR, 0666) == 0);
    }
    void Save(std::int32_t count) {
        MDB_txn *transaction = nullptr;
        MDB_dbi records = 0;
        Check(::mdb_txn_begin(fEnvironment.get(), nullptr, 0, &transaction) == 0 &&
              ::mdb_dbi_open(transaction, nullptr, MDB_INTEGERKEY, &records) == 0 &&
              ::mdb_drop(transaction, records, 0) == 0);
        std::vector<char> data(kLength);
        for (std::int32_t i = 0; i < count; ++i) {
            std::memcpy(data.data(), &i, sizeof i);
            MDB_val key = {sizeof i, &i};
            MDB_val value = {data.size(), data.data()};
            Check(::mdb_put(transaction, records, &key, &value, MDB_APPEND) == 0);
        }
        Check(::mdb_txn_commit(transaction) == 0);
    }
    std::size_t Load(std::vector<char> *records) {
        MDB_txn *transaction = nullptr;
        MDB_dbi database = 0;
        MDB_cursor *cursor = nullptr;
        Check(::mdb_txn_begin(fEnvironment.get(), nullptr, MDB_RDONLY, &transaction) == 0 &&
              ::mdb_dbi_open(transaction, nullptr, MDB_INTEGERKEY, &database) == 0 &&
              ::mdb_cursor_open(transaction, database, &cursor) == 0);
        MDB_val key = {};
        MDB_val value = {};
        while (::mdb_cursor_get(cursor, &key, &value, MDB_NEXT) == 0) {
            const char *const data = static_cast<const char *>(value.mv_data);
            records->insert(records->end(), data, data + value.mv_size);
        }
        ::mdb_cursor_close(cursor);
        ::mdb_txn_abort(transaction);
        return records->size();
    }

  private:
    std::unique_ptr<MDB_env, Closer<mdb_env_close>> fEnvironment;
};

template <typename Store>
void LoadStore(benchmark::State &state) {
    const Folder folder;
    Store store(folder);
    const auto count = static_cast<std::int32_t>(state.range(0));
    store.Save(count);
    for (auto _ : state) {
        std::vector<char> records;
        records.reserve(static_cast<std::size_t>(count) * kLength);
        Check(store.Load(&records) == static_cast<std::size_t>(count) * kLength);
    }
}

template <typename Store>
void SaveStore(benchmark::State &state) {
    const Folder folder;
    Store store(folder);
    for (auto _ : state) {
        store.Save(static_cast<std::int32_t>(state.range(0)));
    }
}

void Sizes(benchmark::internal::Benchmark *benchmark) {
    benchmark->Arg(100)->Arg(10'000)->Arg(100'000)->UseRealTime()->Unit(benchmark::kMicrosecond);
}

BENCHMARK(ReadBase)->Apply(Sizes);
BENCHMARK_CAPTURE(ReadPlain, new_memory, Memory::New)->Apply(Sizes);
BENCHMARK_CAPTURE(ReadPlain, kept_memory, Memory::Kept)->Apply(Sizes);
BENCHMARK(Validate)->Apply(Sizes);
BENCHMARK(LoadStore<Sqlite>)->Apply(Sizes);
BENCHMARK(LoadStore<Lmdb>)->Apply(Sizes);
BENCHMARK(SaveBase)->Apply(Sizes);
BENCHMARK(SavePlain)->Apply(Sizes);
BENCHMARK(ReplaceBase)->Apply(Sizes);
BENCHMARK(ReplacePlain)->Apply(Sizes);
BENCHMARK(SaveStore<Sqlite>)->Apply(Sizes);
BENCHMARK(SaveStore<Lmdb>)->Apply(Sizes);

} // namespace
