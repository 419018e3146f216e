// What a base does at its edges: limits, damage, memory that runs out, and its header.
#include "qbase/qbase_internal.h"
#include "qbase/qbase_sort.h"
#include "tests/qbase/file_support.h"

namespace drevix::test {
namespace {

std::int32_t SelectOdd(const void * /*data*/, std::int32_t length, std::int16_t /*flags*/) {
    return length % 2;
}

TEST(RecordBase, DataOfTheBaseItself_AreStoredAsTheyWere) {
    const QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {6, 3, 4000});
    const auto dataOf = [&base](RecordNumber number) { return DataOf(base.get(), number); };
    const std::string whole = dataOf(2);
    for (RecordNumber number = 3; number < 9; ++number) {
        ASSERT_EQ(QBaseAddRecord(base.get(), QBaseGetRecord(base.get(), 2), 4000), number);
        ASSERT_EQ(dataOf(number), whole);
    }
    ASSERT_EQ(QBaseReplaceRecord(base.get(), 0, QBaseGetRecord(base.get(), 2), 4000), 0);
    EXPECT_EQ(dataOf(0), whole);
    const char *const part = static_cast<char *>(QBaseGetRecord(base.get(), 0)) + 5;
    ASSERT_EQ(QBaseReplaceRecord(base.get(), 0, part, 100), 0);
    EXPECT_EQ(dataOf(0), whole.substr(5, 100));
    EXPECT_EQ(QBaseAddRecord(base.get(), "", -1), kNoRecord);
    EXPECT_EQ(QBaseAddRecord(base.get(), nullptr, 0), kNoRecord);
    EXPECT_EQ(QBaseAddRecord(nullptr, "", 0), kNoRecord);
    EXPECT_TRUE(QBaseValidate(base.get()));
}

// Of the memory that is asked for, the few pages that the test touches are used.
TEST(RecordBase, TwoGibibytes_AreRefusedToTheByte) {
    constexpr std::size_t kMost = 0x7FFF'FFFE; // records have even sizes
    const QBaseOwner base = NewFileBase();
    const std::string data(1668, 'x');
    ASSERT_EQ(QBaseAddRecord(base.get(), "", 0), 0);
    if (base->records.Resize(kMost) != noErr) {
        GTEST_SKIP() << "2 GiB cannot be had here";
    }
    ASSERT_EQ(base->records.Resize(kMost - 1678), noErr);
    EXPECT_EQ(QBaseAddRecord(base.get(), data.data(), 1668), 1);
    const std::string before = State(base.get());
    EXPECT_EQ(QBaseAddRecord(base.get(), "", 0), kNoRecord);
    EXPECT_EQ(QBaseAddRecord(base.get(), data.data(), 0x7FFF'FFFF), kNoRecord);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 1, data.data(), 0x7FFF'FFFF), kNoRecord);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 0, data.data(), 1), kNoRecord);
    EXPECT_EQ(State(base.get()), before);
    EXPECT_EQ(QBaseReplaceRecord(base.get(), 1, data.data(), 1660), 1);
    EXPECT_EQ(base->records.Size(), kMost - 8);
    EXPECT_EQ(QBaseAddRecord(base.get(), "", 0), kNoRecord) << "it has 10 bytes";
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

TEST(RecordBase, SelectionThatChangesItsMind_LosesNoRecord) {
    // Over five records: the first time 0 and 4 are selected; the second time more, or none.
    for (const int second : {0b01101, 0b11111, 0b00000, 0b00001}) {
        static int gAnswers; // the first five low, the second five above
        static int gQuestions;
        gAnswers = second << 5 | 0b10001;
        gQuestions = 0;
        const QBaseOwner base = NewFileBase();
        AddMadeRecords(base.get(), {1, 3, 5, 7, 9});
        EXPECT_EQ(QBaseMoveIndexes(base.get(), 0,
                                   [](const void * /*data*/, std::int32_t length, std::int16_t /*flags*/) {
                                       const int record = (length - 1) / 2;
                                       const int bit = gQuestions++ < 5 ? record : 5 + record;
                                       return std::int32_t{gAnswers >> bit & 1};
                                   }),
                  ioErr);
        EXPECT_TRUE(QBaseValidate(base.get()));
        EXPECT_EQ(QBaseGetSortMode(base.get()), kSortNone);
    }
}

using Fields = std::vector<std::vector<std::int64_t>>;

Fields FieldsOf(QBaseHandle base) {
    QBaseRect rect = {9, 9, 9, 9};
    QBaseGetUserRect(base, &rect);
    std::uint16_t typeVersion = 9;
    const OSType type = QBaseGetType(base, &typeVersion);
    return {{QBaseGetUserLong(base), QBaseGetUserData(base), QBaseGetUserFlags(base), QBaseGetUserWord(base),
             QBaseGetUserMode(base)},
            {rect.top, rect.left, rect.bottom, rect.right},
            {QBaseGetTempLong(base), QBaseGetTempData(base), QBaseGetReadOnly(base)},
            {type, typeVersion}};
}

TEST(RecordBase, HeaderFields_AreGivenAsSetAndCopied) {
    const QBaseOwner base = FullFileBase();
    QBaseSetUserWord(base.get(), 0xFFFE);
    QBaseSetUserFieldsChanged(base.get(), false);
    QBaseSetTempLong(base.get(), 5);
    QBaseSetTempData(base.get(), 6);
    QBaseSetReadOnly(base.get(), true);
    QBaseSetType(base.get(), 7, 8);
    EXPECT_FALSE(QBaseGetUserFieldsChanged(base.get())) << "these are none";
    Fields expected = {{0x01020304, 0x11121314, 0x21222324, -2, 0x4142}, {-1, 2, -3, 4}, {5, 6, 1}, {7, 8}};
    EXPECT_EQ(FieldsOf(base.get()), expected);
    EXPECT_EQ(FieldsOf(nullptr), (Fields{{0, 0, 0, 0, 0}, {9, 9, 9, 9}, {0, 0, 0}, {0, 9}}));

    const QBaseOwner target(QBaseNew(7, 8, 0));
    AddMadeRecords(target.get(), {1, 2});
    EXPECT_EQ(target->capacity, 2) << "a growth of 0 counts as 1";
    target->file.reserved4 = 1;
    QBaseSetUserFieldsChanged(target.get(), true);
    EXPECT_EQ(QBaseDuplicateUserFields(base.get(), target.get()), noErr);
    expected[2] = {0, 0, 0};
    EXPECT_EQ(FieldsOf(target.get()), expected);
    EXPECT_FALSE(QBaseGetUserFieldsChanged(target.get()));
    EXPECT_EQ(target->file.reserved4, 0U);
    EXPECT_EQ(QBaseCountRecords(target.get()), 2);
    target->file.magic = 0;
    EXPECT_EQ(QBaseGetType(target.get()), 0U);
}

// A caller may have no base, no data, no function, or no use for an answer.
TEST(RecordBase, NullArguments_ChangeNothing) {
    const QBaseOwner owner = FullFileBase();
    QBaseHandle const base = owner.get();
    const ExchangeOwner exchange = Take(base);
    const MemoryFile file;
    const std::string before = State(base);
    const QBaseCompareFunction compare = [](const void *, std::int32_t, const void *, std::int32_t) {
        return 0;
    };
    for (const auto act :
         {QBaseDispose, QBaseEmpty, QBaseLock, QBaseRebuildIndex, QBaseRemoveMarkedRecords}) {
        act(nullptr);
    }
    QBaseSetFlipProc(nullptr, nullptr, nullptr);
    QBaseSetType(nullptr, 1, 2);
    QBaseSetUserLong(nullptr, 1);
    QBaseUnlock(nullptr, true);
    QBaseTruncate(nullptr, 0);
    QBaseUpdateOffsets(nullptr, 1, 0, 10);
    QBaseSetRecordFlags(nullptr, 0, 1);
    QBaseSetAllRecordFlags(nullptr, 1);
    QBaseSort(nullptr, compare, 130);
    QBaseSort(base, nullptr, 130);
    QBaseGetUserRect(base, nullptr);
    EXPECT_TRUE(!QBaseValidate(nullptr) && QBaseGetSize(nullptr) == 0 && QBaseGetType(base) == kFileTestType);
    EXPECT_TRUE(QBaseGetRecordFlags(nullptr, 0) == 0 && QBaseFindLongHeader(nullptr, 0) == nullptr);
    EXPECT_TRUE(QBaseRemoveInvalidOffsets(nullptr) == 0 && QBaseCreateIndexOfOffsets(nullptr, 3).Size() == 0);
    EXPECT_TRUE(QBaseGetExchange(nullptr, SelectAll) == nullptr &&
                QBaseGetExchange(base, nullptr) == nullptr);
    EXPECT_TRUE(QBaseLockExchange(nullptr) == nullptr && QBaseGetUserBlock(base) != nullptr);
    for (const OSErr status :
         {QBaseMoveIndexes(nullptr, 0, SelectAll), QBaseMoveIndexes(base, 0, nullptr),
          QBaseSetUserBlock(nullptr, "block", 5), QBaseRead(nullptr, file.Ref(), true, true, true, true),
          QBaseRead(base, 0, true, true, true, true), QBaseWrite(nullptr, file.Ref(), true, true),
          QBaseWrite(base, 0, true, true)}) {
        EXPECT_EQ(status, paramErr);
    }
    for (const RecordNumber found :
         {QBaseReplaceRecord(base, 0, nullptr, 1), QBaseReplaceRecord(base, 0, "", -1),
          QBaseSearch(nullptr, compare, "k", 1), QBaseSearch(base, nullptr, "k", 1),
          QBaseSearch(base, compare, nullptr, 1), QBaseSearch(base, compare, "k", 0)}) {
        EXPECT_EQ(found, kNoRecord);
    }
    EXPECT_EQ(QBasePutExchange(nullptr, exchange.get(), 0, 0) + QBasePutExchange(base, nullptr, 0, 0), 0);
    EXPECT_EQ(QBaseCountExchangeRecords(nullptr), 0);
    std::int32_t length = 9;
    EXPECT_TRUE(QBaseGetExchangeRecord(nullptr, 0, &length) == nullptr && length == 0);
    EXPECT_EQ(QBaseGetExchangeRecord(exchange.get(), -1, nullptr), nullptr);
    EXPECT_EQ(State(base), before);
}

TEST(RecordBase, LocksAndMemoryFlag_AreCountedAndPutBack) {
    const QBaseOwner base = NewFileBase();
    const std::pair<bool, int> unlocks[] = {{false, 2}, {true, 0}, {false, 0}};
    for (int i = 0; i < 3; ++i) {
        QBaseLock(base.get());
    }
    for (const auto &[force, left] : unlocks) {
        QBaseUnlock(base.get(), force);
        EXPECT_EQ(base->lockCount, left);
    }
    std::int16_t flag = 7;
    EXPECT_EQ(QBaseBeginMemoryRequest(), 0) << "without a flag";
    QBaseUseWantsMemFull(&flag);
    EXPECT_EQ(QBaseBeginMemoryRequest(), 7);
    EXPECT_EQ(flag, 1);
    QBaseEndMemoryRequest(7);
    QBaseUseWantsMemFull(nullptr);
    EXPECT_EQ(flag, 7);
}

// The steps of a removal, of which a caller may take each.
TEST(RecordBase, OffsetsOfTheIndex_AreDroppedListedAndMoved) {
    const QBaseOwner base = FullFileBase(); // offsets 14, 24, 0
    AddMadeRecords(base.get(), {2000, 1});  // so large that two others lie in one cell
    QBaseMarkRecordForRemoval(base.get(), 1);
    EXPECT_EQ(QBaseRemoveInvalidOffsets(base.get()), 4);
    const Block list = QBaseCreateIndexOfOffsets(base.get(), 4); // of 14, 0, 40, 2050
    const auto *const order = reinterpret_cast<const std::int32_t *>(list.Data());
    EXPECT_EQ(std::vector(order, order + list.Size() / 4), (std::vector<std::int32_t>{1, 0, 2, 3}));
    EXPECT_LT(QBaseCompareOffsetsProc(order, order + 1), 0);
    EXPECT_EQ(QBaseCreateIndexOfOffsets(base.get(), 0).Size(), 0U);
    QBaseUpdateOffsets(base.get(), 3, 14, 100);
    const std::int32_t *const offsets = IndexOffsets(base.get());
    EXPECT_EQ(std::vector(offsets, offsets + 4), (std::vector<std::int32_t>{114, 0, 140, 2050}));
}

std::string StateWithCapacity(QBaseHandle base) {
    return State(base) + " capacity " + std::to_string(base->capacity) + " valid " +
           std::to_string(static_cast<int>(QBaseValidate(base)));
}

TEST(RecordBase, Duplicate_CopiesAllButTheUserBlock) {
    const QBaseOwner source = FullFileBase();
    const QBaseOwner target = NewFileBase();
    AddMadeRecords(target.get(), {50});
    ASSERT_EQ(QBaseSetUserBlock(target.get(), "own", 3), noErr);
    ASSERT_EQ(QBaseDuplicate(source.get(), target.get()), noErr);
    std::uint32_t size = 0;
    const void *const own = QBaseGetUserBlock(target.get(), &size);
    EXPECT_EQ(std::string(static_cast<const char *>(own), size), "own");
    ASSERT_EQ(QBaseSetUserBlock(target.get(), "block", 5), noErr);
    EXPECT_EQ(StateWithCapacity(target.get()), StateWithCapacity(source.get()));
    EXPECT_EQ(QBaseDuplicate(target.get(), target.get()), noErr);
    const QBaseOwner other(QBaseNew(kFileTestType, kFileTestVersion + 1, 4));
    for (QBaseHandle refused : {other.get(), QBaseHandle{nullptr}}) {
        EXPECT_EQ(QBaseDuplicate(source.get(), refused), paramErr);
        EXPECT_EQ(QBaseDuplicateUserFields(refused, target.get()), paramErr);
    }
}

// Counts requests that come while the caller's flag is not raised.
class FlagWatch : public FaultyAllocator {
  public:
    using FaultyAllocator::FaultyAllocator;
    void *Reallocate(void *memory, std::size_t size) override {
        unflagged += gFlag == 1 ? 0 : 1;
        return FaultyAllocator::Reallocate(memory, size);
    }
    static inline std::int16_t gFlag = 7;
    int unflagged = 0;
};

// Records 1, 2, 0, 3 in index order with sort mode 130.
QBaseOwner BaseForFaults() {
    QBaseOwner base = FullFileBase();
    AddMadeRecords(base.get(), {1});
    base->indexGrowth = 3000; // the index is full, and one slot more wants memory
    QBaseSetSortMode(base.get(), 130);
    QBaseSetRecordsChanged(base.get(), false);
    return base;
}

bool Remove(QBaseHandle base) {
    QBaseMarkRecordForRemoval(base, 0);
    QBaseMarkRecordForRemoval(base, 2);
    QBaseRemoveMarkedRecords(base);
    return QBaseGetSortMode(base) == 130;
}

TEST(RecordBase, NthAllocationFailing_LeavesWhatWasPromised) {
    const QBaseOwner owner = NewFileBase();
    QBaseHandle const other = owner.get();
    AddMadeRecords(other, {5000});
    const void *const large = QBaseGetRecord(other, 0);
    const ExchangeOwner exchange = Take(other);
    const auto unchanged = [](QBaseHandle) {};
    const struct {
        const char *name;
        std::function<bool(QBaseHandle)> succeeds; // whether it did what it is for
        std::function<void(QBaseHandle)> failed;   // makes of a base what it must be after the failure
    } rows[] = {
        {"add", [&](auto base) { return QBaseAddRecord(base, large, 5000) == 4; }, unchanged},
        {"replace", [&](auto base) { return QBaseReplaceRecord(base, 1, large, 5000) == 1; }, unchanged},
        {"own", [](auto base) { return QBaseAddRecord(base, QBaseGetRecord(base, 1), 6) == 4; }, unchanged},
        {"user block", [&](auto base) { return QBaseSetUserBlock(base, large, 5000) == noErr; }, unchanged},
        {"import", [&](auto base) { return QBasePutExchange(base, exchange.get(), 1, 6) == 1; }, unchanged},
        {"export", [](auto base) { return Take(base) != nullptr; }, unchanged},
        {"duplicate", [&](auto base) { return QBaseDuplicate(other, base) == noErr; }, QBaseEmpty},
        {"move", [](auto base) { return QBaseMoveIndexes(base, 0, SelectOdd) == noErr; },
         [](auto base) { QBaseSetSortMode(base, kSortNone); }},
        {"remove", Remove,
         [](auto base) { // the index follows the data
             Remove(base);
             EXPECT_EQ(ResizeIndex(base, base->file.count), noErr);
             QBaseRebuildIndex(base);
         }},
    };
    QBaseUseWantsMemFull(&FlagWatch::gFlag);
    for (const auto &row : rows) {
        const QBaseOwner done = BaseForFaults();
        ASSERT_TRUE(row.succeeds(done.get())) << row.name;
        const QBaseOwner failed = BaseForFaults();
        row.failed(failed.get());
        int failures = 0;
        ForEachFault(1, [&](int failAt, Lasts lasts) {
            SCOPED_TRACE(row.name + std::string(" at ") + std::to_string(failAt));
            const QBaseOwner base = BaseForFaults();
            FlagWatch faults(failAt, lasts);
            const bool succeeded = row.succeeds(base.get());
            failures += succeeded ? 0 : 1;
            EXPECT_EQ(StateWithCapacity(base.get()), StateWithCapacity((succeeded ? done : failed).get()));
            EXPECT_EQ(faults.unflagged, 0);
            EXPECT_EQ(FlagWatch::gFlag, 7);
            return faults.WasHit();
        });
        EXPECT_GT(failures, 0) << row.name;
    }
    QBaseUseWantsMemFull(nullptr);
}

} // namespace
} // namespace drevix::test
