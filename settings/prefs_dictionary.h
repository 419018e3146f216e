// The property-list form of settings records: exports, imports and the factory defaults.
// docs/property-list.md lists every key.
#pragma once

#include "platform/plist/property_list.h"
#include "settings/app_prefs.h"

#include <functional>
#include <string>

namespace drevix {

// The record as a dictionary. "factory" is never among the keys, nor are slots without a control and fields
// kept for the helper. May throw std::bad_alloc.
[[nodiscard]] PropertyListDictionary GetAppPrefsDictionary(const AppPrefs &prefs);

// Fills a record that the caller has zeroed. An absent key, or a value of the wrong type, reads as 0 or
// leaves the text empty; a number keeps the low bits that its field has room for; text becomes Mac OS Roman
// and is cut to its field. Always true. May throw std::bad_alloc.
bool GetAppPrefsFromDictionary(AppPrefs *prefs, const PropertyListDictionary &dictionary);

// Called with each record in the order of the file. It may throw std::bad_alloc, which skips the record.
using AppPrefsHandler = std::function<void(const AppPrefs &record)>;

// Reads a file of record dictionaries, whole, before the first record is handed over: a damaged file hands
// over none. Elements that are no dictionaries are skipped, and so is a record without memory for it; *skipped,
// if given, gets the number of these. noErr; else as ReadPropertyListArray, with the problem in words.
[[nodiscard]] OSErr ReadAppPrefsFile(const std::string &path, const AppPrefsHandler &handler,
                                     PropertyListProblem *problem = nullptr, std::size_t *skipped = nullptr);

// Writes records to a file, in place, as an XML property list. `next` gives one record after the other and
// null at the end. noErr, or memFullErr or the file's error with the old file as it was.
[[nodiscard]] OSErr WriteAppPrefsFile(const std::string &path, const std::function<const AppPrefs *()> &next);

} // namespace drevix
