// Keys that identify the records of a base while their contents change. Internal.
#pragma once

#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// A global record is identified as such, any other by its file name (ignoring letter case) and signature;
// records alike in that are numbered by position. A record that is not settings is identified by its bytes.
using RecordKey = std::string;

// The part of a key that alike records share, whether it is that of a record, and the key of the n-th of them.
[[nodiscard]] std::string NameInKey(const AppPrefs &record);
[[nodiscard]] bool IsNamed(const AppPrefs &record, std::string_view name);
[[nodiscard]] RecordKey KeyOfNth(std::string_view name, std::size_t ordinal);

// The numbers of the alike records, in the order of their ordinals.
[[nodiscard]] std::vector<RecordNumber> RecordsAlike(QBaseHandle base, std::string_view name);

// Every record of a base by its key.
using KeyedRecords = std::map<RecordKey, RecordNumber>;
[[nodiscard]] KeyedRecords RecordsByKey(QBaseHandle base);

// A record's bytes, valid until the base changes.
[[nodiscard]] std::string_view BytesOf(QBaseHandle base, RecordNumber number);
[[nodiscard]] std::string_view BytesOf(const AppPrefs &record);

} // namespace drevix
