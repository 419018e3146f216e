// The settings in force: what the settings file says for the window in front.
#pragma once

#include "device/front_record.h"
#include "platform/desktop/keyboard_layout.h"
#include "platform/files/files.h"

#include <memory>
#include <string>

namespace drevix {

class SettingsDocument;

class FrontSettings {
  public:
    // Of the settings file at a path; `resources` has the factory's settings. Nothing is in force before Load.
    FrontSettings(std::string path, FSRef resources);
    FrontSettings(const FrontSettings &) = delete;
    FrontSettings &operator=(const FrontSettings &) = delete;
    ~FrontSettings();

    // Reads the file anew; one that is missing or empty stands for the factory's settings. False, with the reason in
    // *problem and the settings as they were, for one that cannot be used.
    [[nodiscard]] bool Load(std::string *problem);
    // The factory's settings are those for this layout from now on. Reads the file again where that makes a difference.
    void UseLayout(const KeyboardCharacters &layout);
    // Puts the record for this window in force.
    void SetFront(const FrontWindow &front);

    [[nodiscard]] const RecordsInForce &InForce() const { return fInForce; }
    // The file name of the application whose record is in force, empty for the global record.
    [[nodiscard]] std::string RecordName() const;

  private:
    std::string fPath;
    FSRef fResources;
    FSRef fFactory;                              // of the layout in force
    std::unique_ptr<SettingsDocument> fDocument; // null before the first Load
    FrontRecords fRecords;
    FrontWindow fFront;
    RecordNumber fNumber = 0;
    RecordsInForce fInForce;
};

// Opens a settings file to read it alone. noErr; for a file that is damaged or cannot be read its own status, since that
// is no reason to drive the device by the factory's settings.
[[nodiscard]] OSErr OpenSettings(SettingsDocument &document);

} // namespace drevix
