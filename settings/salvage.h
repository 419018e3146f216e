// What can still be had of a damaged settings file.
#pragma once

#include "platform/base/types.h"
#include "qbase/qbase.h"

#include <string_view>
#include <vector>

namespace drevix {

// The data of every settings record that lies whole among the bytes, whatever has become of the file's head,
// its index, or other records: a record's head with a settings record's size and length is what begins one.
[[nodiscard]] std::vector<std::string_view> FindWholeRecords(std::string_view bytes);

// Adds those records to the base. memFullErr, with some of them added, without memory.
[[nodiscard]] OSErr AddWholeRecords(QBaseHandle base, std::string_view bytes);

} // namespace drevix
