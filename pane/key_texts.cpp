#include "pane/key_texts.h"

#include "keyboard/key_captions.h"
#include "keyboard/key_names.h"
#include "keyboard/qt/keystroke_capture.h"
#include "pane/pane_text.h"

#include <QCoreApplication>

#include <utility>

namespace drevix {
namespace {

// For the tools that look for texts: the words of "keyboard/key_captions.h".
// clang-format off
[[maybe_unused]] constexpr auto kWords = std::to_array<const char *>({
    QT_TRANSLATE_NOOP("Keys", "Super"),     QT_TRANSLATE_NOOP("Keys", "Ctrl"),
    QT_TRANSLATE_NOOP("Keys", "Alt"),       QT_TRANSLATE_NOOP("Keys", "Shift"),
    QT_TRANSLATE_NOOP("Keys", "Caps Lock"), QT_TRANSLATE_NOOP("Keys", "Num"),
    QT_TRANSLATE_NOOP("Keys", "Enter"),     QT_TRANSLATE_NOOP("Keys", "Tab"),
    QT_TRANSLATE_NOOP("Keys", "Esc"),       QT_TRANSLATE_NOOP("Keys", "Insert"),
    QT_TRANSLATE_NOOP("Keys", "Print"),     QT_TRANSLATE_NOOP("Keys", "Scroll Lock"),
    QT_TRANSLATE_NOOP("Keys", "Pause"),     QT_TRANSLATE_NOOP("Keys", "Backspace"),
    QT_TRANSLATE_NOOP("Keys", "Delete"),    QT_TRANSLATE_NOOP("Keys", "Space"),
    QT_TRANSLATE_NOOP("Keys", "Home"),      QT_TRANSLATE_NOOP("Keys", "End"),
    QT_TRANSLATE_NOOP("Keys", "Page Up"),   QT_TRANSLATE_NOOP("Keys", "Page Down"),
    QT_TRANSLATE_NOOP("Keys", "Left"),      QT_TRANSLATE_NOOP("Keys", "Right"),
    QT_TRANSLATE_NOOP("Keys", "Up"),        QT_TRANSLATE_NOOP("Keys", "Down"),
    QT_TRANSLATE_NOOP("Keys", "Num Lock"),  QT_TRANSLATE_NOOP("Keys", "Menu"),
});
// clang-format on

CommandOnKeyboard CommandInForce() {
    return GetCommandKey() == CommandKey::Control ? CommandOnKeyboard::Ctrl : CommandOnKeyboard::Super;
}

// A letter is printed on its key as a capital, except "ß", whose capital form has two letters.
QString CapText(std::string_view caption) {
    const QString text = TextOf(caption);
    if (text.size() > 1) {
        return QCoreApplication::translate("Keys", std::string(caption).c_str());
    }
    const QString capital = text.toUpper();
    return capital.size() == text.size() ? capital : text;
}

// The English word for a caption in the user's language, ignoring letter case; others are returned unchanged.
QString EnglishOf(const QString &typed) {
    for (const std::string_view word : CaptionWords()) {
        if (CapText(word).compare(typed, Qt::CaseInsensitive) == 0) {
            return TextOf(word);
        }
    }
    return typed;
}

QString InEnglish(const QString &text) {
    QStringList words;
    for (const QString &word : text.split(QLatin1Char('+'))) {
        words += EnglishOf(word.trimmed());
    }
    return words.join(QLatin1Char('+'));
}

} // namespace

QStringList KeyCapTexts(const ActionSlot &slot) {
    QStringList caps;
    QString keypad;
    for (const std::string &caption : KeyCaptions(slot.keyCode, slot.modifiers, CommandInForce())) {
        if (caption == "Num") {
            keypad = CapText(caption) + QLatin1Char(' ');
        } else {
            caps += std::exchange(keypad, {}) + CapText(caption);
        }
    }
    return caps;
}

QString StoredKeyText(const ActionSlot &slot) {
    return slot.keyCode == kNoKeyCode ? MenuText(QT_TRANSLATE_NOOP("Menus", "(none)"))
                                      : TextOf(KeystrokeText(slot.keyCode, slot.modifiers));
}

QStringList ModifierCapTexts(std::uint16_t modifiers) {
    QStringList caps;
    for (const std::string_view caption : ModifierCaptions(modifiers, CommandInForce())) {
        caps += CapText(caption);
    }
    return caps;
}

// If Ctrl is the command key, a typed "ctrl" means that key, and a typed "cmd" is the stored name.
std::optional<TypedKeystroke> ReadTypedKeystroke(const QString &text) {
    TypedKeystroke typed{};
    const QString english = InEnglish(text);
    if (!ParseKeyCombination(english.toStdString(), &typed.keyCode, &typed.modifiers) &&
        !ParseKeyCombination(text.toStdString(), &typed.keyCode, &typed.modifiers)) {
        return std::nullopt;
    }
    constexpr std::uint16_t kBoth = kCommandModifier | kControlModifier;
    const bool isOne =
        (typed.modifiers & kBoth) == kCommandModifier || (typed.modifiers & kBoth) == kControlModifier;
    const bool isStoredName = text.contains(QLatin1String("cmd"), Qt::CaseInsensitive);
    if (GetCommandKey() == CommandKey::Control && isOne && !isStoredName) {
        typed.modifiers ^= kBoth;
    }
    return typed;
}

} // namespace drevix
