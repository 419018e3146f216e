// The settings that apply to the window in front.
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
    // For the settings file at a path; `resources` has the factory settings. Nothing applies before Load.
    FrontSettings(std::string path, FSRef resources);
    FrontSettings(const FrontSettings &) = delete;
    FrontSettings &operator=(const FrontSettings &) = delete;
    ~FrontSettings();

    // Reads the file again; a missing or empty one means the factory settings. False, with the reason in
    // *problem and the settings unchanged, for a file that cannot be used.
    [[nodiscard]] bool Load(std::string *problem);
    // Uses the factory settings for this layout from now on. Reads the file again if that makes a difference.
    void UseLayout(const KeyboardCharacters &layout);
    // Applies the record for this window.
    void SetFront(const FrontWindow &front);

    [[nodiscard]] const RecordsInForce &InForce() const { return fInForce; }
    // The file name of the application whose record applies; empty for the global record.
    [[nodiscard]] std::string RecordName() const;

  private:
    std::string fPath;
    FSRef fResources;
    FSRef fFactory;                              // for the current layout
    std::unique_ptr<SettingsDocument> fDocument; // null before the first Load
    FrontRecords fRecords;
    FrontWindow fFront;
    RecordNumber fNumber = 0;
    RecordsInForce fInForce;
};

// Opens a settings file for reading only. noErr; or the status of a file that is damaged or cannot be read,
// which is no reason to drive the device by the factory settings.
[[nodiscard]] OSErr OpenSettings(SettingsDocument &document);

} // namespace drevix
