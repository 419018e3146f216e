// Property-list values as JSON, for programs that read the command line's output.
#pragma once

#include "platform/plist/property_list.h"

#include <string>

namespace drevix {

// The value as JSON text, indented by two blanks, without a final line end. Keeps the order of entries; text
// is UTF-8 with malformed parts replaced; data is base64 text, a date its seconds. May throw std::bad_alloc.
[[nodiscard]] std::string JsonText(const PropertyList &value);

} // namespace drevix
