// The text forms of a property list's values, as the XML document type and its readers have them.
#pragma once

#include "platform/plist/property_list.h"

#include <optional>
#include <string>
#include <string_view>

namespace drevix {

// Reading. Each takes the whole content of an element, with blanks around it or none; nothing comes of a text
// that is malformed or out of range.

// "[sign] digits" or "[sign] 0x hex-digits", from -2^63 to 2^64 - 1.
[[nodiscard]] std::optional<PropertyList> ParseIntegerText(std::string_view text);
// A decimal number with an optional sign, fraction and exponent; "inf", "infinity" and "nan" in any case.
[[nodiscard]] std::optional<double> ParseRealText(std::string_view text);
// "YYYY-MM-DDThh:mm:ssZ", from year 1.
[[nodiscard]] std::optional<PropertyListDate> ParseDateText(std::string_view text);
// Padded base64 (RFC 4648, section 4), blanks anywhere. May throw std::bad_alloc.
[[nodiscard]] std::optional<PropertyListData> ParseBase64Text(std::string_view text);

// Writing, at the end of `out`. All may throw std::bad_alloc.

void AppendIntegerText(std::string &out, std::int64_t value);
void AppendIntegerText(std::string &out, std::uint64_t value);
// The shortest text that reads as the same number.
void AppendRealText(std::string &out, double value);
// A whole second, rounded down. What lies outside the years 1 to 9999 becomes the nearest second in them.
void AppendDateText(std::string &out, PropertyListDate date);
void AppendBase64Text(std::string &out, std::string_view bytes);

} // namespace drevix
