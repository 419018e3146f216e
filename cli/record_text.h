// A record as text and as JSON.
#pragma once

#include "cli/commands.h"
#include "platform/plist/property_list.h"
#include "settings/app_prefs.h"

#include <string>
#include <string_view>

namespace drevix {

// All in UTF-8.
[[nodiscard]] std::string RecordName(const AppPrefs &record); // the display name, or "Global Settings"
[[nodiscard]] std::string ShownName(const AppPrefs &record);  // the same, for people: that is translated
[[nodiscard]] std::string FileName(const AppPrefs &record);
// "yes" or "no", translated.
[[nodiscard]] std::string YesOrNo(std::uint8_t flag);

// The record's entry in a list.
[[nodiscard]] PropertyListDictionary RecordEntry(const AppPrefs &record);

// Prints what a command did ("%1 changed", in English) with a record: its name, or its entry.
void SayWhatWasDone(const Request &request, std::string_view done, const AppPrefs &record);

} // namespace drevix
