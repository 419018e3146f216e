// Recovers records from a damaged settings file.
#pragma once

#include "platform/base/types.h"
#include "qbase/qbase.h"

#include <string_view>
#include <vector>

namespace drevix {

// The data of every intact settings record in the bytes, whatever the state of the file's header, index or
// other records. A record header with the size and length of a settings record marks a record's start.
[[nodiscard]] std::vector<std::string_view> FindWholeRecords(std::string_view bytes);

// Adds those records to the base. noErr, or memFullErr with only some of them added.
[[nodiscard]] OSErr AddWholeRecords(QBaseHandle base, std::string_view bytes);

} // namespace drevix
