// The records of a base as a list: its order, finding and storing records by the application's file name,
// factory values for a record.
#pragma once

#include "platform/files/files.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <string>
#include <string_view>

namespace drevix {

inline constexpr std::int16_t kDrevixSortMode = 128;

// The record with a number; null if there is none or it is not 1668 bytes long. Valid until the base changes.
[[nodiscard]] AppPrefs *GetAppPrefs(QBaseHandle base, RecordNumber number);

// The list's order, as a record comparison ("qbase/qbase_sort.h"): the global record, factory records by
// display name, user records by display name.
[[nodiscard]] std::int32_t CompareDrevixBaseRecords(const void *a, std::int32_t lengthA, const void *b,
                                                    std::int32_t lengthB);
// Sorts the base into that order. Equal records are in data order, so that of two global records the same one
// always applies.
void SortDrevixBase(QBaseHandle base);
// How many records the list shows: in a sorted base all settings records. Records that are not 1668 bytes
// long sort after them.
[[nodiscard]] RecordNumber CountListedPrefs(QBaseHandle base);

// Whether this is a global record; false for null.
[[nodiscard]] bool IsGlobalPrefs(const AppPrefs *prefs);

// Finding a record. File names are compared case-insensitively, and a base may hold several records with the
// same one. Each function returns kNoRecord if there is none.

// The first record, from number 1 on, with this application file name.
[[nodiscard]] RecordNumber FindAppPrefs(QBaseHandle base, ConstStringPtr appFileName);
// Finds the record that was `former` in a base that has since been read again or changed: the one with
// identical bytes, else the first with its file name and signature, else the first with its file name. For a
// global record: record 0, if it is global.
[[nodiscard]] RecordNumber FindAppPrefsAgain(QBaseHandle base, const AppPrefs &former);
// Finds the record that a user's text (UTF-8) names: a file name; "NAME:SIGN", a file name and a signature as
// from SignatureText or as a number; or the record's number, 0 for the global one. Tried in this order, so an
// application called "2048" is found by name. The base must be sorted.
[[nodiscard]] RecordNumber FindAppPrefsByText(QBaseHandle base, std::string_view text);
// The record that storing `record` would replace: 0 for a global record, else the one with its file name;
// kNoRecord if it would be added.
[[nodiscard]] RecordNumber FindReplacedAppPrefs(QBaseHandle base, const AppPrefs &record);
// Stores the record at that number, or at the end for kNoRecord, and returns its number. A replaced factory
// record keeps its factory flag; a global record is stored without a file name. Does not sort the base.
// kNoRecord, with the base unchanged, if out of memory.
[[nodiscard]] RecordNumber StoreAppPrefs(QBaseHandle base, const AppPrefs &record, RecordNumber replaced);

// The application file name for a path: its last component in UTF-8, without ".app" (any letter case).
[[nodiscard]] std::string AppFileNameFromPath(std::string_view path);
// A record for a new application: the global record's settings with that name (UTF-8, cut to the fields) and
// signature (kNoSignature for 0), active, not a factory record. An empty `shownName` means the file name.
[[nodiscard]] AppPrefs MakeAppPrefs(QBaseHandle base, OSType application, std::string_view appFileName,
                                    std::string_view shownName = {});

// The factory record for `prefs`: the first in the defaults file with its signature (and, for the wildcard
// signature, its name), else the file's last global record. False, with *defaults unchanged, if the file
// cannot be read or has neither.
[[nodiscard]] bool LoadDefaultPrefs(const FSRef &resourceFolder, const AppPrefs &prefs, AppPrefs *defaults);
// Restores in `prefs` what a defaults button restores: the ring's slots, sensitivities and speeds; the
// tuner's slots, sensitivity and click sound; or the buttons' slots. Copies whole slots without applying the
// rules between them.
void CopyGroupFromDefaultPrefs(AppPrefs &prefs, const AppPrefs &defaults, ControlGroup group);

} // namespace drevix
