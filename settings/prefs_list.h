// The records of a base as a list: its order, finding and storing records by the application's file name, the
// factory's values for a record.
#pragma once

#include "platform/files/files.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <string>
#include <string_view>

namespace drevix {

inline constexpr std::int16_t kDrevixSortMode = 128;

// The record at a number, null when there is none or it is not 1668 bytes long. Valid until the base is
// changed.
[[nodiscard]] AppPrefs *GetAppPrefs(QBaseHandle base, RecordNumber number);

// The order of the list, as a record comparison ("qbase/qbase_sort.h"): the global record, the factory's
// records by shown name, the user's records by shown name.
[[nodiscard]] std::int32_t CompareDrevixBaseRecords(const void *a, std::int32_t lengthA, const void *b,
                                                    std::int32_t lengthB);
// Sorts the base into that order. Records that are equal in it are in the order of their data, so that the same
// one of two global records is in force every time.
void SortDrevixBase(QBaseHandle base);
// How many records the list shows: in a sorted base all that are settings. What is not 1668 bytes long comes
// behind them.
[[nodiscard]] RecordNumber CountListedPrefs(QBaseHandle base);

// Whether the record is a global one; false for null.
[[nodiscard]] bool IsGlobalPrefs(const AppPrefs *prefs);

// Finding a record. A base may hold several of one file name, which is compared without regard to letter case.
// Each gives kNoRecord if there is none.

// The first record, from number 1 on, with this application file name.
[[nodiscard]] RecordNumber FindAppPrefs(QBaseHandle base, ConstStringPtr appFileName);
// The record that once was `former`, in a base that has been read or changed since: the one with exactly its
// bytes, else the first with its file name and signature, else the first with its file name. For a global record
// that is record 0, if it is global.
[[nodiscard]] RecordNumber FindAppPrefsAgain(QBaseHandle base, const AppPrefs &former);
// The record that a person means by a text (UTF-8): a file name; file name and signature, "NAME:SIGN", the
// signature as SignatureText gives it or as a number; or the record's number, 0 for the global one. Tried in this
// order, so an application called "2048" is found by its name. The base must be sorted.
[[nodiscard]] RecordNumber FindAppPrefsByText(QBaseHandle base, std::string_view text);
// The record that storing `record` would replace: 0 for a global record, else the one with its file name;
// kNoRecord when it would be added.
[[nodiscard]] RecordNumber FindReplacedAppPrefs(QBaseHandle base, const AppPrefs &record);
// Stores the record at that number, or at the end for kNoRecord, and gives its number. A replaced factory record
// stays one; a global record is stored without a file name. The base is not sorted. kNoRecord, with the base
// unchanged, without memory.
[[nodiscard]] RecordNumber StoreAppPrefs(QBaseHandle base, const AppPrefs &record, RecordNumber replaced);

// An application file name out of the last component of a path: UTF-8, without ".app" in any letter case.
[[nodiscard]] std::string AppFileNameFromPath(std::string_view path);
// A record for a new application: the global record's settings under that name (UTF-8, cut to the fields) and
// signature (kNoSignature for 0), active, not the factory's. `shownName` empty: the file name.
[[nodiscard]] AppPrefs MakeAppPrefs(QBaseHandle base, OSType application, std::string_view appFileName,
                                    std::string_view shownName = {});

// The factory's record for `prefs`: the first of the defaults file with its signature (for the wildcard
// signature, and its name), else the file's last global record. False, with *defaults unchanged, when the file
// cannot be read or has neither.
[[nodiscard]] bool LoadDefaultPrefs(const FSRef &resourceFolder, const AppPrefs &prefs, AppPrefs *defaults);
// What a defaults button restores in `prefs`: the ring's slots, sensitivities and speeds; the tuner's slots,
// sensitivity and the click sound; or the buttons' slots. Whole slots, without the rules between them.
void CopyGroupFromDefaultPrefs(AppPrefs &prefs, const AppPrefs &defaults, ControlGroup group);

} // namespace drevix
