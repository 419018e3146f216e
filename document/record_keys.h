// What tells the records of a base apart while their contents change. For the library's own files.
#pragma once

#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// A global record is known by being one, another by its file name, letter case ignored, and its signature; of
// several alike each has an ordinal, by place. A record that is no settings is known by its bytes.
using RecordKey = std::string;

// The part of a key that records alike share, and the key of the n-th of them.
[[nodiscard]] std::string NameInKey(const AppPrefs &record);
[[nodiscard]] RecordKey KeyOfNth(std::string_view name, std::size_t ordinal);

// The numbers of the records alike, in the order of their ordinals.
[[nodiscard]] std::vector<RecordNumber> RecordsAlike(QBaseHandle base, std::string_view name);

// Every record of a base by its key.
using KeyedRecords = std::map<RecordKey, RecordNumber>;
[[nodiscard]] KeyedRecords RecordsByKey(QBaseHandle base);

// A record's bytes, valid until the base is changed.
[[nodiscard]] std::string_view BytesOf(QBaseHandle base, RecordNumber number);
[[nodiscard]] std::string_view BytesOf(const AppPrefs &record);

} // namespace drevix
