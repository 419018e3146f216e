// The companion dial's menu entries for one record.
#pragma once

#include "settings/app_prefs.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

class MenuTitles {
  public:
    // Reads the hotkey file of the record's application, if the companion has one.
    explicit MenuTitles(const AppPrefs &record);

    [[nodiscard]] bool HasFile() const { return fHasFile; }
    // The titles in the file's order, UTF-8.
    [[nodiscard]] const std::vector<std::string> &All() const { return fTitles; }
    // The first entry with that CRC; the first with that title, else with that title ignoring ASCII letter
    // case. Null if there is none.
    [[nodiscard]] const std::string *Find(std::uint32_t crc) const;
    [[nodiscard]] const std::string *Find(std::string_view title) const;

  private:
    std::vector<std::string> fTitles;
    bool fHasFile = false;
};

} // namespace drevix
