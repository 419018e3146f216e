#include "tests/qbase/file_support.h"

namespace drevix::test {
namespace {

std::string BytesOf(QBaseExchange exchange) {
    std::uint32_t size = 0;
    const void *const bytes = QBaseLockExchange(exchange, &size);
    QBaseUnlockExchange(exchange);
    return {static_cast<const char *>(bytes), size};
}

QBaseOwner ExampleBase() {
    QBaseOwner base = NewFileBase();
    EXPECT_EQ(QBaseAddRecord(base.get(), "abc", 3), 0);
    EXPECT_EQ(QBaseAddRecord(base.get(), "", 0), 1);
    QBaseSetRecordFlags(base.get(), 0, 1);
    QBaseSetRecordFlags(base.get(), 1, 2);
    return base;
}

TEST(Exchange, PublishedExample_IsWhatIsMade) {
    const ExchangeOwner exchange = Take(ExampleBase().get());
    EXPECT_EQ(BytesOf(exchange.get()), PublishedExample("exchange-block.md"));
    EXPECT_EQ(QBaseCountExchangeRecords(exchange.get()), 2);
    std::int32_t length = 9;
    EXPECT_NE(QBaseGetExchangeRecord(exchange.get(), 0, &length), nullptr);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(QBaseGetExchangeRecord(exchange.get(), 2, &length), nullptr);
    const ExchangeOwner one = Take(FullFileBase().get(), [](const void *, std::int32_t size, std::int16_t) {
        return std::int32_t{size == 6};
    });
    EXPECT_EQ(QBaseCountExchangeRecords(one.get()), 1);
    EXPECT_NE(QBaseGetExchangeRecord(one.get(), 0, &length), nullptr);
    EXPECT_EQ(length, 6);
    // Only the low 16 bits of a selection count; a block without records is refused.
    const ExchangeOwner none =
        Take(ExampleBase().get(), [](const void *, std::int32_t, std::int16_t) { return 0x10000; });
    EXPECT_EQ(BytesOf(none.get()).size(), 21U);
    EXPECT_EQ(QBasePutExchange(ExampleBase().get(), none.get(), 0, 0), 0);
}

TEST(Exchange, Import_PlacesTheRecordsAndSetsTheMode) {
    using Row = std::tuple<int, std::int32_t, std::int16_t, const char *, int>;
    for (const auto &[before, position, flags, lengths, mode] :
         {Row{5, 1, 0, "0891234", 0}, Row{5, 0, 7, "8901234", 0}, Row{5, 4, -1, "0123894", 0},
          Row{5, 5, 0, "0123489", 0}, Row{5, -1, 0, "0123489", 0}, Row{0, 0, 3, "89", 1}}) {
        SCOPED_TRACE(lengths); // after the import; the new ones are 8 and 9
        const QBaseOwner base = NewFileBase();
        AddMadeRecords(base.get(), {0, 1, 2, 3, 4});
        QBaseTruncate(base.get(), before);
        QBaseSetSortMode(base.get(), 128);
        QBaseSetRecordsChanged(base.get(), false);
        const QBaseOwner source = NewFileBase();
        AddMadeRecords(source.get(), {8, 9});
        EXPECT_EQ(QBasePutExchange(base.get(), Take(source.get()).get(), position, flags), 2);
        std::string order;
        for (RecordNumber i = 0; i < QBaseCountRecords(base.get()); ++i) {
            const int length = static_cast<int>(DataOf(base.get(), i).size());
            order += std::to_string(length);
            EXPECT_EQ(QBaseGetRecordFlags(base.get(), i), length >= 8 ? flags : length);
        }
        EXPECT_EQ(order, lengths);
        EXPECT_EQ(QBaseGetSortMode(base.get()), mode);
        EXPECT_TRUE(QBaseGetRecordsChanged(base.get()));
        EXPECT_TRUE(QBaseValidate(base.get()));
    }
}

// A block in a record of the target was read after adding had moved the record data.
TEST(Exchange, BlockInARecordOfTheTarget_IsCopiedFirst) {
    const std::string block = BytesOf(Take(ExampleBase().get()).get());
    const auto size = static_cast<std::uint32_t>(block.size());
    for (const bool hasMemory : {false, true}) {
        const QBaseOwner base = NewFileBase();
        EXPECT_EQ(QBaseAddRecord(base.get(), block.data(), static_cast<std::int32_t>(size)), 0);
        const void *const own = QBaseGetRecord(base.get(), 0);
        const FaultyAllocator faults(hasMemory ? kNoFault : 1, Lasts::Once);
        EXPECT_EQ(QBasePutExchangePtr(base.get(), own, size, 0, 0), hasMemory ? 2 : 0);
        EXPECT_EQ(QBaseCountRecords(base.get()), hasMemory ? 3 : 1);
        EXPECT_EQ(DataOf(base.get(), hasMemory ? 2 : 0), block);
    }
}

// Every byte of the example with every value, and every length of it, at an odd address: the base stays
// valid, and gains as many records as the block can name before the first that is damaged.
TEST(Exchange, DamagedBlock_IsTakenUpToTheDamage) {
    const std::string whole = BytesOf(Take(ExampleBase().get()).get());
    const auto import = [](const std::string &bytes) {
        std::vector<char> odd(1); // exact, so that a read beyond is found
        odd.insert(odd.end(), bytes.begin(), bytes.end());
        const auto size = static_cast<std::uint32_t>(bytes.size());
        const QBaseOwner base = NewFileBase();
        const std::int32_t added = QBasePutExchangePtr(base.get(), odd.data() + 1, size, 0, 0);
        EXPECT_TRUE(QBaseValidate(base.get()));
        EXPECT_EQ(QBaseCountRecords(base.get()), added);
        const std::int32_t counted = QBaseCountExchangePtrRecords(odd.data() + 1, size);
        EXPECT_TRUE(counted == 0 || added == 0 || counted == added);
        return added;
    };
    for (std::size_t place = 0; place < whole.size(); ++place) {
        EXPECT_EQ(import(whole.substr(0, place)), place < 35 ? 0 : 1) << place;
        for (int value = 0; value < 256; ++value) {
            std::string bytes = whole;
            bytes[place] = static_cast<char>(value);
            const std::int32_t added = import(bytes);
            const bool isSame = bytes == whole;
            if (place < 16) {
                EXPECT_EQ(added, isSame ? 2 : 0) << place; // head
            } else if (place < 20 || (place >= 28 && place < 34) || place >= 42) {
                EXPECT_EQ(added, 2) << place; // count, flags, data, spare
            } else {
                EXPECT_LE(added, 2) << place;
            }
        }
    }
}

} // namespace
} // namespace drevix::test
