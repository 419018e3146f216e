// Property-list values as JSON, for programs that read what the command line prints.
#pragma once

#include "platform/plist/property_list.h"

#include <string>

namespace drevix {

// The value as JSON text, indented by two blanks, without a line end. Entries keep their order; text is
// UTF-8, malformed parts replaced; data is base64 text, a date its seconds. May throw std::bad_alloc.
[[nodiscard]] std::string JsonText(const PropertyList &value);

} // namespace drevix
