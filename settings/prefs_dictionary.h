// The property-list form of settings records: exports, imports and the factory defaults.
// docs/property-list.md lists every key.
#pragma once

#include "platform/plist/property_list.h"
#include "settings/app_prefs.h"

#include <functional>
#include <string>

namespace drevix {

// The record as a dictionary. Leaves out "factory", slots without a control and the helper's fields. May
// throw std::bad_alloc.
[[nodiscard]] PropertyListDictionary GetAppPrefsDictionary(const AppPrefs &prefs);

// Fills a record that the caller has zeroed. A missing key or a value of the wrong type reads as 0 or empty
// text; a number is truncated to its field's low bits; text is converted to Mac OS Roman and cut to its
// field. Always true. May throw std::bad_alloc.
bool GetAppPrefsFromDictionary(AppPrefs *prefs, const PropertyListDictionary &dictionary);

// Called with each record in file order. If it throws std::bad_alloc, the record is skipped.
using AppPrefsHandler = std::function<void(const AppPrefs &record)>;

// Reads a whole file of record dictionaries before passing on the first record, so a damaged file passes on
// none. Skips elements that are not dictionaries and records for which memory is out; *skipped, if given,
// gets their number. noErr; else as ReadPropertyListArray, with the problem as text.
[[nodiscard]] OSErr ReadAppPrefsFile(const std::string &path, const AppPrefsHandler &handler,
                                     PropertyListProblem *problem = nullptr, std::size_t *skipped = nullptr);

// Writes records to a file, in place, as an XML property list. `next` returns one record at a time, then
// null. noErr; memFullErr or the file's error. The old file is then unchanged, or FindKeptCopy
// ("platform/files/kept_bytes.h") names the copy of its old bytes.
[[nodiscard]] OSErr WriteAppPrefsFile(const std::string &path, const std::function<const AppPrefs *()> &next);

} // namespace drevix
