#include "qbase/qbase_file_check.h"

#include "qbase/qbase_file_internal.h"

#include <cstring>
#include <map>
#include <optional>

namespace drevix {
namespace {

constexpr std::uint32_t kOtherOrderMagic = 0x45534251; // kQBaseMagic in the other byte order
constexpr std::size_t kOldHeaderSize = 48;             // version 1: count at 28, records' size at 32
constexpr std::size_t kOldCountOffset = 28;
constexpr std::size_t kOldSizeOffset = 32;
constexpr std::size_t kIndexSlotSize = sizeof(std::int32_t);

// A value at an offset, in native byte order; the caller has checked that it lies within the bytes.
template <class T>
T ValueAt(std::string_view bytes, std::size_t offset) {
    T value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

class FileChecker {
  public:
    FileChecker(std::string_view bytes, QBaseFileFindings &findings) : fBytes(bytes), fFindings(findings) {}

    void Check(OSType type, std::uint16_t typeVersion) {
        fFindings.isSound = CheckKind(type, typeVersion) && CheckLengths() && CheckIndex() && CheckRecords();
    }

  private:
    using Problem = QBaseFileProblem;
    // Adds a finding. Always false.
    bool Tell(Problem problem, std::uint64_t first = 0, std::uint64_t second = 0, std::uint64_t third = 0) {
        fFindings.problems.push_back({problem, {first, second, third}});
        return false;
    }

    // The steps. Each returns false if the check cannot go on.
    bool CheckKind(OSType type, std::uint16_t typeVersion);
    bool CheckLengths();
    bool CheckIndex();
    bool CheckRecords();
    // The record at an offset; nullopt if it is damaged.
    std::optional<QBaseRecord> CheckRecord(std::size_t number, std::size_t offset);

    std::string_view fBytes;
    QBaseFileFindings &fFindings;
    std::size_t fCount = 0; // of records
    std::string_view fIndex;
    std::string_view fData;
    std::map<std::size_t, std::size_t> fSlots; // by offset
};

bool FileChecker::CheckKind(OSType type, std::uint16_t typeVersion) {
    if (fBytes.empty()) {
        return Tell(Problem::Empty);
    }
    if (fBytes.size() < sizeof(QBaseFileHeader)) {
        return Tell(Problem::NoHeader, fBytes.size());
    }
    const auto header = ValueAt<QBaseFileHeader>(fBytes, 0);
    if (header.magic == kOtherOrderMagic) {
        return Tell(Problem::OtherByteOrder);
    }
    if (header.magic != kQBaseMagic) {
        return Tell(Problem::OtherKind);
    }
    if (header.version != kOldVersion && header.version != kQBaseVersion) {
        return Tell(Problem::UnknownVersion, header.version);
    }
    return (header.type == type && header.typeVersion == typeVersion) ||
           Tell(Problem::OtherRecords, header.type, header.typeVersion);
}

bool FileChecker::CheckLengths() {
    const auto header = ValueAt<QBaseFileHeader>(fBytes, 0);
    const bool old = header.version == kOldVersion;
    const std::int64_t count = old ? ValueAt<std::int32_t>(fBytes, kOldCountOffset) : header.count;
    const std::uint64_t recordsSize =
        old ? ValueAt<std::uint32_t>(fBytes, kOldSizeOffset) : header.recordsSize;
    const std::uint64_t start =
        old ? std::uint64_t{kOldHeaderSize} : sizeof header + std::uint64_t{header.userBlockSize};
    if (count < 0) {
        return Tell(Problem::NegativeCount);
    }
    fCount = static_cast<std::size_t>(count);
    fFindings.announced = static_cast<std::int32_t>(count);
    const std::uint64_t expected = start + kIndexSlotSize * fCount + recordsSize;
    if (expected != fBytes.size()) {
        return Tell(Problem::WrongLength, fCount, expected, fBytes.size());
    }
    fIndex = fBytes.substr(start, kIndexSlotSize * fCount);
    fData = fBytes.substr(start + fIndex.size());
    return true;
}

bool FileChecker::CheckIndex() {
    for (std::size_t i = 0; i < fCount; ++i) {
        const auto offset = ValueAt<std::int32_t>(fIndex, i * kIndexSlotSize);
        if (offset < 0 || static_cast<std::size_t>(offset) + kQBaseRecordHeaderSize > fData.size()) {
            Tell(Problem::IndexOutside, i);
        } else if (const auto [other, isNew] = fSlots.emplace(offset, i); !isNew) {
            Tell(Problem::IndexTwice, other->second, i);
        }
    }
    return fFindings.problems.empty();
}

std::optional<QBaseRecord> FileChecker::CheckRecord(std::size_t number, std::size_t offset) {
    if (offset + kQBaseRecordHeaderSize > fData.size()) {
        Tell(Problem::DataEnd, number, fCount);
        return {};
    }
    const auto record = ValueAt<QBaseRecord>(fData, offset);
    const std::uint32_t size = record.size;
    if (size < kQBaseRecordHeaderSize || size > fData.size() - offset) {
        Tell(Problem::BadSize, number, offset, size);
        return {};
    }
    if (record.length < 0 || static_cast<std::uint32_t>(record.length) > size - kQBaseRecordHeaderSize) {
        Tell(Problem::BadLength, number, offset);
        return {};
    }
    if (!fSlots.contains(offset)) {
        Tell(Problem::NotInIndex, number, offset);
        return {};
    }
    return record;
}

// Past a damaged record there is no way to tell where the next one starts.
bool FileChecker::CheckRecords() {
    std::size_t offset = 0;
    for (std::size_t number = 0; number < fCount; ++number) {
        const std::optional<QBaseRecord> record = CheckRecord(number, offset);
        if (!record) {
            return false;
        }
        fFindings.records.push_back(
            fData.substr(offset + kQBaseRecordHeaderSize, static_cast<std::size_t>(record->length)));
        offset += record->size;
    }
    return true;
}

} // namespace

QBaseFileFindings CheckQBaseFile(std::string_view bytes, OSType type, std::uint16_t typeVersion) {
    QBaseFileFindings findings;
    FileChecker(bytes, findings).Check(type, typeVersion);
    return findings;
}

} // namespace drevix
