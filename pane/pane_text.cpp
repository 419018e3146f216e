#include "pane/pane_text.h"

#include "pane/key_texts.h"
#include "platform/base/ascii.h"
#include "platform/base/mac_roman.h"
#include "platform/base/status.h"
#include "settings/action_commands.h"
#include "settings/pascal_strings.h"

#include <QCoreApplication>
#include <QWidget>

#include <tuple>

namespace drevix {
namespace {

struct ControlTitleRow {
    SlotIndex slot;
    const char *title;
};

// clang-format off
constexpr auto kControlTitles = std::to_array<ControlTitleRow>({
    {0,  QT_TRANSLATE_NOOP("Controls", "Push left")},
    {1,  QT_TRANSLATE_NOOP("Controls", "Push right")},
    {2,  QT_TRANSLATE_NOOP("Controls", "Push up")},
    {3,  QT_TRANSLATE_NOOP("Controls", "Push down")},
    {8,  QT_TRANSLATE_NOOP("Controls", "Push released")},
    {4,  QT_TRANSLATE_NOOP("Controls", "Turn left")},
    {5,  QT_TRANSLATE_NOOP("Controls", "Turn right")},
    {9,  QT_TRANSLATE_NOOP("Controls", "Turn released")},
    {6,  QT_TRANSLATE_NOOP("Controls", "Tuner left")},
    {7,  QT_TRANSLATE_NOOP("Controls", "Tuner right")},
    {16, QT_TRANSLATE_NOOP("Controls", "Button V")},
    {17, QT_TRANSLATE_NOOP("Controls", "Button P")},
    {18, QT_TRANSLATE_NOOP("Controls", "Button I")},
    {19, QT_TRANSLATE_NOOP("Controls", "Button II")},
    {20, QT_TRANSLATE_NOOP("Controls", "Button III")},
});
// clang-format on
static_assert(std::ranges::equal(kControlTitles, kControlSlots, {}, &ControlTitleRow::slot,
                                 &ControlSlot::slot));

} // namespace

QString TextOf(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString TextOfRoman(std::span<const std::uint8_t> roman) {
    QString text = QString::fromStdString(Utf8FromMacRoman(roman));
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control) {
            character = QChar::ReplacementCharacter;
        }
    }
    return text;
}

QString TranslatedText(std::string_view english) {
    return QCoreApplication::translate("Engine", std::string(english).c_str());
}

QString StatusSentence(OSErr status) {
    return TranslatedText(StatusText(status));
}

QString MenuText(const char *title) {
    return QCoreApplication::translate("Menus", title);
}

QString ShownName(const AppPrefs &prefs) {
    return prefs.application == kGlobalSignature ? QCoreApplication::translate("Controls", "Global Settings")
                                                 : TextOf(prefs.appName);
}

std::string FoldedName(const AppPrefs &prefs) {
    return WithSmallLetters(PascalCharacters(prefs.appFileName));
}

Str63 StoredFileName(const std::string &fileName) {
    Str63 stored{};
    getPascalString(fileName, stored.data(), kMaxFileNameLength);
    return stored;
}

QString FileNameKey(const Str63 &appFileName) {
    return QString::fromStdString(WithSmallLetters(Utf8FromMacRoman(CharactersOf(appFileName))));
}

QString ControlTitle(SlotIndex slot) {
    const auto *row = std::ranges::find(kControlTitles, slot, &ControlTitleRow::slot);
    return row == kControlTitles.end() ? QString() : QCoreApplication::translate("Controls", row->title);
}

QString KeyText(const ActionSlot &slot) {
    return KeyCapTexts(slot).join(QLatin1Char('+'));
}

QString ModifierText(std::uint16_t modifiers) {
    return ModifierCapTexts(modifiers).join(QLatin1Char('+'));
}

bool DoTheSame(const ActionSlot &a, const ActionSlot &b) {
    const ActionInfo *action = FindAction(a.command);
    if (a.command != b.command || action == nullptr) {
        return a.command == b.command;
    }
    switch (action->group) {
    case ActionGroup::ActionKeystroke:
        return std::tie(a.keyCode, a.modifiers, a.delay) == std::tie(b.keyCode, b.modifiers, b.delay);
    case ActionGroup::ActionScroll:
        return std::tie(a.modifiers, a.delay) == std::tie(b.modifiers, b.delay);
    case ActionGroup::ActionToolMenu:
        return a.crc == b.crc;
    case ActionGroup::ActionOpenItem:
        return std::ranges::equal(CharactersOf(a.data), CharactersOf(b.data));
    default:
        return true;
    }
}

QString PlainToolTip(const QString &text) {
    return text.isEmpty() ? QString()
                          : QStringLiteral("<span>%1</span>")
                                .arg(text.toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br>")));
}

void ShowToolTip(QWidget *widget, const QString &text) {
    widget->setToolTip(PlainToolTip(text));
    widget->setAccessibleDescription(text);
}

} // namespace drevix
