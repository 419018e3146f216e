// Reads a file that may hold anything as a settings file's record base: plainly, salvaging, behind records
// that are there already, and with converters. Whatever it holds, the base is valid afterwards, no more
// memory was asked for than the file backs, and what was read can be written, read and written again with the
// same bytes.
#include "fuzz/fuzzing.h"
#include "fuzz/memory_disk.h"
#include "platform/base/block.h"
#include "platform/base/status.h"
#include "qbase/qbase_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <span>
#include <tuple>

namespace drevix {
namespace {

using fuzz::Check;

constexpr OSType kType = FourCharCode("PLZB");
constexpr std::uint16_t kTypeVersion = 2;

// Ends the run when a read asks for more memory than the file backs.
class Limit : public BlockAllocator {
  public:
    explicit Limit(std::size_t fileSize) : fMost(2 * fileSize + 4096), fBefore(SetBlockAllocator(this)) {}
    ~Limit() override { SetBlockAllocator(fBefore); }
    void *Reallocate(void *memory, std::size_t size) override {
        Check(size <= fMost);
        return BlockAllocator::Reallocate(memory, size);
    }

  private:
    std::size_t fMost;
    BlockAllocator *fBefore;
};

// Touches every byte, so that one outside the memory is found.
OSErr Touch(void *bytes, std::int32_t count) {
    auto *const first = static_cast<std::uint8_t *>(bytes);
    std::for_each(first, first + count,
                  [](std::uint8_t &byte) { byte = static_cast<std::uint8_t>(byte + 1); });
    return count == 13 ? ioErr : noErr;
}

void TouchRecords(QBaseHandle base) {
    for (RecordNumber i = 0; i < QBaseCountRecords(base); ++i) {
        std::int32_t length = 0;
        void *const data = QBaseGetRecord(base, i, &length);
        Check(data != nullptr);
        std::ignore = Touch(data, length);
    }
}

struct Mode {
    bool userPart;
    bool hasRecord; // the base has one before
    bool rebuilds;
    bool recovers;
    bool converts;
};
constexpr auto kModes = std::to_array<Mode>({
    {true, false, false, false, false},
    {true, true, false, false, true},
    {true, true, false, true, false},
    {false, false, false, true, true},
    {true, true, true, true, false},
});

void WriteAndReadAgain(QBaseHandle base) {
    static fuzz::MemoryFile file;
    file.Set({});
    Check(QBaseWrite(base, file.Ref(), true, true) == noErr);
    const std::string bytes = file.Bytes();
    const QBaseOwner again(QBaseNew(kType, kTypeVersion, 4));
    {
        const Limit limit(bytes.size());
        Check(QBaseRead(again.get(), file.Ref(), true, true, false, true) == noErr);
    }
    file.Set({});
    Check(QBaseWrite(again.get(), file.Ref(), true, true) == noErr);
    Check(file.Bytes() == bytes);
}

void ReadOnce(const fuzz::MemoryFile &file, std::size_t size, const Mode &mode) {
    const QBaseOwner base(QBaseNew(kType, kTypeVersion, 4));
    Check(!mode.hasRecord || QBaseAddRecord(base.get(), "old", 3) == 0);
    QBaseSetFlipProc(base.get(), mode.converts ? Touch : nullptr, mode.converts ? Touch : nullptr);
    bool salvaged = false;
    OSErr status = noErr;
    {
        const Limit limit(size);
        status = QBaseReadRebuild(base.get(), file.Ref(), mode.userPart, true, true, false, mode.rebuilds,
                                  mode.recovers, &salvaged);
    }
    Check(QBaseValidate(base.get()));
    Check(!salvaged || mode.recovers);
    Check(status == noErr || status == -1 || status == eofErr || (status == ioErr && mode.converts));
    Check(status == noErr || QBaseCountRecords(base.get()) <= (mode.hasRecord ? 1 : 0));
    TouchRecords(base.get());
    Check(QBaseAddRecord(base.get(), "new", 3) == QBaseCountRecords(base.get()) - 1 &&
          QBaseValidate(base.get()));
    WriteAndReadAgain(base.get());
}

// Makes a file of any bytes one whose counts, sizes and offsets agree.
class Mender {
  public:
    Mender(std::span<std::uint8_t> bytes, unsigned seed) : fBytes(bytes), fRandom(seed) {}

    // The file has at least the bytes of a header.
    void Mend() {
        fIsFlipped = OneIn(8);
        const bool isOld = OneIn(8);
        const std::size_t headerSize = isOld ? 48 : sizeof(QBaseFileHeader);
        std::size_t userSize = isOld ? 0 : Any(16);
        std::size_t count = Any(8);
        if (headerSize + userSize + 4 * count > fBytes.size()) {
            userSize = count = 0;
        }
        const std::size_t index = headerSize + userSize;
        const std::size_t records = index + 4 * count;
        Put(0, kQBaseMagic, 4);
        Put(4, kType, 4);
        Put(8, isOld ? 1 : kQBaseVersion, 2);
        Put(10, kTypeVersion, 2);
        Put(isOld ? 28 : 12, count, 4);
        Put(isOld ? 32 : 16, OneIn(8) ? Any(1000) : fBytes.size() - records, 4);
        if (!isOld) {
            Put(56, userSize, 4);
        }
        MendRecords(index, records, count);
        if (OneIn(2)) {
            fBytes[Any(fBytes.size())] = static_cast<std::uint8_t>(fRandom());
        }
    }

  private:
    void MendRecords(std::size_t index, std::size_t place, std::size_t count) {
        const std::size_t start = place;
        const std::size_t turn = Any(8); // of the index against the data
        for (std::size_t i = 0; i < count && fBytes.size() - place >= 10; ++i) {
            const std::size_t left = fBytes.size() - place;
            const std::size_t size = i + 1 == count ? left : 10 + 2 * Any((left - 10) / 4 + 1);
            Put(index + 4 * ((i + turn) % count), place - start, 4);
            Put(place, size, 4);
            Put(place + 4, size - 10, 4);
            place += size;
        }
    }

    bool OneIn(unsigned times) { return fRandom() % times == 0; }
    std::size_t Any(std::size_t below) { return fRandom() % below; }

    // Writes a number of `width` bytes, in the other byte order when the file is to be of that.
    void Put(std::size_t place, std::size_t value, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i) {
            fBytes[place + (fIsFlipped ? width - 1 - i : i)] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }

    std::span<std::uint8_t> fBytes;
    std::minstd_rand fRandom;
    bool fIsFlipped = false;
};

} // namespace
} // namespace drevix

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t maxSize,
                                               unsigned seed) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    if (size >= sizeof(drevix::QBaseFileHeader) && seed % 8 != 0) {
        drevix::Mender({data, size}, seed).Mend();
    }
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static drevix::fuzz::MemoryFile file;
    file.Set({reinterpret_cast<const char *>(data), size});
    // One way of reading an execution, so that many more inputs are tried; the input's bytes choose it.
    std::size_t sum = size;
    for (std::size_t i = 0; i < size; ++i) {
        sum += data[i];
    }
    drevix::ReadOnce(file, size, drevix::kModes[sum % drevix::kModes.size()]);
    return 0;
}
