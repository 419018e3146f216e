#include "qbase/qbase_file_check.h"
#include "qbase/qbase_internal.h"
#include "tests/qbase/file_support.h"
#include "tests/support/failing_new.h"

#include <random>
#include <span>

namespace drevix::test {
namespace {

constexpr std::string_view kKind("ESBQTSET\2\0\3\0", 12); // magic, type and versions of the test's files

enum class Mode { Plain, Recover, Rebuild };

OSErr ReadInMode(QBaseHandle base, FileRef file, Mode mode, bool emptyFirst, bool *salvaged = nullptr) {
    const bool recovers = mode != Mode::Plain;
    return mode == Mode::Rebuild
               ? QBaseReadRebuild(base, file, true, true, false, emptyFirst, true, true, salvaged)
               : QBaseReadRecover(base, file, true, true, false, emptyFirst, recovers, salvaged);
}

// Reads the file behind a base's own record: what is left is valid, costs no more memory than the file backs,
// and can be added to, written and read again.
void ReadSafely(const MemoryFile &file, std::string_view image, Mode mode) {
    ASSERT_TRUE(file.Set(image));
    const QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {4});
    const FaultyAllocator memory(kNoFault, Lasts::Once); // from here on it measures
    const std::string before = Contents(base.get());
    const OSErr status = ReadInMode(base.get(), file.Ref(), mode, false);
    ASSERT_LE(memory.Largest(), std::max(sizeof(QBaseHeader), 2 * image.size() + 64));
    ASSERT_TRUE(QBaseValidate(base.get()));
    ASSERT_TRUE(status != noErr || image.substr(0, 12) == kKind) << "another magic, type or version";
    if (mode == Mode::Plain) {
        ASSERT_EQ(CheckQBaseFile(image, kFileTestType, kFileTestVersion).isSound, status == noErr);
    }
    if (status != noErr && QBaseCountRecords(base.get()) > 0) {
        ASSERT_EQ(Contents(base.get()), before);
    } else if (status == noErr) {
        ASSERT_GE(QBaseAddRecord(base.get(), "added", 5), 0);
        ASSERT_EQ(QBaseWrite(base.get(), file.Ref(), true, true), noErr);
        const QBaseOwner again = NewFileBase();
        ASSERT_EQ(QBaseRead(again.get(), file.Ref(), true, true, false, false), noErr);
        ASSERT_EQ(Contents(again.get()), Contents(base.get()));
    }
}

TEST(DamagedBaseFile, EveryTruncationAndEveryChangedByte_IsReadSafely) {
    const std::string image = FileOf(FullFileBase().get());
    std::string slack = image + "slack"; // a record added behind it was out of the walk's reach: all was lost
    slack[16] = static_cast<char>(slack[16] + 5);
    EXPECT_TRUE(CheckQBaseFile(slack, kFileTestType, kFileTestVersion).isSound);
    const MemoryFile file;
    for (const Mode mode : {Mode::Plain, Mode::Recover, Mode::Rebuild}) {
        ASSERT_NO_FATAL_FAILURE(ReadSafely(file, slack, mode));
        for (std::size_t size = 0; size <= image.size(); ++size) {
            SCOPED_TRACE("cut to " + std::to_string(size));
            ASSERT_NO_FATAL_FAILURE(ReadSafely(file, image.substr(0, size), mode));
        }
        for (std::size_t place = 0; place < image.size(); ++place) {
            for (int change = 1; change < 256; ++change) {
                std::string changed = image;
                changed[place] ^= static_cast<char>(change);
                SCOPED_TRACE("byte " + std::to_string(place) + " changed by " + std::to_string(change));
                ASSERT_NO_FATAL_FAILURE(ReadSafely(file, changed, mode));
            }
        }
    }
}

TEST(DamagedBaseFile, Recovery_KeepsTheWholeRecordsBeforeTheDamage) {
    const QBaseOwner whole = NewFileBase();
    AddMadeRecords(whole.get(), {6, 4, 0, 5});
    const std::string image = FileOf(whole.get()) + "?";
    constexpr std::size_t kRecordsPlace = 64 + 4 * 4;
    // The records are 16, 14, 10 and 16 bytes long, 56 in all, as the header tells.
    for (const auto &[recordBytes, count] : {std::pair{56, 4}, {57, 4}, {55, 0}, {40, 3}, {33, 2}, {16, 1}}) {
        SCOPED_TRACE(recordBytes);
        const MemoryFile file(image.substr(0, kRecordsPlace + static_cast<std::size_t>(recordBytes)));
        const bool isWhole = recordBytes == 56;
        const QBaseOwner base = NewFileBase();
        bool salvaged = isWhole;
        EXPECT_EQ(ReadInMode(base.get(), file.Ref(), Mode::Recover, true, &salvaged),
                  count > 0 ? noErr : OSErr{-1})
            << "a last record that is cut";
        EXPECT_EQ(salvaged, !isWhole);
        EXPECT_EQ(QBaseCountRecords(base.get()), count);
        EXPECT_EQ(QBaseGetRecordsChanged(base.get()), !isWhole);
        EXPECT_TRUE(QBaseValidate(base.get()));
        EXPECT_EQ(QBaseRead(base.get(), file.Ref(), true, true, false, true), isWhole ? noErr : -1);
    }
}

TEST(BaseFileFaults, EveryFailingReadStep_LeavesTheBaseOrReadsItAll) {
    const MemoryFile file(FileOf(FullFileBase().get()));
    const auto start = [] {
        QBaseOwner base = NewFileBase();
        AddMadeRecords(base.get(), {5, 1});
        QBaseSetUserLong(base.get(), 9);
        return base;
    };
    const std::string before = State(start().get());
    const QBaseOwner read = start();
    ASSERT_EQ(QBaseRead(read.get(), file.Ref(), true, true, false, false), noErr);
    const std::string after = State(read.get());
    ForEachFault(2, {EIO, ENOMEM}, [&](const FaultAt &fault) {
        std::int16_t wantsMemory = 5;
        QBaseUseWantsMemFull(&wantsMemory);
        const QBaseOwner base = start();
        OSErr status = noErr;
        const bool wasHit =
            fault.Meets([&] { status = QBaseRead(base.get(), file.Ref(), true, true, false, false); });
        QBaseUseWantsMemFull(nullptr);
        EXPECT_EQ(wantsMemory, 5);
        EXPECT_EQ(State(base.get()), status == noErr ? after : before);
        EXPECT_TRUE(status == noErr || status == (fault.error == EIO ? ioErr : memFullErr)) << status;
        EXPECT_TRUE(status == noErr ? !wasHit || fault.error == ENOMEM : wasHit);
        return wasHit;
    });
}

TEST(BaseFileFaults, EveryFailingWriteStep_LeavesTheChangeFlagsOfWhatIsNotThere) {
    const std::string whole = FileOf(FullFileBase().get());
    const std::string old(200, 'x');
    ForEachFault(6, {ENOSPC}, [&](const FaultAt &fault) {
        const MemoryFile file(old);
        const QBaseOwner base = FullFileBase();
        OSErr status = noErr;
        const bool wasHit = fault.Meets([&] { status = QBaseWrite(base.get(), file.Ref(), true, true); });
        EXPECT_EQ(status, wasHit ? dskFulErr : noErr);
        EXPECT_EQ(QBaseGetRecordsChanged(base.get()), wasHit);
        EXPECT_TRUE(wasHit || file.Bytes() == whole);
        if (!QBaseGetUserFieldsChanged(base.get())) {
            EXPECT_EQ(file.Bytes().substr(28, 41), whole.substr(28, 41));
        }
        return wasHit;
    });
}

// The rules of validation one after the other, at the price of a search for every record.
bool IsValidByTheRules(QBaseHandle base) {
    const std::size_t size = base->records.Size();
    const std::span slots(IndexOffsets(base), static_cast<std::size_t>(base->file.count));
    if (std::ranges::any_of(slots, [size](std::int64_t slot) {
            return slot < 0 || slot > static_cast<std::int64_t>(size) - 10;
        })) {
        return false;
    }
    std::size_t offset = 0;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if (std::ranges::find(slots, static_cast<std::int32_t>(offset)) == slots.end()) {
            return false;
        }
        const QBaseRecord record = *RecordAt(base, offset);
        if (record.size < 10 || record.size > size || record.length < 0 ||
            static_cast<std::uint32_t>(record.length) > record.size - 10) {
            return false;
        }
        offset += record.size;
        if (offset > size || (offset == size && i + 1 < slots.size())) {
            return false;
        }
    }
    return true;
}

void Damage(QBaseHandle base, std::mt19937 &random) {
    std::int32_t *const slots = IndexOffsets(base);
    const auto any = [&] { return random() % static_cast<std::size_t>(base->file.count); };
    const int step = static_cast<int>(random() % 13) - 6;
    std::int32_t &slot = slots[any()];
    std::int32_t &other = slots[any()];
    QBaseRecord *const record = RecordAt(base, static_cast<std::uint32_t>(slot));
    const auto kind = random() % 7;
    kind == 0 ? std::swap(slot, other) : void();
    slot = kind == 1   ? other
           : kind == 2 ? slot + step
           : kind == 3 ? static_cast<std::int32_t>(random())
                       : slot;
    record->size += kind == 4 ? static_cast<std::uint32_t>(step) : 0;
    record->length += kind == 5 ? step : 0;
    if (kind == 6) {
        std::ignore = base->records.Resize(base->records.Size() - 1 - random() % 12);
        base->file.count -= static_cast<std::int32_t>(random() % 2);
    }
}

TEST(BaseValidation, Verdict_IsThatOfTheRulesWithMemoryAndWithout) {
    std::mt19937 random(20); // any fixed number
    int valid = 0;
    int invalid = 0;
    for (int round = 0; round < 4000; ++round) {
        const int length = round % 10 == 0 ? 3000 : 4;
        const QBaseOwner base = NewFileBase();
        for (int i = static_cast<int>(random() % 50) + 1; i >= 0; --i) {
            AddMadeRecords(base.get(), {static_cast<int>(random() % static_cast<unsigned>(length + 1))});
        }
        std::shuffle(IndexOffsets(base.get()), IndexOffsets(base.get()) + base->file.count, random);
        if (round % 4 != 0) {
            Damage(base.get(), random);
        }
        const bool expected = IsValidByTheRules(base.get());
        ++(expected ? valid : invalid);
        EXPECT_EQ(QBaseValidate(base.get()), expected) << round;
        gNewFailsIn = 1;
        EXPECT_EQ(QBaseValidate(base.get()), expected) << round;
        gNewFailsIn = 0;
    }
    EXPECT_GT(valid, 1000);
    EXPECT_GT(invalid, 1000);
}

} // namespace
} // namespace drevix::test
