// Texts that the panel's files share: names, controls, statuses and actions in the words of the window.
#pragma once

#include "platform/base/types.h"
#include "settings/app_prefs.h"

#include <QString>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

class QWidget;

namespace drevix {

// UTF-8 as the window's text.
[[nodiscard]] QString TextOf(std::string_view utf8);
// The characters of a record's name. A length byte beyond the field counts as the field's room.
template <std::size_t N>
[[nodiscard]] std::span<const std::uint8_t> CharactersOf(const std::array<std::uint8_t, N> &name) {
    return {name.data() + 1, std::min<std::size_t>(name[0], N - 1)};
}
// Mac OS Roman as the window's text. Control characters, which a foreign name may hold, become U+FFFD.
[[nodiscard]] QString TextOfRoman(std::span<const std::uint8_t> roman);
template <std::size_t N>
[[nodiscard]] QString TextOf(const std::array<std::uint8_t, N> &name) {
    return TextOfRoman(CharactersOf(name));
}

// English text of the libraries below the panel, translated; unknown texts stay as they are.
[[nodiscard]] QString TranslatedText(std::string_view english);
// What a status means, as the end of a sentence.
[[nodiscard]] QString StatusSentence(OSErr status);
// A title of the panel's menus.
[[nodiscard]] QString MenuText(const char *title);

// The record's name for people: its shown name, "Global Settings" for the global record.
[[nodiscard]] QString ShownName(const AppPrefs &prefs);
// The application file name with capitals folded: the same for two records exactly if they are the same
// application's.
[[nodiscard]] std::string FoldedName(const AppPrefs &prefs);
// The application file name as text, with the letters A to Z small: what the list of applications finds it by.
// An application file name as a record stores it.
[[nodiscard]] Str63 StoredFileName(const std::string &fileName);
[[nodiscard]] QString FileNameKey(const Str63 &appFileName);
// A control's name for people ("Button II"), by its slot.
[[nodiscard]] QString ControlTitle(SlotIndex slot);

// The keystroke of a slot as the keyboard labels it ("Ctrl+Shift+S"); modifiers alone ("Shift"); empty
// without a key.
[[nodiscard]] QString KeyText(const ActionSlot &slot);
[[nodiscard]] QString ModifierText(std::uint16_t modifiers);
// Whether two slots do the same, ignoring fields that their command does not use.
[[nodiscard]] bool DoTheSame(const ActionSlot &a, const ActionSlot &b);

// Plain text as a tool tip, which could otherwise take a name for markup. Empty for no text.
[[nodiscard]] QString PlainToolTip(const QString &text);
// Gives a widget such a tool tip, and assistive technology the text, which would otherwise be read out with
// its markup.
void ShowToolTip(QWidget *widget, const QString &text);

} // namespace drevix
