// What saves have replaced: the settings file as it was before each save, in the user's state folder. Kept
// are the last ten that differ, and the first of each day of the last month, which is how the day before left
// the settings.
#pragma once

#include "qbase/qbase.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace drevix {

// A settings file as it was once.
struct EarlierSettings {
    std::string path; // of the kept file, readable by the user only
    std::chrono::system_clock::time_point replaced;
};

// The history of the settings file at a path, the newest first. Empty, with noErr, if there is none; else the error of
// the state folder. May list one that a power cut has damaged.
[[nodiscard]] OSErr ListHistory(const std::string &settings, std::vector<EarlierSettings> *history);

// The records of one; null if it cannot be read, or memory is out.
[[nodiscard]] QBaseOwner ReadEarlierSettings(const EarlierSettings &earlier);

// A kept file's part in what stays.
struct KeptTime {
    std::chrono::system_clock::time_point replaced;
    std::uint64_t contents; // equal for equal contents
};
// Which of the kept files, newest first, stay by the rule above. For tests.
[[nodiscard]] std::vector<bool> ChooseKept(const std::vector<KeptTime> &kept,
                                           std::chrono::system_clock::time_point now);

// The history's part in one save.
class Forerunner {
  public:
    // Looks at the file that the save is to replace and finds a name for it. noErr, also if there is nothing to keep;
    // or why the history cannot be used.
    [[nodiscard]] OSErr Prepare(const std::string &settings);
    // The name that the save is to give it ("settings/device_prefs.h": SaveDevicePrefsToPath). Empty: none.
    [[nodiscard]] const std::string &Path() const { return fPath; }
    // After the save: removes it if the file did not change, else takes others' access away; removes what is
    // too old.
    void Finish() const;

  private:
    std::string fSettings;
    std::string fBytes;
    std::string fFolder;
    std::string fPath;
    std::vector<KeptTime> fTimes; // of all in the folder, this one first
};

} // namespace drevix
