// Which settings are in force: from the window in front to a record, and from a record to what a control does.
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

// What the desktop entry of a record's application says.
struct RecordEntry {
    std::string startupClass;         // StartupWMClass, empty without one
    std::vector<std::string> command; // the words of Exec, quotes and field codes done with
};
// Looks up the entry that has a record's file name, with ".desktop" behind it; nothing when none has.
using EntryLookup = std::function<std::optional<RecordEntry>(const std::string &appFileName)>;

// The records of a base by what their applications' windows can be known by. Made anew when the base has changed.
class FrontRecords {
  public:
    FrontRecords() = default;
    // Looks each record's entry up, once. The base is not needed afterwards. May throw std::bad_alloc.
    FrontRecords(QBaseHandle base, const EntryLookup &entryOf);

    // The number of the record for the window in front, 0 (the global record) when none is. Letter case of ASCII is
    // ignored, as are ".desktop" and ".exe" at the end of a name. The first of these rules that finds one decides,
    // each trying the entry id, the class and the name in this order:
    // 1. it is the record's file name; 2. the record's entry names it as its window class; 3. it is the last part of
    // the record's dotted name, or the record's name is its last part, and that holds for one record alone; 4. the
    // record's entry starts a program of that name; 5. the program that the window's process runs has the record's
    // file name.
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

// Whose settings the ring has; the action "Switch ring mode" changes it.
enum class RingMode : std::uint8_t { Application, Global };

// The records that decide what the controls do.
class RecordsInForce {
  public:
    RecordsInForce() = default; // of no record: nothing is done
    // Those for a record that FrontRecords has found. Pointers into the base are kept, so the base must stay
    // unchanged while this is used.
    RecordsInForce(QBaseHandle base, RecordNumber number);

    // Whether the device acts at all: not where the record is missing, damaged or switched off.
    [[nodiscard]] bool AreActive() const { return fOwn != nullptr; }
    [[nodiscard]] const AppPrefs *Own() const { return fOwn; }

    // What a control does: the record's slot; the global record's where the record leaves it to that, and for the
    // ring's controls in the global ring mode, but for one that switches the mode back. Null where nothing is done.
    [[nodiscard]] const ActionSlot *SlotOf(SlotIndex slot, RingMode mode) const;

    // Always values that can be used: 100 where no record decides.
    [[nodiscard]] Sensitivities SensitivitiesOf(RingMode mode) const;
    // How fast actions repeat while this control is down, 0 to 255 as records hold it; 100 for all but the ring's.
    [[nodiscard]] int SpeedOf(SlotIndex slot, RingMode mode) const;

  private:
    [[nodiscard]] const DevicePrefs &RingPrefs(RingMode mode) const;

    const AppPrefs *fOwn = nullptr;
    const AppPrefs *fGlobal = nullptr;
};

} // namespace drevix
