// The families of keyboard layouts, each with factory defaults of its own: a keystroke is a place on the keyboard, and
// programs go by what it types. docs/factory-defaults.md has the families.
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
    // The letters where a US keyboard has Q to ], A to ' and Z to /; a blank for what is no letter.
    std::array<std::string_view, 3> letters;
};

// All, that of the US layout first.
[[nodiscard]] std::span<const LayoutFamily> LayoutFamilies();

// The family with the most letters in the places of a layout, by virtual key code as "keyboard/key_codes.h" has its
// characters; of several the first, so the US layout's for one without letters.
[[nodiscard]] const LayoutFamily &FamilyOfLayout(std::span<const std::uint8_t, 128> characters);

// The folder to read the factory defaults from: the family's in the resource folder, or that itself where there is none
// for the family. May throw std::bad_alloc.
[[nodiscard]] FSRef FactoryFolder(const FSRef &resources, const LayoutFamily &family);
// The same for the layout of gAsciiTable ("keyboard/key_names.h").
[[nodiscard]] FSRef FactoryFolder(const FSRef &resources);

// The factory's values for a control are those of the family in force. What another family's say is no change of the
// user's either: it was the factory's when the layout was another.
class OtherFamilies {
  public:
    // Those of the families beside the one in force, for a record as LoadDefaultPrefs finds them. Nothing is read before
    // it is asked for.
    OtherFamilies(FSRef resources, const AppPrefs &prefs);

    // Whether one of them does this with a control.
    [[nodiscard]] bool Do(const ActionSlot &action, SlotIndex slot) const;

  private:
    FSRef fResources;
    AppPrefs fPrefs;
    mutable std::optional<std::vector<AppPrefs>> fDefaults;
};

} // namespace drevix
