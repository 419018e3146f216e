// Takes bytes that may be anything for an exchange block: counts and fetches its records and takes them into
// a base, at the end and among records that are there. Whatever it holds, the base is valid afterwards, has
// as many records as were told, and a block made of it brings them over to another base.
#include "fuzz/fuzzing.h"
#include "platform/base/status.h"
#include "qbase/qbase_exchange.h"
#include "qbase/qbase_file.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <span>
#include <vector>

namespace drevix {
namespace {

using fuzz::Check;

constexpr OSType kType = FourCharCode("TEST");
constexpr std::uint16_t kTypeVersion = 3;

QBaseOwner NewBase() {
    return QBaseOwner(QBaseNew(kType, kTypeVersion, 4));
}

bool HaveEqualData(QBaseHandle a, RecordNumber numberA, const void *b, std::int32_t lengthB) {
    std::int32_t length = 0;
    const void *const data = QBaseGetRecord(a, numberA, &length);
    return length == lengthB && std::memcmp(data, b, static_cast<std::size_t>(length)) == 0;
}

// The records of `base` from `first` on are those of the block, from its first on.
void CheckRecords(QBaseHandle base, RecordNumber first, std::int32_t count, QBaseExchange exchange) {
    for (RecordNumber i = 0; i < count; ++i) {
        std::int32_t length = 0;
        const void *const data = QBaseGetExchangeRecord(exchange, i, &length);
        Check(data != nullptr && HaveEqualData(base, first + i, data, length));
        Check(QBaseGetRecordFlags(base, first + i) == 6);
    }
    Check(QBaseGetExchangeRecord(exchange, count) == nullptr);
}

void CarryOver(QBaseHandle base) {
    QBaseExchange made =
        QBaseGetExchange(base, [](const void *, std::int32_t, std::int16_t) { return std::int32_t{1}; });
    const std::int32_t count = QBaseCountRecords(base);
    Check(made != nullptr && QBaseCountExchangeRecords(made) == count);
    const QBaseOwner other = NewBase();
    Check(QBasePutExchange(other.get(), made, 0, 6) == count);
    CheckRecords(other.get(), 0, count, made);
    QBaseDisposeExchange(made);
}

void TakeIn(QBaseExchange exchange) {
    const QBaseOwner base = NewBase();
    Check(QBaseAddRecord(base.get(), "first", 5) == 0 && QBaseAddRecord(base.get(), "last", 4) == 1);
    const std::int32_t added = QBasePutExchange(base.get(), exchange, 1, 6);
    Check(QBaseCountRecords(base.get()) == 2 + added && QBaseValidate(base.get()));
    if (added > 0) {
        CheckRecords(base.get(), 1, added, exchange);
    }
    Check(HaveEqualData(base.get(), 1 + added, "last", 4));
    const std::int32_t counted = QBaseCountExchangeRecords(exchange);
    Check(counted == 0 || added == 0 || counted == added);
    CarryOver(base.get());
}

// Makes a block of any bytes, at least a head and a spare byte, one whose counts and sizes agree.
void Mend(std::span<std::uint8_t> bytes, unsigned seed) {
    std::minstd_rand random(seed);
    QBaseExchangeHeader header{kExchangeMagic, kQBaseMagic, kType, kQBaseVersion, kTypeVersion, 0};
    const std::size_t end = bytes.size() - 1;
    for (std::size_t place = sizeof header; end - place >= kQBaseRecordHeaderSize; ++header.count) {
        QBaseRecord record{};
        std::memcpy(&record, &bytes[place], sizeof record);
        const std::size_t room = end - place - kQBaseRecordHeaderSize;
        const std::size_t length = random() % 4 == 0 ? room : random() % (room + 1);
        record.length = static_cast<std::int32_t>(length);
        record.size =
            static_cast<std::uint32_t>(kQBaseRecordHeaderSize + std::min((length + 1) / 2 * 2, room));
        std::memcpy(&bytes[place], &record, sizeof record);
        place += record.size;
    }
    std::memcpy(bytes.data(), &header, sizeof header);
    if (random() % 2 == 0) {
        bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    }
}

} // namespace
} // namespace drevix

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (size > sizeof(drevix::QBaseExchangeHeader) && seed % 8 != 0) {
        drevix::Mend({data, size}, seed);
    }
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    drevix::Block block;
    drevix::fuzz::Check(block.Resize(size) == drevix::noErr);
    std::copy_n(data, size, reinterpret_cast<std::uint8_t *>(block.Data()));
    drevix::TakeIn(&block);
    // The same at an odd address that ends where the memory ends, so that a read beyond is found.
    std::vector<std::uint8_t> odd(size + 1);
    std::copy_n(data, size, odd.begin() + 1);
    const drevix::QBaseOwner base = drevix::NewBase();
    const auto added =
        drevix::QBasePutExchangePtr(base.get(), odd.data() + 1, static_cast<std::uint32_t>(size), -1, 0);
    drevix::fuzz::Check(added == drevix::QBaseCountRecords(base.get()) && drevix::QBaseValidate(base.get()));
    return 0;
}
