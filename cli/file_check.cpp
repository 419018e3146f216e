#include "cli/file_check.h"

#include "cli/outcome.h"
#include "cli/record_text.h"
#include "qbase/qbase.h"
#include "settings/action_commands.h"
#include "settings/app_prefs.h"
#include "settings/device_prefs.h"

#include <cstring>
#include <map>
#include <optional>

namespace drevix {
namespace {

constexpr std::uint32_t kOtherOrderMagic = 0x45534251; // kQBaseMagic as the other byte order stores it
constexpr std::uint16_t kOldVersion = 1;
constexpr std::size_t kOldHeaderSize = 48; // of version 1, with the count at 28 and the records' size at 32
constexpr std::size_t kOldCountOffset = 28;
constexpr std::size_t kOldSizeOffset = 32;
constexpr std::size_t kIndexSlotSize = sizeof(std::int32_t);

// A value at an offset, in this machine's byte order; the caller sees to it that it lies within the bytes.
template <class T>
T ValueAt(std::string_view bytes, std::size_t offset) {
    T value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

std::string Number(std::uint64_t number) {
    return std::to_string(number);
}

class FileChecker {
  public:
    FileChecker(std::string_view bytes, FileFindings &findings) : fBytes(bytes), fFindings(findings) {}

    void Check() {
        if (CheckKind() && CheckLengths() && CheckIndex()) {
            CheckRecords();
        }
    }

  private:
    void Damage(std::string text) {
        fFindings.problems.push_back({FileProblem::Kind::Damage, std::move(text)});
    }
    void Oddity(std::string text) {
        fFindings.problems.push_back({FileProblem::Kind::Oddity, std::move(text)});
    }

    // The steps. Each is false when what follows would make no sense.
    bool CheckKind();
    bool CheckLengths();
    bool CheckIndex();
    void CheckRecords();
    void CheckGlobals();
    // The size of the record at an offset, nothing when it is damaged.
    std::optional<std::uint32_t> CheckRecordHeader(std::size_t number, std::size_t offset);
    void CheckSettings(std::size_t number, std::string_view data);
    void CheckCommands(const std::string &name, const AppPrefs &record);

    std::string_view fBytes;
    FileFindings &fFindings;
    std::size_t fCount = 0; // of records
    std::string_view fIndex;
    std::string_view fData;
    std::map<std::size_t, std::size_t> fSlots; // by offset
    std::vector<std::string> fGlobals;         // numbers of the global records
};

bool FileChecker::CheckKind() {
    if (fBytes.empty()) {
        Oddity("the file is empty; factory settings are used");
        return false;
    }
    if (fBytes.size() < sizeof(QBaseFileHeader)) {
        Damage("the file has " + Number(fBytes.size()) + " bytes, fewer than its header");
        return false;
    }
    const auto header = ValueAt<QBaseFileHeader>(fBytes, 0);
    if (header.magic == kOtherOrderMagic) {
        Damage("the file was written on a machine of the other byte order");
    } else if (header.magic != kQBaseMagic) {
        Damage("this is another kind of file");
    } else if (header.version != kOldVersion && header.version != kQBaseVersion) {
        Damage("the file has format version " + Number(header.version) + ", which is not known");
    } else if (header.type != kDrevixBaseType || header.typeVersion != kDrevixBaseTypeVersion) {
        Damage("the file has records of another kind: type " + QuotedText(SignatureText(header.type)) +
               " version " + Number(header.typeVersion));
    } else {
        return true;
    }
    return false;
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
        Damage("the header announces a negative count of records");
        return false;
    }
    fCount = static_cast<std::size_t>(count);
    fFindings.records = static_cast<std::int32_t>(count);
    const std::uint64_t expected = start + kIndexSlotSize * fCount + recordsSize;
    if (expected != fBytes.size()) {
        Damage("the header announces " + Number(fCount) + " records in " + Number(expected) +
               " bytes, but the file has " + Number(fBytes.size()));
        return false;
    }
    fIndex = fBytes.substr(start, kIndexSlotSize * fCount);
    fData = fBytes.substr(start + fIndex.size());
    return true;
}

bool FileChecker::CheckIndex() {
    const std::size_t before = fFindings.problems.size();
    for (std::size_t i = 0; i < fCount; ++i) {
        const auto offset = ValueAt<std::int32_t>(fIndex, i * kIndexSlotSize);
        if (offset < 0 || static_cast<std::size_t>(offset) + kQBaseRecordHeaderSize > fData.size()) {
            Damage("index entry " + Number(i) + " leads outside the record data");
        } else if (const auto [other, isNew] = fSlots.emplace(offset, i); !isNew) {
            Damage("index entries " + Number(other->second) + " and " + Number(i) + " lead to one record");
        }
    }
    return fFindings.problems.size() == before;
}

std::optional<std::uint32_t> FileChecker::CheckRecordHeader(std::size_t number, std::size_t offset) {
    const std::string name =
        "record " + Number(number) + " at byte " + Number(offset) + " of the record data ";
    if (offset + kQBaseRecordHeaderSize > fData.size()) {
        Damage("the record data end after " + Number(number) + " of " + Number(fCount) + " records");
        return {};
    }
    const auto record = ValueAt<QBaseRecord>(fData, offset);
    if (record.size < kQBaseRecordHeaderSize || record.size > fData.size() - offset) {
        Damage(name + "is damaged: its size is " + Number(record.size) + " bytes");
        return {};
    }
    if (record.length < 0 ||
        static_cast<std::uint32_t>(record.length) > record.size - kQBaseRecordHeaderSize) {
        Damage(name + "is damaged: its length does not fit its size");
        return {};
    }
    if (!fSlots.contains(offset)) {
        Damage(name + "is damaged, or it is not in the index");
        return {};
    }
    return record.size;
}

// Records are numbered in the order of the data, from 0.
void FileChecker::CheckRecords() {
    std::size_t offset = 0;
    for (std::size_t number = 0; number < fCount; ++number) {
        const auto size = CheckRecordHeader(number, offset);
        if (!size) {
            return; // where the next one begins is not known
        }
        const auto record = ValueAt<QBaseRecord>(fData, offset);
        CheckSettings(number,
                      fData.substr(offset + kQBaseRecordHeaderSize, static_cast<std::size_t>(record.length)));
        offset += *size;
    }
    CheckGlobals();
}

void FileChecker::CheckGlobals() {
    if (fCount > 0 && fGlobals.empty()) {
        Oddity("there is no global record; the factory's is used");
    }
    for (std::size_t i = 1; i < fGlobals.size(); ++i) {
        Oddity("record " + fGlobals[i] + " is a second global record; the first, record " + fGlobals[0] +
               ", is the one that counts");
    }
}

void FileChecker::CheckSettings(std::size_t number, std::string_view data) {
    std::string name = "record " + Number(number);
    if (data.size() != sizeof(AppPrefs)) {
        Oddity(name + " has " + Number(data.size()) + " bytes instead of " + Number(sizeof(AppPrefs)));
        return;
    }
    const auto record = ValueAt<AppPrefs>(data, 0);
    if (record.application == kGlobalSignature) {
        fGlobals.push_back(Number(number));
    }
    if (record.appFileName[0] > kMaxFileNameLength || record.appName[0] > kMaxAppNameLength) {
        Oddity(name + " has a name that is too long for its field");
        return;
    }
    name += " (" + RecordName(record) + ")";
    if (record.active > 1 || record.factory > 1 || record.device[0].click > 1) {
        Oddity(name + " has a mark that is neither on nor off");
    }
    CheckCommands(name, record);
}

// The record of a new application begins with the global one's actions, the companion's menu entries among
// them, which the application may not know.
bool IsCopiedMenuEntry(const ControlSlot &control, const ActionSlot &slot) {
    return slot.command == kActionToolMenu && IsToolMenuSlot(control.slot);
}

void FileChecker::CheckCommands(const std::string &name, const AppPrefs &record) {
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &slot = record.device[0].action[control.slot];
        const std::string place = name + ", " + std::string(control.key) + ": ";
        const ActionRefusal refusal = CheckAction(record, control.slot, slot.command);
        if (refusal == ActionRefusal::UnknownCommand) {
            Oddity(place + "there is no action " + Number(slot.command));
        } else if (refusal != ActionRefusal::None && !IsCopiedMenuEntry(control, slot)) {
            Oddity(place + "action " + Number(slot.command) + " does not belong there");
        }
        if (slot.data[0] > kMaxAppNameLength) {
            Oddity(place + "the text is too long for its field");
        }
    }
}

} // namespace

FileFindings CheckFileBytes(std::string_view bytes, OSErr status) {
    FileFindings findings;
    findings.status = status;
    FileChecker(bytes, findings).Check();
    return findings;
}

} // namespace drevix
