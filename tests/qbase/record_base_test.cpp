// What a base does at its edges: limits, damage, memory that runs out, and its header.
#include "qbase/qbase_exchange.h"
#include "qbase/qbase_internal.h"
#include "qbase/qbase_sort.h"
#include "tests/qbase/file_support.h"
#include "tests/support/faults.h"

#include <cstring>
#include <functional>
#include <sys/mman.h>
#include <tuple>

namespace drevix {
namespace {

using namespace test;

std::int32_t SelectAll(const void * /*data*/, std::int32_t /*length*/, std::int16_t /*flags*/) {
    return 1;
}

std::int32_t SelectOdd(const void * /*data*/, std::int32_t length, std::int16_t /*flags*/) {
    return length % 2;
}

// Blocks of any size, of which only the first few bytes of a small one are kept on growing.
class VastAllocator : public BlockAllocator {
  public:
    VastAllocator() : fBefore(SetBlockAllocator(this)) {}
    ~VastAllocator() override {
        SetBlockAllocator(fBefore);
        ::munmap(fVast, kVast);
    }
    void *Reallocate(void *memory, std::size_t size) override {
        if (size < 0x100000) {
            return BlockAllocator::Reallocate(memory, size);
        }
        if (memory != fVast && memory != nullptr) {
            std::memcpy(fVast, memory, 10);
            BlockAllocator::Release(memory);
        }
        return size <= kVast ? fVast : nullptr;
    }
    void Release(void *memory) override {
        if (memory != fVast) {
            BlockAllocator::Release(memory);
        }
    }

  private:
    static constexpr std::size_t kVast = std::size_t{5} << 30; // addresses; the pages used are few
    void *fVast =
        ::mmap(nullptr, kVast, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    BlockAllocator *fBefore;
};

TEST(RecordBase, TwoGibibytes_AreRefusedToTheByte) {
    const VastAllocator vast;
    const QBaseOwner base = NewFileBase();
    const std::string data(1668, 'x');
    ASSERT_EQ(QBaseAddRecord(base.get(), "", 0), 0);
    const std::size_t most = 0x7FFF'FFFE; // records have even sizes
    ASSERT_EQ(base->records.Resize(most - 1678), noErr);
    EXPECT_EQ(QBaseAddRecord(base.get(), data.data(), 1668), 1);
    const std::string before = State(base.get());
    EXPECT_EQ(QBaseAddRecord(base.get(), "", 0), kNoRecord);
    EXPECT_EQ(QBaseAddRecord(base.get(), data.data(), 0x7FFF'FFFF), kNoRecord);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 1, data.data(), 0x7FFF'FFFF), kNoRecord);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 0, data.data(), 1), kNoRecord);
    EXPECT_EQ(State(base.get()), before);
    EXPECT_EQ(base->records.Size(), most);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 1, data.data(), 1666), 1);
    EXPECT_EQ(base->records.Size(), most - 2);
}

TEST(RecordBase, DataOfTheBaseItself_AreStoredAsTheyWere) {
    const QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {6, 3, 4000});
    const auto dataOf = [&base](RecordNumber number) {
        std::int32_t length = 0;
        const void *const data = QBaseGetRecord(base.get(), number, &length);
        return std::string(static_cast<const char *>(data), static_cast<std::size_t>(length));
    };
    const std::string long2 = dataOf(2);
    for (RecordNumber number = 3; number < 9; ++number) {
        ASSERT_EQ(QBaseAddRecord(base.get(), QBaseGetRecord(base.get(), 2), 4000), number);
        ASSERT_EQ(dataOf(number), long2);
    }
    ASSERT_EQ(QBaseReplaceRecord(base.get(), 0, QBaseGetRecord(base.get(), 2), 4000), 0);
    EXPECT_EQ(dataOf(0), long2);
    const std::string part = long2.substr(5, 100);
    ASSERT_EQ(QBaseReplaceRecord(base.get(), 0, static_cast<char *>(QBaseGetRecord(base.get(), 0)) + 5, 100),
              0);
    EXPECT_EQ(dataOf(0), part);
    EXPECT_TRUE(QBaseValidate(base.get()));
}

TEST(RecordBase, SizeThatLeadsNowhere_StopsEveryWalk) {
    for (const std::uint32_t size : {0U, 9U, 29U, 0x7FFF'FFFFU, 0xFFFF'FFFFU}) {
        SCOPED_TRACE(size);
        const QBaseOwner base = NewFileBase();
        AddMadeRecords(base.get(), {4, 4, 4});
        RecordAt(base.get(), 14)->size = size;
        EXPECT_NE(QBaseFindLongHeader(base.get(), 0x03020100), nullptr);
        EXPECT_EQ(QBaseFindLongHeader(base.get(), 0x11100F0E), nullptr) << "it lies behind the damage";
        QBaseSetAllRecordFlags(base.get(), 5);
        EXPECT_EQ(QBaseGetRecordFlags(base.get(), 0), 5);
        EXPECT_EQ(QBaseGetRecordFlags(base.get(), 2), 2);
        EXPECT_EQ(QBaseGetRecord(base.get(), 1), nullptr);
        QBaseMarkRecordForRemoval(base.get(), 0);
        QBaseRemoveMarkedRecords(base.get());
        EXPECT_EQ(base->records.Size(), 28U) << "nobody can tell what lies there, so it stays";
        EXPECT_EQ(QBaseGetRecordFlags(base.get(), 1), 2);
        QBaseRebuildIndex(base.get());
        EXPECT_EQ(QBaseCountRecords(base.get()), 0);
    }
}

TEST(RecordBase, RebuiltIndex_NamesTheWholeRecordsAndTheLastExpected) {
    struct Row {
        const char *what;
        std::int32_t expected;
        std::size_t size; // of the data; three records of 14 bytes lie there
        std::int32_t count;
    };
    for (const Row &row :
         {Row{"three of five", 5, 42, 3}, Row{"part of the fourth", 5, 50, 3},
          Row{"head of the fourth cut", 5, 45, 3}, Row{"part of the last expected", 3, 36, 3},
          Row{"more data than expected", 2, 42, 2}, Row{"no data", 5, 0, 0},
          Row{"no data for the last", 1, 0, 1}}) {
        SCOPED_TRACE(row.what);
        const QBaseOwner base = NewFileBase();
        AddMadeRecords(base.get(), {4, 4, 4, 4, 4});
        ASSERT_EQ(base->records.Resize(row.size), noErr);
        base->file.count = row.expected;
        QBaseSetSortMode(base.get(), 200);
        QBaseRebuildIndex(base.get());
        EXPECT_EQ(QBaseCountRecords(base.get()), row.count);
        EXPECT_EQ(QBaseGetSortMode(base.get()), kSortDataOrder);
        for (RecordNumber i = 0; i < row.count; ++i) {
            EXPECT_EQ(IndexOffsets(base.get())[i], 14 * i);
        }
    }
}

TEST(RecordBase, MarksThatDisagree_MakeTheIndexFollowTheData) {
    for (const bool oneByNumber : {true, false}) {
        const QBaseOwner base = NewFileBase();
        AddMadeRecords(base.get(), {1, 3, 5, 7});
        QBaseSetSortMode(base.get(), 128);
        QBaseMarkRecordForRemoval(base.get(), oneByNumber ? 3 : kNoRecord);
        RecordAt(base.get(), 12)->length = kRemovedLength; // record 1, still in the index
        QBaseRemoveMarkedRecords(base.get());
        EXPECT_EQ(QBaseCountRecords(base.get()), oneByNumber ? 2 : 3);
        EXPECT_EQ(base->capacity, QBaseCountRecords(base.get()));
        EXPECT_EQ(QBaseGetSortMode(base.get()), kSortDataOrder);
        EXPECT_TRUE(QBaseValidate(base.get()));
    }
}

TEST(RecordBase, FirstStepOfARemoval_LeavesNoStaleNumber) {
    const QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {1, 3, 5, 7, 9});
    QBaseMarkRecordForRemoval(base.get(), 0);
    QBaseMarkRecordForRemoval(base.get(), 2);
    EXPECT_EQ(QBaseRemoveInvalidOffsets(base.get()), 3);
    EXPECT_EQ(base->capacity, 6);
    EXPECT_EQ(QBaseCountRecords(base.get()), 5);
    for (RecordNumber number = 0; number < 7; ++number) {
        EXPECT_EQ(QBaseGetRecord(base.get(), number) != nullptr, number < 3);
    }
    const Block order = QBaseCreateIndexOfOffsets(base.get(), 3);
    ASSERT_EQ(order.Size(), 12U);
    EXPECT_LT(QBaseCompareOffsetsProc(order.Data(), order.Data() + 4), 0);
    QBaseRemoveMarkedRecords(base.get());
    EXPECT_EQ(QBaseCountRecords(base.get()), 3);
    EXPECT_TRUE(QBaseValidate(base.get()));
}

int gAnswers = 0;

TEST(RecordBase, SelectionThatChangesItsMind_LosesNoRecord) {
    // Over five records: the first time 0 and 4 are selected; the second time more, or none.
    for (const int second : {0b01101, 0b11111, 0b00000, 0b00001}) {
        static int answers;
        answers = second << 5 | 0b10001;
        gAnswers = 0;
        const QBaseOwner base = NewFileBase();
        AddMadeRecords(base.get(), {1, 3, 5, 7, 9});
        EXPECT_EQ(QBaseMoveIndexes(base.get(), 0,
                                   [](const void * /*data*/, std::int32_t length, std::int16_t /*flags*/) {
                                       const int record = (length - 1) / 2;
                                       const int bit = gAnswers++ < 5 ? record : 5 + record;
                                       return std::int32_t{answers >> bit & 1};
                                   }),
                  ioErr);
        EXPECT_TRUE(QBaseValidate(base.get()));
        EXPECT_EQ(QBaseGetSortMode(base.get()), kSortNone);
    }
}

TEST(RecordBase, Duplicate_CopiesAllButTheUserBlock) {
    const QBaseOwner source = FullFileBase();
    QBaseSetTempLong(source.get(), 77);
    const QBaseOwner target = NewFileBase();
    AddMadeRecords(target.get(), {50});
    ASSERT_EQ(QBaseSetUserBlock(target.get(), "own", 3), noErr);
    ASSERT_EQ(QBaseDuplicate(source.get(), target.get()), noErr);
    std::uint32_t size = 0;
    const void *const own = QBaseGetUserBlock(target.get(), &size);
    EXPECT_EQ(std::string(static_cast<const char *>(own), size), "own");
    ASSERT_EQ(QBaseSetUserBlock(target.get(), "block", 5), noErr);
    EXPECT_EQ(State(target.get()), State(source.get()));
    EXPECT_EQ(target->capacity, source->capacity);
    EXPECT_EQ(QBaseGetTempLong(target.get()), 77U);

    const QBaseOwner empty = NewFileBase();
    {
        const FaultyAllocator faults(2, Lasts::ForEver); // the index
        EXPECT_EQ(QBaseDuplicate(source.get(), empty.get()), memFullErr);
    }
    EXPECT_EQ(State(empty.get()), State(NewFileBase().get()));

    const std::string before = State(source.get());
    EXPECT_EQ(QBaseDuplicate(source.get(), source.get()), noErr);
    EXPECT_EQ(State(source.get()), before);
    const QBaseOwner other(QBaseNew(kFileTestType, kFileTestVersion + 1, 4));
    target->file.version = 1;
    for (QBaseHandle refused : {other.get(), target.get(), QBaseHandle{nullptr}}) {
        EXPECT_EQ(QBaseDuplicate(source.get(), refused), paramErr);
        EXPECT_EQ(QBaseDuplicate(refused, source.get()), paramErr);
        EXPECT_EQ(QBaseDuplicateUserFields(refused, source.get()), paramErr);
    }
    EXPECT_EQ(State(source.get()), before);
}

TEST(RecordBase, UserFields_MarkTheirChangeAndLocksNest) {
    const QBaseOwner base = NewFileBase();
    for (const auto set :
         {+[](QBaseHandle to) { QBaseSetUserLong(to, 1); }, +[](QBaseHandle to) { QBaseSetUserData(to, 1); },
          +[](QBaseHandle to) { QBaseSetUserFlags(to, 1); },
          +[](QBaseHandle to) { QBaseSetUserWord(to, 0xFFFF); },
          +[](QBaseHandle to) { QBaseSetUserMode(to, 0xFFFE); },
          +[](QBaseHandle to) { QBaseSetUserRect(to, {}); }}) {
        set(nullptr);
        set(base.get());
        EXPECT_TRUE(QBaseGetUserFieldsChanged(base.get()));
        QBaseSetUserFieldsChanged(base.get(), false);
    }
    EXPECT_EQ(QBaseGetUserWord(base.get()), -1);
    QBaseSetTempData(base.get(), 1);
    ASSERT_EQ(QBaseSetUserBlock(base.get(), "abc", 3), noErr);
    ASSERT_EQ(QBaseSetUserBlock(base.get(), nullptr, 3), noErr);
    std::uint32_t size = 9;
    EXPECT_EQ(QBaseGetUserBlock(base.get(), &size), nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_FALSE(QBaseGetUserFieldsChanged(base.get()));
    const QBaseOwner full = FullFileBase();
    base->file.reserved4 = 5;
    ASSERT_EQ(QBaseDuplicateUserFields(full.get(), base.get()), noErr);
    full->file.count = 0;
    full->userBlock = Block();
    EXPECT_EQ(Contents(base.get()), Contents(full.get()));
    EXPECT_TRUE(QBaseGetUserFieldsChanged(base.get()) && base->file.reserved4 == 0);

    QBaseLock(base.get());
    QBaseLock(base.get());
    QBaseUnlock(base.get());
    EXPECT_EQ(base->lockCount, 1);
    QBaseLock(base.get());
    QBaseUnlock(base.get(), true);
    QBaseUnlock(base.get());
    EXPECT_EQ(base->lockCount, 0);
}

TEST(RecordBase, NullBase_GivesTheNeutralValue) {
    std::int32_t length = 5;
    EXPECT_EQ(QBaseGetRecord(nullptr, 0, &length), nullptr);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(QBaseAddRecord(nullptr, "", 0), kNoRecord);
    EXPECT_EQ(QBaseReplaceRecord(nullptr, 0, "", 0), kNoRecord);
    EXPECT_EQ(QBaseMoveIndexes(nullptr, 0, SelectAll), paramErr);
    EXPECT_EQ(QBaseSetUserBlock(nullptr, "", 0), paramErr);
    QBaseEmpty(nullptr);
    QBaseRemoveMarkedRecords(nullptr);
    QBaseTruncate(nullptr, 0);
    QBaseDispose(nullptr);
    const QBaseOwner base = NewFileBase();
    QBaseEmpty(base.get());
    EXPECT_FALSE(QBaseGetRecordsChanged(base.get())) << "a base without records has nothing to empty";
    EXPECT_EQ(QBaseAddRecord(base.get(), nullptr, 0), kNoRecord);
    EXPECT_EQ(QBaseAddRecord(base.get(), "", -1), kNoRecord);
    EXPECT_EQ(QBaseGetSize(base.get()), sizeof(QBaseHeader));
    EXPECT_EQ(QBaseAddRecord(base.get(), "x", 1), 0);
    EXPECT_EQ(QBaseGetSize(base.get()), sizeof(QBaseHeader) + 4 * sizeof(std::int32_t) + 12);
}

// Counts requests that come while the caller's flag is not raised.
class FlagWatch : public FaultyAllocator {
  public:
    using FaultyAllocator::FaultyAllocator;
    void *Reallocate(void *memory, std::size_t size) override {
        unflagged += gFlag == 1 ? 0 : 1;
        return FaultyAllocator::Reallocate(memory, size);
    }
    static inline std::int16_t gFlag = 0;
    int unflagged = 0;
};

// An operation that asks for memory, on a base of records 1, 2, 0, 3 in index order with sort mode 130.
struct MemoryRow {
    const char *name;
    std::function<bool(QBaseHandle)> succeeds;
    std::function<void(QBaseHandle)> failed; // makes a base what it must be after the failure
};

std::string StateWithCapacity(QBaseHandle base) {
    return State(base) + " capacity " + std::to_string(base->capacity) + " valid " +
           std::to_string(static_cast<int>(QBaseValidate(base)));
}

QBaseOwner BaseForFaults() {
    QBaseOwner base = FullFileBase();
    AddMadeRecords(base.get(), {1});
    base->indexGrowth = 3000; // the index is full, and one slot more wants memory
    QBaseSetSortMode(base.get(), 130);
    QBaseSetRecordsChanged(base.get(), false);
    return base;
}

void Mark(QBaseHandle base) {
    QBaseMarkRecordForRemoval(base, 0);
    QBaseMarkRecordForRemoval(base, 2);
}

TEST(RecordBase, NthAllocationFailing_LeavesWhatWasPromised) {
    const std::string large(5000, 'L');
    const QBaseOwner other = NewFileBase();
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(QBaseAddRecord(other.get(), large.data(), 5000), i);
    }
    const auto nothing = [](QBaseHandle) {};
    const MemoryRow rows[] = {
        {"add", [&](QBaseHandle base) { return QBaseAddRecord(base, large.data(), 5000) == 4; }, nothing},
        {"replace", [&](QBaseHandle base) { return QBaseReplaceRecord(base, 1, large.data(), 5000) == 1; },
         nothing},
        {"add its own",
         [](QBaseHandle base) { return QBaseAddRecord(base, QBaseGetRecord(base, 1), 6) == 4; }, nothing},
        {"user block", [&](QBaseHandle base) { return QBaseSetUserBlock(base, large.data(), 5000) == noErr; },
         nothing},
        {"duplicate",
         [&](QBaseHandle base) {
             const OSErr status = QBaseDuplicate(other.get(), base);
             EXPECT_TRUE(status == noErr || status == memFullErr);
             return status == noErr;
         },
         QBaseEmpty},
        {"move indexes",
         [](QBaseHandle base) {
             const OSErr status = QBaseMoveIndexes(base, 0, SelectOdd);
             EXPECT_TRUE(status == noErr || status == memFullErr);
             return status == noErr;
         },
         [](QBaseHandle base) { QBaseSetSortMode(base, kSortNone); }},
        {"remove",
         [](QBaseHandle base) {
             Mark(base);
             QBaseRemoveMarkedRecords(base);
             return QBaseGetSortMode(base) == 130;
         },
         [](QBaseHandle base) {
             Mark(base);
             QBaseRemoveMarkedRecords(base);
             EXPECT_EQ(ResizeIndex(base, base->file.count), noErr);
             QBaseRebuildIndex(base);
         }},
        {"make an exchange",
         [](QBaseHandle base) {
             QBaseExchange made = QBaseGetExchange(base, SelectAll);
             QBaseDisposeExchange(made);
             return made != nullptr;
         },
         nothing},
    };
    FlagWatch::gFlag = 7;
    QBaseUseWantsMemFull(&FlagWatch::gFlag);
    for (const MemoryRow &row : rows) {
        const QBaseOwner done = BaseForFaults();
        ASSERT_TRUE(row.succeeds(done.get())) << row.name;
        const QBaseOwner failed = BaseForFaults();
        row.failed(failed.get());
        for (const Lasts lasts : {Lasts::Once, Lasts::ForEver}) {
            int failures = 0;
            for (int failAt = 1;; ++failAt) {
                SCOPED_TRACE(row.name + std::string(" at ") + std::to_string(failAt));
                const QBaseOwner base = BaseForFaults();
                FlagWatch faults(failAt, lasts);
                const bool succeeded = row.succeeds(base.get());
                failures += succeeded ? 0 : 1;
                EXPECT_EQ(StateWithCapacity(base.get()),
                          StateWithCapacity((succeeded ? done : failed).get()));
                EXPECT_EQ(faults.unflagged, 0);
                EXPECT_EQ(FlagWatch::gFlag, 7);
                if (!faults.WasHit()) {
                    break;
                }
            }
            EXPECT_TRUE(failures > 0 || lasts == Lasts::Once) << row.name;
        }
    }
    const FlagWatch faults(1, Lasts::ForEver);
    EXPECT_EQ(QBaseNew(1, 1, 1), nullptr);
    EXPECT_EQ(faults.unflagged, 0);
    QBaseUseWantsMemFull(nullptr);
}

TEST(RecordBase, MemoryEndingDuringAnImport_KeepsWhatCameBefore) {
    const std::string data(5000, 'L');
    const QBaseOwner other = NewFileBase();
    for (int i = 0; i < 12; ++i) {
        ASSERT_EQ(QBaseAddRecord(other.get(), data.data(), 5000), i);
    }
    const std::unique_ptr<Block, void (*)(Block *)> exchange(QBaseGetExchange(other.get(), SelectAll),
                                                             QBaseDisposeExchange);
    int last = 0;
    for (int failAt = 1; last < 12; ++failAt) {
        const QBaseOwner base = BaseForFaults();
        const FaultyAllocator faults(failAt, Lasts::ForEver);
        const std::int32_t added = QBasePutExchange(base.get(), exchange.get(), 1, 3);
        EXPECT_GE(added, last);
        EXPECT_EQ(QBaseCountRecords(base.get()), 4 + added);
        EXPECT_EQ(QBaseGetSortMode(base.get()), added > 0 ? kSortNone : 130);
        EXPECT_EQ(QBaseGetRecordFlags(base.get(), added), added > 0 ? 3 : 1);
        EXPECT_TRUE(QBaseValidate(base.get()));
        last = added;
    }
}

} // namespace
} // namespace drevix
