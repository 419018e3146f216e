// The keystroke of a control: its field, who else has it, and which keys of this keyboard its modifiers are.
#include "pane/drevix_pane.h"

#include "keyboard/qt/keystroke_capture.h"
#include "pane/editor_tables.h"
#include "pane/key_texts.h"
#include "pane/keystroke_field.h"
#include "pane/pane_text.h"

#include <QActionGroup>
#include <QMenu>
#include <QSettings>

namespace drevix {
namespace {

// The place of the user's choice of command key: beside the window's position, because it belongs to this
// keyboard and not to any application's settings.
QString CommandKeyPlace() {
    return QStringLiteral("Keyboard/CommandKey");
}
QString StoredName(CommandKey key) {
    return key == CommandKey::Control ? QStringLiteral("control") : QStringLiteral("super");
}

// The label of the key for a modifier, given the command key.
QString KeyLabel(std::uint16_t modifier, CommandKey commandKey) {
    if (modifier == kOptionModifier) {
        return DrevixPane::tr("Alt");
    }
    return (modifier == kCommandModifier) == (commandKey == CommandKey::Super) ? DrevixPane::tr("Super")
                                                                               : DrevixPane::tr("Ctrl");
}

QString StoredModifier(std::uint16_t modifier) {
    return QLatin1String(modifier == kOptionModifier ? "opt" : modifier == kCommandModifier ? "cmd" : "ctrl");
}

QString LegendOf(CommandKey commandKey) {
    return DrevixPane::tr("%1 is stored as cmd").arg(KeyLabel(kCommandModifier, commandKey));
}

} // namespace

void DrevixPane::BuildKeystrokeControls() {
    auto *const menu = new QMenu(uiSettingsButtonKeys);
    auto *const choices = new QActionGroup(menu);
    const QString stored = QSettings().value(CommandKeyPlace()).toString();
    for (const CommandKey key : {CommandKey::Super, CommandKey::Control}) {
        QAction *choice = menu->addAction(LegendOf(key));
        choice->setCheckable(true);
        choices->addAction(choice);
        connect(choice, &QAction::triggered, this, [this, key] { actSettingsMenuCommandKey(key); });
        if (key == CommandKey::Super || stored == StoredName(key)) {
            choice->setChecked(true);
            UseCommandKey(key);
        }
    }
    uiSettingsButtonKeys->setMenu(menu);
    connect(uiSettingsFieldKeystroke, &KeystrokeField::waitingChanged, this, &DrevixPane::ShowKeystrokeHint);
}

// Records keystrokes with this command key from now on. Stored ones stay as they are.
void DrevixPane::UseCommandKey(CommandKey key) {
    SetCommandKey(key);
    for (const auto &[box, mask] : ModifierBoxes()) {
        if (mask == kCommandModifier || mask == kOptionModifier || mask == kControlModifier) {
            box->setText(KeyLabel(mask, key));
            box->setAccessibleDescription(tr("Stored as %1").arg(StoredModifier(mask)));
        }
    }
}

void DrevixPane::actSettingsMenuCommandKey(CommandKey key) {
    QSettings().setValue(CommandKeyPlace(), StoredName(key));
    UseCommandKey(key);
    GetUIFromPrefs();
}

bool DrevixPane::OverrideKeysIsActive() const {
    return fMainView != nullptr && uiSettingsFieldKeystroke->IsWaiting();
}

// The field stops waiting but keeps the keyboard focus, so that a user without a mouse can go on from there.
void DrevixPane::ReceiveKeystroke(std::uint8_t keyCode, std::uint16_t modifiers) {
    ActionSlot *slot = EditedSlot();
    if (slot == nullptr || slot->command != kActionKeystroke) {
        return;
    }
    slot->keyCode = keyCode;
    slot->modifiers = modifiers;
    uiSettingsFieldKeystroke->EndWaiting();
    GetUIFromPrefs();
}

void DrevixPane::ShowKeystroke(const ActionSlot &slot) {
    uiSettingsFieldKeystroke->ShowKeystroke(StoredKeyText(slot), KeyCapTexts(slot));
    uiSettingsFieldKeystroke->SetRemark(SharingText(slot));
    ShowKeystrokeHint();
    ShowModifiers(slot);
    const bool isTuner = IsTunerSlot(fDrevixActionIndex);
    const int tag = slot.delay == kDelayOfNegativeTag ? -1 : slot.delay;
    ShowDelay(uiSettingsMenuKeyRepeat, isTuner ? kTunerKeyRepeatItem : uiSettingsMenuKeyRepeat->findData(tag),
              slot.delay, !isTuner);
    uiSettingsMenuExtraKeys->setCurrentIndex(0);
}

void DrevixPane::ShowKeystrokeHint() {
    const ActionSlot *const slot = EditedSlot();
    if (slot == nullptr) {
        return;
    }
    const QString sharing = SharingText(*slot);
    uiSettingsTextKeystroke->setText(uiSettingsFieldKeystroke->IsDesktopFirst()
                                         ? tr("The desktop keeps its own combinations.")
                                     : slot->keyCode == kNoKeyCode ? tr("Click, then press the keys.")
                                     : sharing.isEmpty()           ? LegendOf(GetCommandKey())
                                                                   : sharing);
}

// Which other controls of the record have the keystroke. Two controls may share one, so this is only a note.
QString DrevixPane::SharingText(const ActionSlot &slot) const {
    QStringList sharing;
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &other = fDrevixPrefs.device[0].action[control.slot];
        if (control.slot != fDrevixActionIndex && other.command == kActionKeystroke &&
            other.keyCode == slot.keyCode && other.modifiers == slot.modifiers) {
            sharing += ControlTitle(control.slot);
        }
    }
    if (sharing.isEmpty() || slot.keyCode == kNoKeyCode) {
        return {};
    }
    return sharing.size() == 1 ? tr("Also used by %1").arg(sharing[0])
                               : tr("Also used by %1 and %2 more").arg(sharing[0]).arg(sharing.size() - 1);
}

} // namespace drevix
