// Which settings apply: finds the record for the window in front, and what a control does under that record.
#pragma once

#include "device/control_state.h"
#include "platform/windows/front_window.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace drevix {

// Data from the desktop entry of a record's application.
struct RecordEntry {
    std::string startupClass;         // StartupWMClass, or empty
    std::vector<std::string> command; // the words of Exec, unquoted and without field codes
};
// Looks up the desktop entry named after a record's file name plus ".desktop"; nullopt if none.
using EntryLookup = std::function<std::optional<RecordEntry>(const std::string &appFileName)>;

// A base's records, indexed by what identifies their applications' windows. Rebuild it when the base changes.
class FrontRecords {
  public:
    FrontRecords() = default;
    // Looks up each record's entry once. The base is not needed afterwards. May throw std::bad_alloc.
    FrontRecords(QBaseHandle base, const EntryLookup &entryOf);

    // The number of the record for the window in front; 0 (the global record) if none matches. Ignores ASCII
    // letter case and a final ".desktop" or ".exe". The first rule that finds a record wins; each tries the
    // window's entry id, class and name in this order: 1. it equals the record's file name; 2. it is the
    // window class in the record's entry; 3. it is the last part of the record's dotted name, or the record's
    // name is its last part, and only one record matches so; 4. the record's entry starts a program of that
    // name; 5. the window's process runs a program with the record's file name.
    [[nodiscard]] RecordNumber Find(const FrontWindow &front) const;

  private:
    struct Row {
        RecordNumber number;
        std::string name;
        std::string startupClass;
        std::string program;
    };
    std::vector<Row> fRows;
};

// Whose settings the ring uses; the action "Switch ring mode" changes it.
enum class RingMode : std::uint8_t { Application, Global };

// The records that determine what the controls do.
class RecordsInForce {
  public:
    RecordsInForce() = default; // no record: controls do nothing
    // For a record found by FrontRecords. Keeps pointers into the base, so the base must not change while
    // this is in use.
    RecordsInForce(QBaseHandle base, RecordNumber number);

    // Whether the device acts at all: false if the record is missing, damaged or inactive.
    [[nodiscard]] bool AreActive() const { return fOwn != nullptr; }
    [[nodiscard]] const AppPrefs *Own() const { return fOwn; }

    // What a control does: the record's slot, or the global record's if the record defers to it, or for ring
    // controls in global ring mode, except one that switches the mode back. Null if it does nothing.
    [[nodiscard]] const ActionSlot *SlotOf(SlotIndex slot, RingMode mode) const;

    // Always usable values: 100 if no record applies.
    [[nodiscard]] Sensitivities SensitivitiesOf(RingMode mode) const;
    // The repeat speed while this control is down, 0 to 255 as in records; 100 for all but the ring's
    // controls.
    [[nodiscard]] int SpeedOf(SlotIndex slot, RingMode mode) const;

  private:
    [[nodiscard]] const DevicePrefs &RingPrefs(RingMode mode) const;

    const AppPrefs *fOwn = nullptr;
    const AppPrefs *fGlobal = nullptr;
};

} // namespace drevix
