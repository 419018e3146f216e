// Keystrokes in the words of the user's keyboard and language.
#pragma once

#include "settings/app_prefs.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace drevix {

// The key caps of a slot's keystroke, its key last: "Strg", "Umschalt", "S"; none without a key.
[[nodiscard]] QStringList KeyCapTexts(const ActionSlot &slot);
// Its stored name: "shift+ctrl+s", "(none)" without a key.
[[nodiscard]] QString StoredKeyText(const ActionSlot &slot);
// The caps of modifiers alone.
[[nodiscard]] QStringList ModifierCapTexts(std::uint16_t modifiers);

// Parses a typed keystroke in the words of the keyboard, of the language or of the settings.
struct TypedKeystroke {
    std::uint8_t keyCode;
    std::uint16_t modifiers;
};
[[nodiscard]] std::optional<TypedKeystroke> ReadTypedKeystroke(const QString &text);

} // namespace drevix
