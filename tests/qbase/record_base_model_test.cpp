// Thousands of random operations on a base and on a plain model of it, compared after each.
#include "qbase/qbase_internal.h"
#include "qbase/qbase_sort.h"
#include "tests/qbase/file_support.h"

#include <random>

namespace drevix::test {
namespace {

constexpr std::int16_t kGrowth = 4;
constexpr std::int16_t kSelected = 9;

struct ModelRecord {
    std::string data;
    std::uint16_t flags;
    int age; // rises in data order
};

std::int32_t CompareBytes(const void *a, std::int32_t lengthA, const void *b, std::int32_t lengthB) {
    const int order = std::memcmp(a, b, static_cast<std::size_t>(std::min(lengthA, lengthB)));
    return order != 0 ? (order < 0 ? -1 : 1) : lengthA - lengthB;
}

std::int32_t IsMarked(const void * /*data*/, std::int32_t /*length*/, std::int16_t flags) {
    return flags == kSelected ? 1 : 0x10000; // of which the low 16 bits are 0
}

class Pair {
  public:
    explicit Pair(unsigned seed) : fRandom(seed), fBase(NewFileBase()) {}

    void Step() {
        QBaseSetRecordsChanged(Base(), fChanged = false);
        static constexpr std::array kOperations = {
            &Pair::Add,  &Pair::Add,  &Pair::Add,     &Pair::Replace,  &Pair::Remove, &Pair::SetFlags,
            &Pair::Move, &Pair::Sort, &Pair::Rebuild, &Pair::Truncate, &Pair::Empty};
        // Emptying is rare, so that bases grow to some size.
        const int last = Any(20) == 0 ? 0 : 1;
        const auto which = static_cast<std::size_t>(Any(static_cast<int>(kOperations.size()) - last));
        SCOPED_TRACE("operation " + std::to_string(which) + " on " + std::to_string(Count()));
        (this->*kOperations[which])();
        Compare();
    }

  private:
    [[nodiscard]] QBaseHandle Base() const { return fBase.get(); }
    [[nodiscard]] int Count() const { return static_cast<int>(fRecords.size()); }
    int Any(int below) { return static_cast<int>(fRandom() % static_cast<unsigned>(std::max(below, 1))); }

    // Mostly short, of equal lengths often, sometimes much longer than all others together.
    std::string AnyData() {
        std::string data(static_cast<std::size_t>(Any(8) == 0 ? Any(3000) : Any(2) == 0 ? 12 : Any(6)), '\0');
        std::ranges::generate(data, [this] { return static_cast<char>(Any(5)); });
        return data;
    }

    void Add() {
        const std::string data = AnyData();
        const int length = static_cast<int>(data.size());
        ASSERT_EQ(QBaseAddRecord(Base(), data.data(), length), Count());
        fCapacity += Count() >= fCapacity ? kGrowth : 0;
        fRecords.push_back({data, 0, fNextAge++});
        fMode = fMode == kSortDataOrder ? kSortDataOrder : kSortNone;
        fChanged = true;
    }

    void Replace() {
        const int number = Any(Count() + 1) - Any(2);
        const bool exists = number >= 0 && number < Count();
        const std::string data = AnyData();
        ASSERT_EQ(QBaseReplaceRecord(Base(), number, data.data(), static_cast<int>(data.size())),
                  exists ? number : kNoRecord);
        if (exists) {
            fRecords[static_cast<std::size_t>(number)].data = data;
            fChanged = true;
        }
    }

    void Remove() {
        std::vector<ModelRecord> kept;
        const int oneOf = 1 + Any(5);
        const int before = Count();
        for (int i = 0; i < before; ++i) {
            if (Any(oneOf) != 0) {
                kept.push_back(fRecords[static_cast<std::size_t>(i)]);
                continue;
            }
            QBaseMarkRecordForRemoval(Base(), i);
            QBaseMarkRecordForRemoval(Base(), i);
            EXPECT_EQ(QBaseGetRecord(Base(), i), nullptr);
        }
        QBaseRemoveMarkedRecords(Base());
        fRecords = kept;
        fCapacity -= before - Count();
        fChanged = before > Count();
        fMode = Count() == 0 && before > 0 ? kSortDataOrder : fMode;
    }

    void SetFlags() {
        const auto flags = static_cast<std::uint16_t>(Any(3) == 0 ? kSelected : Any(0x10000));
        if (Any(4) == 0) {
            QBaseSetAllRecordFlags(Base(), flags);
            std::ranges::for_each(fRecords, [flags](ModelRecord &record) { record.flags = flags; });
        } else if (Count() > 0) {
            const int number = Any(Count());
            QBaseSetRecordFlags(Base(), number, flags);
            fRecords[static_cast<std::size_t>(number)].flags = flags;
        }
        const auto found = std::ranges::find(fRecords, flags, &ModelRecord::flags);
        EXPECT_EQ(QBaseFindRecordFlags(Base(), flags),
                  found == fRecords.end() ? kNoRecord : static_cast<int>(found - fRecords.begin()));
    }

    void Move() {
        const int target = Any(Count() + 4) - 2;
        ASSERT_EQ(QBaseMoveIndexes(Base(), target, IsMarked), noErr);
        const auto isSelected = [](const ModelRecord &record) { return record.flags == kSelected; };
        if (std::ranges::none_of(fRecords, isSelected)) {
            return;
        }
        const auto middle = fRecords.begin() + std::clamp(target, 0, Count());
        std::stable_partition(fRecords.begin(), middle, std::not_fn(isSelected));
        std::stable_partition(middle, fRecords.end(), isSelected);
        fMode = kSortNone;
    }

    void Sort() {
        const auto mode = static_cast<std::int16_t>(Any(300) - 20);
        QBaseSort(Base(), CompareBytes, mode);
        fMode = std::max(mode, kSortFirstCallerMode);
        // Of equal records any order will do, so the model takes over the base's; it must be an order.
        std::ranges::sort(fRecords, {}, &ModelRecord::age);
        std::vector<std::pair<std::int32_t, int>> places; // offset and number of each record
        for (int i = 0; i < Count(); ++i) {
            places.emplace_back(IndexOffsets(Base())[i], i);
        }
        std::ranges::sort(places);
        std::vector<ModelRecord> sorted(fRecords.size());
        for (std::size_t i = 0; i < places.size(); ++i) {
            sorted[static_cast<std::size_t>(places[i].second)] = fRecords[i];
        }
        fRecords = sorted;
        EXPECT_TRUE(std::ranges::is_sorted(fRecords, {}, &ModelRecord::data));
    }

    void Rebuild() {
        QBaseRebuildIndex(Base());
        std::ranges::sort(fRecords, {}, &ModelRecord::age);
        fMode = kSortDataOrder;
    }

    void Truncate() {
        if (fMode == kSortDataOrder && Any(4) == 0 && Count() > 0) {
            fCapacity = Any(Count());
            QBaseTruncate(Base(), fCapacity);
            fRecords.resize(static_cast<std::size_t>(fCapacity));
        }
        QBaseTruncate(Base(), Count());
        QBaseTruncate(Base(), -1);
    }

    void Empty() {
        fChanged = Count() > 0;
        fMode = Count() > 0 ? kSortDataOrder : fMode;
        fCapacity = Count() > 0 ? 0 : fCapacity;
        fRecords.clear();
        QBaseEmpty(Base());
    }

    void Compare() const {
        ASSERT_EQ(QBaseCountRecords(Base()), Count());
        std::size_t size = 0;
        for (int i = 0; i < Count(); ++i) {
            const ModelRecord &record = fRecords[static_cast<std::size_t>(i)];
            ASSERT_EQ(DataOf(Base(), i), record.data);
            ASSERT_EQ(static_cast<std::uint16_t>(QBaseGetRecordFlags(Base(), i)), record.flags);
            size += (10 + record.data.size() + 1) / 2 * 2;
        }
        std::size_t dataSize = 0;
        EXPECT_EQ(QBaseGetSize(Base(), &dataSize),
                  size + 4U * static_cast<unsigned>(fCapacity) + sizeof(QBaseHeader));
        EXPECT_EQ(dataSize, size);
        EXPECT_EQ(Base()->capacity, fCapacity);
        EXPECT_EQ(QBaseGetSortMode(Base()), fMode);
        EXPECT_EQ(QBaseGetRecordsChanged(Base()), fChanged);
        EXPECT_TRUE(QBaseValidate(Base()));
    }

    std::mt19937 fRandom;
    QBaseOwner fBase;
    std::vector<ModelRecord> fRecords; // in index order
    int fNextAge = 0;
    int fCapacity = 0;
    std::int16_t fMode = kSortDataOrder;
    bool fChanged = false;
};

TEST(RecordBase, RandomOperations_AgreeWithAPlainModel) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Pair pair(seed);
        for (int step = 0; step < 150; ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            pair.Step();
            ASSERT_FALSE(testing::Test::HasFailure());
        }
    }
}

} // namespace
} // namespace drevix::test
