// The families of keyboard layouts. Each has its own factory defaults, because a keystroke is a position on
// the keyboard and programs react to what it types. docs/factory-defaults.md lists the families.
#pragma once

#include "platform/files/files.h"
#include "settings/app_prefs.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace drevix {

struct LayoutFamily {
    std::string_view folder; // of its factory defaults, in the resource folder; empty: that itself
    // The letters in the positions of the US keys Q to ], A to ' and Z to /; a blank for no letter.
    std::array<std::string_view, 3> letters;
};

// All families, that of the US layout first.
[[nodiscard]] std::span<const LayoutFamily> LayoutFamilies();

// The family that matches most letters of a layout, given by virtual key code as in "keyboard/key_codes.h";
// of several the first, so the US family for a layout without letters.
[[nodiscard]] const LayoutFamily &FamilyOfLayout(std::span<const std::uint8_t, 128> characters);

// The folder with the family's factory defaults in the resource folder; the resource folder itself if the
// family has none. May throw std::bad_alloc.
[[nodiscard]] FSRef FactoryFolder(const FSRef &resources, const LayoutFamily &family);
// The same for the layout of gAsciiTable ("keyboard/key_names.h").
[[nodiscard]] FSRef FactoryFolder(const FSRef &resources);

// The factory actions of the families other than the current one. An action that equals one of these is not a
// change by the user: it was the factory's under another layout.
class OtherFamilies {
  public:
    // For a record as LoadDefaultPrefs finds it. Reads nothing until asked.
    OtherFamilies(FSRef resources, const AppPrefs &prefs);

    // Whether one of them has this action for a control.
    [[nodiscard]] bool Do(const ActionSlot &action, SlotIndex slot) const;

  private:
    FSRef fResources;
    AppPrefs fPrefs;
    mutable std::optional<std::vector<AppPrefs>> fDefaults;
};

} // namespace drevix
