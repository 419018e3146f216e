// The text forms of property-list values, as in the XML document type and its readers.
#pragma once

#include "platform/plist/property_list.h"

#include <optional>
#include <string>
#include <string_view>

namespace drevix {

// Reading. Each parses the whole content of an element, with or without surrounding blanks; nullopt if it is
// malformed or out of range.

// "[sign] digits" or "[sign] 0x hex-digits", from -2^63 to 2^64 - 1.
[[nodiscard]] std::optional<PropertyList> ParseIntegerText(std::string_view text);
// A decimal number with an optional sign, fraction and exponent; "inf", "infinity" and "nan" in any case.
[[nodiscard]] std::optional<double> ParseRealText(std::string_view text);
// "YYYY-MM-DDThh:mm:ssZ", from year 1.
[[nodiscard]] std::optional<PropertyListDate> ParseDateText(std::string_view text);
// Padded base64 (RFC 4648, section 4), blanks anywhere. May throw std::bad_alloc.
[[nodiscard]] std::optional<PropertyListData> ParseBase64Text(std::string_view text);

// Writing: append to `out`. All may throw std::bad_alloc.

void AppendIntegerText(std::string &out, std::int64_t value);
void AppendIntegerText(std::string &out, std::uint64_t value);
// Appends the shortest text that reads back as the same number.
void AppendRealText(std::string &out, double value);
// Rounds down to a whole second and clamps to the years 1 to 9999.
void AppendDateText(std::string &out, PropertyListDate date);
void AppendBase64Text(std::string &out, std::string_view bytes);

} // namespace drevix
