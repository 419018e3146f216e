// What differs between two states of the settings, record by record.
#pragma once

#include "qbase/qbase.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

enum class ChangeKind : std::uint8_t { Added, Removed, Changed };

struct RecordChange {
    ChangeKind kind;
    std::string name;                   // the record's display name, UTF-8; empty for the global record
    std::string fileName;               // its application's, UTF-8
    std::vector<std::string_view> keys; // of a changed one: what differs, by the keys of its dictionary form
};

// How `after` differs from `before`, in the order of record keys: the global record first. Alike records are told apart
// by their order. May throw std::bad_alloc.
[[nodiscard]] std::vector<RecordChange> ChangesBetween(QBaseHandle before, QBaseHandle after);

} // namespace drevix
