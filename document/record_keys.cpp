#include "document/record_keys.h"

#include "settings/prefs_list.h"

#include <algorithm>
#include <tuple>

namespace drevix {
namespace {

// The first character of a key.
constexpr char kGlobal = 'g';
constexpr char kNamed = 'n';
constexpr char kOther = 'o';

// Folds letters as PStringCmp does.
char Folded(char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

// A record being given a key. Sorts by name, then position.
struct Entry {
    std::string name;
    RecordNumber number;
    bool operator<(const Entry &other) const {
        return std::tie(name, number) < std::tie(other.name, other.number);
    }
};

Entry EntryOf(QBaseHandle base, RecordNumber number) {
    if (const AppPrefs *record = GetAppPrefs(base, number)) {
        return {NameInKey(*record), number};
    }
    return {kOther + std::string(BytesOf(base, number)), number};
}

} // namespace

std::string NameInKey(const AppPrefs &record) {
    if (record.application == kGlobalSignature) {
        return {kGlobal};
    }
    const Str63 &field = record.appFileName;
    const auto length = std::min<std::size_t>(field[0], kMaxFileNameLength);
    std::string name(1, kNamed);
    name.append(reinterpret_cast<const char *>(field.data()) + 1, length);
    std::ranges::transform(name, name.begin(), Folded);
    return name + '\0' + std::to_string(record.application);
}

bool IsNamed(const AppPrefs &record, std::string_view name) {
    return NameInKey(record) == name;
}

RecordKey KeyOfNth(std::string_view name, std::size_t ordinal) {
    return std::string(name) + '\0' + std::to_string(ordinal);
}

std::vector<RecordNumber> RecordsAlike(QBaseHandle base, std::string_view name) {
    std::vector<RecordNumber> numbers;
    for (RecordNumber number = 0; number < QBaseCountRecords(base); ++number) {
        const AppPrefs *record = GetAppPrefs(base, number);
        if (record != nullptr && IsNamed(*record, name)) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

KeyedRecords RecordsByKey(QBaseHandle base) {
    std::vector<Entry> entries;
    entries.reserve(static_cast<std::size_t>(QBaseCountRecords(base)));
    for (RecordNumber number = 0; number < QBaseCountRecords(base); ++number) {
        entries.push_back(EntryOf(base, number));
    }
    std::sort(entries.begin(), entries.end());
    KeyedRecords records;
    std::size_t ordinal = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        ordinal = i > 0 && entries[i].name == entries[i - 1].name ? ordinal + 1 : 0;
        records.emplace(KeyOfNth(entries[i].name, ordinal), entries[i].number);
    }
    return records;
}

std::string_view BytesOf(QBaseHandle base, RecordNumber number) {
    std::int32_t length = 0;
    const void *bytes = QBaseGetRecord(base, number, &length);
    return {static_cast<const char *>(bytes), static_cast<std::size_t>(length)};
}

std::string_view BytesOf(const AppPrefs &record) {
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

} // namespace drevix
